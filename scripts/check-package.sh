#!/usr/bin/env bash
# Check 1 of the package, in a fresh Debian root folder (debootstrap, nothing else
# installed; the base is kept as build/package/SUITE-base.tar):
#   - `apt install ./velmora_*.deb` pulls every runtime dependency and no build tool;
#   - the installed program starts under Xvfb and shows its first-run lock;
#   - Chromium with a fresh profile and no command-line flags has the extension the
#     package installed, and an always-blocked address lands on the block page;
#   - Firefox ESR with a fresh profile likewise (it runs the add-on from its system
#     add-on folder unsigned; the check prints Firefox's record of it).
#
#   scripts/check-package.sh [SUITE [DEB]]    SUITE bookworm by default; DEB the newest
#                                             package for it in build/package
# VELMORA_PREFS names the velmora-prefs test tool (build/bin/velmora-prefs), which sets
# the preferences that take the program past its first day. The report is in
# build/package/check-SUITE.txt.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"

if [ "${1:-}" = --inside ]; then
  # ---- inside the root, as the user "tester", without network
  export HOME=/home/tester XDG_RUNTIME_DIR=/run/user/1000 DISPLAY=:7 LANG=C.UTF-8
  mkdir -p -m 700 "$XDG_RUNTIME_DIR"
  mkdir -p "$HOME/logs"
  cd "$HOME"
  log="$HOME/.local/share/velmora/Debug_Logs.txt"
  conf="$HOME/.config/velmora/velmora.conf"
  say() { echo "check: $*"; }
  fail() { echo "check: FAILED: $*"; exit 1; }
  poll() { # SECONDS WHAT COMMAND...
    local deadline=$((SECONDS + $1)) what="$2"
    shift 2
    until "$@" >/dev/null 2>&1; do
      [ "$SECONDS" -lt "$deadline" ] || { echo "check: FAILED: $what"; return 1; }
      sleep 0.5
    done
    say "ok: $what"
  }
  Xvfb :7 -screen 0 1280x800x24 -nolisten tcp >$HOME/logs/Xvfb.log 2>&1 &
  poll 20 "Xvfb answers" xdpyinfo
  openbox --sm-disable >$HOME/logs/openbox.log 2>&1 &
  poll 15 "openbox manages the screen" sh -c 'xprop -root _NET_SUPPORTING_WM_CHECK | grep -q "window id"'

  # -- the first-run lock
  velmora >$HOME/logs/velmora-1.log 2>&1 &
  pid=$!
  poll 40 "the installed program shows its first-run lock ('Velmora lock')" \
    xdotool search --onlyvisible --name '^Velmora lock$' || { cat $HOME/logs/velmora-1.log; exit 1; }
  kill "$pid"; wait "$pid" || true

  # -- past the first day, with blocked.test always blocked
  today="$(date +%F)"
  prefs() { /opt/velmora-check/velmora-prefs "$conf" "$@"; }
  prefs set-string kUserdefaultsSelectedJson \
    '{"morningHabits": [], "breakActivities": [], "breakAfterMinutes": 50, "startTime": "00:00", "shutOffTime": "23:59"}'
  prefs set-bool kUserdefaultsFirstRun true
  prefs set-bool kUserdefaultsPromptToRememberHabit false
  for key in UserdefaultsLastHabitShowDate kUserdefaultsFocusSummaryShowedTillDate \
      kUserdefaultsEveningHabitsShowedTillDate kUserdefaultsShutdownAborted; do
    prefs set-date "$key" "$today 00:00:00"
  done
  prefs set-list kUserdefaultsArrBlockedUrls '["blocked.test"]'
  # Browser folders as a user who used them has: the program would write its own manifests there.
  mkdir -p "$HOME/.config/chromium" "$HOME/.mozilla"
  velmora >$HOME/logs/velmora-2.log 2>&1 &
  poll 30 "the program's browser bridge listens" test -S "$XDG_RUNTIME_DIR/velmora/browser.sock"
  for user_copy in .config/chromium/NativeMessagingHosts .mozilla/native-messaging-hosts; do
    [ ! -e "$HOME/$user_copy/app.velmora.host.json" ] || fail "the program wrote $user_copy although the system's manifest is there"
  done

  # blocked WINDOW-CLASS NAME: the browser in front opens http://blocked.test/ and shows the block page.
  blocked() {
    local window
    window="$(xdotool search --onlyvisible --class "$1" | tail -n1)"
    xdotool windowactivate --sync "$window" 2>/dev/null || true
    xdotool key --clearmodifiers ctrl+l && sleep 0.5
    xdotool type --delay 20 'http://blocked.test/' && xdotool key Return
    poll 20 "$2 shows the block page ('Blocked – Velmora') for an always-blocked address" \
      sh -c "xdotool search --onlyvisible --class '$1' getwindowname %@ | grep -q '^Blocked – Velmora'"
  }

  # -- Chromium: fresh profile, no flags
  chromium >$HOME/logs/chromium.log 2>&1 &
  poll 40 "Chromium's window is mapped" xdotool search --onlyvisible --class '^Chromium$'
  poll 60 "Chromium has the packaged extension, connected through the system manifest" \
    grep -q 'Browser bridge: chromium connected' "$log" || { tail -n 20 $HOME/logs/chromium.log; exit 1; }
  blocked '^Chromium$' Chromium
  pkill -u "$(id -u)" -x chromium || true

  # -- Firefox ESR: fresh profile, no flags. Its profiles are under ~/.config/mozilla
  # (or ~/.mozilla for older versions).
  addon_state() {
    cat "$HOME"/.config/mozilla/firefox/*/extensions.json "$HOME"/.mozilla/firefox/*/extensions.json 2>/dev/null |
      python3 -c 'import json,sys
for a in json.load(sys.stdin)["addons"]:
    if a["id"] == "focus@velmora.app":
        print("location=%s active=%s appDisabled=%s signedState=%s" % (a["location"], a["active"], a["appDisabled"], a["signedState"]))' 2>/dev/null || true
  }
  firefox-esr >$HOME/logs/firefox.log 2>&1 &
  poll 40 "Firefox's window is mapped" xdotool search --onlyvisible --class '^firefox'
  if poll 60 "Firefox ESR runs the packaged add-on and connects through the system manifest" \
      grep -q 'Browser bridge: firefox connected' "$log"; then
    blocked '^firefox' 'Firefox ESR'
    pkill -u "$(id -u)" -x firefox-esr || true
    sleep 2
    say "Firefox ESR's record of the add-on: $(addon_state)"
  else
    say "Firefox ESR refused the packaged add-on: $(addon_state)"
    exit 1
  fi
  say "all held"
  exit 0
