#!/usr/bin/env bash
# The address blocker in the browsers, in windows on the desktop, with our extension and the
# host manifests the program wrote at launch. With no block running, an always-blocked
# address lands on the extension's block page before the page is shown: in Chromium with
# block_type=always-blocked, in Firefox ESR (loaded through web-ext) as well. Then a focus
# block whose type allows Chromium and docs.test: another address lands on the block page
# with the old address, the block's end time and the type's name; docs.test stays.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/browser_setup.sh"
web_ext="${VELMORA_WEB_EXT:-$(command -v web-ext || true)}"
[ -x "$web_ext" ] && [ -x /usr/bin/firefox-esr ] || fail "needs firefox-esr and web-ext (scripts/install-deps.sh)"

# The pomodoro window waits behind the browsers until the block is started.
before_launch() { focus_block_prefs '["/usr/share/applications/chromium.desktop"]' '["docs.test"]'; }
program_start '["news.test", "127.0.0.1"]'
chromium_start
block_page="chrome-extension://$extension_id/vlmr-focus.html"

tab="$(tabs open "http://news.test/today?x=1")"
tabs wait "$tab" "$block_page" 10 || fail "news.test was not sent to the block page"
[[ "$(tabs url "$tab")" == *"?old_url=http:%2F%2Fnews.test%2Ftoday%3Fx=1&block_type=always-blocked" ]] ||
    fail "the block page has the wrong query: $(tabs url "$tab")"

poll 15 "the program wrote Firefox's host manifest" grep -q '"focus@velmora.app"' \
    "$HOME/.mozilla/native-messaging-hosts/app.velmora.host.json"
start_helper "$web_ext" run --firefox=/usr/bin/firefox-esr --source-dir "$extension" --no-reload --no-input \
    --start-url "http://127.0.0.1:$port/feed"
poll 60 "the extension connected from Firefox" grep -q 'Browser bridge: firefox connected' "$VELMORA_LOG"
firefox_title() { xdotool search --onlyvisible --class '^firefox-esr$' getwindowname %@ 2>/dev/null; }
seen=firefox_title poll 15 "Firefox shows the block page" eval 'firefox_title | grep -q "^Blocked – Velmora"'
screenshot firefox-blocked
stop_helper "$helper"

focus_block_start
tab="$(tabs open "http://news.test/today")"
tabs wait "$tab" "$block_page" 10 || fail "news.test was not sent to the block page in the block"
# 25 minutes from about 12:00 on the program's clock.
[[ "$(tabs url "$tab")" == *"?old_url=http:%2F%2Fnews.test%2Ftoday&focus_mode_end_time=${day}T12:2"?":"??"&focus_mode=Deep" ]] ||
    fail "the block page in the block has the wrong query: $(tabs url "$tab")"
tab="$(tabs open "http://docs.test/guide")"
tabs wait "$tab" "http://docs.test/guide" 10 || fail "docs.test did not load"
sleep 2.5 # two ticks of the one-second check
[ "$(tabs url "$tab")" = "http://docs.test/guide" ] || fail "an allowed address was redirected to $(tabs url "$tab")"
