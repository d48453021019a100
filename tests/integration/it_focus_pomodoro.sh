#!/usr/bin/env bash
# A restart owes the user the pomodoro window (the morning routine was given up before
# it): it comes up at launch, "Let's do it" starts a 25-minute block, and the tray icon
# takes the colour of the block's type.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

[ -x "${VELMORA_PREFS:-}" ] || fail "VELMORA_PREFS ('${VELMORA_PREFS:-}') is not the velmora-prefs tool"
prefs() { "$VELMORA_PREFS" "$VELMORA_CONF" "$@"; }

day="$(date -d tomorrow +%F)"
prefs set-string kUserdefaultsSelectedJson \
    '{"morningHabits": [{"name": "Water", "durationSeconds": 120}], "startTime": "07:00", "shutOffTime": "22:00"}'
prefs set-bool kUserdefaultsFirstRun true
prefs set-date UserdefaultsLastHabitShowDate "$day 07:00:00"
prefs set-bool kUserdefaultsShowPomodoroView true

start_accessibility
start_velmora "$day 10:00:00"
poll 30 "the status icon is embedded in the tray" xutil tray-icons velmora
icon="$(xutil tray-icons velmora | head -n1 | cut -d' ' -f1)"

seen="a11y names button" poll 20 "the pomodoro window offers \"Let's do it\"" a11y has button "Let's do it"
a11y has label "It's time to focus" || fail "the pomodoro window lacks its title"
grep -q "kUserdefaultsShowPomodoroView" "$VELMORA_CONF" && fail "the marker was not removed at launch"
screenshot 1-pomodoro

# The first type of a fresh list is the meetings type, in the built-in orange.
a11y press "Let's do it" || fail "\"Let's do it\" could not be pressed"
poll 10 "the block started" grep -q "pomodoro mode Started" "$VELMORA_LOG"
grep -q "focus mode Started until - 10:25 AM" "$VELMORA_LOG" || fail "the block does not end at 10:25 AM"
lets_do_it_gone() { ! a11y has button "Let's do it"; }
icon_coloured() { xutil colours "$icon" | grep -q "^$1 "; }
seen="a11y names button" poll 10 "the pomodoro window is gone" lets_do_it_gone
seen="xutil colours $icon" poll 10 "the tray icon shows the type's colour D0963C" icon_coloured D0963C
