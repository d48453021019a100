#!/usr/bin/env bash
# A focus block under KWin: the refused Beta is minimised through KWin's window list at each
# activation and reported once; the allowed Alpha stays.
set -euo pipefail
. "$(dirname "$0")/../lib.sh"
. "$(dirname "$0")/wl_lib.sh"

"$VELMORA_BIN" --help >/dev/null # its desktop entry, which KWin reads when it starts
morning_done '{"morningHabits": [], "eveningHabits": [], "breakActivities": [], "breakAfterMinutes": 50,
    "startTime": "07:00", "shutOffTime": "22:00"}'
mkdir -p "$XDG_DATA_HOME/applications"
for name in Alpha Beta; do
    printf '[Desktop Entry]\nType=Application\nName=%s\nExec=%s %s 000000 /dev/null\n' "$name" "$VELMORA_TESTWIN" \
        "${name,,}" >"$XDG_DATA_HOME/applications/${name,,}.desktop"
done
prefs set-list kUserdefaultsArrFocusTypes \
    "[{\"name\": \"Deep\", \"color\": \"3366CC\", \"appsArray\": [\"$XDG_DATA_HOME/applications/alpha.desktop\"], \"urlsArray\": []}]"
prefs set-bool kUserdefaultsShowPomodoroView true
kwin_up
start_accessibility
notifications="$VELMORA_IT_DIR/notifications.log"
dbus-monitor --session "interface='org.freedesktop.Notifications',member='Notify'" >"$notifications" 2>&1 &
it_helpers+=("$!")
WAYLAND_DISPLAY="$KWIN_DISPLAY" SWAYSOCK="" start_velmora "$day 10:00:00"
seen="a11y names button" poll 20 "the pomodoro window offers \"Let's do it\"" a11y has button "Let's do it"
grep -q "Workspace: org_kde_plasma_window_management" "$VELMORA_LOG" || fail "KWin did not hand over its window list"
a11y press "Let's do it" || fail "\"Let's do it\" could not be pressed"
poll 10 "the block started" grep -q "pomodoro mode Started" "$VELMORA_LOG"

shows() { grim -t ppm -o HEADLESS-1 - | "$VELMORA_IT_PYTHON" "$it_here/wayland/pixels.py" --present "$1" >/dev/null; }
start_helper env WAYLAND_DISPLAY="$KWIN_DISPLAY" "$VELMORA_TESTWIN" alpha 00aa00 /dev/null
poll 10 "Alpha is shown" shows 00aa00
start_helper env WAYLAND_DISPLAY="$KWIN_DISPLAY" "$VELMORA_TESTWIN" beta 0000aa /dev/null
for round in 1 2 3; do
    # A new window, then KWin's window switcher, bring Beta back to the front.
    [ "$round" = 1 ] || fake_keys alt+tab
    seen="grep -c 'Minimised beta' $VELMORA_LOG" poll 5 "Beta is minimised at activation $round" \
        eval '[ "$(grep -c "Minimised beta through" "$VELMORA_LOG")" -ge $round ]'
    seen="grim -t ppm -o HEADLESS-1 - | $VELMORA_IT_PYTHON $it_here/wayland/pixels.py --present 0000aa 00aa00" \
        poll 5 "Beta is out of sight after activation $round" eval '! shows 0000aa'
    sleep 1.2 # a tick of the one-second check
    shows 00aa00 || fail "the allowed Alpha was hidden (round $round)"
done
wl_shot HEADLESS-1 alpha-stays
reports="$(grep -c "string \"Beta isn't allowed in the Deep focus mode.\"" "$notifications" || true)"
[ "$reports" = 1 ] || fail "Beta was reported $reports times, not once: $(grep -A4 Notify "$notifications")"
