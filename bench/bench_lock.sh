#!/usr/bin/env bash
# How fast the morning lock comes up, and what a running routine item costs in memory,
# measured on the real program in a private X session. Run on demand, never by CTest:
#
#   VELMORA_BIN=build/bin/velmora VELMORA_PREFS=build/bin/velmora-prefs \
#       tests/integration/session.sh bash bench/bench_lock.sh
#
# BENCH_RUNS (default 5) sets the number of starts per latency figure.
#
# (a) Lock latency. The gate's decision is the moment "Initiating morning habits." lands
#     in the debug log (watched every millisecond from outside; the log itself only has
#     whole seconds). From there, polling X every 5 ms: both lock windows viewable, and,
#     with accessibility on, the overview's title readable on AT-SPI (an upper bound: one
#     AT-SPI walk of the widget tree, printed alongside, is that figure's resolution). "warm" is a program that has
#     run since 06:59:58 and meets 07:00 on its five-second tick, the everyday case;
#     "cold" is a program started at 07:00:01, which decides during start-up.
# (b) Resident memory while a morning habit's timer runs: the program's own VmRSS, and
#     the whole process tree (the web engine runs in helper processes) as summed VmRSS
#     and as summed Pss, once without a web page and once with a local HTML page.
set -euo pipefail
. "$(dirname "$0")/bench_lib.sh"
runs="${BENCH_RUNS:-5}"
day="$(date -d tomorrow +%F)"
title="Good Morning! It’s time to earn your velmora. Here are the habits you need to accomplish before you can use your computer."

prefs() { "$VELMORA_PREFS" "$VELMORA_CONF" "$@"; }

# A fresh installation that has had its first run, with one morning habit whose
# "videoUrl" is VIDEO-URLS (a JSON array), and the night before 07:00 done.
fresh_day() { # VIDEO-URLS
    rm -rf "$XDG_DATA_HOME/velmora" "$(dirname "$VELMORA_CONF")"
    prefs set-string kUserdefaultsSelectedJson "{\"morningHabits\": [{\"name\": \"Water\",
        \"durationSeconds\": 120, \"videoUrl\": $1, \"logQuantity\": false, \"allowedUrls\": [],
        \"allowedApps\": []}], \"eveningHabits\": [], \"breakActivities\": [],
        \"breakAfterMinutes\": 50, \"startTime\": \"07:00\", \"shutOffTime\": \"22:00\"}"
    prefs set-bool kUserdefaultsFirstRun true
    prefs set-bool kUserdefaultsPromptToRememberHabit false
    local key
    for key in kUserdefaultsFocusSummaryShowedTillDate kUserdefaultsEveningHabitsShowedTillDate \
        kUserdefaultsShutdownAborted; do
        prefs set-date "$key" "$day 07:00:00"
    done
}

probe() { # AT [--title TEXT]
    fresh_day '[]'
    "$VELMORA_IT_PYTHON" "$here/lock_probe.py" --program "$VELMORA_BIN" --at "$1" --log "$VELMORA_LOG" \
        --output "$VELMORA_OUT" "${@:2}"
}

# FIELD=value lines on stdin -> "median X ms (min Y, max Z)" of FIELD.
summary() {
    sed -n "s/.*\\b$1=\\([0-9.]*\\).*/\\1/p" | sort -n |
        awk '{ v[NR] = $1 } END { if (NR) printf "median %.1f ms (min %.1f, max %.1f, %d runs)", v[int((NR + 1) / 2)], v[1], v[NR], NR; else printf "no runs" }'
}

