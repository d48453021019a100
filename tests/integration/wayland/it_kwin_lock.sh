#!/usr/bin/env bash
# The morning lock under KWin 5.27 with two virtual outputs (nested in the headless sway for
# the screenshots): it covers both above an ordinary window, KWin's window switching and
# typed keys stay with the lock, the release chord lifts it; and KWin's window list is the
# program's, by the desktop entry it writes for itself.
set -euo pipefail
. "$(dirname "$0")/../lib.sh"
. "$(dirname "$0")/wl_lib.sh"

# A program that has started once has its desktop entry; KWin reads the entries it starts with.
"$VELMORA_BIN" --help >/dev/null
grep -q "^X-KDE-Wayland-Interfaces=org_kde_plasma_window_management$" "$XDG_DATA_HOME/applications/velmora-unpackaged.desktop" ||
    fail "the program wrote no desktop entry asking for KWin's window list"
kwin_up
typed="$VELMORA_IT_DIR/typed-ordinary"
start_helper env WAYLAND_DISPLAY="$KWIN_DISPLAY" "$VELMORA_TESTWIN" ordinary aa0000 "$typed"
sleep 1
fake_keys o k
poll 5 "the ordinary window takes typing" grep -q ok "$typed"

prefs set-string kUserdefaultsSelectedJson '{"morningHabits": [{"name": "Water", "durationSeconds": 120}],
    "breakActivities": [], "breakAfterMinutes": 50, "startTime": "07:00", "shutOffTime": "22:00"}'
night_done
WAYLAND_DISPLAY="$KWIN_DISPLAY" SWAYSOCK="" start_velmora "$day 06:59:56"
seen="tail -n 3 $VELMORA_LOG" poll 30 "the debug log has 'Showing morning habits.'" \
    grep -q "Showing morning habits\.\$" "$VELMORA_LOG"
grep -q "Lock: layer-shell overlay surfaces" "$VELMORA_LOG" || fail "the lock is not made of layer surfaces on KWin"
grep -q "Workspace: org_kde_plasma_window_management" "$VELMORA_LOG" || fail "KWin did not hand over its window list"
for output in HEADLESS-1 HEADLESS-2; do
    seen="covered $output aa0000" poll 10 "the lock covers KWin's output on $output" covered "$output" aa0000
    wl_shot "$output" "locked-$output"
done

fake_keys alt+tab super+d ctrl+f1 n o
sleep 0.5
for output in HEADLESS-1 HEADLESS-2; do covered "$output" aa0000 >/dev/null || fail "$output is uncovered"; done
[ "$(cat "$typed")" = ok ] || fail "the ordinary window received keys under the lock: $(cat "$typed")"

fake_keys ctrl+alt+shift+tab
seen="covered HEADLESS-1" poll 10 "the release chord lifts the lock" eval '! covered HEADLESS-1 >/dev/null && ! covered HEADLESS-2 >/dev/null'
wl_shot HEADLESS-1 released
