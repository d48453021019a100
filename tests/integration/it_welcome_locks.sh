#!/usr/bin/env bash
# The very first start shows the welcome flow at once, whatever the time of day, with
# the same lock over both monitors as any routine.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

[ ! -e "$VELMORA_CONF" ] || fail "the session should start without preferences"
start_velmora
seen="tail -n 5 $VELMORA_LOG" poll 30 "the debug log has 'Showing first time welcome activity.'" \
    grep -q '  -  Showing first time welcome activity\.$' "$VELMORA_LOG"
check_lock_up
grep -Eq '^kUserdefaultsFirstRun=true$' "$VELMORA_CONF" ||
    fail "kUserdefaultsFirstRun=true was not stored in $VELMORA_CONF: a restart would show the welcome again"

screenshot welcome
