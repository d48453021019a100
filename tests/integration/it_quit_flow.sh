#!/usr/bin/env bash
# Quitting for good, as the user does it: the tray panel's Quit, ten seconds to think, "The
# app is broken" with a few words of feedback, five last seconds. The feedback reaches the
# webhook, and the program ends with the status the service does not restart.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

# The configuration server and the feedback webhook on one local port.
work="$VELMORA_IT_DIR/quit"
mkdir -p "$work"
start_helper "$VELMORA_IT_PYTHON" "$it_here/web.py" serve "$work" "$it_here/../../resources/config.json"
poll 10 "the local server is listening" test -s "$work/port"
export VELMORA_CONFIG_SERVER="http://127.0.0.1:$(cat "$work/port")"

# The morning lock falls at 07:00, while the quit flow is open: the flow must stay above it
# and keep the keyboard. The night before is bought off until then.
morning_done '{"morningHabits": [{"name": "Water", "durationSeconds": 120}], "startTime": "07:00", "shutOffTime": "22:00"}'
prefs set-date UserdefaultsLastHabitShowDate "$(date -d "$day - 1 day" +%F) 07:00:00"
prefs set-date kUserdefaultsShutdownAborted "$day 07:00:00"
ordinary_window
start_accessibility
start_velmora "$day 06:59:50"
tray_icon
poll 20 "the catalogue was fetched from the local server" grep -q ' /config/config.json$' "$work/requests.log"

open_panel
a11y press Quit || fail "the panel's Quit could not be pressed"
poll 10 "the quit window is mapped" mapped_titled "Velmora quit"
quitwin="$(windows_titled "Velmora quit" | head -n1)"
seen="a11y names label" poll 5 "the count-down starts" a11y has label "Quitting.."
poll 30 "the morning lock comes up at 07:00" mapped_titled "Velmora lock"
seen="root_windows _NET_CLIENT_LIST_STACKING" poll 5 "the quit window is above the lock and the ordinary window" \
    stacked_above "$(windows_titled "Velmora lock" | head -n1)" "$quitwin"
stacked_above "$ordinary" "$quitwin" || fail "the quit window is below the ordinary window"
seen="a11y names label" poll 15 "the reasons come after ten seconds" a11y has label "Can you share why you're quitting?"

# The reason list holds the keyboard focus: open it, take the second reason below "Select a reason".
xdotool windowactivate --sync "$(($quitwin))" 2>/dev/null || true
xdotool key --clearmodifiers F4
sleep 0.5
xdotool key --clearmodifiers Down Down Return
seen="a11y names label" poll 5 "'The app is broken' asks what happened" \
    a11y has label "Oh no! We're really sorry. Can you please let us know what happened?﹡"
xdotool type --delay 30 "It froze at noon"
seen="a11y dump" poll 5 "the Quit button is there" a11y has button Quit
screenshot feedback
a11y press Quit || fail "the quit window's Quit could not be pressed"
seen="a11y names label" poll 5 "the farewell is shown" \
    a11y has label "We hope you will start the habits back soon! See you soon."
wait_exit 30
[ "$status" -eq 64 ] || fail "the program exited with status $status, not 64"
"$VELMORA_IT_PYTHON" -c 'import json, sys
posts = [json.loads(line) for line in open(sys.argv[1], encoding="utf-8")]
assert [(p["quitReason"], p["feedback"]) for p in posts] == [("The app is broken", "It froze at noon")]' \
    "$work/posts.jsonl" || fail "the feedback posted is not as expected: $(cat "$work/posts.jsonl")"


# The quit switched the unit off and left the autostart entry, with the server. A new session
# runs the entry as a desktop does: the program is back and turns its unit on again.
autostart="$XDG_CONFIG_HOME/autostart/velmora.desktop"
grep -qx -- "--user disable velmora.service" "$VELMORA_IT_DIR/systemctl.log" || fail "the quit left the unit on"
grep -qx "Exec=$VELMORA_BIN --config-server $VELMORA_CONFIG_SERVER" "$autostart" ||
    fail "the quit took the autostart entry, or it lacks the server: $(cat "$autostart" 2>&1)"
fake_systemctl offline
env -u VELMORA_CONFIG_SERVER gio launch "$autostart"
poll 20 "the autostart entry started the program" session_velmora
VELMORA_PID="$(session_velmora)"
poll 20 "the program enabled its unit again" grep -qx -- "--user enable velmora.service" "$VELMORA_IT_DIR/systemctl.log"
poll 20 "the new start asked the server" \
    bash -c '[ "$(grep -c " /config/config.json$" "$1")" -eq 2 ]' _ "$work/requests.log"
