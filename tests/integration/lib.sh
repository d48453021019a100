# Helpers of the integration scripts, sourced inside a session (session.sh) under set -euo
# pipefail. VELMORA_BIN is the program, VELMORA_PREFS velmora-prefs (prefs_tool.cpp).

it_name="$(basename "$0" .sh)"
it_here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
VELMORA_TEST_OUTPUT="${VELMORA_TEST_OUTPUT:-$PWD/test-output/$it_name}"
mkdir -p "$VELMORA_TEST_OUTPUT"
[ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && [ -n "${VELMORA_IT_SESSION:-}" ] || { echo "FAIL: run this inside session.sh" >&2; exit 1; }
[ -x "${VELMORA_BIN:-}" ] || { echo "FAIL: VELMORA_BIN ('${VELMORA_BIN:-}') is not a program" >&2; exit 1; }

VELMORA_PID=""
VELMORA_OUT="$VELMORA_TEST_OUTPUT/velmora.out"
VELMORA_LOG="$XDG_DATA_HOME/velmora/Debug_Logs.txt"
VELMORA_CONF="$XDG_CONFIG_HOME/velmora/velmora.conf"
VELMORA_STATS="$XDG_DATA_HOME/velmora/vlmrStats.csv"
day="$(date -d tomorrow +%F)"
it_helpers=()

note() { echo "$it_name: $*"; }
xutil() { "$VELMORA_IT_PYTHON" "$VELMORA_IT_XUTIL" "$@"; }
screenshot() { xutil screenshot "$VELMORA_TEST_OUTPUT/$1.png"; }

fail() {
    echo "FAIL: $*" >&2
    set +e
    trap - ERR
    screenshot failure
    local what
    for what in "xwininfo -root -tree" "xprop -root _NET_CLIENT_LIST_STACKING _NET_ACTIVE_WINDOW" \
        "pactl list short source-outputs" "cat $VELMORA_CONF" "cat $VELMORA_LOG" "${QT_LINUX_ACCESSIBILITY_ALWAYS_ON:+a11y dump}"; do
        echo "== $what" && $what
    done >"$VELMORA_TEST_OUTPUT/failure-state.txt" 2>&1
    tail -n 20 "$VELMORA_OUT" "$VELMORA_LOG" >&2
    echo "--- the desktop in $VELMORA_TEST_OUTPUT/failure-state.txt" >&2
    exit 1
}

# kill -0 would also succeed on a child that has exited but not been waited for.
alive() {
    local stat
    stat="$(cat "/proc/$1/stat" 2>/dev/null)" && [ -n "$stat" ] && [[ "$stat" != *") Z "* && "$stat" != *") X "* ]]
}
velmora_running() { [ -n "$VELMORA_PID" ] && alive "$VELMORA_PID"; }

# poll SECONDS WHAT COMMAND...: runs COMMAND until it succeeds; fails the test after SECONDS,
# or at once when the program exits meanwhile; adds what the command in `seen` prints.
poll() {
    local deadline=$((SECONDS + $1)) what=$2
    shift 2
    until "$@" >/dev/null 2>&1; do
        [ -z "$VELMORA_PID" ] || velmora_running || { wait_exit 0; fail "the program exited (status $status) while waiting for: $what"; }
        [ "$SECONDS" -lt "$deadline" ] || fail "still not: $what${seen:+ (seen: $(eval "$seen" 2>&1 | tr '\n' ' '))}"
        sleep 0.2
    done
}

prefs() {
    [ -x "${VELMORA_PREFS:-}" ] || fail "VELMORA_PREFS ('${VELMORA_PREFS:-}') is not the velmora-prefs tool"
    "$VELMORA_PREFS" "$VELMORA_CONF" "$@"
}

# A day whose first run and morning routine are behind it, with SETTINGS (a JSON document).
morning_done() {
    local settings='{"morningHabits": [], "startTime": "07:00", "shutOffTime": "22:00"}'
    prefs set-string kUserdefaultsSelectedJson "${1:-$settings}"
    prefs set-bool kUserdefaultsFirstRun true
    prefs set-date UserdefaultsLastHabitShowDate "$day 07:00:00"
}

# The night before $day 07:00 behind the user too: summary, evening routine and shut-off lock.
night_done() {
    local key
    prefs set-bool kUserdefaultsFirstRun true
    prefs set-bool kUserdefaultsPromptToRememberHabit false
    for key in kUserdefaultsFocusSummaryShowedTillDate kUserdefaultsEveningHabitsShowedTillDate \
        kUserdefaultsShutdownAborted; do
        prefs set-date "$key" "$day 07:00:00"
    done
}

# systemctl as the program sees it: it records its calls, and the user manager is STATE.
fake_systemctl() {
    mkdir -p "$VELMORA_IT_DIR/bin"
    printf '#!/bin/sh\necho "$*" >>"%s"\ncase "$*" in *is-system-running*) echo %s ;; esac\n' \
        "$VELMORA_IT_DIR/systemctl.log" "$1" >"$VELMORA_IT_DIR/bin/systemctl"
    chmod +x "$VELMORA_IT_DIR/bin/systemctl"
    rm -f "$VELMORA_IT_DIR/systemctl.log"
}
fake_systemctl offline
export PATH="$VELMORA_IT_DIR/bin:$PATH"

# start_velmora [LOCAL-TIME]: the program in the background, its clock starting at
# LOCAL-TIME ("2026-11-24 06:59:52") when given.
start_velmora() {
    local env=() libs offset
    if [ $# -gt 0 ]; then
        libs=(/usr/lib/*/faketime/libfaketimeMT.so.1)
        [ -e "${libs[0]}" ] || fail "libfaketime is not installed (package faketime)"
        # An offset rather than a start time gives the program's helper processes the
        # same clock; timers keep the real monotonic clock.
        offset=$(($(date -d "$1" +%s) - $(date +%s)))
        [ "$offset" -lt 0 ] || offset="+$offset"
        env=(LD_PRELOAD="${libs[0]}" FAKETIME="$offset" FAKETIME_DONT_FAKE_MONOTONIC=1)
    fi
    env "${env[@]}" "$VELMORA_BIN" >>"$VELMORA_OUT" 2>&1 &
    VELMORA_PID=$!
}

# wait_exit SECONDS: waits for the program to end, with its exit status in $status.
wait_exit() {
    local deadline=$((SECONDS + $1))
    while velmora_running && [ "$SECONDS" -lt "$deadline" ]; do sleep 0.1; done
    velmora_running && fail "the program still runs after $1 s"
    status=0
    wait "$VELMORA_PID" 2>/dev/null || status=$?
    VELMORA_PID=""
}

# A program that does not end within ten seconds of TERM, or not by it, fails the test.
stop_velmora() {
    [ -n "$VELMORA_PID" ] || return 0
    local ours=false # the status of a copy that a desktop entry started is not ours to see
    [ "$(ps -o ppid= -p "$VELMORA_PID" | tr -d ' ')" != "$$" ] || ours=true
    kill -TERM "$VELMORA_PID" 2>/dev/null || true
    wait_exit 10
    ! $ours || [ "$status" -eq 143 ] || fail "TERM ended the program with status $status, not 143"
}

# The program of this session (not of another test running the same binary), and not a
# child it forks for a command (which runs our binary until it execs).
session_velmora() {
    local p bin parent
    bin="$(readlink -f "$VELMORA_BIN")"
    for p in /proc/[0-9]*; do
        [ "$(readlink "$p/exe")" = "$bin" ] || continue
        grep -qzxF "VELMORA_IT_SESSION=$VELMORA_IT_SESSION" "$p/environ" || continue
        parent="$(awk '/^PPid:/ {print $2}' "$p/status")"
        [ "$(readlink "/proc/$parent/exe")" != "$bin" ] && echo "${p#/proc/}" && return 0
    done 2>/dev/null
    return 1
}

# A helper process (a window, a recorder) that is ended with the script; its pid in $helper.
start_helper() {
    "$@" >>"$VELMORA_TEST_OUTPUT/helpers.out" 2>&1 &
    helper=$!
    it_helpers+=("$helper")
}
stop_helper() { kill -TERM "$1" 2>/dev/null || true; wait "$1" 2>/dev/null || true; }

it_cleanup() {
    local rc=$? pid
    set +e
    trap - ERR
    stop_velmora
    for pid in "${it_helpers[@]}"; do stop_helper "$pid"; done
    [ "$rc" -ne 0 ] || note "PASS"
}
trap it_cleanup EXIT

# Under set -e a step that fails outside a check would end the script without a word.
unexpected_failure() { [ "$BASHPID" != "$$" ] || fail "line $2: '$3' ended with status $1"; }
set -E
trap 'unexpected_failure $? $LINENO "$BASH_COMMAND"' ERR

# The mapped top-level windows titled exactly TITLE, as hex ids.
windows_titled() { xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | xargs -r printf '0x%x\n'; }
mapped_titled() { [ -n "$(windows_titled "$1")" ]; }

# WIDTHxHEIGHT+X+Y of a window, in root coordinates.
geometry_of() {
    xwininfo -id "$1" | awk '/Absolute upper-left X:/ { x = $NF } /Absolute upper-left Y:/ { y = $NF }
        /^ *Width:/ { w = $NF } /^ *Height:/ { h = $NF } END { printf "%sx%s+%s+%s\n", w, h, x, y }'
}

# The windows of a WINDOW-list property of the root, as decimal numbers.
root_windows() { xprop -root "$1" | sed -n 's/^.*window id # //p' | tr ',' '\n' | xargs -r printf '%d\n'; }
is_active() { [ "$(root_windows _NET_ACTIVE_WINDOW | head -n1)" = "$(($1))" ]; }

# True when every window after BELOW comes above it in _NET_CLIENT_LIST_STACKING.
stacked_above() {
    local order
    order=" $(root_windows _NET_CLIENT_LIST_STACKING | tr '\n' ' ')"
    [[ "$order" == *" $(($1)) "* ]] || return 1
    order=${order#*" $(($1)) "}
    shift
    for id in "$@"; do [[ " $order" == *" $((id)) "* ]] || return 1; done
}

# The user at work in an ordinary application window; its id in $ordinary.
ordinary_window() {
    start_helper xmessage -name ordinary -geometry 500x200+300+200 "An ordinary application window"
    poll 10 "the ordinary window is mapped" xdotool search --onlyvisible --classname '^ordinary$'
    ordinary="$(printf '0x%x' "$(xdotool search --onlyvisible --classname '^ordinary$' | head -n1)")"
}

# The lock as the user must meet it: one "Velmora lock" on the left monitor, one "Velmora
# blank" on the right, both full-screen and kept above, the lock active with the keyboard
# focus, and the keyboard grabbed so that no client (nor the window manager) can take it.
# Sets $lock and $blank.
check_lock_up() {
    local kind id
    for kind in lock:1280x800+0+0 blank:1280x800+1280+0; do
        poll 10 "a window titled 'Velmora ${kind%:*}' is mapped" mapped_titled "Velmora ${kind%:*}"
        id="$(windows_titled "Velmora ${kind%:*}")"
        [ "$(wc -l <<<"$id")" -eq 1 ] || fail "expected one 'Velmora ${kind%:*}' window, found $id"
        printf -v "${kind%:*}" %s "$id"
        seen="geometry_of $id" poll 10 "the ${kind%:*} window is at ${kind#*:}" geometry_is "$id" "${kind#*:}"
        seen="xprop -id $id _NET_WM_STATE" poll 10 "window $id is FULLSCREEN and ABOVE" fullscreen_above "$id"
    done
    seen="xprop -root _NET_ACTIVE_WINDOW" poll 10 "the lock window $lock is active" is_active "$lock"
    xutil focus-in "$lock" || fail "the keyboard focus is not in the lock window $lock"
    poll 10 "the keyboard is grabbed" xutil keyboard-grabbed
}
geometry_is() { [ "$(geometry_of "$1")" = "$2" ]; }
fullscreen_above() { xprop -id "$1" _NET_WM_STATE | grep FULLSCREEN | grep -q ABOVE; }

# The status icon in the tray; its window in $icon.
tray_icon() {
    poll 30 "the status icon is embedded in the tray" xutil tray-icons velmora
    icon="$(xutil tray-icons velmora | head -n1 | cut -d' ' -f1)"
}

# Opens the tray panel; clicks before start-up has finished are ignored, so click until
# its rows are on the accessibility bus.
panel_shown() {
    a11y has button Preferences || { xdotool mousemove --window "$(($icon))" 10 10 click 1 && sleep 0.5 && a11y has button Preferences; }
}
open_panel() { seen="a11y names button" poll 20 "the panel opens from the tray icon" panel_shown; }

# A focus type "Deep" that allows only Alpha's entry, with the block's questions shown; the
# program's notifications are recorded in $notifications from here on.
deep_allows_alpha() {
    prefs set-list kUserdefaultsArrFocusTypes \
        "[{\"name\": \"Deep\", \"color\": \"3366CC\", \"appsArray\": [\"$XDG_DATA_HOME/applications/alpha.desktop\"], \"urlsArray\": []}]"
    prefs set-bool kUserdefaultsShowPomodoroView true
    start_accessibility
    notifications="$VELMORA_IT_DIR/notifications.log"
    dbus-monitor --session "interface='org.freedesktop.Notifications',member='Notify'" >"$notifications" 2>&1 &
    it_helpers+=("$!")
}

# The program's widgets readable and pressable by their texts (a11y.py). Before start_velmora.
start_accessibility() {
    [ -x /usr/libexec/at-spi-bus-launcher ] || fail "at-spi2-core is not installed"
    # The launcher leaves its bus daemon and registry behind when ended, so it runs in a
    # session of its own, and ending the helper ends that whole session.
    start_helper setsid bash -c 'trap "trap \"\" TERM; kill -TERM 0; wait; exit 0" TERM
        /usr/libexec/at-spi-bus-launcher --launch-immediately & wait'
    # Asking org.a11y.Bus before the launcher owns it would have the bus start a second one.
    poll 10 "the accessibility bus is up" eval 'dbus-send --session --print-reply --dest=org.freedesktop.DBus \
        /org/freedesktop/DBus org.freedesktop.DBus.NameHasOwner string:org.a11y.Bus | grep -q "boolean true"'
    export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
}

# a11y has KIND TEXT | names KIND | press TEXT | center TEXT | field | dump  (see a11y.py)
a11y() { "$VELMORA_IT_PYTHON" "$it_here/a11y.py" "$VELMORA_PID" "$@"; }

