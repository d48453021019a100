# Sourced after lib.sh: desktop entries for Alpha and Beta (plain X11 windows), and a
# morning habit that allows only Alpha, started at 07:00; sets $alpha, the launched window.
# item_apps_entries: the two desktop entries alone.
item_apps_entries() {
    local here name
    here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
    mkdir -p "$XDG_DATA_HOME/applications"
    for name in Alpha Beta; do
        cat >"$XDG_DATA_HOME/applications/${name,,}.desktop" <<EOS
[Desktop Entry]
Type=Application
Name=$name
Exec=$VELMORA_IT_PYTHON $here/testwin.py $name
StartupWMClass=$name
EOS
    done
}

# item_apps_start SECONDS DURATION-AS-THE-BUTTON-SAYS-IT ("25 seconds", "5 minutes")
item_apps_start() {
    local seconds=$1 spoken=$2 day
    item_apps_entries
    day="$(date -d tomorrow +%F)"
    "$VELMORA_PREFS" "$VELMORA_CONF" set-string kUserdefaultsSelectedJson "{
        \"morningHabits\": [{\"name\": \"Writing\", \"durationSeconds\": $seconds, \"videoUrl\": [],
                             \"logQuantity\": false, \"allowedUrls\": [], \"allowedApps\": [\"Alpha\"]}],
        \"eveningHabits\": [], \"breakActivities\": [], \"breakAfterMinutes\": 50,
        \"startTime\": \"07:00\", \"shutOffTime\": \"22:00\"}"
    "$VELMORA_PREFS" "$VELMORA_CONF" set-bool kUserdefaultsFirstRun true
    "$VELMORA_PREFS" "$VELMORA_CONF" set-bool kUserdefaultsPromptToRememberHabit false
    for key in kUserdefaultsFocusSummaryShowedTillDate kUserdefaultsEveningHabitsShowedTillDate \
        kUserdefaultsShutdownAborted; do
        "$VELMORA_PREFS" "$VELMORA_CONF" set-date "$key" "$day 07:00:00"
    done
    start_accessibility
    start_velmora "$day 06:59:55"
    poll 30 "the morning routine is shown" grep -q 'Showing morning habits\.' "$VELMORA_LOG"
    seen="a11y names button" poll 45 "the habit's start button comes" a11y has button "Start $spoken Writing"
    a11y press "Start $spoken Writing"
    poll 15 "the habit's allowed application Alpha was launched" xdotool search --onlyvisible --class '^Alpha$'
    alpha="$(xdotool search --onlyvisible --class '^Alpha$' | head -n1)"
}

# Three times: Beta ($beta) is iconified when activated, Alpha ($alpha) is not.
beta_hidden_alpha_stays() {
    local round
    for round in 1 2 3; do
        xdotool windowactivate "$beta" 2>/dev/null || true
        seen="xprop -id $beta WM_STATE _NET_WM_STATE" poll 5 "Beta is iconified at activation $round" iconic "$beta"
        xdotool windowactivate "$alpha" 2>/dev/null || true
        sleep 1.2 # a tick of the one-second check
        ! iconic "$alpha" || fail "the allowed Alpha was iconified (round $round)"
    done
}

# True when the window is iconified (ICCCM WM_STATE Iconic).
iconic() { xprop -id "$1" WM_STATE 2>/dev/null | grep -q 'window state: Iconic'; }
