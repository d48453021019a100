#!/usr/bin/env bash
# The browsers on the desktop, with our extension and the host manifests the program wrote
# at launch. With no block running, an always-blocked address lands on the extension's
# block page before the page is shown, in Chromium and in Firefox ESR (through web-ext). A
# call in Chromium brings the Meetings block. In a block whose type allows Chromium and
# docs.test, another address lands there with the old address, the end time and the type.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/browser_setup.sh"
web_ext="${VELMORA_WEB_EXT:-$(command -v web-ext || true)}"
[ -x "$web_ext" ] && [ -x /usr/bin/firefox-esr ] || fail "needs firefox-esr and web-ext (scripts/install-deps.sh)"

before_launch() {
    prefs set-list kUserdefaultsArrFocusTypes '[{"name": "Deep", "color": "3366CC",
        "appsArray": ["/usr/share/applications/chromium.desktop"], "urlsArray": ["docs.test"]}]'
    start_accessibility
}
program_start '["news.test", "127.0.0.1"]'
chromium_start
block_page="chrome-extension://$extension_id/vlmr-focus.html"

shown="$(tabs wait "$(tabs open "http://news.test/today?x=1")" "$block_page" 10)" ||
    fail "news.test was not sent to the block page"
[[ "$shown" == *"?old_url=http:%2F%2Fnews.test%2Ftoday%3Fx=1&block_type=always-blocked" ]] ||
    fail "the block page has the wrong query: $shown"

poll 15 "the program wrote Firefox's host manifest" grep -q '"focus@velmora.app"' \
    "$HOME/.mozilla/native-messaging-hosts/app.velmora.host.json"
start_helper "$web_ext" run --firefox=/usr/bin/firefox-esr --source-dir "$extension" --no-reload --no-input \
    --start-url "http://127.0.0.1:$port/feed"
poll 60 "the extension connected from Firefox" grep -q 'Browser bridge: firefox connected' "$VELMORA_LOG"
firefox_title() { xdotool search --onlyvisible --class '^firefox-esr$' getwindowname %@ 2>/dev/null; }
seen=firefox_title poll 15 "Firefox shows the block page" eval 'firefox_title | grep -q "^Blocked – Velmora"'
screenshot firefox-blocked
stop_helper "$helper"

# A call with Chromium open: a recording on the sound server brings the meeting suggestion;
# accepting it starts the Meetings block without an end time, which ends with the call and
# says in its row which program it was.
start_helper parecord --device=mic /dev/null
question="It looks like you're in a meeting. Will you need to use other apps during the meeting? If not, I can block everything else to help you concentrate."
seen="a11y names label" poll 30 "the meeting suggestion comes up" a11y has label "$question"
a11y has button "It's ok for me to use other apps during this meeting" || fail "the suggestion lacks its second button"
a11y press "Block everything else" || fail "\"Block everything else\" could not be pressed"
poll 10 "the Meetings block started without an end time" grep -q "focus mode Started until - $" "$VELMORA_LOG"
stop_helper "$helper"
seen="tail -n 2 $VELMORA_STATS" poll 30 "the block ended with the call and wrote its row" \
    grep -q '^focus block,.*,Meetings,.*,Meeting using {chromium.desktop},' "$VELMORA_STATS"

# A block of the user's type, from its row on the tray panel and its start dialog.
tray_icon
open_panel
a11y press Deep || fail "the panel's Deep row could not be pressed"
seen="a11y names label" poll 10 "the start dialog of Deep is up" a11y has label "Starting Focus type - Deep"
a11y press "Start Focus" || fail "Start Focus could not be pressed"
poll 10 "the block started" grep -q "focus mode Started until - 12:2" "$VELMORA_LOG"
shown="$(tabs wait "$(tabs open "http://news.test/today")" "$block_page" 10)" ||
    fail "news.test was not sent to the block page in the block"
# Twenty minutes (the dialog's default) from about 12:01 on the program's clock.
[[ "$shown" == *"?old_url=http:%2F%2Fnews.test%2Ftoday&focus_mode_end_time=${day}T12:2"?":"??"&focus_mode=Deep" ]] ||
    fail "the block page in the block has the wrong query: $shown"
tab="$(tabs open "http://docs.test/guide")"
tabs wait "$tab" "http://docs.test/guide" 10 >/dev/null || fail "docs.test did not load"
sleep 2.5 # two ticks of the one-second check
tabs wait "$tab" "http://docs.test/guide" 0 >/dev/null || fail "an allowed address was redirected"
