#!/usr/bin/env bash
# The very first start shows the welcome flow at once, whatever the time of day, with the
# same lock over both monitors as any routine. The status icon lands in the panel's system
# tray, and the microphone check follows a recording on the sound server as it starts and stops.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
[ -x "${VELMORA_PROBE:-}" ] || fail "VELMORA_PROBE ('${VELMORA_PROBE:-}') is not a program"

mic_is() { "$VELMORA_PROBE" | grep -Eq "(^| )mic=$1( |$)"; }

[ ! -e "$VELMORA_CONF" ] || fail "the session should start without preferences"
start_velmora
seen="tail -n 5 $VELMORA_LOG" poll 30 "the debug log has 'Showing first time welcome activity.'" \
    grep -q '  -  Showing first time welcome activity\.$' "$VELMORA_LOG"
check_lock_up
grep -Eq '^kUserdefaultsFirstRun=true$' "$VELMORA_CONF" ||
    fail "kUserdefaultsFirstRun=true was not stored in $VELMORA_CONF: a restart would show the welcome again"
screenshot welcome

poll 30 "the status icon is embedded in tint2's system tray" xutil tray-icons velmora
icons="$(xutil tray-icons velmora)"
[ "$(wc -l <<<"$icons")" -eq 1 ] || fail "expected one status icon in the tray, found: $icons"
note "status icon ${icons% *} sits in tray window ${icons#* }"

probe_line="$("$VELMORA_PROBE")" || fail "velmora-probe exited with status $?"
grep -Eqx 'mic=[01] camera=[01] inhibitors=.*' <<<"$probe_line" ||
    fail "velmora-probe printed '$probe_line', expected 'mic=<0|1> camera=<0|1> inhibitors=<list>'"
mic_is 0 || fail "nothing records, but velmora-probe says: $probe_line"

start_helper parecord --device=mic /dev/null
recorder=${it_helpers[-1]}
poll 10 "pulseaudio lists the recording as a source output" \
    sh -c 'pactl list short source-outputs | grep -q .'
seen="$VELMORA_PROBE" poll 10 "velmora-probe reports mic=1 while parecord records" mic_is 1

stop_helper "$recorder"
seen="$VELMORA_PROBE" poll 10 "velmora-probe reports mic=0 after the recording stopped" mic_is 0

velmora_running || fail "the program is no longer running"
