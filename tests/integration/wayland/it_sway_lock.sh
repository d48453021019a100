#!/usr/bin/env bash
# The morning lock under sway with two outputs of different sizes: it covers both above an
# ordinary terminal; a workspace switch, a focus request for the terminal and sway's own
# bindings uncover nothing and fire nothing; typed keys stay with the lock; an output added
# while locked is covered; the release chord lifts the lock.
set -euo pipefail
. "$(dirname "$0")/../lib.sh"
. "$(dirname "$0")/wl_lib.sh"

prefs set-string kUserdefaultsSelectedJson '{"morningHabits": [{"name": "Water", "durationSeconds": 120}],
    "breakActivities": [], "breakAfterMinutes": 50, "startTime": "07:00", "shutOffTime": "22:00"}'
night_done
terminal foot aa0000
poll 5 "the terminal has the keyboard" eval '[ "$(focused_app)" = foot ]'
start_velmora "$day 06:59:56"
seen="tail -n 3 $VELMORA_LOG" poll 30 "the debug log has 'Showing morning habits.'" \
    grep -q "Showing morning habits\.\$" "$VELMORA_LOG"
grep -q "Lock: layer-shell overlay surfaces" "$VELMORA_LOG" || fail "the debug log does not say how the lock holds"
for output in HEADLESS-1 HEADLESS-2; do
    seen="covered $output 336699 aa0000" poll 10 "the lock covers $output" covered "$output" 336699 aa0000
done
wl_shot HEADLESS-1 locked-1280x800
wl_shot HEADLESS-2 locked-1024x768

# What a user tries: the compositor asked directly, then its bindings, then typing.
swaymsg workspace number 2 >/dev/null
swaymsg '[app_id=foot] focus' >/dev/null || true
keys -M logo 2 -m logo -M alt -k Tab -m alt -M logo -k Return -m logo -M logo d -m logo
keys "typed under the lock" -k Return
sleep 0.5
for output in HEADLESS-1 HEADLESS-2; do covered "$output" 336699 aa0000 >/dev/null || fail "$output is uncovered"; done
[ ! -s "$SWAY_FIRED" ] || fail "sway's bindings fired under the lock: $(tr '\n' ' ' <"$SWAY_FIRED")"
[ ! -s "$VELMORA_IT_DIR/typed-foot" ] || fail "the terminal received keys: $(cat "$VELMORA_IT_DIR/typed-foot")"
[ -z "$(focused_app)" ] || fail "the window $(focused_app) has the keyboard under the lock"

# A monitor plugged in while locked.
swaymsg create_output >/dev/null
poll 10 "the third output is there" eval 'outputs | grep -q HEADLESS-3'
seen="covered HEADLESS-3 336699" poll 10 "the new output is covered" covered HEADLESS-3 336699
wl_shot HEADLESS-3 locked-added

# The reset chord's command while locked: its question comes above the lock and answers
# the keyboard (Escape is its "No"); the lock stays.
"$VELMORA_BIN" --reset || fail "velmora --reset found no running instance to answer it"
seen="grim -t ppm -o HEADLESS-1 - | $VELMORA_IT_PYTHON $it_here/wayland/pixels.py --present efefef" \
    poll 10 "the reset question shows above the lock" eval "grim -t ppm -o HEADLESS-1 - | $VELMORA_IT_PYTHON $it_here/wayland/pixels.py --lock 0.5 --absent 336699 aa0000 --present efefef"
wl_shot HEADLESS-1 reset-question
keys -k Escape
seen="covered HEADLESS-1" poll 5 "Escape answers the question and the lock stays" covered HEADLESS-1 efefef 336699 aa0000

# Ctrl+Alt+Shift+Tab, the way out that needs no password.
keys -M ctrl -M alt -M shift -k Tab -m shift -m alt -m ctrl
seen="covered HEADLESS-1" poll 10 "the release chord lifts the lock" eval '! covered HEADLESS-1 >/dev/null'
wl_shot HEADLESS-1 released
swaymsg '[app_id=foot] focus' >/dev/null
keys "after" -k Return
poll 5 "the terminal takes typing again" grep -q after "$VELMORA_IT_DIR/typed-foot"
