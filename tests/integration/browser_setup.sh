# Sourced after lib.sh. program_start ENTRY: a loopback web server (port $port), the
# program at midday with ENTRY always blocked; the browser folders exist, so the program
# writes its host's manifests into them at launch. browser_start: that with "news.test",
# and Chromium in front with our extension, *.test names resolving to the server. Sets
# $extension, $extension_id, $devtools, $work, $browser; defines `tabs`. A function
# before_launch, when defined, runs just before the program starts.
program_start() {
    [ -x "${VELMORA_PREFS:-}" ] || fail "VELMORA_PREFS ('${VELMORA_PREFS:-}') is not the velmora-prefs tool"
    prefs() { "$VELMORA_PREFS" "$VELMORA_CONF" "$@"; }
    here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
    extension="$(cd "$here/../../browser/extension" && pwd)"
    work="$VELMORA_IT_DIR/browser"
    mkdir -p "$work" "$XDG_CONFIG_HOME/chromium" "$HOME/.mozilla"
    start_helper "$VELMORA_IT_PYTHON" "$here/webserver.py" "$work"
    poll 10 "the web server is listening" test -s "$work/port"
    port="$(cat "$work/port")"
    day="$(date -d tomorrow +%F)" # the morning routine done, no breaks: nothing covers the screen
    prefs set-string kUserdefaultsSelectedJson '{"morningHabits": [{"name": "Water", "durationSeconds": 60}],
        "breakActivities": [], "breakAfterMinutes": 50, "startTime": "07:00", "shutOffTime": "22:00"}'
    prefs set-bool kUserdefaultsFirstRun true
    prefs set-date UserdefaultsLastHabitShowDate "$day 07:00:00"
    prefs set-string kUserdefaultsArrBlockedUrls "$1"
    ! declare -F before_launch >/dev/null || before_launch
    start_velmora "$day 12:00:00"
}

browser_start() {
    command -v chromium >/dev/null || fail "chromium is not installed (apt-get install chromium)"
    program_start news.test
    chromium_start
}

chromium_start() {
    extension_id=lhpgjbdeclclangdcipdeabmekkljheh
    profile="$XDG_CONFIG_HOME/chromium"
    manifest="$profile/NativeMessagingHosts/app.velmora.host.json"
    poll 15 "the program wrote the host manifest" test -s "$manifest"
    grep -q "chrome-extension://$extension_id/" "$manifest" || fail "the manifest does not allow our extension: $(cat "$manifest")"

    devtools=$((port + 1))
    start_helper chromium --no-sandbox --disable-gpu --no-first-run --no-default-browser-check \
        --user-data-dir="$profile" --load-extension="$extension" --disable-extensions-except="$extension" \
        --host-resolver-rules="MAP *.test 127.0.0.1:$port" --remote-debugging-port="$devtools" \
        --window-position=100,50 --window-size=1000,700 "http://start.test/"
    tabs() { "$VELMORA_IT_PYTHON" "$here/tabs.py" "$devtools" "$@"; }
    poll 30 "Chromium's window is mapped" xdotool search --onlyvisible --class '^Chromium$'
    poll 30 "the extension connected through the host" grep -q 'Browser bridge: chromium connected' "$VELMORA_LOG"
    browser="$(xdotool search --onlyvisible --class '^Chromium$' | head -n1)"
    xdotool windowactivate --sync "$browser" 2>/dev/null || true
    poll 10 "Chromium is the active window" is_active "$(printf '0x%x' "$browser")"
}
