#!/usr/bin/env bash
# The address blocker in Debian's Chromium, in a window on the desktop, with our
# extension loaded and the host manifest the program wrote at launch: with no block
# running, an address of the always-blocked list lands on the extension's block page
# with block_type=always-blocked before the page is shown, and an address outside the
# list stays. Pages come from a web server on loopback; *.test names resolve to it.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

[ -x "${VELMORA_PREFS:-}" ] || fail "VELMORA_PREFS ('${VELMORA_PREFS:-}') is not the velmora-prefs tool"
command -v chromium >/dev/null || fail "chromium is not installed (apt-get install chromium)"
prefs() { "$VELMORA_PREFS" "$VELMORA_CONF" "$@"; }
here="$(cd "$(dirname "$0")" && pwd)"
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

# The browser has been used before: its configuration folder is there, and the
# program writes its host's manifest into it at launch.
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
screenshot 1-browser

# An address on the always-blocked list: the block page, before the page is read.
tab="$(tabs open "http://news.test/today?x=1")"
ms="$(tabs wait "$tab" "chrome-extension://$extension_id/vlmr-focus.html" 10)" ||
    fail "news.test was not sent to the block page (tab shows $(tabs url "$tab"); log: $(tail -n 5 "$VELMORA_LOG"))"
note "news.test reached the block page in $ms ms"
shown="$(tabs url "$tab")"
[[ "$shown" == *"?old_url=http:%2F%2Fnews.test%2Ftoday%3Fx=1&block_type=always-blocked" ]] ||
    fail "the block page has the wrong query: $shown"
screenshot 2-blocked
if grep -q '^news.test ' "$work/requests.log"; then
    note "the blocked address was requested from the server before the redirect (the page was not shown)"
fi

# An address outside the list stays.
tab="$(tabs open "http://docs.test/guide")"
tabs wait "$tab" "http://docs.test/guide" 10 >/dev/null || fail "docs.test did not load (tab shows $(tabs url "$tab"))"
sleep 2.5 # two ticks of the one-second check
[ "$(tabs url "$tab")" = "http://docs.test/guide" ] || fail "an allowed address was redirected to $(tabs url "$tab")"

screenshot 3-allowed
