#!/usr/bin/env bash
# A focus block under sway: the refused Beta goes to the scratchpad each time it is focused
# and is reported once; the allowed Alpha stays.
set -euo pipefail
. "$(dirname "$0")/../lib.sh"
. "$(dirname "$0")/wl_lib.sh"

morning_done '{"morningHabits": [], "eveningHabits": [], "breakActivities": [], "breakAfterMinutes": 50,
    "startTime": "07:00", "shutOffTime": "22:00"}'
mkdir -p "$XDG_DATA_HOME/applications"
for name in Alpha Beta; do
    printf '[Desktop Entry]\nType=Application\nName=%s\nExec=foot -a %s\n' "$name" "${name,,}" \
        >"$XDG_DATA_HOME/applications/${name,,}.desktop"
done
deep_allows_alpha
start_velmora "$day 10:00:00"
seen="a11y names button" poll 20 "the pomodoro window offers \"Let's do it\"" a11y has button "Let's do it"
a11y press "Let's do it" || fail "\"Let's do it\" could not be pressed"
poll 10 "the block started" grep -q "pomodoro mode Started" "$VELMORA_LOG"

terminal alpha 00aa00
terminal beta 0000aa
for round in 1 2 3; do
    swaymsg '[app_id=beta] focus' >/dev/null
    seen="grep -c 'Hid beta' $VELMORA_LOG" poll 5 "Beta is hidden at focus $round" \
        eval '[ "$(grep -c "Hid beta in sway" "$VELMORA_LOG")" -ge $round ]'
    poll 5 "Beta is in the scratchpad after focus $round" in_scratchpad beta
    swaymsg '[app_id=alpha] focus' >/dev/null
    sleep 1.2 # a tick of the one-second check
    ! in_scratchpad alpha || fail "the allowed Alpha was hidden (round $round)"
done
[ "$(focused_app)" = alpha ] || fail "Alpha does not have the keyboard after the rounds ($(focused_app))"
wl_shot HEADLESS-1 alpha-stays
reports="$(grep -c "string \"Beta isn't allowed in the Deep focus mode.\"" "$notifications" || true)"
[ "$reports" = 1 ] || fail "Beta was reported $reports times, not once: $(grep -A4 Notify "$notifications")"
