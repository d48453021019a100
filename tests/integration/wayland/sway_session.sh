#!/usr/bin/env bash
# A private headless sway for the Wayland integration tests: two outputs of different sizes
# (HEADLESS-1 1280x800 at 0,0 and HEADLESS-2 1024x768 at 1280,0), a D-Bus session bus, all in
# one temporary folder. sway refuses to run as root, so it runs as nobody in a folder of its
# own; the test and the program stay root and reach it by the socket's full path.
#
#   sway_session.sh COMMAND [ARG...]   runs COMMAND inside the session; exits with its status
#
# Exported for COMMAND: WAYLAND_DISPLAY, SWAYSOCK, SWAY_FIRED (a file the compositor's own
# test bindings append to when they fire), the private XDG folders and VELMORA_IT_SESSION.
set -uo pipefail
command -v sway >/dev/null && command -v grim >/dev/null && command -v wtype >/dev/null ||
    { echo "sway_session: sway, grim and wtype are needed (scripts/install-deps.sh)" >&2; exit 1; }

ws_dir="$(mktemp -d "${TMPDIR:-/tmp}/velmora-wl.XXXXXX")" || exit 1
ws_pids=()
ws_end() {
    local pid
    for pid in $(grep -lzxF "VELMORA_IT_SESSION=$ws_dir" /proc/[0-9]*/environ 2>/dev/null | cut -d/ -f3); do
        [ "$pid" = "$$" ] || kill -TERM "$pid" 2>/dev/null
    done
    for pid in "${ws_pids[@]}"; do kill -TERM "$pid" 2>/dev/null; wait "$pid" 2>/dev/null; done
    [ -z "${VELMORA_TEST_OUTPUT:-}" ] || { mkdir -p "$VELMORA_TEST_OUTPUT/session" && cp -f "$ws_dir"/logs/*.log "$VELMORA_TEST_OUTPUT/session/"; } 2>/dev/null
    [ "${VELMORA_IT_KEEP:-0}" = 1 ] && echo "sway_session: kept $ws_dir" >&2 || rm -rf "$ws_dir"
}
trap ws_end EXIT
trap 'exit 143' TERM INT HUP

mkdir -p "$ws_dir"/{home,config,data,cache,logs,scratch}
mkdir -m 700 "$ws_dir/runtime" "$ws_dir/sway"
chmod 755 "$ws_dir"
chown nobody:nogroup "$ws_dir/sway"
export SWAY_FIRED="$ws_dir/scratch/fired"
# The bindings a user reaches for to leave a lock: another workspace, another window, a
# terminal, a launcher. Each also writes to SWAY_FIRED, so that a test sees whether it fired.
cat >"$ws_dir/sway/config" <<CONF
output HEADLESS-1 resolution 1280x800 position 0 0
output HEADLESS-2 resolution 1024x768 position 1280 0
output * background #336699 solid_color
default_border none
focus_follows_mouse no
bindsym Mod4+2 exec echo workspace >>$SWAY_FIRED; workspace number 2
bindsym Mod4+1 exec echo workspace >>$SWAY_FIRED; workspace number 1
bindsym Mod1+Tab exec echo focus >>$SWAY_FIRED; focus next
bindsym Mod4+Return exec echo terminal >>$SWAY_FIRED
bindsym Mod4+d exec echo launcher >>$SWAY_FIRED
CONF
touch "$SWAY_FIRED" && chmod 666 "$SWAY_FIRED"
chmod 644 "$ws_dir/sway/config"

env -i PATH=/usr/bin:/bin HOME="$ws_dir/sway" XDG_RUNTIME_DIR="$ws_dir/sway" VELMORA_IT_SESSION="$ws_dir" \
    WLR_BACKENDS=headless WLR_LIBINPUT_NO_DEVICES=1 WLR_RENDERER=pixman WLR_HEADLESS_OUTPUTS=2 \
    setpriv --reuid=65534 --regid=65534 --clear-groups sway -c "$ws_dir/sway/config" \
    >"$ws_dir/logs/sway.log" 2>&1 </dev/null &
ws_pids+=("$!")
for _ in $(seq 100); do
    sock="$(find "$ws_dir/sway" -maxdepth 1 -name 'sway-ipc.*.sock' 2>/dev/null | head -n1)"
    [ -n "$sock" ] && [ -S "$ws_dir/sway/wayland-1" ] && break
    sleep 0.1
done
[ -n "${sock:-}" ] || { echo "sway_session: sway did not come up" >&2; tail -n 20 "$ws_dir/logs/sway.log" >&2; exit 1; }

export VELMORA_IT_SESSION="$ws_dir" VELMORA_IT_DIR="$ws_dir/scratch" HOME="$ws_dir/home" \
    XDG_CONFIG_HOME="$ws_dir/config" XDG_DATA_HOME="$ws_dir/data" XDG_CACHE_HOME="$ws_dir/cache" \
    XDG_RUNTIME_DIR="$ws_dir/runtime" XDG_SESSION_TYPE=wayland XDG_CURRENT_DESKTOP=sway \
    WAYLAND_DISPLAY="$ws_dir/sway/wayland-1" SWAYSOCK="$sock" QT_QPA_PLATFORM=wayland \
    QTWEBENGINE_DISABLE_SANDBOX=1 VELMORA_IT_PYTHON=/usr/bin/python3
unset DISPLAY QT_QPA_PLATFORMTHEME XAUTHORITY SESSION_MANAGER VELMORA_CONFIG_SERVER QT_WAYLAND_SHELL_INTEGRATION
export DBUS_SESSION_BUS_ADDRESS="unix:path=$ws_dir/bus"
dbus-daemon --session --nofork --nopidfile --address="$DBUS_SESSION_BUS_ADDRESS" >"$ws_dir/logs/dbus.log" 2>&1 &
ws_pids+=("$!")
for _ in $(seq 50); do [ -S "$ws_dir/bus" ] && break; sleep 0.1; done

"$@" &
child=$!
wait "$child"
exit $?
