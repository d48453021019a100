#!/usr/bin/env bash
# A morning habit that allows one application: when it starts, the lock goes away and
# the program launches that application from its desktop entry; every other
# application is iconified each time it comes to the front, the allowed one stays,
# and once the habit is over nothing is hidden any more.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/item_apps.sh"

[ -x "${VELMORA_PREFS:-}" ] || fail "VELMORA_PREFS ('${VELMORA_PREFS:-}') is not the velmora-prefs tool"

item_apps_start 25 "25 seconds"
poll 10 "the lock is down while the habit runs" bash -c "! xdotool search --onlyvisible --name '^Velmora lock$'"
screenshot 1-habit-started

start_helper "$VELMORA_IT_PYTHON" "$(dirname "$0")/testwin.py" Beta
# Openbox gives a new window the focus: Beta may be hidden as soon as it appears.
poll 10 "Beta's window exists" xdotool search --class '^Beta$'
beta="$(xdotool search --class '^Beta$' | head -n1)"

beta_hidden_alpha_stays
screenshot 2-beta-hidden

# The habit ends: the lock comes back and the watch ends with it.
seen="tail -n 3 $VELMORA_LOG" poll 40 "the habit ends" grep -q 'current morning Habit Over called' "$VELMORA_LOG"
xdotool windowactivate "$beta" 2>/dev/null || true
sleep 2
! iconic "$beta" || fail "Beta was still hidden after the habit was over"
