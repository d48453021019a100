# Helpers of the Wayland integration scripts, sourced after ../lib.sh inside sway_session.sh.

wl_shot() { grim -o "$1" "$VELMORA_TEST_OUTPUT/$2.png"; }
screenshot() { local o; for o in $(outputs); do wl_shot "$o" "$1-$o"; done 2>/dev/null; }
outputs() { swaymsg -t get_outputs -r | "$VELMORA_IT_PYTHON" -c 'import json, sys
print("\n".join(o["name"] for o in json.load(sys.stdin) if o["active"]))'; }
tree() { swaymsg -t get_tree -r; }

# True when OUTPUT shows the lock: its background over most of the output, and nothing of
# the desktop (sway's background, the other windows' colours: FORBIDDEN, hex) anywhere.
covered() { # OUTPUT [FORBIDDEN...]
    grim -t ppm -o "$1" - | "$VELMORA_IT_PYTHON" -c '
import sys
data = sys.stdin.buffer.read()
parts = data.split(maxsplit=4)
w, h, pixels = int(parts[1]), int(parts[2]), parts[4]
count = {}
for i in range(0, w * h * 3, 3):
    rgb = pixels[i:i + 3]
    count[rgb] = count.get(rgb, 0) + 1
lock = bytes.fromhex("1e242b")
bad = [c for c in sys.argv[1:] if count.get(bytes.fromhex(c))]
share = count.get(lock, 0) / (w * h)
print(f"{w}x{h} lock share {share:.2f} desktop colours seen {bad}")
sys.exit(0 if share > 0.6 and not bad else 1)' "${@:2}"
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
