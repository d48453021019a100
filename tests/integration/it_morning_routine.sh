#!/usr/bin/env bash
# A whole morning routine as the user goes through it at 07:00, the lock over both monitors
# and above the window the user was working in; with the keyboard and,
# for the last button, the mouse: the overview and its countdown, three timed habits,
# the progress screens, the quantity asked after the last habit, the farewell message
# and the lock going away; then the rows of the usage log. Screens are read through
# AT-SPI by their texts, as a screen reader would.
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
# The one showing label that reads like a clock, MM:SS.
clock() { a11y names label | grep -Ex '[0-9]{2}:[0-9]{2}' | head -n1; }
clock_matches() { [[ "$(clock)" =~ ^($1)$ ]]; }
clock_below() { local now; now="$(clock)"; [ -n "$now" ] && [[ "$now" < "$1" ]]; }
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
for row in "1.   Water" "2.   Stretch" "3.   Push-ups"; do
    a11y has row "$row" || fail "the habit list has no row '$row' (rows: $(a11y names row | tr '\n' '|'))"
done
seen=$seen_labels poll 5 "the countdown shows 00:30 down to 00:25" clock_matches '00:(2[5-9]|30)'
! a11y has button "Start 5 seconds Water" || fail "the start button is there while the countdown runs"
screenshot 1-overview-countdown

# Return during the countdown neither starts the habit nor stops the count.
before="$(clock)"
key Return
seen=$seen_labels poll 5 "the countdown goes on after Return (it read $before)" \
    clock_below "$before"
! label_shown "Do some Water." || fail "Return during the countdown started the first habit"
! grep -q 'startFirstMorningHabit' "$VELMORA_LOG" || fail "Return during the countdown started the routine"

seen=$seen_all poll 40 "the start button 'Start 5 seconds Water' comes when the countdown ends" \
    button_shown "Start 5 seconds Water"
[ -z "$(clock)" ] || fail "the countdown still shows $(clock) next to the start button"
screenshot 2-overview-ready

# --- three habits, each: timer screen, then progress screen
run_habit() { # NAME SCREENSHOT-NAME
    seen=$seen_labels poll 5 "the timer screen 'Do some $1.' is shown" label_shown "Do some $1."
    seen=$seen_labels poll 3 "the clock of $1 starts at 00:05 or 00:04" clock_matches '00:0[45]'
    seen=$seen_labels poll 5 "the clock of $1 counts down to 00:02" clock_matches '00:0[0-2]'
    screenshot "$2"
}

key Return
run_habit Water 3-timer-water
seen=$seen_all poll 5 "the progress screen 'Water finished!✅' is shown" label_shown "Water finished!✅"
label_shown "You have completed 5s of habits - 10s to go. You can do it!" ||
    fail "wrong progress line after Water (labels: $(a11y names label | tr '\n' '|'))"
button_shown "Start 5 seconds Stretch" || fail "no button 'Start 5 seconds Stretch' after Water"
screenshot 4-progress-water

key Return
run_habit Stretch 5-timer-stretch
seen=$seen_all poll 5 "the progress screen 'Stretch finished!✅' is shown" label_shown "Stretch finished!✅"
label_shown "You have completed 10s of habits - 5s to go. You can do it!" ||
    fail "wrong progress line after Stretch (labels: $(a11y names label | tr '\n' '|'))"
button_shown "Start 5 seconds Push-ups" || fail "no button 'Start 5 seconds Push-ups' after Stretch"
screenshot 6-progress-stretch

key Return
run_habit Push-ups 7-timer-push-ups

# --- the last habit: the quantity question lies over the final progress screen
seen=$seen_all poll 5 "the quantity question 'How many Push-ups did you do?' is shown" \
    label_shown "How many Push-ups did you do?"
label_shown "Push-ups finished!✅ You’ve earned your velmora. 💪" ||
    fail "the final progress title is not under the quantity question (labels: $(a11y names label | tr '\n' '|'))"
label_shown "You have completed 15s of habits." || fail "wrong progress line after the last habit"
for b in OK Cancel "Unlock the machine"; do button_shown "$b" || fail "no button '$b' with the quantity question up"; done
status=0
field="$(a11y field)" || status=$?
[ "$status" -ne 1 ] || fail "the quantity question has no text field"
[ "$status" -eq 0 ] || fail "the quantity field does not hold the keyboard focus"
[ -z "$field" ] || fail "the quantity field starts with '$field', not empty"
screenshot 8-quantity

# Return on the empty field does nothing; keys are handled in order, so once the
# typed text is in the field that Return has been dealt with.
key Return
xdotool type --delay 50 12a
seen="a11y field" poll 5 "the field reads 12 after typing 12a" field_reads 12
label_shown "How many Push-ups did you do?" || fail "Return on the empty quantity field closed the question"
! label_shown "OK - Stay focused throughout the day!" || fail "Return on the empty quantity field unlocked the machine"
[ "$(grep -c '^morning routine,' "$stats")" -eq 2 ] || fail "Return on the empty quantity field wrote a row"
screenshot 9-quantity-typed

key Return
seen="tail -n 2 $stats" poll 5 "the Push-ups row is written after Return" grep -q '^morning routine,.*,Push-ups,' "$stats"
seen=$seen_all poll 5 "the quantity question goes away" label_gone "How many Push-ups did you do?"
# The same Return must not also reach the button under the question.
button_shown "Unlock the machine" || fail "the Return that confirmed the quantity also pressed 'Unlock the machine'"
! label_shown "OK - Stay focused throughout the day!" || fail "the Return that confirmed the quantity also unlocked"
screenshot 10-progress-last

# --- the last button, with the mouse
point="$(a11y center "Unlock the machine")" || fail "cannot place the button 'Unlock the machine' on the screen"
read -r x y <<<"$point"
xdotool mousemove "$x" "$y" click 1
seen=$seen_all poll 5 "'OK - Stay focused throughout the day!' shows after the click at $x,$y" \
    label_shown "OK - Stay focused throughout the day!"
message_at="$(date +%s%N)"
screenshot 11-stay-focused

lock_gone() { ! mapped_titled "Velmora lock" && ! mapped_titled "Velmora blank"; }
seen="xwininfo -root -children | grep Velmora" poll 10 "the lock windows go away after the message" lock_gone
shown_ms=$((($(date +%s%N) - message_at) / 1000000))
[ "$shown_ms" -ge 2000 ] || fail "the message was up for only ${shown_ms} ms, not about 3 s"
! xutil keyboard-grabbed || fail "the keyboard is still grabbed after the lock went away"
screenshot 12-unlocked

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
