#!/usr/bin/env bash
# What the program costs while it only waits: the lock down, nothing due for minutes.
# After 25 s of settling, one minute of CPU time (user + system, the whole process tree)
# and the resident memory at its end, read from /proc. Safe Eyes and Workrave, peers that
# also interrupt work for breaks, are measured the same way beside it when installed
# (apt-get install safeeyes workrave). Run on demand, never by CTest:
#
#   VELMORA_BIN=build/bin/velmora VELMORA_PREFS=build/bin/velmora-prefs \
#       tests/integration/session.sh bash bench/bench_idle.sh
#
# BENCH_SETTLE and BENCH_SECONDS (default 25 and 60) change the two periods.
set -euo pipefail
. "$(dirname "$0")/bench_lib.sh"
settle="${BENCH_SETTLE:-25}"
seconds="${BENCH_SECONDS:-60}"

# PID and every process below it.
tree() {
    local pid=$1 child
    echo "$pid"
    for child in $(cat /proc/"$pid"/task/*/children 2>/dev/null); do tree "$child"; done
}
# Nanoseconds on a CPU, summed over every thread of the tree (finer than the clock
# ticks of /proc/PID/stat, which count in 10 ms steps).
cpu_ns() {
    local sum=0 pid task ns
    for pid in $(tree "$1"); do
        for task in /proc/"$pid"/task/*; do
            read -r ns _ <"$task/schedstat" 2>/dev/null || continue
            sum=$((sum + ns))
        done
    done
    echo "$sum"
}
# Summed VmRSS of the tree, in kB.
rss_kb() {
    local sum=0 pid kb
    for pid in $(tree "$1"); do
        kb="$(awk '/^VmRSS:/ { print $2 }' /proc/"$pid"/status 2>/dev/null)" || continue
        sum=$((sum + ${kb:-0}))
    done
    echo "$sum"
}
# NAME PID: settles, measures, prints one line of figures.
measure() {
    local name=$1 pid=$2 before after
    sleep "$settle"
    alive "$pid" || { note "$name ended during the settling"; return 0; }
    before="$(cpu_ns "$pid")"
    sleep "$seconds"
    after="$(cpu_ns "$pid")"
    awk -v n="$name" -v t=$((after - before)) -v s="$seconds" -v kb="$(rss_kb "$pid")" \
        -v p="$(tree "$pid" | wc -l)" 'BEGIN {
            printf "%-10s idle CPU %6.1f ms per minute   resident %6.1f MB   (%d processes)\n",
                   n, t / 1e6 * 60 / s, kb / 1024, p }'
}

# A day whose morning routine is done and whose evening is hours away.
prefs() { "$VELMORA_PREFS" "$VELMORA_CONF" "$@"; }
day="$(date -d tomorrow +%F)"
prefs set-string kUserdefaultsSelectedJson '{"morningHabits": [{"name": "Water", "durationSeconds": 30}],
    "breakActivities": [{"name": "Walk", "durationSeconds": 60}], "breakAfterMinutes": 50,
    "startTime": "07:00", "shutOffTime": "22:00"}'
prefs set-bool kUserdefaultsFirstRun true
prefs set-date UserdefaultsLastHabitShowDate "$day 07:00:00"
start_velmora "$day 12:00:00"
poll 30 "the status icon is in the tray" xutil tray-icons velmora
mapped_titled "Velmora lock" && fail "the lock is up; the idle figure needs it down"
measure Velmora "$VELMORA_PID"
stop_velmora

for peer in safeeyes workrave; do
    if ! command -v "$peer" >/dev/null; then
        note "$peer is not installed (apt-get install $peer): no figure"
        continue
    fi
    mkdir -p "$XDG_CONFIG_HOME/$peer/style" # Safe Eyes does not make its own configuration folders
    "$peer" >"$VELMORA_TEST_OUTPUT/$peer.out" 2>&1 &
    pid=$!
    measure "$peer" "$pid"
    kill -TERM "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
done
