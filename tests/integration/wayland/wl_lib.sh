# Helpers of the Wayland integration scripts, sourced after ../lib.sh inside sway_session.sh.

wl_shot() { grim -o "$1" "$VELMORA_TEST_OUTPUT/$2.png"; }
screenshot() { local o; for o in $(outputs); do wl_shot "$o" "$1-$o"; done 2>/dev/null; }
outputs() { swaymsg -t get_outputs -r | "$VELMORA_IT_PYTHON" -c 'import json, sys
print("\n".join(o["name"] for o in json.load(sys.stdin) if o["active"]))'; }
tree() { swaymsg -t get_tree -r; }

# True when OUTPUT shows the lock over most of it and nothing of the desktop (sway's
# background, the other windows' colours: FORBIDDEN, hex) anywhere.
covered() { # OUTPUT [FORBIDDEN...]
    grim -t ppm -o "$1" - | "$VELMORA_IT_PYTHON" "$it_here/wayland/pixels.py" --lock 0.6 --absent "${@:2}"
}

# The app id of the focused window, empty for none (a layer surface holds the keyboard).
focused_app() { tree | "$VELMORA_IT_PYTHON" -c 'import json, sys
def walk(n):
    if n.get("focused") and n.get("app_id"): print(n["app_id"])
    for c in n.get("nodes", []) + n.get("floating_nodes", []): walk(c)
walk(json.load(sys.stdin))'; }

# True when a window of APP_ID sits in the scratchpad, out of sight.
in_scratchpad() { tree | "$VELMORA_IT_PYTHON" -c 'import json, sys
def walk(n, scratch):
    scratch = scratch or n.get("name") == "__i3_scratch"
    if n.get("app_id") == sys.argv[1] and scratch: sys.exit(0)
    for c in n.get("nodes", []) + n.get("floating_nodes", []): walk(c, scratch)
walk(json.load(sys.stdin), False); sys.exit(1)' "$1"; }

# A terminal window of APP_ID whose typed input lands in $VELMORA_IT_DIR/typed-APP_ID, its
# background COLOUR (hex) so that a screenshot tells it apart.
terminal() { # APP_ID COLOUR
    start_helper foot -a "$1" -o "colors.background=$2" sh -c "cat >$VELMORA_IT_DIR/typed-$1"
    poll 10 "the $1 window is mapped" eval "tree | grep -q '\"app_id\": \"$1\"'"
}

# wtype with a delay between keys: without one the first key of a call is dropped.
keys() { wtype -s 150 "$@"; }

# A KWin 5.27 nested in the sway, with two outputs, each full screen on one of sway's so that
# grim sees them. Its clients get WAYLAND_DISPLAY=$KWIN_DISPLAY; $fake_keys types to it
# through org_kde_kwin_fake_input, which a desktop entry grants.
kwin_up() {
    [ -x "${VELMORA_FAKE_KEYS:-}" ] && [ -x "${VELMORA_TESTWIN:-}" ] || fail "VELMORA_FAKE_KEYS and VELMORA_TESTWIN must be built"
    # The installed binary carries a file capability this sandbox refuses: run a copy.
    cp /usr/bin/kwin_wayland "$VELMORA_IT_DIR/kwin_wayland"
    mkdir -p "$XDG_DATA_HOME/applications"
    printf '[Desktop Entry]\nType=Application\nName=Fake keys\nNoDisplay=true\nExec=%s\nX-KDE-Wayland-Interfaces=org_kde_kwin_fake_input\n' \
        "$VELMORA_FAKE_KEYS" >"$XDG_DATA_HOME/applications/velmora-fake-keys.desktop"
    start_helper env -u QT_QPA_PLATFORM KWIN_COMPOSE=Q "$VELMORA_IT_DIR/kwin_wayland" --wayland-display "$WAYLAND_DISPLAY" \
        --no-lockscreen --width 1280 --height 800 --output-count 2 --socket kwin-test
    KWIN_DISPLAY="$XDG_RUNTIME_DIR/kwin-test"
    poll 20 "KWin's two outputs are windows in sway" eval '[ "$(kwin_outputs | wc -l)" = 2 ]'
    local outputs
    mapfile -t outputs < <(kwin_outputs)
    swaymsg "[con_id=${outputs[0]}] fullscreen enable" >/dev/null
    swaymsg "[con_id=${outputs[1]}] move to output HEADLESS-2, focus, fullscreen enable" >/dev/null
    sleep 1
}
kwin_outputs() { tree | "$VELMORA_IT_PYTHON" -c 'import json, sys
def walk(n):
    if (n.get("name") or "").startswith("KDE Wayland Compositor"): print(n["id"])
    for c in n.get("nodes", []) + n.get("floating_nodes", []): walk(c)
walk(json.load(sys.stdin))' | sort -n; }
on_kwin() { WAYLAND_DISPLAY="$KWIN_DISPLAY" "$@"; }
fake_keys() { on_kwin "$VELMORA_FAKE_KEYS" "$@"; }
