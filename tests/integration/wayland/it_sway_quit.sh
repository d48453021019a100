#!/usr/bin/env bash
# The quit flow under sway: opened from the tray before the morning lock falls, it stays above
# the lock when the lock comes up, and takes typing there.
set -euo pipefail
. "$(dirname "$0")/../lib.sh"
. "$(dirname "$0")/wl_lib.sh"

morning_done '{"morningHabits": [{"name": "Water", "durationSeconds": 120}], "startTime": "07:00", "shutOffTime": "22:00"}'
prefs set-date UserdefaultsLastHabitShowDate "$(date -d "$day - 1 day" +%F) 07:00:00"
prefs set-date kUserdefaultsShutdownAborted "$day 07:00:00"
terminal foot aa0000
# sway's bar would host the tray; a watcher of our own stands in and tells where the item is.
items="$VELMORA_IT_DIR/tray-items"
start_helper "$VELMORA_IT_PYTHON" "$it_here/gnome/tray.py" "$items"
start_accessibility
start_velmora "$day 06:59:50"
poll 20 "the program's tray item registered" test -s "$items"
read -r item_name item_path <"$items"
panel_open() {
    a11y has button Quit || {
        gdbus call --session --dest "$item_name" --object-path "$item_path" \
            --method org.kde.StatusNotifierItem.Activate 0 0 >/dev/null && sleep 0.5 && a11y has button Quit
    }
}
seen="a11y names button" poll 20 "the panel opens from the tray item" panel_open
a11y press Quit || fail "the panel's Quit could not be pressed"
seen="a11y names label" poll 5 "the count-down starts" a11y has label "Quitting.."

seen="tail -n 3 $VELMORA_LOG" poll 30 "the morning lock comes up at 07:00" \
    grep -q "Showing morning habits\.\$" "$VELMORA_LOG"
seen="a11y names label" poll 15 "the reasons come after ten seconds" a11y has label "Can you share why you're quitting?"
# The lock covers the terminal; the quit window, which shares its dark face, is in the
# screenshot above it, and the typing below shows it holds the keyboard there.
covered HEADLESS-1 aa0000 >/dev/null || fail "the lock does not cover the terminal"
wl_shot HEADLESS-1 quit-above-lock
# A keyboard that stays, as a desktop has one: each wtype's keyboard goes when it ends, and
# with the seat's last keyboard gone Qt sees the focus leave and closes any open list.
start_helper wtype -s 3600000
# The reason box holds the keyboard focus. Its list opens above the lock and stays open while
# the arrow keys pass "I've got an emergency", which, taken, would disable the box.
keys -k F4
seen="a11y names row" poll 5 "the list of reasons opens" a11y has row "I've got an emergency"
keys -k Down -k Down
wl_shot HEADLESS-1 reasons-open
a11y has row "The app is broken" || fail "the list of reasons closed while the arrow keys moved in it"
keys -k Return
seen="a11y names label" poll 5 "'The app is broken' asks what happened" \
    a11y has label "Oh no! We're really sorry. Can you please let us know what happened?﹡"
keys "noon"
seen="a11y dump" poll 5 "the words typed reach the quit window" a11y has field noon
[ ! -s "$VELMORA_IT_DIR/typed-foot" ] || fail "the terminal received keys: $(cat "$VELMORA_IT_DIR/typed-foot")"
