#!/usr/bin/env bash
# A private desktop for the integration tests: Xvfb with two 1280x800 monitors side by side,
# a D-Bus session bus, openbox, tint2 with its system tray and a PulseAudio server with a null
# source "mic", all in one temporary folder, so that two sessions can run at once and nothing
# of the real user's setup is touched.
#
#   session.sh COMMAND [ARG...]   run COMMAND inside a session; exits with its status
#   . session.sh                  a session in this shell, ended when the shell exits
# VELMORA_IT_KEEP=1 keeps the temporary folder; VELMORA_IT_DISPLAY=:N takes that display.
# Every process started inside carries VELMORA_IT_SESSION, and whatever still does is ended
# at tear-down. The daemons stay in the foreground as children of this shell, so a test
# runner that kills the process tree on a timeout reaches them too.

VS_HERE="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
VS_PIDS=()
VS_DIR=""

vs_log() { echo "session: $*" >&2; }

# A child that has exited but not been waited for is a zombie and does not count.
vs_alive() {
    local stat
    stat="$(cat "/proc/$1/stat" 2>/dev/null)" && [ -n "$stat" ] && [[ "$stat" != *") Z "* && "$stat" != *") X "* ]]
}

# vs_spawn NAME COMMAND...: a daemon in the background, logging to logs/NAME.log.
vs_spawn() {
    "${@:2}" >"$VS_DIR/logs/$1.log" 2>&1 </dev/null &
    VS_PIDS+=("$!")
}

# vs_up SECONDS WHAT COMMAND...: waits for a daemon to answer.
vs_up() {
    local deadline=$((SECONDS + $1)) what=$2
    shift 2
    until "$@" >/dev/null 2>&1; do
        [ "$SECONDS" -lt "$deadline" ] && sleep 0.1 && continue
        vs_log "FAIL: $what"
        tail -n 15 "$VS_DIR"/logs/*.log >&2
        return 1
    done
}

vs_start_x() {
    # -displayfd lets the server pick a free display itself (race-free with parallel
    # sessions); -noreset keeps the monitors when the last client leaves.
    Xvfb ${VELMORA_IT_DISPLAY:-} -displayfd 3 -screen 0 2560x800x24 +extension RANDR -nolisten tcp -noreset \
        3>"$VS_DIR/display-number" >"$VS_DIR/logs/Xvfb.log" 2>&1 </dev/null &
    VS_PIDS+=("$!")
    vs_up 20 "Xvfb did not report a display" grep -q '^[0-9]' "$VS_DIR/display-number" || return 1
    export DISPLAY=":$(head -n1 "$VS_DIR/display-number")"
    vs_up 10 "Xvfb on $DISPLAY does not accept clients" xdpyinfo || return 1
    # The server's only output goes to the left monitor, so that clients see exactly two
    # screens, as on a real machine.
    xrandr --setmonitor LEFT 1280/340x800/210+0+0 "$(xrandr | awk '/ connected/ { print $1; exit }')" >/dev/null &&
        xrandr --setmonitor RIGHT 1280/340x800/210+1280+0 none &&
        [ "$(xrandr --listmonitors | head -n1)" = "Monitors: 2" ] ||
        { vs_log "FAIL: no two monitors: $(xrandr --listmonitors | tr '\n' ' ')"; return 1; }
}

vs_start_daemons() {
    export DBUS_SESSION_BUS_ADDRESS="unix:path=$VS_DIR/bus"
    vs_spawn dbus dbus-daemon --session --nofork --nopidfile --address="$DBUS_SESSION_BUS_ADDRESS"
    vs_up 10 "the D-Bus session bus did not come up" dbus-send --session --dest=org.freedesktop.DBus \
        --type=method_call --print-reply /org/freedesktop/DBus org.freedesktop.DBus.GetId || return 1

    # A client must never spawn a server of its own: it would outlive the session.
    export PULSE_RUNTIME_PATH="$XDG_RUNTIME_DIR/pulse" PULSE_CLIENTCONFIG="$VS_DIR/pulse-client.conf"
    export PULSE_SERVER="unix:$PULSE_RUNTIME_PATH/native"
    echo "autospawn = no" >"$PULSE_CLIENTCONFIG"
    mkdir -m 700 "$PULSE_RUNTIME_PATH"
    vs_spawn pulseaudio pulseaudio -n --daemonize=no --use-pid-file=no --exit-idle-time=-1 \
        --log-target=stderr --load=module-native-protocol-unix --load="module-null-source source_name=mic"
    vs_up 15 "PulseAudio has no source called mic" sh -c 'pactl list short sources | cut -f2 | grep -qx mic' || return 1

    vs_spawn openbox openbox --sm-disable
    vs_up 15 "openbox did not take over the screen" sh -c 'xprop -root _NET_SUPPORTING_WM_CHECK | grep -q "window id"' || return 1

    # A bottom panel on the first monitor with a task bar and a system tray.
    printf '%s\n' "panel_items = TS" "panel_monitor = 1" "panel_position = bottom center horizontal" \
        "panel_size = 100% 32" "panel_layer = top" "strut_policy = follow_size" "wm_menu = 0" "systray_padding = 4 4 4" \
        "systray_icon_size = 24" "systray_monitor = 1" "taskbar_mode = single_desktop" >"$VS_DIR/tint2rc"
    vs_spawn tint2 tint2 -c "$VS_DIR/tint2rc"
    vs_up 15 "tint2 did not take the system tray selection" "$VELMORA_IT_PYTHON" "$VELMORA_IT_XUTIL" tray-owner
}

vs_start() {
    export VELMORA_IT_PYTHON=/usr/bin/python3 VELMORA_IT_XUTIL="$VS_HERE/xutil.py"

    # A session killed outright leaves its folder behind: remove those no process belongs
    # to any more (young ones may belong to a session still starting).
    local live dir
    live="$(cat /proc/[0-9]*/environ 2>/dev/null | tr '\0' '\n' | sed -n 's/^VELMORA_IT_SESSION=//p' | sort -u)"
    for dir in "${TMPDIR:-/tmp}"/velmora-it.*; do
        [ -d "$dir" ] && ! grep -qxF "$dir" <<<"$live" && [ -n "$(find "$dir" -maxdepth 0 -mmin +2)" ] && rm -rf "$dir"
    done

    VS_DIR="$(mktemp -d "${TMPDIR:-/tmp}/velmora-it.XXXXXX")" || return 1
    mkdir -p "$VS_DIR"/{home,config,data,cache,logs,scratch}
    mkdir -m 700 "$VS_DIR/runtime"
    export VELMORA_IT_SESSION="$VS_DIR" VELMORA_IT_DIR="$VS_DIR/scratch" HOME="$VS_DIR/home" \
        XDG_CONFIG_HOME="$VS_DIR/config" XDG_DATA_HOME="$VS_DIR/data" XDG_CACHE_HOME="$VS_DIR/cache" \
        XDG_RUNTIME_DIR="$VS_DIR/runtime" XDG_SESSION_TYPE=x11 QT_QPA_PLATFORM=xcb QTWEBENGINE_DISABLE_SANDBOX=1
    # Nothing of the surrounding desktop may leak in (a platform theme could route the tray
    # icon over D-Bus).
    unset WAYLAND_DISPLAY XDG_CURRENT_DESKTOP DESKTOP_SESSION QT_QPA_PLATFORMTHEME \
        XAUTHORITY SESSION_MANAGER VELMORA_CONFIG_SERVER
    vs_start_x && vs_start_daemons && vs_log "up on $DISPLAY in $VS_DIR"
}

