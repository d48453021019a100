#!/usr/bin/env bash
# A private desktop session for the integration tests: Xvfb with two monitors side by side,
# a D-Bus session bus, openbox, tint2 with its system tray, and a PulseAudio server with a
# null source called "mic". Every piece lives in its own temporary folder, so two sessions
# can run at the same time, and nothing of the real user's (or root's) setup is touched.
#
#   session.sh COMMAND [ARG...]   start the session, run COMMAND inside it, tear down,
#                                 and exit with COMMAND's status
#   . session.sh                  start the session in the current shell; it is torn
#                                 down when that shell exits
#
# Inside the session: DISPLAY, DBUS_SESSION_BUS_ADDRESS, PULSE_SERVER, a private HOME and
# XDG_{CONFIG,DATA,CACHE,RUNTIME}_HOME/DIR, VELMORA_IT_DIR (scratch space),
# VELMORA_IT_PYTHON and VELMORA_IT_XUTIL (X11 queries: "$VELMORA_IT_PYTHON" "$VELMORA_IT_XUTIL" ...).
#
# Every process started inside inherits VELMORA_IT_SESSION; at tear-down whatever still
# carries this session's value is ended, so a test that dies half-way leaves nothing behind.
# All daemons run in the foreground as children of this shell (none daemonises), so that a
# test runner that kills the process tree on a timeout also reaches them.
#
# Set VELMORA_IT_KEEP=1 to keep the temporary folder; the daemons' logs are copied to
# $VELMORA_TEST_OUTPUT/session/ when that variable is set.

VS_HERE="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
VS_PIDS=()
VS_DIR=""

vs_log() { echo "session: $*" >&2; }

# Polls COMMAND until it succeeds or SECONDS have passed.
vs_poll() {
    local seconds=$1; shift
    local deadline=$((SECONDS + seconds))
    until "$@" >/dev/null 2>&1; do
        [ "$SECONDS" -lt "$deadline" ] || return 1
        sleep 0.1
    done
}

# True while PID runs: a child that has exited but not been waited for is a zombie (Z).
vs_alive() {
    local stat
    stat="$(cat "/proc/$1/stat" 2>/dev/null)" && [ -n "$stat" ] && [[ "$stat" != *") Z "* && "$stat" != *") X "* ]]
}

# Starts a daemon in the background as a child of this shell and remembers it.
vs_spawn() {
    local name=$1; shift
    "$@" >"$VS_DIR/logs/$name.log" 2>&1 </dev/null &
    VS_PIDS+=("$!")
}

