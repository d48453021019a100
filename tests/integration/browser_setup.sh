# Sourced after lib.sh. program_start BLOCKED-JSON: a loopback web server ($port, $work), and
# the program at midday with those addresses always blocked, writing its host's manifests
# into the browsers' folders; before_launch, when defined, runs just before it starts.
# chromium_start: Chromium in front with our extension ($extension_id), *.test resolving to
# the server, its tabs through `tabs`.
program_start() {
    extension="$(cd "$it_here/../../browser/extension" && pwd)"
    work="$VELMORA_IT_DIR/browser"
    mkdir -p "$work" "$XDG_CONFIG_HOME/chromium" "$HOME/.mozilla"
    start_helper "$VELMORA_IT_PYTHON" "$it_here/web.py" serve "$work"
    poll 10 "the web server is listening" test -s "$work/port"
    port="$(cat "$work/port")"
    morning_done '{"morningHabits": [{"name": "Water", "durationSeconds": 60}], "breakActivities": [],
        "breakAfterMinutes": 50, "startTime": "07:00", "shutOffTime": "22:00"}'
    prefs set-list kUserdefaultsArrBlockedUrls "$1"
    ! declare -F before_launch >/dev/null || before_launch
    start_velmora "$day 12:00:00"
}

chromium_start() {
    command -v chromium >/dev/null || fail "chromium is not installed (scripts/install-deps.sh)"
    extension_id=fbejcoihjmiomcngkmanpfmkfcceegnf
    local profile="$XDG_CONFIG_HOME/chromium" browser
    poll 15 "the program wrote the host manifest" grep -q "chrome-extension://$extension_id/" \
        "$profile/NativeMessagingHosts/app.velmora.host.json"
    devtools=$((port + 1))
    start_helper chromium --no-sandbox --disable-gpu --no-first-run --no-default-browser-check \
        --user-data-dir="$profile" --load-extension="$extension" --disable-extensions-except="$extension" \
        --host-resolver-rules="MAP *.test 127.0.0.1:$port" --remote-debugging-port="$devtools" \
        --window-position=100,50 --window-size=1000,700 "http://start.test/"
    tabs() { "$VELMORA_IT_PYTHON" "$it_here/web.py" tabs "$devtools" "$@"; }
    poll 30 "Chromium's window is mapped" xdotool search --onlyvisible --class '^Chromium$'
    poll 30 "the extension connected through the host" grep -q 'Browser bridge: chromium connected' "$VELMORA_LOG"
    browser="$(xdotool search --onlyvisible --class '^Chromium$' | head -n1)"
    xdotool windowactivate --sync "$browser" 2>/dev/null || true
    poll 10 "Chromium is the active window" is_active "$browser"
}
