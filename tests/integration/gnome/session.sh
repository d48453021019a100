# Sourced by the GNOME integration scripts: headless GNOME Shell 43 on Wayland with two
# monitors of different sizes (1280x800 and 1024x768 to its right), in a temporary folder with
# its own home, runtime folder and buses (the outer bus stands in for the system bus). A new
# login is gs_stop and gs_start again with the same home. The test extension in this folder
# (velmora-test@velmora) opens org.gnome.Shell.Eval and the screenshot service to the script.
gs_here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
gs_dir="$(mktemp -d /tmp/velmora-gnome.XXXXXX)"
mkdir -m 700 -p "$gs_dir/run" "$gs_dir/home" "$gs_dir/logs"
export HOME="$gs_dir/home" XDG_RUNTIME_DIR="$gs_dir/run" XDG_DATA_HOME="$gs_dir/home/.local/share"
export XDG_CONFIG_HOME="$gs_dir/home/.config" XDG_CACHE_HOME="$gs_dir/home/.cache"
export WAYLAND_DISPLAY="wayland-velmora" QT_QPA_PLATFORM=wayland GDK_BACKEND=wayland
unset DISPLAY XDG_CURRENT_DESKTOP XDG_SESSION_TYPE DBUS_SESSION_BUS_ADDRESS
# VELMORA_GNOME_ROOT: a root folder (debootstrap) whose GNOME Shell runs instead of this
# system's, sharing /tmp, where this folder and the buses' sockets are.
gs_root="${VELMORA_GNOME_ROOT:-}"
gs_major="$(${gs_root:+chroot "$gs_root"} gnome-shell --version | grep -o '[0-9]\+' | head -n1)"
gs_form=43
[ "$gs_major" -lt 45 ] || gs_form=45
mkdir -p "$XDG_DATA_HOME/gnome-shell/extensions/velmora-test@velmora"
cp "$gs_here/velmora-test@velmora/metadata.json" "$XDG_DATA_HOME/gnome-shell/extensions/velmora-test@velmora/"
sed -e "/^\/\/@$((88 - gs_form))/d" -e "s|^//@$gs_form \?||" "$gs_here/velmora-test@velmora/extension.js" \
    >"$XDG_DATA_HOME/gnome-shell/extensions/velmora-test@velmora/extension.js"
gs_pid="" gs_logins=0
gs_log() { echo "gnome-session: $*" >&2; }

# gs_eval JS: the value of JS inside the shell, as JSON.
gs_eval() {
    local out
    out="$(gdbus call --session --dest org.gnome.Shell --object-path /org/gnome/Shell \
        --method org.gnome.Shell.Eval "$1" 2>&1)" || { echo "$out" >&2; return 1; }
    [[ "$out" == "(true, "* ]] || { echo "$out" >&2; return 1; }
    out="${out#(true, \'}"
    printf '%s\n' "${out%\')}"
}

gs_start() {
    gs_logins=$((gs_logins + 1))
    rm -f "$gs_dir/bus"
    cat >"$gs_dir/login.sh" <<LOGIN
echo "\$DBUS_SESSION_BUS_ADDRESS" >"$gs_dir/bus.new"
case "\$(gsettings get org.gnome.shell enabled-extensions)" in
    *velmora-test@velmora*) ;;
    *) gsettings set org.gnome.shell enabled-extensions "['velmora-test@velmora']" ;;
esac
mv "$gs_dir/bus.new" "$gs_dir/bus"
exec gnome-shell --wayland --headless --no-x11 --wayland-display $WAYLAND_DISPLAY \\
    --virtual-monitor 1280x800 --virtual-monitor 1024x768
LOGIN
    local root=()
    [ -z "$gs_root" ] || root=(bwrap --bind "$gs_root" / --proc /proc --dev /dev --ro-bind /sys /sys --bind /tmp /tmp)
    setsid "${root[@]}" dbus-run-session -- sh -c 'export DBUS_SYSTEM_BUS_ADDRESS=$DBUS_SESSION_BUS_ADDRESS
        exec dbus-run-session -- sh "$1"' sh "$gs_dir/login.sh" >"$gs_dir/logs/shell-$gs_logins.log" 2>&1 </dev/null &
    gs_pid=$!
    local deadline=$((SECONDS + 30))
    until [ -s "$gs_dir/bus" ] && DBUS_SESSION_BUS_ADDRESS="$(cat "$gs_dir/bus")" gs_eval 'global.velmoraTest !== undefined' 2>/dev/null | grep -q true; do
        kill -0 "$gs_pid" 2>/dev/null && [ "$SECONDS" -lt "$deadline" ] || {
            gs_log "FAIL: GNOME Shell did not come up"; tail -n 20 "$gs_dir/logs/shell-$gs_logins.log" >&2; return 1; }
        sleep 0.2
    done
    export DBUS_SESSION_BUS_ADDRESS="$(cat "$gs_dir/bus")"
    until gs_eval 'global.velmoraTest.leaveOverview()' | grep -q true; do
        [ "$SECONDS" -lt "$deadline" ] || { gs_log "FAIL: the overview stays"; return 1; }
        sleep 0.2
    done
}

gs_stop() {
    [ -n "$gs_pid" ] || return 0
    kill -TERM -- "-$gs_pid" 2>/dev/null || true
    local deadline=$((SECONDS + 10))
    while kill -0 "$gs_pid" 2>/dev/null && [ "$SECONDS" -lt "$deadline" ]; do sleep 0.1; done
    kill -KILL -- "-$gs_pid" 2>/dev/null || true
    wait "$gs_pid" 2>/dev/null || true
    gs_pid=""
}

# Ends the script's own processes (gs_before_end, when it defines one), then the shell.
gs_end() {
    local status=$?
    set +e
    ! declare -F gs_before_end >/dev/null || gs_before_end
    gs_stop
    [ -n "${VELMORA_IT_KEEP:-}" ] || rm -rf "$gs_dir"
    exit "$status"
}
trap gs_end EXIT
