# Sourced after lib.sh: a loopback web server for every *.test name, the program at midday
# with "news.test" always blocked, and Chromium in front with our extension and the host
# manifest the program wrote. Sets $extension_id, $devtools, $work, $browser; defines `tabs`.
browser_start() {
    [ -x "${VELMORA_PREFS:-}" ] || fail "VELMORA_PREFS ('${VELMORA_PREFS:-}') is not the velmora-prefs tool"
    command -v chromium >/dev/null || fail "chromium is not installed (apt-get install chromium)"
    prefs() { "$VELMORA_PREFS" "$VELMORA_CONF" "$@"; }
    here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
    extension="$(cd "$here/../../browser/extension" && pwd)"
    extension_id=lhpgjbdeclclangdcipdeabmekkljheh
    work="$VELMORA_IT_DIR/browser"
    mkdir -p "$work"

    start_helper "$VELMORA_IT_PYTHON" "$here/webserver.py" "$work"
    poll 10 "the web server is listening" test -s "$work/port"
    port="$(cat "$work/port")"

    # Midday, the morning routine done, no breaks: nothing covers the screen.
    day="$(date -d tomorrow +%F)"
    prefs set-string kUserdefaultsSelectedJson '{"morningHabits": [{"name": "Water", "durationSeconds": 60}],
        "breakActivities": [], "breakAfterMinutes": 50, "startTime": "07:00", "shutOffTime": "22:00"}'
    prefs set-bool kUserdefaultsFirstRun true
    prefs set-date UserdefaultsLastHabitShowDate "$day 07:00:00"
    prefs set-string kUserdefaultsArrBlockedUrls "news.test"

    # A browser used before: the program writes its host's manifest into its folder at launch.
    profile="$HOME/.config/chromium"
    mkdir -p "$profile"
    start_velmora "$day 12:00:00"
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