vs_fail() {
    vs_log "FAIL: $*"
    local f
    for f in "$VS_DIR"/logs/*.log; do
        [ -s "$f" ] || continue
        vs_log "--- $(basename "$f") (last lines)"
        tail -n 15 "$f" >&2
    done
    return 1
}

vs_start_x() {
    local fd_file="$VS_DIR/display-number"
    # -displayfd lets the server take the first free display number itself, which is
    # race-free when several sessions start at once; -noreset keeps the monitors below
    # when the last client disconnects.
    "$VS_DIR/xvfb-launch" &
    VS_PIDS+=("$!")
    vs_poll 20 grep -q '^[0-9]' "$fd_file" || { vs_fail "Xvfb did not report a display"; return 1; }
    DISPLAY=":$(head -n1 "$fd_file")"
    export DISPLAY
    vs_poll 10 xdpyinfo || { vs_fail "Xvfb on $DISPLAY does not accept clients"; return 1; }

    # Two monitors of 1280x800 side by side. The server's only output goes to the left one,
    # so that, as on a real machine with two monitors, clients see exactly two screens;
    # a monitor without outputs would leave the output's own 2560x800 monitor in the list.
    local output
    output="$(xrandr --query | awk '/ connected/ { print $1; exit }')"
    xrandr --setmonitor LEFT 1280/340x800/210+0+0 "${output:-none}" >/dev/null &&
        xrandr --setmonitor RIGHT 1280/340x800/210+1280+0 none ||
        { vs_fail "xrandr could not set up the monitors"; return 1; }
    [ "$(xrandr --listmonitors | head -n1)" = "Monitors: 2" ] ||
        { vs_fail "expected two monitors, xrandr lists: $(xrandr --listmonitors | tr '\n' ' ')"; return 1; }
}

vs_start_dbus() {
    local address="unix:path=$VS_DIR/bus"
    vs_spawn dbus dbus-daemon --session --nofork --nopidfile --address="$address"
    export DBUS_SESSION_BUS_ADDRESS="$address"
    vs_poll 10 dbus-send --session --dest=org.freedesktop.DBus --type=method_call --print-reply \
        /org/freedesktop/DBus org.freedesktop.DBus.GetId ||
        { vs_fail "the D-Bus session bus did not come up"; return 1; }
}

vs_start_pulse() {
    export PULSE_RUNTIME_PATH="$XDG_RUNTIME_DIR/pulse"
    export PULSE_SERVER="unix:$PULSE_RUNTIME_PATH/native"
    # Clients must never spawn a server of their own (it would outlive the session).
    export PULSE_CLIENTCONFIG="$VS_DIR/pulse-client.conf"
    echo "autospawn = no" >"$PULSE_CLIENTCONFIG"
    mkdir -p "$PULSE_RUNTIME_PATH" && chmod 700 "$PULSE_RUNTIME_PATH"
    vs_spawn pulseaudio pulseaudio -n --daemonize=no --use-pid-file=no --exit-idle-time=-1 \
        --log-target=stderr --load=module-native-protocol-unix \
        --load="module-null-source source_name=mic"
    vs_poll 15 pactl info || { vs_fail "PulseAudio did not come up"; return 1; }
    pactl list short sources | grep -q $'\tmic\t' ||
        { vs_fail "PulseAudio has no source called mic"; return 1; }
}

vs_start_openbox() {
    vs_spawn openbox openbox --sm-disable
    vs_poll 15 sh -c 'xprop -root _NET_SUPPORTING_WM_CHECK | grep -q "window id"' ||
        { vs_fail "openbox did not take over the screen"; return 1; }
}

vs_start_tint2() {
    cat >"$VS_DIR/tint2rc" <<'EOF'
# A bottom panel on the first monitor with a task bar and a system tray.
panel_items = TS
panel_monitor = 1
panel_position = bottom center horizontal
panel_size = 100% 32
panel_layer = top
strut_policy = follow_size
wm_menu = 0
systray_padding = 4 4 4
systray_icon_size = 24
systray_monitor = 1
taskbar_mode = single_desktop
EOF
    vs_spawn tint2 tint2 -c "$VS_DIR/tint2rc"
    vs_poll 15 "$VELMORA_IT_PYTHON" "$VELMORA_IT_XUTIL" tray-owner ||
        { vs_fail "tint2 did not take the system tray selection"; return 1; }
}

# A session killed outright (a test runner's timeout sends KILL) cannot clean up after
# itself: remove folders of earlier sessions that no running process belongs to any more.
vs_sweep_stale() {
    local live dir
    live="$(cat /proc/[0-9]*/environ 2>/dev/null | tr '\0' '\n' | sed -n 's/^VELMORA_IT_SESSION=//p' | sort -u)"
    for dir in "${TMPDIR:-/tmp}"/velmora-it.*; do
        [ -d "$dir" ] || continue
        grep -qxF "$dir" <<<"$live" && continue
        # young folders may belong to a session that is still starting its first daemon
        [ -n "$(find "$dir" -maxdepth 0 -mmin +2)" ] && rm -rf "$dir"
    done
    return 0
}

vs_start() {
    local tool
    for tool in Xvfb xrandr xdpyinfo xprop dbus-daemon dbus-send pulseaudio pactl openbox tint2; do
        command -v "$tool" >/dev/null || { vs_log "FAIL: $tool is not installed (scripts/install-deps.sh)"; return 1; }
    done
    export VELMORA_IT_PYTHON=/usr/bin/python3
    export VELMORA_IT_XUTIL="$VS_HERE/xutil.py"
    "$VELMORA_IT_PYTHON" -c 'import Xlib' 2>/dev/null ||
        { vs_log "FAIL: python3-xlib is not installed (scripts/install-deps.sh)"; return 1; }

    vs_sweep_stale
    VS_DIR="$(mktemp -d "${TMPDIR:-/tmp}/velmora-it.XXXXXX")" || return 1
    mkdir -p "$VS_DIR"/{home,config,data,cache,runtime,logs,scratch}
    chmod 700 "$VS_DIR/runtime"
    export VELMORA_IT_SESSION="$VS_DIR"
    export VELMORA_IT_DIR="$VS_DIR/scratch"
    export HOME="$VS_DIR/home"
    export XDG_CONFIG_HOME="$VS_DIR/config"
    export XDG_DATA_HOME="$VS_DIR/data"
    export XDG_CACHE_HOME="$VS_DIR/cache"
    export XDG_RUNTIME_DIR="$VS_DIR/runtime"
    export XDG_SESSION_TYPE=x11
    export QT_QPA_PLATFORM=xcb
    export QTWEBENGINE_DISABLE_SANDBOX=1
    # Nothing of the surrounding desktop may leak in: no Wayland, no desktop-specific
    # platform theme (which could route the tray icon over D-Bus), no configuration server.
    unset WAYLAND_DISPLAY XDG_CURRENT_DESKTOP DESKTOP_SESSION QT_QPA_PLATFORMTHEME \
        XAUTHORITY SESSION_MANAGER VELMORA_CONFIG_SERVER

    # Xvfb writes its display number to fd 3 once it accepts connections.
    cat >"$VS_DIR/xvfb-launch" <<EOF
#!/bin/sh
exec Xvfb -displayfd 3 -screen 0 2560x800x24 +extension RANDR -nolisten tcp -noreset \\
    3>"$VS_DIR/display-number" >"$VS_DIR/logs/Xvfb.log" 2>&1 </dev/null
EOF
    chmod +x "$VS_DIR/xvfb-launch"

    vs_start_x && vs_start_dbus && vs_start_pulse && vs_start_openbox && vs_start_tint2 || return 1
    vs_log "up on $DISPLAY in $VS_DIR"
}

