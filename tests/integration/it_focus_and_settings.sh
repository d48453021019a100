#!/usr/bin/env bash
# The tray panel and what lies behind it, as a screen reader and a keyboard user meet it.
# The pomodoro window a restart owes comes up at launch; the panel's rows are buttons named
# by what they say. "Let's do it" starts a 25-minute block whose type colours the tray icon
# and allows only Alpha: Beta is iconified at each activation and reported once. In the block
# the pomodoro row is gone, Return on the running row opens its abort dialog, and Tab and
# Return reach Preferences → Settings → Edit Settings, where a habit added on the page is
# checked, stored pretty-printed and met again after the restart. Only that page loads the
# web engine.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/item_apps.sh"

morning_done '{"morningHabits": [{"name": "Water", "durationSeconds": 60}], "eveningHabits": [],
    "breakActivities": [{"name": "Walk", "durationSeconds": 120, "includeInEveryBreak": true}],
    "breakAfterMinutes": 50, "startTime": "07:00", "shutOffTime": "22:00"}'
item_apps_entries
deep_allows_alpha
port="$("$VELMORA_IT_PYTHON" -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')"
export QTWEBENGINE_REMOTE_DEBUGGING="127.0.0.1:$port"
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
poll 5 "Escape closes the panel" eval '! a11y has button Preferences'

a11y press "Let's do it" || fail "\"Let's do it\" could not be pressed"
poll 10 "the block started" grep -q "pomodoro mode Started" "$VELMORA_LOG"
grep -q "focus mode Started until - 10:25 AM" "$VELMORA_LOG" || fail "the block does not end at 10:25 AM"
seen="a11y names button" poll 10 "the pomodoro window is gone" eval "! a11y has button \"Let's do it\""
seen="xutil colours $icon" poll 10 "the tray icon shows the type's colour 3366CC" eval 'xutil colours $icon | grep -q "^3366CC "'

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
rows_before="$(a11y names button | awk '$0 == "Preferences" && !n { n = NR } END { print n }')"
xdotool key $(printf 'Tab %.0s' $(seq 2 "$rows_before")) Return
poll 10 "Tab to the Preferences row and Return open the preferences" mapped_titled "Velmora preferences"

cdp() { "$VELMORA_IT_PYTHON" "$it_here/web.py" page "$port" "qrc:" "$@"; }
page_says() { [ "$(cdp eval "$1")" = "$2" ]; }
! grep -q WebEngineCore "/proc/$VELMORA_PID/maps" || fail "the web engine was loaded before the settings page"
xdotool windowactivate --sync "$(windows_titled "Velmora preferences" | head -n1)" 2>/dev/null || true
xdotool key --clearmodifiers ctrl+Tab ctrl+Tab # the third tab
seen="a11y names button" poll 10 "the settings tab offers Edit Settings" a11y has button "Edit Settings"
a11y press "Edit Settings" || fail "Edit Settings could not be pressed"

poll 60 "the stored settings arrive in the page" page_says 'document.getElementById("morningHabits-0-name").value' '"Water"'
page_says 'document.getElementById("breakAfterMinutes").value' '"50"' || fail "the page lacks the break interval"
# What the page says of what a user meets, each next to its field: stored times the fields
# cannot show, an entry without a duration, addresses without a browser, "random" without
# alternatives; then an unnamed alternative and an emptied interval. Nothing stored is dropped.
says() { page_says "(() => { const t = id => document.getElementById(id + \"\").textContent; return $1; })()" true ||
    fail "the page does not show: $1"; }
cdp eval 'window.stored = JSON.stringify(currentDocument()); loadSettingsDataFromMac({"startTime": "24:00",
  "shutOffTime": "7.30", "breakAfterMinutes": 50, "morningHabits": [{"name": "Read", "allowedUrls": ["example.org"],
  "allowedApps": ["gedit"]}], "breakActivities": [{"name": "Move", "durationSeconds": 60, "type": "random-choice",
  "videoUrl": ["https://example.org/v"]}]}); true' >/dev/null
says 't("startTime-note").startsWith("The stored time \"24:00\" is no time of day") && t("shutOffTime-note").includes("cannot be shown")
  && t("shutOffTime-error") === "H or HH, optionally followed by :MM and :SS."
  && t("morningHabits-0-duration-error") === "No duration is stored: enter minutes and seconds."
  && t("morningHabits-0-urls-note").startsWith("No browser is among the allowed applications")
  && t("breakActivities-0-random-error") === "Add at least one alternative below, or untick this."
  && t("breakActivities-0-random-note").includes("brings its own videos")
  && getComputedStyle(document.getElementById("breakActivities-0-videos").parentElement).display === "none"'
cdp click "#breakActivities-0-add-choice"
cdp click "#breakAfterMinutes"
cdp eval 'document.activeElement.select(); document.execCommand("delete")' >/dev/null
says 't("breakActivities-0-choice-0-name-error") === "Must not be empty." && t("breakActivities-0-random-error") === ""
  && t("breakAfterMinutes-note") === "Without an interval Velmora asks for no breaks."
  && currentDocument().startTime === "24:00" && currentDocument().shutOffTime === "7.30"'
screenshot settings-page-rules
cdp eval 'loadSettingsDataFromMac(JSON.parse(window.stored)); true' >/dev/null

cdp click "#morningHabits-add"
poll 5 "the new habit's name field has the focus" page_says 'document.activeElement.id' '"morningHabits-1-name"'
cdp type "Read ten pages"
cdp click "#morningHabits-1-duration-min"
cdp eval 'document.activeElement.select()' >/dev/null
cdp type "12"
# An emptied name is marked next to its field until it is filled in again.
cdp click "#morningHabits-0-name"
cdp eval 'document.activeElement.select(); document.execCommand("delete")' >/dev/null
poll 5 "the empty name is marked" page_says 'document.getElementById("morningHabits-0-name-error").textContent' '"Must not be empty."'
cdp type "Water"
poll 5 "the mark goes" page_says 'document.getElementById("morningHabits-0-name-error").textContent' '""'
cdp eval 'document.getElementById("morningHabits-title").scrollIntoView()' >/dev/null

# The program's alert is modal, and an input event sent through the debugging port
# waits for its handler: the press comes a moment after the call.
cdp eval 'setTimeout(() => document.getElementById("save").click(), 200); true' >/dev/null
seen="a11y names label" poll 15 "the program says the settings are valid" \
    a11y has label "Your settings have been validated and will be applied now."
# The next run owes today's morning, so its overview shows the habits it loaded.
prefs set-date UserdefaultsLastHabitShowDate "$(date -d "$day - 1 day" +%F) 00:00:01"
a11y press OK || fail "the alert's OK could not be pressed"
wait_exit 15
poll 15 "the program started again" session_velmora
VELMORA_PID="$(session_velmora)"
seen="a11y names row" poll 20 "the restarted program's morning lists the new habit" \
    a11y has row "2.   Read ten pages"

prefs get-string kUserdefaultsSelectedJson | "$VELMORA_IT_PYTHON" -c 'import json, sys
text = sys.stdin.read(); doc = json.loads(text)
assert "\n    " in text and [(h["name"], h["durationSeconds"]) for h in doc["morningHabits"]] == [("Water", 60), ("Read ten pages", 720)]
assert doc["breakAfterMinutes"] == 50 and doc["breakActivities"][0] == {"name": "Walk", "durationSeconds": 120, "includeInEveryBreak": True}' ||
    fail "the settings were stored otherwise than saved, or not pretty-printed"
