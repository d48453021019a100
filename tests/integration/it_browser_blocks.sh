#!/usr/bin/env bash
# The address blocker in Debian's Chromium, in a window on the desktop, with our
# extension loaded and the host manifest the program wrote at launch: with no block
# running, an address of the always-blocked list lands on the extension's block page
# with block_type=always-blocked before the page is shown, and an address outside the
# list stays. Then a focus block whose type allows Chromium and docs.test: another
# address lands on the block page with the old address, the block's end time and the
# type's name; docs.test stays. Pages come from a web server on loopback; *.test names
# resolve to it.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/browser_setup.sh"
. "$(dirname "$0")/focus_block.sh"

# The pomodoro window waits behind the browser until the block is started.
before_launch() { focus_block_prefs '["/usr/share/applications/chromium.desktop"]' '["docs.test"]'; }
browser_start
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
! grep -q '^news.test ' "$work/requests.log" || note "news.test was requested, though never shown"

focus_block_start
tab="$(tabs open "http://news.test/today")"
tabs wait "$tab" "chrome-extension://$extension_id/vlmr-focus.html" 10 >/dev/null ||
    fail "news.test was not sent to the block page in the block (tab shows $(tabs url "$tab"))"
shown="$(tabs url "$tab")"
# 25 minutes from about 12:00 on the program's clock, on a 12-hour clock.
[[ "$shown" == *"?old_url=http:%2F%2Fnews.test%2Ftoday&focus_mode_end_time=${day}T12:2"?":"??"&focus_mode=Deep" ]] ||
    fail "the block page in the block has the wrong query: $shown"

# An address the type allows stays.
tab="$(tabs open "http://docs.test/guide")"
tabs wait "$tab" "http://docs.test/guide" 10 >/dev/null || fail "docs.test did not load (tab shows $(tabs url "$tab"))"
sleep 2.5 # two ticks of the one-second check
[ "$(tabs url "$tab")" = "http://docs.test/guide" ] || fail "an allowed address was redirected to $(tabs url "$tab")"

screenshot 3-allowed
