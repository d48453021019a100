#!/usr/bin/env bash
# When the clock passes the morning start time, the morning routine locks both monitors,
# above the window the user was working in, and takes the keyboard. (Before 07:00 the
# shut-off lock may already be up; what is checked is the screen once the routine shows.)
set -euo pipefail
. "$(dirname "$0")/lib.sh"

mkdir -p "$(dirname "$VELMORA_CONF")"
printf '[General]\nkUserdefaultsFirstRun=true\n' >"$VELMORA_CONF"

# The user is at work in an ordinary application window.
start_helper xmessage -name ordinary -geometry 500x200+300+200 "An ordinary application window"
poll 10 "the ordinary window is mapped" xdotool search --onlyvisible --classname '^ordinary$'
ordinary="$(printf '0x%x' "$(xdotool search --onlyvisible --classname '^ordinary$' | head -n1)")"
poll 5 "the ordinary window is the active one" is_active "$ordinary"

day="$(date -d tomorrow +%F)"
morning_logged() { grep -Eq "^$day 07:00:[0-5][0-9]  -  $1\$" "$VELMORA_LOG"; }
start_velmora "$day 06:59:52"
seen="tail -n 5 $VELMORA_LOG" \
    poll 40 "the debug log has 'Showing morning habits.' stamped $day 07:00" morning_logged 'Showing morning habits\.'
morning_logged 'Initiating morning habits\.' ||
    fail "the debug log has no 'Initiating morning habits.' stamped $day 07:00"

check_lock_up
seen="root_windows _NET_CLIENT_LIST_STACKING" \
    poll 5 "the lock $lock and blank $blank are stacked above the ordinary window $ordinary" \
    stacked_above "$ordinary" "$lock" "$blank"

screenshot locked
