#!/usr/bin/env bash
# How fast the blockers act on the real desktop, as medians and worst cases over
# BENCH_TRIALS (default 50) trials. Run on demand, never by CTest:
#
#   bash bench/bench_blocking.sh            (uses build/bin; needs Xvfb, openbox, chromium)
#
# (a) activation -> iconified: a habit allows only Alpha; Beta is activated through the
#     window manager (as a click or a pager does) and timed until its WM_STATE is Iconic.
# (b) navigation start -> block page: with "news.test" on the always-blocked list, a new
#     Chromium tab is opened on it through DevTools and timed until the tab shows the
#     extension's block page (DevTools polled every 2 ms).
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
root="$here/.."
export VELMORA_BIN="${VELMORA_BIN:-$root/build/bin/velmora}"
export VELMORA_PREFS="${VELMORA_PREFS:-$(dirname "$VELMORA_BIN")/velmora-prefs}"
export BENCH_TRIALS="${BENCH_TRIALS:-50}"
export VELMORA_TEST_OUTPUT="${VELMORA_TEST_OUTPUT:-$root/build/bench-output}"
session="$root/tests/integration/session.sh"

# shellcheck disable=SC2016  # expanded inside the session
bash "$session" bash -c '
    set -euo pipefail
    . "$0/tests/integration/lib.sh"
    . "$0/tests/integration/item_apps.sh"
    . "$0/bench/blocking_setup.sh"
    item_apps_start 300 "5 minutes"
    start_helper "$VELMORA_IT_PYTHON" "$0/tests/integration/testwin.py" Beta
    poll 10 "Beta exists" xdotool search --class "^Beta$"
    sleep 1
    "$VELMORA_IT_PYTHON" "$0/bench/block_timing.py" iconify "$(xdotool search --class "^Beta$" | head -n1)" "$BENCH_TRIALS"
' "$root" 2>&1 | grep -E '^(activation|FAIL)'

bash "$session" bash -c '
    set -euo pipefail
    . "$0/tests/integration/lib.sh"
    . "$0/tests/integration/browser_setup.sh"
    . "$0/bench/blocking_setup.sh"
    browser_start
    "$VELMORA_IT_PYTHON" "$0/bench/block_timing.py" redirect "$devtools" "http://news.test/page" \
        "chrome-extension://$extension_id/vlmr-focus.html" "$BENCH_TRIALS"
' "$root" 2>&1 | grep -E '^(navigation|FAIL)'
