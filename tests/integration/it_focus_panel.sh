#!/usr/bin/env bash
# The tray panel as a screen reader and a keyboard user meet it: every row is a button
# on the accessibility bus, named by what it says; pressing a focus row through the bus
# opens its start dialog, and Tab and Return reach and press the rows.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

[ -x "${VELMORA_PREFS:-}" ] || fail "VELMORA_PREFS ('${VELMORA_PREFS:-}') is not the velmora-prefs tool"
prefs() { "$VELMORA_PREFS" "$VELMORA_CONF" "$@"; }

day="$(date -d tomorrow +%F)"
prefs set-string kUserdefaultsSelectedJson '{"morningHabits": [], "startTime": "07:00", "shutOffTime": "22:00"}'
prefs set-bool kUserdefaultsFirstRun true
prefs set-date UserdefaultsLastHabitShowDate "$day 07:00:00"

start_accessibility
start_velmora "$day 10:00:00"
poll 30 "the status icon is embedded in the tray" xutil tray-icons velmora
icon="$(xutil tray-icons velmora | head -n1 | cut -d' ' -f1)"

open_panel() {
    a11y has button "Preferences" && return 0
    xdotool mousemove --window "$(($icon))" 10 10 click 1
    sleep 0.5
    a11y has button "Preferences"
}
rows=("Meetings" "Complete anarchy! Block nothing 😬" "Start Pomodoro Mode" "Preferences"
      "Export Statistics" "Check for updates" "Enable office mode" "Quit")

seen="a11y names button" poll 20 "the panel opens from the tray icon with its rows on the accessibility bus" open_panel
screenshot 1-panel
for row in "${rows[@]}"; do
    a11y has button "$row" || fail "the panel has no button named \"$row\" (buttons: $(a11y names button | tr '\n' '|'))"
done

# A focus row pressed through the bus opens its start dialog.
a11y press "Meetings" || fail "the Meetings row could not be pressed"
seen="a11y names label" poll 10 "the start dialog of Meetings is up" a11y has label "Starting Focus type - Meetings"
a11y press "Start Focus" || fail "Start Focus could not be pressed"
poll 10 "the block started" grep -q "focus mode Started until" "$VELMORA_LOG"

# While it runs the pomodoro row is gone; Return on the first row, the running one, aborts.
seen="a11y names button" poll 20 "the panel opens again" open_panel
! a11y has button "Start Pomodoro Mode" || fail "the pomodoro row is shown while a block runs"
xdotool key Return
seen="a11y names label" poll 10 "Return on the running row opens the abort dialog" \
    a11y has label "Aborting Focus type - Meetings"
a11y press "Cancel" || fail "the abort dialog's Cancel could not be pressed"

# Tab walks the rows in order: Meetings, the default type, Preferences (the pomodoro row
# is hidden), and Return presses the one reached.
seen="a11y names button" poll 20 "the panel opens a third time" open_panel
xdotool key Tab Tab Return
poll 10 "Tab, Tab, Return opens the preferences" mapped_titled "Velmora preferences"
