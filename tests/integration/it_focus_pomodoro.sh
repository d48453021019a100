#!/usr/bin/env bash
# A restart owes the user the pomodoro window (the morning routine was given up before
# it): it comes up at launch, "Let's do it" starts a 25-minute block of the first type,
# and the tray icon takes the colour of the block's type. That type allows only Alpha:
# Beta is iconified each time it comes to the front and reported by one desktop
# notification for the whole block; Alpha stays.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/item_apps.sh"
. "$(dirname "$0")/focus_block.sh"

[ -x "${VELMORA_PREFS:-}" ] || fail "VELMORA_PREFS ('${VELMORA_PREFS:-}') is not the velmora-prefs tool"
prefs() { "$VELMORA_PREFS" "$VELMORA_CONF" "$@"; }

day="$(date -d tomorrow +%F)"
prefs set-string kUserdefaultsSelectedJson \
    '{"morningHabits": [{"name": "Water", "durationSeconds": 120}], "startTime": "07:00", "shutOffTime": "22:00"}'
prefs set-bool kUserdefaultsFirstRun true
prefs set-date UserdefaultsLastHabitShowDate "$day 07:00:00"
item_apps_entries
focus_block_prefs "[\"$XDG_DATA_HOME/applications/alpha.desktop\"]" '[]'
notifications="$VELMORA_IT_DIR/notifications.log"
dbus-monitor --session "interface='org.freedesktop.Notifications',member='Notify'" >"$notifications" 2>&1 &
it_helpers+=("$!")

start_velmora "$day 10:00:00"
poll 30 "the status icon is embedded in the tray" xutil tray-icons velmora
icon="$(xutil tray-icons velmora | head -n1 | cut -d' ' -f1)"

seen="a11y names button" poll 20 "the pomodoro window offers \"Let's do it\"" a11y has button "Let's do it"
a11y has label "It's time to focus" || fail "the pomodoro window lacks its title"
grep -q "kUserdefaultsShowPomodoroView" "$VELMORA_CONF" && fail "the marker was not removed at launch"
screenshot 1-pomodoro

focus_block_start
grep -q "focus mode Started until - 10:25 AM" "$VELMORA_LOG" || fail "the block does not end at 10:25 AM"
lets_do_it_gone() { ! a11y has button "Let's do it"; }
icon_coloured() { xutil colours "$icon" | grep -q "^$1 "; }
seen="a11y names button" poll 10 "the pomodoro window is gone" lets_do_it_gone
seen="xutil colours $icon" poll 10 "the tray icon shows the type's colour 3366CC" icon_coloured 3366CC

for name in Alpha Beta; do
    start_helper "$VELMORA_IT_PYTHON" "$(dirname "$0")/testwin.py" "$name"
    poll 10 "$name's window exists" xdotool search --class "^$name\$"
done
alpha="$(xdotool search --class '^Alpha$' | head -n1)"
beta="$(xdotool search --class '^Beta$' | head -n1)"
beta_hidden_alpha_stays
screenshot 2-beta-hidden
reports="$(grep -c "string \"Beta isn't allowed in the Deep focus mode.\"" "$notifications" || true)"
[ "$reports" = 1 ] || fail "Beta was reported $reports times, not once: $(grep -A4 Notify "$notifications")"