fi

# ---- outside: make the root, install the package, run the above in it
. "$here/debian-root.sh"
top="$(cd "$here/.." && pwd)"
out="${VELMORA_PACKAGE_DIR:-$top/build/package}"
suite="${1:-bookworm}"
case "$suite" in bookworm) release=12 ;; trixie) release=13 ;; *) release="*" ;; esac
deb="${2:-$(ls -t "$out"/velmora_*+deb${release}_"$(dpkg --print-architecture)".deb 2>/dev/null | head -n1)}"
[ -f "$deb" ] || { echo "check-package: no package; run scripts/package.sh" >&2; exit 1; }
prefs_tool="${VELMORA_PREFS:-$top/build/bin/velmora-prefs}"
[ -x "$prefs_tool" ] || { echo "check-package: $prefs_tool is not built" >&2; exit 1; }
root="$out/$suite-check-root"
report="$out/check-$suite.txt"
start=$SECONDS
exec > >(tee "$report") 2>&1
echo "check: $(basename "$deb") in a fresh $suite root"
root_fresh "$suite" "$out" "$root"
in_root "$root" dpkg-query -W -f '${Package}\n' | sort >"$out/$suite-before.txt"
cp "$deb" "$root/root/"
in_root "$root" sh -c "apt-get update -q >/dev/null && apt-get install -y -q /root/$(basename "$deb")" \
  >"$out/$suite-install.log" 2>&1 || { tail -n 30 "$out/$suite-install.log"; exit 1; }
in_root "$root" dpkg-query -W -f '${Package}\n' | sort >"$out/$suite-after.txt"
pulled="$(comm -13 "$out/$suite-before.txt" "$out/$suite-after.txt")"
echo "check: ok: apt install pulled $(wc -l <<<"$pulled") packages"
tools="$(grep -E '^(gcc|g\+\+|cpp|clang|cmake|make|ninja-build|binutils|dpkg-dev|build-essential|pkgconf|pkg-config|debhelper|libtool|autoconf|automake)(-[0-9.]+)?$|-dev$' <<<"$pulled" || true)"
[ -z "$tools" ] || { echo "check: FAILED: build tools were pulled: $tools"; exit 1; }
echo "check: ok: no build tool among them"
for path in usr/bin/velmora usr/bin/velmora-browser-host usr/share/applications/velmora.desktop \
    etc/xdg/autostart/velmora.desktop usr/lib/systemd/user/velmora.service \
    usr/share/icons/hicolor/scalable/apps/velmora.svg usr/share/icons/hicolor/48x48/apps/velmora.png \
    usr/share/metainfo/app.velmora.Velmora.metainfo.xml usr/share/man/man1/velmora.1.gz \
    etc/chromium/native-messaging-hosts/app.velmora.host.json usr/lib/mozilla/native-messaging-hosts/app.velmora.host.json \
    usr/share/chromium/extensions/velmora/manifest.json usr/share/velmora/browser/velmora.crx \
    usr/share/google-chrome/extensions/fbejcoihjmiomcngkmanpfmkfcceegnf.json \
    "usr/share/mozilla/extensions/{ec8030f7-c20a-464f-9b0e-13a3a9e97384}/focus@velmora.app.xpi"; do
  [ -e "$root/$path" ] || { echo "check: FAILED: the package did not install /$path"; exit 1; }
done
echo "check: ok: the program, host, desktop entries, unit, icons, metadata, manual and browser files are in place"

# The browsers and the desktop the check runs on, installed after the package's own check.
in_root "$root" sh -c 'apt-get install -y -q --no-install-recommends xvfb xauth x11-utils xdotool openbox \
  chromium firefox-esr python3 procps fonts-dejavu-core && useradd -m -u 1000 tester' \
  >"$out/$suite-tools.log" 2>&1 || { tail -n 30 "$out/$suite-tools.log"; exit 1; }
mkdir -p "$root/opt/velmora-check"
cp "$prefs_tool" "$here/check-package.sh" "$root/opt/velmora-check/"
echo "127.0.0.1 blocked.test" >>"$root/etc/hosts"
# In the user namespace the check runs in, its user is this side's root.
chown -R 0:0 "$root/home/tester"
status=0
in_root "$root" --unshare-user --uid 1000 --gid 1000 --cap-drop ALL --unshare-net --setenv HOME /home/tester -- \
  bash /opt/velmora-check/check-package.sh --inside || status=$?
if [ "$status" != 0 ]; then
  for f in velmora-1 velmora-2 chromium firefox; do
    echo "--- $f (last lines)"; tail -n 15 "$root/home/tester/logs/$f.log" 2>/dev/null || true
  done
  tail -n 30 "$root/home/tester/.local/share/velmora/Debug_Logs.txt" 2>/dev/null || true
fi
echo "check: $suite took $((SECONDS - start)) s"
exit "$status"
