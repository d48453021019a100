#!/usr/bin/env bash
# How fast the morning lock covers every output under sway (two outputs of different sizes),
# beside the same figure on X11 (bench_lock.sh). Run on demand, never by CTest:
#
#   VELMORA_BIN=build/bin/velmora VELMORA_PREFS=build/bin/velmora-prefs \
#       tests/integration/wayland/sway_session.sh bash bench/bench_lock_wayland.sh
#
# BENCH_RUNS (default 20) sets the number of starts. Each is a program that has run since
# 06:59:58 and meets 07:00 on its five-second tick; the figure is from the gate's decision
# (the debug log's "Initiating morning habits.") to the last lock surface's first frame.
set -euo pipefail
. "$(dirname "$0")/bench_lib.sh"
runs="${BENCH_RUNS:-20}"

results=""
for ((i = 0; i < runs; i++)); do
    rm -rf "$XDG_DATA_HOME/velmora" "$(dirname "$VELMORA_CONF")"
    prefs set-string kUserdefaultsSelectedJson '{"morningHabits": [{"name": "Water", "durationSeconds": 120}],
        "breakActivities": [], "breakAfterMinutes": 50, "startTime": "07:00", "shutOffTime": "22:00"}'
    night_done
    results+="$("$VELMORA_IT_PYTHON" "$here/lock_probe_wayland.py" --program "$VELMORA_BIN" \
        --at "$day 06:59:58" --log "$VELMORA_LOG" --outputs 2 || fail "run $((i + 1)) failed")"$'\n'
done
echo "$results" >"$VELMORA_TEST_OUTPUT/latency-runs.txt"
sed -n 's/^decision_to_covered_ms=//p' <<<"$results" | sort -n |
    awk '{ v[NR] = $1 } END { printf "sway, 2 outputs: gate decision -> lock drawn on every output: median %.1f ms, worst %.1f ms (%d runs)\n", v[int((NR + 1) / 2)], v[NR], NR }'
