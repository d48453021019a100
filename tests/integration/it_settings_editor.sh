#!/usr/bin/env bash
# Preferences → Settings → Edit Settings, as a newcomer does it: the stored settings
# appear on the generator page, a morning habit is added with the page's own buttons
# and fields, and Save settings hands the document back. The program checks it against
# the packaged schema, says so, stores it pretty-printed and starts again with the
# new habit. The program starts without pages in its day, so the web engine is loaded
# only now, by the page.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

[ -x "${VELMORA_PREFS:-}" ] || fail "VELMORA_PREFS ('${VELMORA_PREFS:-}') is not the velmora-prefs tool"
prefs() { "$VELMORA_PREFS" "$VELMORA_CONF" "$@"; }
cdp_py="$(dirname "$0")/cdp.py"

prefs set-string kUserdefaultsSelectedJson '{"morningHabits": [{"name": "Water", "durationSeconds": 60}],
 "eveningHabits": [{"name": "Journal", "durationSeconds": 120}],
 "breakActivities": [{"name": "Walk", "durationSeconds": 120, "includeInEveryBreak": true}],
 "breakAfterMinutes": 50, "startTime": "07:00", "shutOffTime": "22:00"}'
prefs set-bool kUserdefaultsFirstRun true
# Today's routines are behind us: nothing covers the screen.
today="$(date +%F)"
prefs set-date UserdefaultsLastHabitShowDate "$today 00:00:01"
prefs set-date kUserdefaultsShutdownAborted "$(date -d tomorrow +%F) 07:00:00"

port="$("$VELMORA_IT_PYTHON" -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')"
export QTWEBENGINE_REMOTE_DEBUGGING="127.0.0.1:$port"
cdp() { "$VELMORA_IT_PYTHON" "$cdp_py" "$port" "qrc:" "$@"; }
page_says() { [ "$(cdp eval "$1")" = "$2" ]; }

start_accessibility
start_velmora "$today 12:00:00"
poll 30 "the status icon is embedded in the tray" xutil tray-icons velmora
icon="$(xutil tray-icons velmora | head -n1 | cut -d' ' -f1)"

open_panel() {
    mapped_titled "Velmora menu" && return 0
    xdotool mousemove --window "$(($icon))" 10 10 click 1
    sleep 0.5
    mapped_titled "Velmora menu"
}
poll 20 "the panel opens from the tray icon" open_panel
panel="$(windows_titled "Velmora menu" | head -n1)"
# Five rows while the program is enabled; Preferences is the first.
read -r w h x y < <(geometry_of "$panel" | tr 'x+' '   ')
xdotool mousemove "$((x + w / 2))" "$((y + 6 + (h - 12) / 10))" click 1
poll 10 "the preferences window is mapped" mapped_titled "Velmora preferences"
prefwin="$(windows_titled "Velmora preferences" | head -n1)"
grep -q "QtWebEngine\|WebEngineCore" "/proc/$VELMORA_PID/maps" && fail "the web engine was loaded before the settings page"

# The third tab, by keyboard.
xdotool windowactivate --sync "$(($prefwin))" 2>/dev/null || true
xdotool key --clearmodifiers ctrl+Tab ctrl+Tab
seen="a11y names button" poll 10 "the settings tab offers Edit Settings" a11y has button "Edit Settings"
a11y press "Edit Settings" || fail "Edit Settings could not be pressed"

seen="cdp eval 'document.body.dataset.loaded'" poll 60 "the stored settings arrive in the page" \
    page_says 'document.body.dataset.loaded' '"true"'
page_says 'document.getElementById("morningHabits-0-name").value' '"Water"' ||
    fail "the page does not show the stored habit Water"
page_says 'document.getElementById("breakAfterMinutes").value' '"50"' ||
    fail "the page does not show the stored break interval"
screenshot 1-page-loaded

cdp click "#morningHabits-add"
poll 5 "a second morning habit is there, its name field focused" \
    page_says 'document.activeElement && document.activeElement.id' '"morningHabits-1-name"'
cdp type "Read ten pages"
cdp click "#morningHabits-1-duration-min"
cdp eval 'document.getElementById("morningHabits-1-duration-min").select()' >/dev/null
cdp type "12"
# An empty name is refused next to its field, and goes away when it is filled in.
cdp click "#morningHabits-0-name"
cdp eval 'document.getElementById("morningHabits-0-name").select()' >/dev/null
cdp eval 'document.execCommand("delete")' >/dev/null
poll 5 "the empty name is marked next to the field" \
    page_says 'document.getElementById("morningHabits-0-name-error").textContent' '"Must not be empty."'
cdp type "Water"
poll 5 "the mark goes when the name is back" \
    page_says 'document.getElementById("morningHabits-0-name-error").textContent' '""'
cdp eval 'document.getElementById("morningHabits-1-title").scrollIntoView({block: "start"})' >/dev/null
sleep 0.5 # the next frame is drawn
screenshot 2-habit-added

# Save settings. The program's alert is modal, and an input event sent through the
# debugging port waits for its handler, so the press comes a moment after the call.
cdp eval 'setTimeout(() => document.getElementById("save").click(), 200); true' >/dev/null
seen="a11y names label" poll 15 "the program says the settings are valid" \
    a11y has label "Your settings have been validated and will be applied now."
screenshot 3-validated
a11y press OK || fail "the alert's OK could not be pressed"

# The program ends for its restart and comes back on its own.
first="$VELMORA_PID"
lines_before="$(wc -l <"$VELMORA_OUT")"
deadline=$((SECONDS + 15))
while alive "$first" && [ "$SECONDS" -lt "$deadline" ]; do sleep 0.2; done
alive "$first" && fail "the program did not end for its restart"
wait "$first" 2>/dev/null || true
VELMORA_PID=""
restarted() {
    local p
    for p in /proc/[0-9]*; do
        [ "$(readlink "$p/exe" 2>/dev/null)" = "$(readlink -f "$VELMORA_BIN")" ] && [ "${p#/proc/}" != "$first" ] &&
            { echo "${p#/proc/}"; return 0; }
    done
    return 1
}
poll 15 "the program started again" restarted
VELMORA_PID="$(restarted)"

stored="$(prefs get-string kUserdefaultsSelectedJson)" || fail "no settings are stored"
printf '%s\n' "$stored" >"$VELMORA_TEST_OUTPUT/stored-settings.json"
"$VELMORA_IT_PYTHON" - "$VELMORA_TEST_OUTPUT/stored-settings.json" <<'EOS' || fail "the stored settings are not as saved: $stored"
import json, sys
text = open(sys.argv[1], encoding="utf-8").read()
assert "\n    " in text, "not pretty-printed"
doc = json.loads(text)
names = [(h["name"], h["durationSeconds"]) for h in doc["morningHabits"]]
assert names == [("Water", 60), ("Read ten pages", 720)], names
assert doc["breakAfterMinutes"] == 50 and doc["startTime"] == "07:00", doc
assert doc["breakActivities"][0]["includeInEveryBreak"] is True, doc
EOS
grep -q "Settings saved" "$VELMORA_LOG" || fail "the debug log lacks the saving"
# The new run read the new habit (the loader prints each list it reads).
seen="tail -n +$((lines_before + 1)) $VELMORA_OUT" poll 20 "the restarted program loaded the new habit" \
    bash -c "tail -n +$((lines_before + 1)) '$VELMORA_OUT' | grep -q 'Read ten pages'"
