#!/usr/bin/env bash
# Start at login, as the built program does it. Where a systemd user manager answers, a
# program started outside its unit starts the unit and ends without a day of its own;
# without one the program runs itself. Both ways the autostart entry is written. What
# the entry, the unit and the calls hold is the login service's own unit test.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

work="$VELMORA_IT_DIR/login"
mkdir -p "$work/bin"
export PATH="$work/bin:$PATH"
autostart="$XDG_CONFIG_HOME/autostart/velmora.desktop"
# systemctl as the program sees it: records its calls; the manager answers STATE.
systemctl_answering() {
    cat >"$work/bin/systemctl" <<EOS
#!/bin/sh
echo "\$*" >>"$work/systemctl.log"
case "\$*" in *is-system-running*) echo $1 ;; esac
exit 0
EOS
    chmod +x "$work/bin/systemctl"
    rm -f "$work/systemctl.log"
}
called() { grep -qx -- "$1" "$work/systemctl.log"; }

# --- a user manager answers: hand over and end
systemctl_answering running
start_velmora
deadline=$((SECONDS + 20))
while velmora_running && [ "$SECONDS" -lt "$deadline" ]; do sleep 0.2; done
velmora_running && fail "the hand-started program still runs beside a user manager"
status=0
wait "$VELMORA_PID" || status=$?
VELMORA_PID=""
[ "$status" -eq 0 ] || fail "the hand-over ended with status $status, not 0"
called "--user start velmora.service" ||
    fail "the unit was not started (calls: $(tr '\n' '|' <"$work/systemctl.log"))"
[ -s "$autostart" ] || fail "no autostart entry at $autostart beside a user manager"
[ ! -e "$VELMORA_LOG" ] || fail "the handing-over copy started a day of its own: $(cat "$VELMORA_LOG")"

# --- no user manager: the program runs itself
rm -f "$autostart"
systemctl_answering offline
start_velmora
poll 30 "the program runs itself, its status icon in the tray" xutil tray-icons velmora
called "--user start velmora.service" && fail "the unit was started without a user manager"
[ -s "$autostart" ] || fail "no autostart entry at $autostart without a user manager"
velmora_running || fail "the program is no longer running"
