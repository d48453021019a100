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
it_a11y=""

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
        if [ -n "$it_a11y" ] && velmora_running; then echo "== widgets on AT-SPI"; a11y dump; fi
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
alive() {
    local stat
    stat="$(cat "/proc/$1/stat" 2>/dev/null)" && [ -n "$stat" ] && [[ "$stat" != *") Z "* && "$stat" != *") X "* ]]
}

velmora_running() { [ -n "$VELMORA_PID" ] && alive "$VELMORA_PID"; }

# poll SECONDS WHAT COMMAND...: runs COMMAND until it succeeds; fails the test with WHAT
# after SECONDS, or at once when the program has exited meanwhile. When the variable
# `seen` holds a command, its output at the time of failure is added to the message:
#   seen="xprop -id $id WM_NAME" poll 5 "the title is set" has_title "$id"
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
        if [ "$SECONDS" -ge "$deadline" ]; then
            [ -z "${seen:-}" ] || what="$what (seen: $(eval "$seen" 2>&1 | tr '\n' ' '))"
            fail "after ${seconds}s still not: $what"
        fi
        sleep 0.2
    done
}

# start_velmora [LOCAL-TIME]: starts the program in the background, optionally with its
# clock starting at LOCAL-TIME ("2026-11-24 06:59:52") and running on from there.
start_velmora() {
    local env=()
    if [ $# -gt 0 ]; then
        local libs target offset
        libs=(/usr/lib/*/faketime/libfaketimeMT.so.1)
        [ -e "${libs[0]}" ] || fail "libfaketime is not installed (package faketime)"
        target="$(date -d "$1" +%s)" || fail "cannot read the time '$1'"
        # A fixed offset, rather than a start time, gives the program's helper processes
        # the same clock as the program itself; timers keep the real monotonic clock.
        offset=$((target - $(date +%s)))
        [ "$offset" -lt 0 ] || offset="+$offset"
        env=(LD_PRELOAD="${libs[0]}" FAKETIME="$offset" FAKETIME_DONT_FAKE_MONOTONIC=1)
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
    if velmora_running; then
        note "the program did not end within 10 s of TERM; killing it"
        kill -KILL "$VELMORA_PID" 2>/dev/null || true
    fi
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

mapped_titled() { [ -n "$(windows_titled "$1")" ]; }

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

active_window() { root_windows _NET_ACTIVE_WINDOW | head -n1; }

is_active() { same_window "$(active_window)" "$1"; }

# True when every window in $@ comes after (above) BELOW in _NET_CLIENT_LIST_STACKING.
stacked_above() {
    local below=$1 order pos_below i id pos
    shift
    mapfile -t order < <(root_windows _NET_CLIENT_LIST_STACKING)
    pos_below=-1
    for i in "${!order[@]}"; do same_window "${order[i]}" "$below" && pos_below=$i; done
    [ "$pos_below" -ge 0 ] || return 1
    for id in "$@"; do
        pos=-1
        for i in "${!order[@]}"; do same_window "${order[i]}" "$id" && pos=$i; done
        [ "$pos" -gt "$pos_below" ] || return 1
    done
}

fullscreen_above() {
    local states
    states="$(xprop -id "$1" _NET_WM_STATE)"
    grep -q _NET_WM_STATE_FULLSCREEN <<<"$states" && grep -q _NET_WM_STATE_ABOVE <<<"$states"
}

# Polls until window ID sits at geometry WANT (the window manager settles asynchronously).
expect_geometry() {
    local id=$1 want=$2 what=$3 deadline=$((SECONDS + 10)) at
    while at="$(geometry_of "$id")" && [ "$at" != "$want" ]; do
        [ "$SECONDS" -lt "$deadline" ] || fail "$what $id is at $at, expected $want"
        sleep 0.2
    done
}

# The lock as the user must meet it on the session's two monitors: one "Velmora lock" on
# the left monitor, one "Velmora blank" on the right, both full-screen and kept above,
# the lock window active with the keyboard focus, and the keyboard grabbed so that no
# other client (nor the window manager's key bindings) can take it. Sets $lock and $blank.
check_lock_up() {
    poll 10 "a window titled 'Velmora lock' is mapped" mapped_titled "Velmora lock"
    local locks blanks b focus id
    mapfile -t locks < <(windows_titled "Velmora lock")
    [ ${#locks[@]} -eq 1 ] || fail "expected one 'Velmora lock' window, found ${locks[*]}"
    lock=${locks[0]}
    expect_geometry "$lock" 1280x800+0+0 "the lock window"

    poll 10 "a window titled 'Velmora blank' is mapped" mapped_titled "Velmora blank"
    mapfile -t blanks < <(windows_titled "Velmora blank")
    if [ ${#blanks[@]} -ne 1 ]; then
        fail "expected one 'Velmora blank' window (one other monitor), found: $(
            for b in "${blanks[@]}"; do printf '%s at %s; ' "$b" "$(geometry_of "$b")"; done)"
    fi
    blank=${blanks[0]}
    expect_geometry "$blank" 1280x800+1280+0 "the blank window"

    for id in "$lock" "$blank"; do
        seen="xprop -id $id _NET_WM_STATE" \
            poll 10 "window $id has _NET_WM_STATE FULLSCREEN and ABOVE" fullscreen_above "$id"
    done

    seen="xprop -root _NET_ACTIVE_WINDOW" poll 10 "the lock window $lock is the active window" is_active "$lock"
    focus="$(xutil input-focus)"
    xutil is-inside "$focus" "$lock" || fail "the keyboard focus is on $focus, not in the lock window $lock"
    poll 10 "the keyboard is grabbed (a test client could still grab it while the lock is up)" \
        xutil keyboard-grabbed
}

# Accessibility: the program's widgets become readable and pressable by their texts
# (a11y.py). Call before start_velmora; needs python3-pyatspi.
start_accessibility() {
    "$VELMORA_IT_PYTHON" -c 'import pyatspi' 2>/dev/null ||
        fail "python3-pyatspi is not installed (apt-get install python3-pyatspi)"
    [ -x /usr/libexec/at-spi-bus-launcher ] || fail "at-spi2-core is not installed"
    # The launcher leaves its bus daemon and registry behind when it is ended, so it runs
    # in a session of its own, and ending the helper ends that whole session.
    # shellcheck disable=SC2016  # expanded by the inner shell
    start_helper setsid bash -c '
        others() {
            local p stat
            for p in /proc/[0-9]*; do
                [ "${p#/proc/}" != $$ ] && read -r stat <"$p/stat" 2>/dev/null || continue
                set -- ${stat##*) }
                [ "$4" = $$ ] && [ "$1" != Z ] && return 0
            done
            return 1
        }
        trap "trap \"\" TERM; kill -TERM 0; wait; while others; do sleep 0.05; done; exit 0" TERM
        /usr/libexec/at-spi-bus-launcher --launch-immediately &
        wait'
    # Asking org.a11y.Bus itself before the launcher owns the name would have the session
    # bus start a second launcher, outside the helper's session.
    a11y_bus_owned() {
        dbus-send --session --print-reply --dest=org.freedesktop.DBus /org/freedesktop/DBus \
            org.freedesktop.DBus.NameHasOwner string:org.a11y.Bus | grep -q 'boolean true'
    }
    poll 10 "the accessibility bus is up" a11y_bus_owned
    export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
    it_a11y=1
}

# a11y has KIND TEXT | names KIND | press TEXT | center TEXT | field | dump  (see a11y.py)
a11y() { "$VELMORA_IT_PYTHON" "$(dirname "${BASH_SOURCE[0]}")/a11y.py" "$VELMORA_PID" "$@"; }
