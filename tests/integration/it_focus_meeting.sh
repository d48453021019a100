#!/usr/bin/env bash
# A call in a browser: Chromium has a window open and a recording runs on the sound server.
# The suggestion asks to block everything else, and accepting it starts the Meetings block
# without an end time. When the recording stops the block ends with the call and its row
# says which program it was.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
command -v chromium >/dev/null || fail "chromium is not installed (scripts/install-deps.sh)"

morning_done
start_helper chromium --no-sandbox --no-first-run --no-default-browser-check --disable-gpu \
    --user-data-dir="$VELMORA_IT_DIR/chromium-profile" --window-size=900,600 about:blank
poll 60 "a Chromium window is mapped" xdotool search --onlyvisible --class '^chromium$'
start_accessibility
start_velmora "$day 10:00:00"
tray_icon

start_helper parecord --device=mic /dev/null
poll 10 "pulseaudio lists the recording" sh -c 'pactl list short source-outputs | grep -q .'
question="It looks like you're in a meeting. Will you need to use other apps during the meeting? If not, I can block everything else to help you concentrate."
seen="a11y names label" poll 30 "the meeting suggestion comes up" a11y has label "$question"
a11y has button "It's ok for me to use other apps during this meeting" || fail "the suggestion lacks its second button"
a11y press "Block everything else" || fail "\"Block everything else\" could not be pressed"
poll 10 "the Meetings block started without an end time" grep -q "focus mode Started until - $" "$VELMORA_LOG"

stop_helper "$helper"
seen="tail -n 2 $VELMORA_STATS" poll 30 "the block ended with the call and wrote its row" \
    grep -q '^focus block,.*,Meetings,.*,Meeting using {chromium.desktop},' "$VELMORA_STATS"
