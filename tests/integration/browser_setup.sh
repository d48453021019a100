# Sourced after lib.sh. program_start BLOCKED-JSON: a loopback web server ($port, $work), and
# the program at midday with those addresses always blocked, writing its host's manifests
# into the browsers' folders; before_launch, when defined, runs just before it starts.
# chromium_start: Chromium run for the first time after the program started (its profile
# folder is new, so its host manifest comes from the folder watch), in front with our
# extension ($extension_id), *.test resolving to the server, its tabs through `tabs`.
# chromium_flags: the flags every Chromium of the tests runs with.
program_start() {
    extension="$(cd "$it_here/../../browser/extension" && pwd)"
    work="$VELMORA_IT_DIR/browser"
    mkdir -p "$work" "$XDG_CONFIG_HOME" "$HOME/.mozilla"
    start_helper "$VELMORA_IT_PYTHON" "$it_here/web.py" serve "$work"
    poll 10 "the web server is listening" test -s "$work/port"
    port="$(cat "$work/port")"
    morning_done '{"morningHabits": [{"name": "Water", "durationSeconds": 60}], "breakActivities": [],
        "breakAfterMinutes": 50, "startTime": "07:00", "shutOffTime": "22:00"}'
    prefs set-list kUserdefaultsArrBlockedUrls "$1"
    ! declare -F before_launch >/dev/null || before_launch
    start_velmora "$day 12:00:00"
}

chromium_flags() {
    printf '%s\n' --no-sandbox --disable-gpu --no-first-run --no-default-browser-check \
        --load-extension="$extension" --disable-extensions-except="$extension" \
        --host-resolver-rules="MAP *.test 127.0.0.1:$port"
}

chromium_start() {
    command -v chromium >/dev/null || fail "chromium is not installed (scripts/install-deps.sh)"
    extension_id=fbejcoihjmiomcngkmanpfmkfcceegnf
    profile="$XDG_CONFIG_HOME/chromium"
    [ ! -e "$profile" ] || fail "Chromium's profile exists before its first run"
    devtools=$((port + 1))
    mapfile -t flags < <(chromium_flags)
    start_helper chromium "${flags[@]}" --user-data-dir="$profile" --remote-debugging-port="$devtools" \
        --window-position=100,50 --window-size=1000,700 "http://start.test/"
    chromium_pid="$helper"
    tabs() { "$VELMORA_IT_PYTHON" "$it_here/web.py" tabs "$devtools" "$@"; }
    poll 15 "the program wrote the host manifest into the new profile" grep -q "chrome-extension://$extension_id/" \
        "$profile/NativeMessagingHosts/app.velmora.host.json"
    poll 30 "Chromium's window is mapped" xdotool search --all --onlyvisible --pid "$chromium_pid" --class '^Chromium$'
    browser="$(xdotool search --all --onlyvisible --pid "$chromium_pid" --class '^Chromium$' | head -n1)"
    chromium_front
    poll 30 "the extension connected through the host" grep -q 'Browser bridge: chromium connected' "$VELMORA_LOG"
}

# chromium_front [WINDOW]: the (first) Chromium window in front again.
chromium_front() {
    xdotool windowactivate --sync "${1:-$browser}" 2>/dev/null || true
    poll 10 "Chromium is the active window" is_active "${1:-$browser}"
}

iconic() { xprop -id "$1" WM_STATE 2>/dev/null | grep -q 'window state: Iconic'; }

# new_window_hidden CLASS WHAT COMMAND...: a window of the class COMMAND shows is iconified
# soon after the window manager takes it on. The window is found among the managed ones,
# not the visible ones: on a busy machine it can be hidden before a search for visible
# windows comes round. The time it took is printed; the extension's word on the focus comes
# through two processes, and the other tests beside this one can stretch the program's
# 400 ms beyond a second.
new_window_hidden() {
    local class=$1 what=$2 before window="" start deadline=$((SECONDS + 15))
    shift 2
    before="$(root_windows _NET_CLIENT_LIST | sort)"
    "$@"
    while [ -z "$window" ]; do
        [ "$SECONDS" -lt "$deadline" ] || fail "no window came up for $what"
        window="$(comm -12 <(comm -13 <(echo "$before") <(root_windows _NET_CLIENT_LIST | sort)) \
            <(xdotool search --class "$class" | sort) | head -n1)"
    done
    start=$(date +%s%3N)
    until iconic "$window"; do
        [ $(($(date +%s%3N) - start)) -lt 5000 ] ||
            fail "$what was not hidden within five seconds ($(xprop -id "$window" WM_STATE WM_NAME | tr '\n' ' '))"
        sleep 0.02
    done
    note "$what hidden after $(($(date +%s%3N) - start)) ms"
}

private_window_hidden() {
    new_window_hidden '^Chromium$' "Chromium's private window on $1" open_private "$1"
}
open_private() { chromium "${flags[@]}" --user-data-dir="$profile" --incognito --new-window "$1" >/dev/null 2>&1 & }
