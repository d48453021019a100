# Sourced by bench_blocking.sh inside a session, after the integration tests' lib.sh,
# item_apps.sh and browser_setup.sh.

# item_apps_start SECONDS DURATION-AS-THE-BUTTON-SAYS-IT ("25 seconds", "5 minutes"): a
# morning habit that allows only Alpha, started at 07:00; the launched Alpha in $alpha.
item_apps_start() {
    item_apps_entries
    prefs set-string kUserdefaultsSelectedJson "{\"morningHabits\": [{\"name\": \"Writing\",
        \"durationSeconds\": $1, \"allowedApps\": [\"Alpha\"]}], \"breakActivities\": [],
        \"breakAfterMinutes\": 50, \"startTime\": \"07:00\", \"shutOffTime\": \"22:00\"}"
    night_done
    start_accessibility
    start_velmora "$day 06:59:55"
    seen="a11y names button" poll 75 "the habit's start button comes" a11y has button "Start $2 Writing"
    a11y press "Start $2 Writing"
    poll 15 "the habit's allowed application Alpha was launched" xdotool search --onlyvisible --class '^Alpha$'
    alpha="$(xdotool search --onlyvisible --class '^Alpha$' | head -n1)"
}

# browser_start: the program with news.test always blocked, and Chromium in front.
browser_start() {
    program_start '["news.test"]'
    chromium_start
}
