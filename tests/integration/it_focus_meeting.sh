#!/usr/bin/env bash
# A call in a browser: Debian's Chromium has a window open and a recording stream runs on
# the sound server. The tray turns to the call look, the suggestion asks to block
# everything else, and accepting it starts the Meetings block without an end time. When
# the recording stops the block ends with the call and its row says which program it was.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

[ -x "${VELMORA_PREFS:-}" ] || fail "VELMORA_PREFS ('${VELMORA_PREFS:-}') is not the velmora-prefs tool"
command -v chromium >/dev/null || fail "chromium is not installed (scripts/install-deps.sh)"
prefs() { "$VELMORA_PREFS" "$VELMORA_CONF" "$@"; }

day="$(date -d tomorrow +%F)"
prefs set-string kUserdefaultsSelectedJson '{"morningHabits": [], "startTime": "07:00", "shutOffTime": "22:00"}'
prefs set-bool kUserdefaultsFirstRun true
prefs set-date UserdefaultsLastHabitShowDate "$day 07:00:00"

profile="$VELMORA_IT_DIR/chromium-profile"
start_helper chromium --no-sandbox --no-first-run --no-default-browser-check --disable-gpu \
    --user-data-dir="$profile" --window-size=900,600 about:blank
poll 60 "a Chromium window is mapped" xdotool search --onlyvisible --class '^chromium$'

start_accessibility
start_velmora "$day 10:00:00"
poll 30 "the status icon is embedded in the tray" xutil tray-icons velmora

start_helper parecord --device=mic /dev/null
recorder=${it_helpers[-1]}
poll 10 "pulseaudio lists the recording" sh -c 'pactl list short source-outputs | grep -q .'

question="It looks like you're in a meeting. Will you need to use other apps during the meeting? If not, I can block everything else to help you concentrate."
seen="a11y names label" poll 30 "the meeting suggestion comes up" a11y has label "$question"
a11y has button "It's ok for me to use other apps during this meeting" || fail "the suggestion lacks its second button"
screenshot 1-suggestion
a11y press "Block everything else" || fail "\"Block everything else\" could not be pressed"
poll 10 "the Meetings block started without an end time" grep -q "focus mode Started until - $" "$VELMORA_LOG"

stop_helper "$recorder"
stats="$XDG_DATA_HOME/velmora/vlmrStats.csv"
seen="tail -n 2 $stats" poll 30 "the block ended with the call and wrote its row" \
    grep -q '^focus block,.*,Meetings,.*,Meeting using {chromium.desktop},' "$stats"
