#!/usr/bin/env bash
# A whole morning routine as the user goes through it at 07:00, the lock over both monitors
# and above the window the user was working in; with the keyboard and, for the last button,
# the mouse; then the lock going away and the rows of the usage log. Screens are read
# through AT-SPI by their texts, as a screen reader would.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

[ -x "${VELMORA_PREFS:-}" ] || fail "VELMORA_PREFS ('${VELMORA_PREFS:-}') is not the velmora-prefs tool"
prefs() { "$VELMORA_PREFS" "$VELMORA_CONF" "$@"; }

day="$(date -d tomorrow +%F)"
stats="$XDG_DATA_HOME/velmora/vlmrStats.csv"

habit() { # NAME LOG-QUANTITY
    printf '{"name": "%s", "durationSeconds": 5, "videoUrl": [], "logQuantity": %s, "allowedUrls": [], "allowedApps": []}' "$1" "$2"
}
prefs set-string kUserdefaultsSelectedJson "{
    \"morningHabits\": [$(habit Water false), $(habit Stretch false), $(habit Push-ups true)],
    \"eveningHabits\": [], \"breakActivities\": [], \"breakAfterMinutes\": 50,
    \"startTime\": \"07:00\", \"shutOffTime\": \"22:00\"}"
prefs set-bool kUserdefaultsFirstRun true
prefs set-bool kUserdefaultsPromptToRememberHabit false
# The night before 07:00 is over: summary, evening routine and shut-off lock are done.
for key in kUserdefaultsFocusSummaryShowedTillDate kUserdefaultsEveningHabitsShowedTillDate \
    kUserdefaultsShutdownAborted; do
    prefs set-date "$key" "$day 07:00:00"
done

# The user is at work in an ordinary application window when 07:00 comes.
start_helper xmessage -name ordinary -geometry 500x200+300+200 "An ordinary application window"
poll 10 "the ordinary window is mapped" xdotool search --onlyvisible --classname '^ordinary$'
ordinary="$(printf '0x%x' "$(xdotool search --onlyvisible --classname '^ordinary$' | head -n1)")"
poll 5 "the ordinary window is the active one" is_active "$ordinary"

start_accessibility
start_velmora "$day 06:59:55"

label_shown() { a11y has label "$1"; }
button_shown() { a11y has button "$1"; }
field_reads() { [ "$(a11y field)" = "$1" ]; }
label_gone() { ! label_shown "$1"; }
key() { xdotool key --clearmodifiers "$1"; }
seen_labels="a11y names label"
seen_all="a11y dump"

# --- the overview and its countdown
morning_logged() { grep -Eq "^$day 07:00:[0-5][0-9]  -  $1\$" "$VELMORA_LOG"; }
seen="tail -n 3 $VELMORA_LOG" poll 30 "the debug log has 'Showing morning habits.' stamped $day 07:00" \
    morning_logged 'Showing morning habits\.'
morning_logged 'Initiating morning habits\.' ||
    fail "the debug log has no 'Initiating morning habits.' stamped $day 07:00"
check_lock_up
seen="root_windows _NET_CLIENT_LIST_STACKING" \
    poll 5 "the lock $lock and blank $blank are stacked above the ordinary window $ordinary" \
    stacked_above "$ordinary" "$lock" "$blank"
title="Good Morning! It’s time to earn your velmora. Here are the habits you need to accomplish before you can use your computer."
seen=$seen_labels poll 10 "the overview's title is shown" label_shown "$title"
screenshot 1-overview

# The countdown, the timer and progress screens and the quantity field's rules are the
# unit tests' business; here the keys and the mouse go through the real window system.
seen=$seen_all poll 40 "the start button 'Start 5 seconds Water' comes when the countdown ends" \
    button_shown "Start 5 seconds Water"
for name in Water Stretch Push-ups; do
    key Return
    seen=$seen_labels poll 5 "the timer screen 'Do some $name.' is shown" label_shown "Do some $name."
    [ "$name" = Push-ups ] ||
        seen=$seen_all poll 10 "the progress screen '$name finished!✅' is shown" label_shown "$name finished!✅"
done
seen=$seen_all poll 10 "the quantity question 'How many Push-ups did you do?' is shown" \
    label_shown "How many Push-ups did you do?"
status=0
field="$(a11y field)" || status=$?
[ "$status" -eq 0 ] || fail "the quantity field does not hold the keyboard focus"
screenshot 2-quantity
xdotool type --delay 50 12
seen="a11y field" poll 5 "the field reads 12" field_reads 12
key Return
seen="tail -n 2 $stats" poll 5 "the Push-ups row is written after Return" grep -q '^morning routine,.*,Push-ups,' "$stats"
seen=$seen_all poll 5 "the quantity question goes away" label_gone "How many Push-ups did you do?"
# The same Return must not also reach the button under the question.
button_shown "Unlock the machine" || fail "the Return that confirmed the quantity also pressed 'Unlock the machine'"

# --- the last button, with the mouse
point="$(a11y center "Unlock the machine")" || fail "cannot place the button 'Unlock the machine' on the screen"
read -r x y <<<"$point"
xdotool mousemove "$x" "$y" click 1
seen=$seen_all poll 5 "'OK - Stay focused throughout the day!' shows after the click at $x,$y" \
    label_shown "OK - Stay focused throughout the day!"
screenshot 3-stay-focused

lock_gone() { ! mapped_titled "Velmora lock" && ! mapped_titled "Velmora blank"; }
seen="xwininfo -root -children | grep Velmora" poll 10 "the lock windows go away after the message" lock_gone
! xutil keyboard-grabbed || fail "the keyboard is still grabbed after the lock went away"
screenshot 4-unlocked

# --- the usage log: exactly one row per habit, in order
ts="$day 07:0[0-9]:[0-5][0-9]"
sed -E "s/$ts/<time>/g" "$stats" >"$VELMORA_TEST_OUTPUT/vlmrStats.masked.csv"
diff -u - "$VELMORA_TEST_OUTPUT/vlmrStats.masked.csv" >"$VELMORA_TEST_OUTPUT/vlmrStats.diff" <<'EOF' ||
Log type,Timestamp,Activity,Duration in seconds,Quantity Question,Quantity Logged,Start Time,Work achieved,Distractions encountered,Abort reason,Feedback
morning routine,<time>,Water,5,,,<time>,,,,
morning routine,<time>,Stretch,5,,,<time>,,,,
morning routine,<time>,Push-ups,5,How many <activity> did you do?,12,<time>,,,,
EOF
    fail "the usage log differs from the expected rows: $(cat "$VELMORA_TEST_OUTPUT/vlmrStats.diff")"
# Each habit starts after the one before was written, and is written after it starts.
previous=""
while IFS=, read -r _ written _ _ _ _ started _; do
    [[ ! "$started" > "$written" ]] || fail "a row was written at $written, before its habit started at $started"
    [[ -z "$previous" || ! "$previous" > "$started" ]] ||
        fail "a habit started at $started, before the previous row was written at $previous"
    previous=$written
done < <(tail -n +2 "$stats")