latency() { # LABEL AT [--title TEXT]
    local label=$1 i results=""
    shift
    for ((i = 0; i < runs; i++)); do
        results+="$(probe "$@" || fail "$label run $((i + 1)) failed")"$'\n'
    done
    echo "$results" >>"$VELMORA_TEST_OUTPUT/latency-runs.txt"
    echo "  $label: gate decision -> both lock windows viewable: $(summary decision_to_mapped_ms <<<"$results")"
    if [ $# -gt 1 ]; then
        echo "  $label: gate decision -> overview title on AT-SPI:   $(summary decision_to_title_ms <<<"$results")"
        echo "  $label: (one AT-SPI walk of the widget tree:         $(summary title_walk_ms <<<"$results"))"
    fi
    if [[ "$label" == cold* ]]; then
        echo "  $label: process start -> gate decision:              $(summary start_to_decision_ms <<<"$results")"
        echo "  $label: process start -> both lock windows viewable: $(summary start_to_mapped_ms <<<"$results")"
    fi
}

echo "(a) morning lock latency (target: decision -> lock up under 200 ms)"
: >"$VELMORA_TEST_OUTPUT/latency-runs.txt"
latency "warm, no accessibility" "$day 06:59:58"
latency "cold, no accessibility" "$day 07:00:01"
start_accessibility
latency "warm, with AT-SPI     " "$day 06:59:58" --title "$title"
unset QT_LINUX_ACCESSIBILITY_ALWAYS_ON

# --- (b) memory
# The sum of FIELD (kB) over the /proc/PID/FILE of each PID.
sum_kb() { # FILE FIELD PID...
    local file=$1 field=$2 pid paths=()
    shift 2
    for pid in "$@"; do paths+=("/proc/$pid/$file"); done
    awk -v k="$field:" '$1 == k { s += $2 } END { print s + 0 }' "${paths[@]}" 2>/dev/null || true
}

# PID and all its descendants.
tree_of() {
    local child
    echo "$1"
    for child in $(cat /proc/"$1"/task/*/children 2>/dev/null); do tree_of "$child"; done
}

mb() { awk -v kb="$1" 'BEGIN { printf "%.1f", kb / 1024 }'; }

memory() { # LABEL VIDEO-URLS SCREENSHOT-NAME
    fresh_day "$2"
    start_velmora "$day 07:00:01"
    poll 20 "the morning overview is shown" grep -q 'Showing morning habits\.' "$VELMORA_LOG"
    sleep 2
    local overview
    overview=$(sum_kb status VmRSS "$VELMORA_PID")
    # Return does nothing during the 30-second countdown and starts the habit after it.
    local deadline=$((SECONDS + 45))
    until grep -q 'startFirstMorningHabit' "$VELMORA_LOG"; do
        [ "$SECONDS" -lt "$deadline" ] || fail "$1: Return did not start the habit after the countdown"
        xdotool key Return
        sleep 0.5
    done
    # A web page loads in the first seconds of the item: sample for 10 s.
    local i pids rss tree peak=0
    for ((i = 0; i < 20; i++)); do
        sleep 0.5
        mapfile -t pids < <(tree_of "$VELMORA_PID")
        tree=$(sum_kb status VmRSS "${pids[@]}")
        [ "$tree" -le "$peak" ] || peak=$tree
    done
    ! grep -q 'Habit Over called' "$VELMORA_LOG" || fail "$1: the habit ended while memory was sampled"
    rss=$(sum_kb status VmRSS "$VELMORA_PID")
    printf '  %s: program VmRSS %s MB (%s MB on the overview before it); process tree (%d processes) VmRSS %s MB (peak %s), Pss %s MB\n' \
        "$1" "$(mb "$rss")" "$(mb "$overview")" "${#pids[@]}" "$(mb "$tree")" "$(mb "$peak")" \
        "$(mb "$(sum_kb smaps_rollup Pss "${pids[@]}")")"
    screenshot "memory-$3"
    stop_velmora
}

page="$VELMORA_IT_DIR/item.html"
cat >"$page" <<'EOF'
<!doctype html>
<html><head><meta charset="utf-8"><title>Water</title>
<style>
  body { font-family: sans-serif; background: #103040; color: white; text-align: center; }
  .drop { width: 80px; height: 80px; margin: 60px auto; border-radius: 50% 50% 50% 0;
          background: #5ac8fa; transform: rotate(-45deg); animation: pulse 1s infinite alternate; }
  @keyframes pulse { to { transform: rotate(-45deg) scale(1.3); } }
</style></head>
<body><h1>Drink a glass of water</h1><div class="drop"></div>
<p>Slowly, in small sips.</p></body></html>
EOF

echo "(b) resident memory while a habit's timer screen is up"
memory "no web page" '[]' no-page
memory "local page " "[\"file://$page\"]" web-page
