#!/usr/bin/env bash
# A microphone in use holds the morning routine back; the first tick after the
# recording ends brings it up.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

mkdir -p "$(dirname "$VELMORA_CONF")"
printf '[General]\nkUserdefaultsFirstRun=true\n' >"$VELMORA_CONF"

day="$(date -d tomorrow +%F)"
logged() { grep -Eq "^$day 07:0[0-9]:[0-5][0-9]  -  $1\$" "$VELMORA_LOG"; }

# The user is in a call when the morning start time comes.
start_helper parecord --device=mic /dev/null
recorder=${it_helpers[-1]}
poll 10 "pulseaudio lists the recording as a source output" \
    sh -c 'pactl list short source-outputs | grep -q .'

start_velmora "$day 06:59:52"
seen="tail -n 5 $VELMORA_LOG" \
    poll 40 "the debug log has 'Mic is in use, Morning Habits cancelled.' after 07:00" \
    logged 'Mic is in use, Morning Habits cancelled\.'
! logged 'Showing morning habits\.' || fail "the morning routine was shown while the microphone was in use"

# The call ends: the next five-second tick starts the routine.
stop_helper "$recorder"
seen="tail -n 5 $VELMORA_LOG" poll 15 "the debug log has 'Showing morning habits.' after the call" \
    logged 'Showing morning habits\.'
poll 5 "a window titled 'Velmora lock' is mapped" mapped_titled "Velmora lock"
screenshot morning-after-call