# Ends PIDS with TERM, and with KILL what is still there after five seconds.
vs_end() {
    local pid deadline=$((SECONDS + 5))
    for pid in "$@"; do kill -TERM "$pid" 2>/dev/null; done
    for pid in "$@"; do
        while vs_alive "$pid" && [ "$SECONDS" -lt "$deadline" ]; do sleep 0.05; done
        vs_alive "$pid" && vs_log "pid $pid ($(cat "/proc/$pid/comm" 2>/dev/null)) ignored TERM" && kill -KILL "$pid"
        wait "$pid" 2>/dev/null
    done
    return 0
}

# Processes of this session other than this shell and its daemons.
vs_strays() {
    local entry pid
    for entry in /proc/[0-9]*; do
        pid=${entry#/proc/}
        [ "$pid" = "$$" ] || [ "$pid" = "$BASHPID" ] || [[ " ${VS_PIDS[*]} " == *" $pid "* ]] && continue
        grep -qzxF "VELMORA_IT_SESSION=$VS_DIR" "$entry/environ" 2>/dev/null && vs_alive "$pid" && echo "$pid"
    done
}

vs_teardown() {
    [ -n "$VS_DIR" ] || return 0
    local i
    # shellcheck disable=SC2046
    vs_end $(vs_strays)
    # The tray and window manager go before the X server.
    for ((i = ${#VS_PIDS[@]} - 1; i >= 0; i--)); do vs_end "${VS_PIDS[i]}"; done
    # shellcheck disable=SC2046
    vs_end $(vs_strays)
    [ -z "${VELMORA_TEST_OUTPUT:-}" ] || { mkdir -p "$VELMORA_TEST_OUTPUT/session" && cp -f "$VS_DIR"/logs/*.log "$VELMORA_TEST_OUTPUT/session/"; } 2>/dev/null
    [ "${VELMORA_IT_KEEP:-0}" = 1 ] && vs_log "kept $VS_DIR" || rm -rf "$VS_DIR"
    VS_DIR=""
    VS_PIDS=()
}

if [ "${BASH_SOURCE[0]}" != "$0" ]; then
    trap vs_teardown EXIT
    vs_start || { vs_teardown; return 1; }
    return 0
fi

set -uo pipefail
[ $# -gt 0 ] || { echo "usage: $0 COMMAND [ARG...]   or   . $0" >&2; exit 2; }
vs_status=1
vs_child=""
# shellcheck disable=SC2317  # invoked by the traps below
vs_on_signal() {
    vs_status=$((128 + $1))
    [ -z "$vs_child" ] || kill -TERM "$vs_child" 2>/dev/null
    exit "$vs_status"
}
trap 'vs_teardown; exit $vs_status' EXIT
for vs_signal in 1:HUP 2:INT 15:TERM; do trap "vs_on_signal ${vs_signal%:*}" "${vs_signal#*:}"; done
vs_start || exit 1
# In the background, so that a signal to this shell is handled at once.
"$@" &
vs_child=$!
wait "$vs_child"
vs_status=$?
vs_child=""
exit "$vs_status"
