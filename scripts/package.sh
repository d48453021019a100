#!/usr/bin/env bash
# Builds the Debian package velmora_<version>+deb<N>_<arch>.deb for the Debian this
# runs on, in build/package/, from what `cmake --install` installs (debian/ with
# debhelper), and checks it with lintian, desktop-file-validate and appstreamcli
# (their outputs in build/package/checks-deb<N>.txt).
#
#   scripts/package.sh          this Debian's package; its tests are ctest's business
#   scripts/package.sh --all    then Debian 13's, built in a debootstrap root folder with
#                               the unit and widget tests run there, and check 1 on it
#
# VELMORA_PACKAGE_DIR moves the output folder; the build shares ccache's objects with
# the developer's builds when ccache is installed.
set -euo pipefail
cd "$(dirname "$0")/.."
top="$PWD"
out="${VELMORA_PACKAGE_DIR:-$top/build/package}"
all=0
case "${1:-}" in
  --all) all=1 ;;
  "") ;;
  *) echo "usage: scripts/package.sh [--all]" >&2; exit 2 ;;
esac
mkdir -p "$out"

version="$(sed -n 's/^project(Velmora VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)"
[ -n "$version" ] || { echo "package: no version in CMakeLists.txt" >&2; exit 1; }

# copy_tree DEST: the working tree's files (tracked and new, not ignored), with the
# changelog's top entry at this version for Debian release N ($2).
copy_tree() {
  rm -rf "$1" && mkdir -p "$1"
  git ls-files -z -co --exclude-standard | tar --null --ignore-failed-read -T - -cf - 2>/dev/null | tar -xf - -C "$1"
  sed -i "1s/^velmora ([^)]*)/velmora ($version+deb$2)/" "$1/debian/changelog"
}

# check_package DEB N: lintian (no error allowed), desktop-file-validate and
# appstreamcli on what the package holds; all output in checks-debN.txt.
check_package() {
  local deb="$1" report="$out/checks-deb$2.txt" unpacked="$out/unpacked-deb$2" failed=0
  rm -rf "$unpacked" && dpkg-deb -x "$deb" "$unpacked"
  {
    echo "== lintian $(lintian --version | cut -d' ' -f2) $(basename "$deb")"
    lintian --info --display-info --fail-on error "$deb" || failed=1
    for entry in usr/share/applications/velmora.desktop etc/xdg/autostart/velmora.desktop; do
      echo "== desktop-file-validate $entry"
      desktop-file-validate "$unpacked/$entry" || failed=1
    done
    echo "== appstreamcli validate usr/share/metainfo/app.velmora.Velmora.metainfo.xml"
    appstreamcli validate --no-net --pedantic "$unpacked/usr/share/metainfo/app.velmora.Velmora.metainfo.xml" || failed=1
  } >"$report" 2>&1
  cat "$report"
  rm -rf "$unpacked"
  return "$failed"
}

release="$(. /etc/os-release && echo "${VERSION_ID%%.*}")"
arch="$(dpkg --print-architecture)"
start=$SECONDS
copy_tree "$out/src" "$release"
export DEB_BUILD_OPTIONS="nocheck parallel=$(nproc)"
# debhelper builds with a home of its own: say where install-deps.sh put the
# QtWaylandClient headers and wlroots' protocol files.
export VELMORA_WAYLAND_SOURCES="${VELMORA_WAYLAND_SOURCES:-$HOME/.cache/velmora/wayland-sources}"
if command -v ccache >/dev/null; then
  export VELMORA_CCACHE=1 CCACHE_BASEDIR="${CCACHE_BASEDIR:-$out}" CCACHE_NOHASHDIR=1
fi
(cd "$out/src" && nice dpkg-buildpackage -b -us -uc --no-sign)
deb="$out/velmora_${version}+deb${release}_${arch}.deb"
echo "package: built $deb in $((SECONDS - start)) s"
check_package "$deb" "$release"

if [ "$all" = 1 ]; then
  start=$SECONDS
  bash scripts/debian-root.sh build trixie "$out"
  echo "package: Debian 13's package and its tests took $((SECONDS - start)) s"
  check_package "$out/velmora_${version}+deb13_${arch}.deb" 13
  start=$SECONDS
  # The preferences tool of check 1 as built there, against Debian 13's Qt.
  VELMORA_PREFS="$out/trixie-build-root/build/src/obj-$(dpkg-architecture -qDEB_HOST_GNU_TYPE)/bin/velmora-prefs" \
    bash scripts/check-package.sh trixie "$out/velmora_${version}+deb13_${arch}.deb"
  echo "package: check 1 on Debian 13 took $((SECONDS - start)) s"
fi
