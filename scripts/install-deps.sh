#!/usr/bin/env bash
# Installs everything Velmora needs to build, run and test on Debian.
# Safe to run again: apt-get skips what is already there.
set -euo pipefail

packages=(
  # toolchain
  g++ cmake make pkg-config clang-format git
  clang libclang-rt-14-dev llvm  # the sanitized build and the fuzz targets
  # Qt 6
  qt6-base-dev qt6-base-dev-tools libqt6svg6 qt6-webengine-dev qt6-webengine-dev-tools
  qt6-base-private-dev  # the month test plugs monitors in and out through the offscreen platform
  libgl-dev libxkbcommon-dev
  # outside world
  libpulse-dev libcanberra-dev libvalijson-dev
  libcanberra-pulse  # libcanberra's sound-server backend (PulseAudio, PipeWire's pulse server)
  libglib2.0-dev libxcb1-dev libxcb-ewmh-dev libxcb-icccm4-dev libxcb-keysyms1-dev libx11-dev libx11-xcb-dev
  # runtime and integration tests
  xvfb x11-xserver-utils openbox tint2 xdotool pulseaudio pulseaudio-utils dbus dbus-x11
  faketime procps fonts-dejavu-core fonts-noto-color-emoji
  python3-pyatspi at-spi2-core
  x11-utils python3-xlib
  python3-websocket  # the settings page test talks to the web engine's debugging port
  chromium firefox-esr  # the meeting suggestion and the browser bridge need real browsers
  # the Debian package (scripts/package.sh) and its check in fresh root folders
  debhelper dpkg-dev fakeroot lintian desktop-file-utils appstream debootstrap bubblewrap openssl
  python3 libglib2.0-bin
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO="sudo"
export DEBIAN_FRONTEND=noninteractive
if [ ${#missing[@]} -eq 0 ]; then
  echo "install-deps: every Debian package is installed"
else
  $SUDO apt-get update -q
  $SUDO apt-get install -y -q --no-install-recommends "${missing[@]}"
fi

# web-ext (npm) runs Firefox with the extension loaded for the browser tests.
if ! command -v web-ext >/dev/null; then
  command -v npm >/dev/null || $SUDO apt-get install -y -q --no-install-recommends npm
  $SUDO npm install -g --no-audit --no-fund web-ext@8
fi
