#!/usr/bin/env bash
# Installs what is missing, builds, and starts Velmora. Without a display it
# starts a virtual one (with a window manager and a tray) first.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
bash scripts/build.sh
export QTWEBENGINE_DISABLE_SANDBOX=1
if [ -z "${DISPLAY:-}" ]; then
  echo "No display: starting Velmora on a virtual one (:77)."
  Xvfb :77 -screen 0 1920x1080x24 +extension RANDR &
  export DISPLAY=:77
  for _ in $(seq 50); do [ -e /tmp/.X11-unix/X77 ] && break; sleep 0.1; done
  eval "$(dbus-launch --sh-syntax)"
  openbox >/dev/null 2>&1 &
  tint2 >/dev/null 2>&1 &
  # The tray must be there before the program looks for it.
  for _ in $(seq 50); do xdotool search --class tint2 >/dev/null 2>&1 && break; sleep 0.1; done
  sleep 0.5
fi
exec build/bin/velmora "$@"