# Ends PIDS with TERM, then KILL whatever is still there after a few seconds.
vs_end() {
    local pid deadline
    [ $# -gt 0 ] || return 0
    for pid in "$@"; do kill -TERM "$pid" 2>/dev/null; done
    deadline=$((SECONDS + 5))
    for pid in "$@"; do
        while vs_alive "$pid" && [ "$SECONDS" -lt "$deadline" ]; do sleep 0.05; done
        if vs_alive "$pid"; then
            vs_log "pid $pid ($(cat "/proc/$pid/comm" 2>/dev/null)) ignored TERM, killing it"
            kill -KILL "$pid" 2>/dev/null
        fi
    done
    for pid in "$@"; do wait "$pid" 2>/dev/null; done
    return 0
}

# Processes started inside this session, other than this shell and its daemons.
vs_strays() {
    local entry pid daemon skip
    for entry in /proc/[0-9]*; do
        pid=${entry#/proc/}
        # this shell, and the subshell that runs this function
        [ "$pid" = "$$" ] || [ "$pid" = "$BASHPID" ] && continue
        skip=""
        for daemon in "${VS_PIDS[@]}"; do [ "$pid" = "$daemon" ] && skip=1; done
        [ -n "$skip" ] && continue
        grep -qzxF "VELMORA_IT_SESSION=$VS_DIR" "$entry/environ" 2>/dev/null && vs_alive "$pid" && echo "$pid"
    done
}

vs_teardown() {
    [ -n "$VS_DIR" ] || return 0
    local strays i
    # shellcheck disable=SC2207
    strays=($(vs_strays))
    if [ ${#strays[@]} -gt 0 ]; then
        vs_log "ending what the test left running: $(for p in "${strays[@]}"; do printf '%s(%s) ' "$p" "$(cat /proc/"$p"/comm 2>/dev/null)"; done)"
        vs_end "${strays[@]}"
    fi
    # Reverse order of start: the tray and window manager go before the X server.
    for ((i = ${#VS_PIDS[@]} - 1; i >= 0; i--)); do
        vs_end "${VS_PIDS[i]}"
    done
    # shellcheck disable=SC2207
    strays=($(vs_strays))
    [ ${#strays[@]} -eq 0 ] || vs_end "${strays[@]}"

    if [ -n "${VELMORA_TEST_OUTPUT:-}" ]; then
        mkdir -p "$VELMORA_TEST_OUTPUT/session" && cp -f "$VS_DIR"/logs/*.log "$VELMORA_TEST_OUTPUT/session/" 2>/dev/null
    fi
    if [ "${VELMORA_IT_KEEP:-0}" = 1 ]; then
        vs_log "kept $VS_DIR"
    else
        rm -rf "$VS_DIR"
    fi
    VS_DIR=""
    VS_PIDS=()
}

if [ "${BASH_SOURCE[0]}" != "$0" ]; then
    # Sourced: the session lasts as long as the calling shell.
    trap vs_teardown EXIT
    vs_start || { vs_teardown; return 1; }
    return 0
fi

set -uo pipefail
if [ $# -eq 0 ]; then
    echo "usage: $0 COMMAND [ARG...]   or   . $0" >&2
    exit 2
fi

vs_status=0
vs_child=""
# shellcheck disable=SC2317  # invoked by the traps below
vs_on_signal() {
    vs_status=$((128 + $1))
    [ -n "$vs_child" ] && kill -TERM "$vs_child" 2>/dev/null
    exit "$vs_status"
}
trap 'vs_teardown; exit $vs_status' EXIT
trap 'vs_on_signal 1' HUP
trap 'vs_on_signal 2' INT
trap 'vs_on_signal 15' TERM

if ! vs_start; then
    vs_status=1
    exit 1
fi
# In the background, so that a signal to this shell is handled at once.
"$@" &
vs_child=$!
wait "$vs_child"
vs_status=$?
vs_child=""
exit "$vs_status"
