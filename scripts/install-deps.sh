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
  libglib2.0-dev libxcb1-dev libxcb-ewmh-dev libxcb-icccm4-dev libxcb-keysyms1-dev libxcb-res0-dev libx11-dev libx11-xcb-dev
  # runtime and integration tests
  xvfb x11-xserver-utils openbox tint2 xdotool pulseaudio pulseaudio-utils dbus dbus-x11
  faketime procps fonts-dejavu-core fonts-noto-color-emoji
  python3-pyatspi at-spi2-core
  libglib2.0-bin  # gio launch runs the autostart entry as a desktop does
  x11-utils python3-xlib
  python3-websocket  # the settings page test talks to the web engine's debugging port
  chromium firefox-esr  # the meeting suggestion and the browser bridge need real browsers
  # Wayland: the lock's layer surfaces, window lists, and the compositors the tests run headless
  qt6-wayland qt6-wayland-dev qt6-wayland-dev-tools wayland-protocols plasma-wayland-protocols libwayland-dev
  dpkg-dev xz-utils  # apt-get source, and unpacking what it fetches
  sway grim wtype foot kwin-wayland xdg-desktop-portal xdg-desktop-portal-kde
  gnome-shell python3-gi gir1.2-gtk-3.0 libglib2.0-bin  # the lock on GNOME: a headless shell, GTK test windows, gsettings
  debootstrap bubblewrap  # tests/integration/gnome/gnome48.sh: GNOME Shell 48 from a Debian 13 root folder
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

# Two things the Wayland build needs come in no Debian binary package: the private
# headers of QtWaylandClient (the lock's own shell integration derives from them)
# and wlroots' protocol files (layer shell, foreign toplevel). Both come from
# Debian's source packages, of exactly the installed versions, fetched through a
# private apt list: no file of the system changes and nothing lands in the
# repository. The build reads them from VELMORA_WAYLAND_SOURCES.
sources="${VELMORA_WAYLAND_SOURCES:-${XDG_CACHE_HOME:-$HOME/.cache}/velmora/wayland-sources}"
qt_version=$(dpkg-query -W -f='${Version}' qt6-wayland-dev)
wlr_version=$(dpkg-query -W -f='${Version}' "$(dpkg-query -W -f='${Package}\n' 'libwlroots*' | head -n1)")
qt_upstream=${qt_version%-*}
if [ "$(cat "$sources/qtwayland-$qt_upstream/.complete" 2>/dev/null)" != "$qt_version" ] ||
   [ "$(cat "$sources/wlroots-protocols/.complete" 2>/dev/null)" != "$wlr_version" ]; then
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  mirror=$(sed -n 's/^URIs:[[:space:]]*\(http[^ ]*debian\)[[:space:]]*$/\1/p' /etc/apt/sources.list.d/*.sources 2>/dev/null | head -n1)
  [ -n "$mirror" ] || mirror=$(sed -n 's/^deb[[:space:]]\+\(http[^ ]*debian\)[[:space:]].*/\1/p' /etc/apt/sources.list /etc/apt/sources.list.d/*.list 2>/dev/null | head -n1)
  [ -n "$mirror" ] || mirror=http://deb.debian.org/debian
  suite=$(. /etc/os-release && echo "${VERSION_CODENAME:-bookworm}")
  echo "deb-src $mirror $suite main" > "$work/sources.list"
  mkdir -p "$work/lists/partial"
  apt_private=(-o Dir::Etc::SourceList="$work/sources.list" -o Dir::Etc::SourceParts=/dev/null
               -o Dir::State::Lists="$work/lists")
  apt-get "${apt_private[@]}" update -q
  (cd "$work" && apt-get "${apt_private[@]}" source --download-only \
      "qt6-wayland=$qt_version" "wlroots=$wlr_version")
  rm -rf "$sources/qtwayland-$qt_upstream" "$sources/wlroots-protocols"
  mkdir -p "$sources/qtwayland-$qt_upstream/include/QtWaylandClient/private" "$sources/wlroots-protocols" "$work/qt" "$work/wlr"
  tar -xf "$work"/qt6-wayland_*.orig.tar.* -C "$work/qt" --strip-components=1
  tar -xf "$work"/wlroots_*.orig.tar.* -C "$work/wlr" --strip-components=1
  find "$work/qt/src/client" -name '*_p.h' -exec cp {} "$sources/qtwayland-$qt_upstream/include/QtWaylandClient/private/" \;
  cp "$work"/wlr/protocol/wlr-*.xml "$sources/wlroots-protocols/"
  echo "$qt_version" > "$sources/qtwayland-$qt_upstream/.complete"
  echo "$wlr_version" > "$sources/wlroots-protocols/.complete"
  echo "install-deps: Wayland sources in $sources"
fi
