#!/usr/bin/env bash
# A focus block from the pomodoro window a restart owes the user (the morning routine was
# given up before it), and the tray panel around it as a screen reader and a keyboard user
# meet it. The window comes up at launch; the panel's rows are buttons on the accessibility
# bus named by what they say. "Let's do it" starts a 25-minute block of the first type and
# the tray icon takes the type's colour. The type allows only Alpha: Beta is iconified each
# time it comes to the front and reported by one notification for the whole block. While
# the block runs the pomodoro row is gone, Return on the running row opens its abort
# dialog, and Tab and Return reach and press the rows.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/item_apps.sh"

morning_done '{"morningHabits": [{"name": "Water", "durationSeconds": 120}], "startTime": "07:00", "shutOffTime": "22:00"}'
item_apps_entries
prefs set-list kUserdefaultsArrFocusTypes \
    "[{\"name\": \"Deep\", \"color\": \"3366CC\", \"appsArray\": [\"$XDG_DATA_HOME/applications/alpha.desktop\"], \"urlsArray\": []}]"
prefs set-bool kUserdefaultsShowPomodoroView true
start_accessibility
notifications="$VELMORA_IT_DIR/notifications.log"
dbus-monitor --session "interface='org.freedesktop.Notifications',member='Notify'" >"$notifications" 2>&1 &
it_helpers+=("$!")
start_velmora "$day 10:00:00"
tray_icon

seen="a11y names button" poll 20 "the pomodoro window offers \"Let's do it\"" a11y has button "Let's do it"
a11y has label "It's time to focus" || fail "the pomodoro window lacks its title"
! grep -q "kUserdefaultsShowPomodoroView" "$VELMORA_CONF" || fail "the marker was not removed at launch"
open_panel
for row in Deep "Start Pomodoro Mode" Preferences "Export Statistics" "Check for updates" "Enable office mode" Quit; do
    a11y has button "$row" || fail "the panel has no button named \"$row\" (buttons: $(a11y names button | tr '\n' '|'))"
done
xdotool key Escape
panel_gone() { ! a11y has button "Preferences"; }
poll 5 "Escape closes the panel" panel_gone

a11y press "Let's do it" || fail "\"Let's do it\" could not be pressed"
poll 10 "the block started" grep -q "pomodoro mode Started" "$VELMORA_LOG"
grep -q "focus mode Started until - 10:25 AM" "$VELMORA_LOG" || fail "the block does not end at 10:25 AM"
pomodoro_gone() { ! a11y has button "Let's do it"; }
seen="a11y names button" poll 10 "the pomodoro window is gone" pomodoro_gone
icon_coloured() { xutil colours "$icon" | grep -q "^$1 "; }
seen="xutil colours $icon" poll 10 "the tray icon shows the type's colour 3366CC" icon_coloured 3366CC

start_helper "$VELMORA_IT_PYTHON" "$it_here/testwin.py" Alpha
poll 10 "Alpha's window exists" xdotool search --class '^Alpha$'
alpha="$(xdotool search --class '^Alpha$' | head -n1)"
start_helper "$VELMORA_IT_PYTHON" "$it_here/testwin.py" Beta
beta_hidden_alpha_stays
reports="$(grep -c "string \"Beta isn't allowed in the Deep focus mode.\"" "$notifications" || true)"
[ "$reports" = 1 ] || fail "Beta was reported $reports times, not once: $(grep -A4 Notify "$notifications")"

open_panel
! a11y has button "Start Pomodoro Mode" || fail "the pomodoro row is shown while a block runs"
xdotool key Return
seen="a11y names label" poll 10 "Return on the running row opens the abort dialog" \
    a11y has label "Aborting Focus type - Deep"
a11y press "Cancel" || fail "the abort dialog's Cancel could not be pressed"
# Tab walks the rows in order from the first one; Return presses the one reached.
open_panel
rows_before="$(a11y names button | grep -nxm1 Preferences | cut -d: -f1)"
xdotool key $(printf 'Tab %.0s' $(seq 2 "$rows_before")) Return
poll 10 "Tab to the Preferences row and Return open the preferences" mapped_titled "Velmora preferences"
