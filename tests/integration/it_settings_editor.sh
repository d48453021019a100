#!/usr/bin/env bash
# Preferences → Settings → Edit Settings, as a newcomer does it: the stored settings
# appear on the generator page, a morning habit is added with the page's own controls,
# Save settings hands the document back, and the program checks it, stores it
# pretty-printed and starts again with the new habit. The day holds no pages, so the
# web engine is loaded only by the settings page.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

prefs set-string kUserdefaultsSelectedJson '{"morningHabits": [{"name": "Water", "durationSeconds": 60}],
 "eveningHabits": [], "breakActivities": [{"name": "Walk", "durationSeconds": 120, "includeInEveryBreak": true}],
 "breakAfterMinutes": 50, "startTime": "07:00", "shutOffTime": "22:00"}'
prefs set-bool kUserdefaultsFirstRun true
prefs set-date UserdefaultsLastHabitShowDate "$(date +%F) 00:00:01" # the morning is behind us
prefs set-date kUserdefaultsShutdownAborted "$(date -d tomorrow +%F) 07:00:00"

port="$("$VELMORA_IT_PYTHON" -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')"
export QTWEBENGINE_REMOTE_DEBUGGING="127.0.0.1:$port"
cdp() { "$VELMORA_IT_PYTHON" "$it_here/web.py" page "$port" "qrc:" "$@"; }
page_says() { [ "$(cdp eval "$1")" = "$2" ]; }

start_accessibility
start_velmora "$(date +%F) 12:00:00"
tray_icon
open_panel
a11y press "Preferences" || fail "Preferences could not be pressed on the panel"
poll 10 "the preferences window is mapped" mapped_titled "Velmora preferences"
! grep -q WebEngineCore "/proc/$VELMORA_PID/maps" || fail "the web engine was loaded before the settings page"
xdotool windowactivate --sync "$(windows_titled "Velmora preferences" | head -n1)" 2>/dev/null || true
xdotool key --clearmodifiers ctrl+Tab ctrl+Tab # the third tab
seen="a11y names button" poll 10 "the settings tab offers Edit Settings" a11y has button "Edit Settings"
a11y press "Edit Settings" || fail "Edit Settings could not be pressed"

poll 60 "the stored settings arrive in the page" page_says 'document.getElementById("morningHabits-0-name").value' '"Water"'
page_says 'document.getElementById("breakAfterMinutes").value' '"50"' || fail "the page lacks the break interval"
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
prefs set-date UserdefaultsLastHabitShowDate "$(date -d yesterday +%F) 00:00:01"
a11y press OK || fail "the alert's OK could not be pressed"
wait_exit 15
poll 15 "the program started again" session_velmora
VELMORA_PID="$(session_velmora)"
seen="a11y names row" poll 20 "the restarted program's morning lists the new habit" \
    a11y has row "2.   Read ten pages"

prefs get-string kUserdefaultsSelectedJson >"$VELMORA_TEST_OUTPUT/stored-settings.json"
"$VELMORA_IT_PYTHON" - "$VELMORA_TEST_OUTPUT/stored-settings.json" <<'EOS' || fail "stored otherwise than saved"
import json, sys
text = open(sys.argv[1], encoding="utf-8").read()
doc = json.loads(text)
assert "\n    " in text, "not pretty-printed"
assert [(h["name"], h["durationSeconds"]) for h in doc["morningHabits"]] == [("Water", 60), ("Read ten pages", 720)]
assert doc["breakAfterMinutes"] == 50 and doc["breakActivities"][0] == {"name": "Walk", "durationSeconds": 120, "includeInEveryBreak": True}
EOS
