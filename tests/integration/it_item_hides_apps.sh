#!/usr/bin/env bash
# A morning habit that allows one application: when it starts, the lock goes away and the
# program launches that application from its desktop entry; every other application is
# iconified each time it comes to the front, the allowed one stays, and once the habit is
# over nothing is hidden any more.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/item_apps.sh"

item_apps_start 25 "25 seconds"
poll 10 "the lock is down while the habit runs" eval '! mapped_titled "Velmora lock"'
# Openbox gives a new window the focus: Beta may be hidden as soon as it appears.
start_helper "$VELMORA_IT_PYTHON" "$it_here/testwin.py" Beta
beta_hidden_alpha_stays

seen="tail -n 3 $VELMORA_LOG" poll 40 "the habit ends" grep -q 'current morning Habit Over called' "$VELMORA_LOG"
xdotool windowactivate "$beta" 2>/dev/null || true
sleep 2
! iconic "$beta" || fail "Beta was still hidden after the habit was over"
