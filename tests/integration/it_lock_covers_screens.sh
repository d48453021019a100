#!/usr/bin/env bash
# When the clock passes the morning start time, the lock covers both monitors, above
# the window the user was working in, and takes the keyboard.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

mkdir -p "$(dirname "$VELMORA_CONF")"
printf '[General]\nkUserdefaultsFirstRun=true\n' >"$VELMORA_CONF"

mapped_titled() { [ -n "$(windows_titled "$1")" ]; }
active_window() { root_windows _NET_ACTIVE_WINDOW | head -n1; }
is_active() { same_window "$(active_window)" "$1"; }

# Polls until window ID sits at geometry WANT (the window manager settles asynchronously).
expect_geometry() {
    local id=$1 want=$2 what=$3 deadline=$((SECONDS + 5)) seen
    while seen="$(geometry_of "$id")" && [ "$seen" != "$want" ]; do
        [ "$SECONDS" -lt "$deadline" ] || fail "$what $id is at $seen, expected $want"
        sleep 0.2
    done
}

# True when every window in $@ comes after (above) BELOW in the stacking order.
stacked_above() {
    local below=$1 order pos_below i id
    shift
    mapfile -t order < <(root_windows _NET_CLIENT_LIST_STACKING)
    pos_below=-1
    for i in "${!order[@]}"; do same_window "${order[i]}" "$below" && pos_below=$i; done
    [ "$pos_below" -ge 0 ] || return 1
    for id in "$@"; do
        local pos=-1
        for i in "${!order[@]}"; do same_window "${order[i]}" "$id" && pos=$i; done
        [ "$pos" -gt "$pos_below" ] || return 1
    done
}

has_states() {
    local states
    states="$(xprop -id "$1" _NET_WM_STATE)"
    grep -q _NET_WM_STATE_FULLSCREEN <<<"$states" && grep -q _NET_WM_STATE_ABOVE <<<"$states"
}

# The user is at work in an ordinary application window.
start_helper xmessage -name ordinary -geometry 500x200+300+200 "An ordinary application window"
poll 10 "the ordinary window is mapped" xdotool search --onlyvisible --classname '^ordinary$'
ordinary="$(printf '0x%x' "$(xdotool search --onlyvisible --classname '^ordinary$' | head -n1)")"
poll 5 "the ordinary window is the active one" is_active "$ordinary"

day="$(date -d tomorrow +%F)"
start_velmora "$day 06:59:52"
poll 40 "a window titled 'Velmora lock' is mapped" mapped_titled "Velmora lock"

locks=($(windows_titled "Velmora lock"))
[ ${#locks[@]} -eq 1 ] || fail "expected one 'Velmora lock' window, found ${locks[*]}"
lock=${locks[0]}
expect_geometry "$lock" 1280x800+0+0 "the lock window"

poll 5 "a window titled 'Velmora blank' is mapped" mapped_titled "Velmora blank"
blanks=($(windows_titled "Velmora blank"))
if [ ${#blanks[@]} -ne 1 ]; then
    fail "expected one 'Velmora blank' window (one other monitor), found: $(for b in "${blanks[@]}"; do printf '%s at %s; ' "$b" "$(geometry_of "$b")"; done)"
fi
blank=${blanks[0]}
expect_geometry "$blank" 1280x800+1280+0 "the blank window"

for id in "$lock" "$blank"; do
    poll 5 "window $id has _NET_WM_STATE FULLSCREEN and ABOVE (has: $(xprop -id "$id" _NET_WM_STATE))" \
        has_states "$id"
done
poll 5 "the lock and blank windows are stacked above the ordinary window
  (_NET_CLIENT_LIST_STACKING, bottom to top: $(root_windows _NET_CLIENT_LIST_STACKING | tr '\n' ' ');
  ordinary $ordinary, lock $lock, blank $blank)" stacked_above "$ordinary" "$lock" "$blank"

poll 5 "the lock window $lock is the active window (_NET_ACTIVE_WINDOW is $(active_window))" is_active "$lock"
focus="$(xutil input-focus)"
xutil is-inside "$focus" "$lock" || fail "the keyboard focus is on $focus, not in the lock window $lock"

morning_logged() { grep -Eq "^$day 07:00:[0-5][0-9]  -  $1\$" "$VELMORA_LOG"; }
poll 5 "the debug log has 'Initiating morning habits.' stamped $day 07:00" morning_logged 'Initiating morning habits\.'
poll 5 "the debug log has 'Showing morning habits.' stamped $day 07:00" morning_logged 'Showing morning habits\.'

screenshot locked
