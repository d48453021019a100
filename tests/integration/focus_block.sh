# Sourced after lib.sh: a focus block of one type of the user's own, "Deep", started
# through the pomodoro window that a restart owes the user.
# focus_block_prefs APPS-JSON URLS-JSON: the type list and the marker, before launch.
# focus_block_start: waits for the pomodoro window and starts the 25-minute block.
focus_block_prefs() {
    "$VELMORA_PREFS" "$VELMORA_CONF" set-list kUserdefaultsArrFocusTypes \
        "[{\"name\": \"Deep\", \"color\": \"3366CC\", \"appsArray\": $1, \"urlsArray\": $2}]"
    "$VELMORA_PREFS" "$VELMORA_CONF" set-bool kUserdefaultsShowPomodoroView true
    start_accessibility
}

focus_block_start() {
    seen="a11y names button" poll 30 "the pomodoro window offers \"Let's do it\"" a11y has button "Let's do it"
    a11y press "Let's do it" || fail "\"Let's do it\" could not be pressed"
    poll 10 "the block started" grep -q "pomodoro mode Started" "$VELMORA_LOG"
}
