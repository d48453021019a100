#!/usr/bin/env bash
# The same extension in Firefox ESR, loaded through web-ext with the host manifest the
# program wrote in ~/.mozilla: a tab on an always-blocked address lands on the block page.
set -euo pipefail
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/browser_setup.sh"
web_ext="${VELMORA_WEB_EXT:-$(command -v web-ext || true)}"
[ -x "$web_ext" ] && [ -x /usr/bin/firefox-esr ] || fail "needs firefox-esr and web-ext (scripts/install-deps.sh)"
program_start 127.0.0.1
poll 15 "the program wrote Firefox's host manifest" grep -q '"focus@velmora.app"' \
    "$HOME/.mozilla/native-messaging-hosts/app.velmora.host.json"
start_helper "$web_ext" run --firefox=/usr/bin/firefox-esr --source-dir "$extension" --no-reload --no-input \
    --start-url "http://127.0.0.1:$port/feed"
poll 60 "the extension connected from Firefox" grep -q 'Browser bridge: firefox connected' "$VELMORA_LOG"
title() { xdotool search --onlyvisible --class '^firefox-esr$' getwindowname %@ 2>/dev/null; }
blocked() { title | grep -q '^Blocked – Velmora'; }
seen=title poll 15 "Firefox shows the block page" blocked
screenshot 1-blocked
