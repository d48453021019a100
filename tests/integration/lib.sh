# Helpers shared by the integration scripts. Sourced by a script that runs inside a
# session (session.sh); the caller has set -euo pipefail.
#
# VELMORA_BIN names the program; VELMORA_TEST_OUTPUT the folder for screenshots and logs
# (default: ./test-output/<script name>).

it_name="$(basename "$0" .sh)"
VELMORA_TEST_OUTPUT="${VELMORA_TEST_OUTPUT:-$PWD/test-output/$it_name}"
mkdir -p "$VELMORA_TEST_OUTPUT"
[ -n "${DISPLAY:-}" ] && [ -n "${VELMORA_IT_SESSION:-}" ] ||
    { echo "FAIL: run this inside session.sh" >&2; exit 1; }
[ -x "${VELMORA_BIN:-}" ] || { echo "FAIL: VELMORA_BIN ('${VELMORA_BIN:-}') is not a program" >&2; exit 1; }

VELMORA_PID=""
VELMORA_OUT="$VELMORA_TEST_OUTPUT/velmora.out"
VELMORA_LOG="$XDG_DATA_HOME/velmora/Debug_Logs.txt"
VELMORA_CONF="$XDG_CONFIG_HOME/velmora/velmora.conf"
it_helpers=()

note() { echo "$it_name: $*"; }

xutil() { "$VELMORA_IT_PYTHON" "$VELMORA_IT_XUTIL" "$@"; }

screenshot() {
    xutil screenshot "$VELMORA_TEST_OUTPUT/$1.png" && note "screenshot $VELMORA_TEST_OUTPUT/$1.png"
}

# What the desktop looked like when a check failed.
diagnostics() {
    set +e
    screenshot failure
    {
        echo "== windows"; xwininfo -root -tree
        echo "== root"; xprop -root _NET_CLIENT_LIST_STACKING _NET_ACTIVE_WINDOW
        echo "== monitors"; xrandr --listmonitors
        echo "== pulse source outputs"; pactl list short source-outputs
        echo "== $VELMORA_CONF"; cat "$VELMORA_CONF"
        echo "== $VELMORA_LOG"; cat "$VELMORA_LOG"
    } >"$VELMORA_TEST_OUTPUT/failure-state.txt" 2>&1
    [ -d "$XDG_DATA_HOME/velmora" ] && cp -r "$XDG_DATA_HOME/velmora" "$VELMORA_TEST_OUTPUT/data" 2>/dev/null
    echo "--- last lines of the program's output ($VELMORA_OUT)" >&2
    tail -n 25 "$VELMORA_OUT" >&2 2>/dev/null
    echo "--- debug log" >&2
    tail -n 15 "$VELMORA_LOG" >&2 2>/dev/null
    echo "--- desktop state in $VELMORA_TEST_OUTPUT/failure-state.txt" >&2
}

fail() {
    echo "FAIL: $*" >&2
    diagnostics
    exit 1
}

# kill -0 would also succeed on a child that has exited but not been waited for.
alive() { [ -r "/proc/$1/stat" ] && ! grep -q '^[0-9]* (.*) [ZX] ' "/proc/$1/stat" 2>/dev/null; }

velmora_running() { [ -n "$VELMORA_PID" ] && alive "$VELMORA_PID"; }

# poll SECONDS WHAT COMMAND...: runs COMMAND until it succeeds; fails the test with WHAT
# after SECONDS, or at once when the program has exited meanwhile.
poll() {
    local seconds=$1 what=$2
    shift 2
    local deadline=$((SECONDS + seconds))
    until "$@" >/dev/null 2>&1; do
        if [ -n "$VELMORA_PID" ] && ! velmora_running; then
            local status=0
            wait "$VELMORA_PID" || status=$?
            VELMORA_PID=""
            fail "the program exited (status $status) while waiting for: $what"
        fi
        [ "$SECONDS" -lt "$deadline" ] || fail "after ${seconds}s still not: $what"
        sleep 0.2
    done
}

# start_velmora [LOCAL-TIME]: starts the program in the background, optionally with its
# clock starting at LOCAL-TIME ("2026-11-24 06:59:52") and running on from there.
start_velmora() {
    local env=()
    if [ $# -gt 0 ]; then
        local lib target offset
        lib="$(ls /usr/lib/*/faketime/libfaketimeMT.so.1 2>/dev/null | head -n1)"
        [ -n "$lib" ] || fail "libfaketime is not installed (package faketime)"
        target="$(date -d "$1" +%s)" || fail "cannot read the time '$1'"
        # A fixed offset, rather than a start time, gives the program's helper processes
        # the same clock as the program itself; timers keep the real monotonic clock.
        offset=$((target - $(date +%s)))
        [ "$offset" -lt 0 ] || offset="+$offset"
        env=(LD_PRELOAD="$lib" FAKETIME="$offset" FAKETIME_DONT_FAKE_MONOTONIC=1)
        note "starting $VELMORA_BIN at $1"
    else
        note "starting $VELMORA_BIN"
    fi
    env "${env[@]}" "$VELMORA_BIN" >"$VELMORA_OUT" 2>&1 &
    VELMORA_PID=$!
}

stop_velmora() {
    [ -n "$VELMORA_PID" ] || return 0
    kill -TERM "$VELMORA_PID" 2>/dev/null || true
    local deadline=$((SECONDS + 10))
    while velmora_running && [ "$SECONDS" -lt "$deadline" ]; do sleep 0.1; done
    velmora_running && { note "the program ignored TERM; killing it"; kill -KILL "$VELMORA_PID" 2>/dev/null || true; }
    wait "$VELMORA_PID" 2>/dev/null || true
    VELMORA_PID=""
}

# Starts a helper process (a window, a recorder) that is ended with the script.
start_helper() {
    "$@" >>"$VELMORA_TEST_OUTPUT/helpers.out" 2>&1 &
    it_helpers+=("$!")
}

stop_helper() {
    kill -TERM "$1" 2>/dev/null || true
    wait "$1" 2>/dev/null || true
}

it_cleanup() {
    local status=$?
    set +e
    stop_velmora
    local pid
    for pid in "${it_helpers[@]}"; do stop_helper "$pid"; done
    [ "$status" -eq 0 ] && note "PASS"
    return "$status"
}
trap it_cleanup EXIT

# The mapped top-level windows whose title is exactly TITLE, as hex ids.
windows_titled() {
    local id
    for id in $(xdotool search --onlyvisible --name "^$1\$" 2>/dev/null); do
        printf '0x%x\n' "$id"
    done
}

# WIDTHxHEIGHT+X+Y of a window, in root coordinates.
geometry_of() {
    xwininfo -id "$1" | awk '
        /Absolute upper-left X:/ { x = $NF } /Absolute upper-left Y:/ { y = $NF }
        /^ *Width:/ { w = $NF } /^ *Height:/ { h = $NF }
        END { printf "%sx%s+%s+%s\n", w, h, x, y }'
}

# The hex window ids of a WINDOW-list property of the root, one per line.
root_windows() {
    xprop -root "$1" | sed -n 's/^.*window id # //p' | tr ',' '\n' | tr -d ' '
}

same_window() { [ -n "$1" ] && [ -n "$2" ] && [ "$(($1))" -eq "$(($2))" ]; }
