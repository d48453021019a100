#!/usr/bin/env bash
# Start at login and the first day. Beside a systemd user manager a copy started by hand
# starts the unit and ends without a day of its own; without one the program runs itself;
# both ways the autostart entry is written. The first start shows the welcome under the lock
# of any routine; the status icon lands in the tray; the microphone check follows a
# recording; a signal ends the program, after it wrote out its state, by that signal, so that
# the service brings it back.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
[ -x "${VELMORA_PROBE:-}" ] || fail "VELMORA_PROBE ('${VELMORA_PROBE:-}') is not a program"
autostart="$XDG_CONFIG_HOME/autostart/velmora.desktop"
unit_started() { grep -qx -- "--user start velmora.service" "$VELMORA_IT_DIR/systemctl.log"; }
mic_is() { "$VELMORA_PROBE" | grep -Eq "^mic=$1 camera=[01] inhibitors="; }

fake_systemctl running
start_velmora
wait_exit 20
[ "$status" -eq 0 ] || fail "the hand-over ended with status $status, not 0"
unit_started || fail "the unit was not started (calls: $(tr '\n' '|' <"$VELMORA_IT_DIR/systemctl.log"))"
[ -s "$autostart" ] || fail "no autostart entry beside a user manager"
[ ! -e "$VELMORA_LOG" ] && [ ! -e "$VELMORA_CONF" ] || fail "the handing-over copy started a day of its own"

rm "$autostart"
fake_systemctl offline
start_velmora
seen="tail -n 5 $VELMORA_LOG" poll 30 "the debug log has 'Showing first time welcome activity.'" \
    grep -q '  -  Showing first time welcome activity\.$' "$VELMORA_LOG"
check_lock_up
grep -qx 'kUserdefaultsFirstRun=true' "$VELMORA_CONF" || fail "the first run was not stored: a restart would welcome again"
screenshot welcome
tray_icon
[ "$(xutil tray-icons velmora | wc -l)" -eq 1 ] || fail "expected one status icon in the tray: $(xutil tray-icons velmora)"
! unit_started || fail "the unit was started without a user manager"
[ -s "$autostart" ] || fail "no autostart entry without a user manager"

seen="$VELMORA_PROBE" poll 5 "velmora-probe says mic=0 camera=<0|1> inhibitors=<list> while nothing records" mic_is 0
start_helper parecord --device=mic /dev/null
poll 10 "pulseaudio lists the recording" sh -c 'pactl list short source-outputs | grep -q .'
seen="$VELMORA_PROBE" poll 10 "velmora-probe reports mic=1 while parecord records" mic_is 1
stop_helper "$helper"
seen="$VELMORA_PROBE" poll 10 "velmora-probe reports mic=0 after the recording stopped" mic_is 0

kill -TERM "$VELMORA_PID"
wait_exit 10
[ "$status" -eq 143 ] || fail "after SIGTERM the program exited with status $status, not by the signal (143)"
grep -q '  -  Stopped by signal 15$' "$VELMORA_LOG" || fail "SIGTERM ended the program before it could write out its state"
