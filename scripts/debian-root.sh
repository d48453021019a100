#!/usr/bin/env bash
# Fresh Debian root folders made with debootstrap, and commands run in them.
#
#   scripts/debian-root.sh base SUITE DIR     DIR/SUITE-base.tar: a debootstrap root with nothing
#                                            else installed, made once and kept (the cache)
#   scripts/debian-root.sh build SUITE OUT    the package built in a fresh SUITE root with its
#                                            build dependencies, the unit and widget tests run
#                                            there; the .deb lands in OUT
#
# Sourced, it gives root_fresh and in_root to scripts/check-package.sh. Commands run in
# the root through bubblewrap (its own /proc, /dev and /tmp), as root unless told
# otherwise. The mirror is the one this machine's apt uses.
set -euo pipefail
_root_here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"

root_mirror() {
  local uri
  uri="$(grep -hsE '^(URIs:|deb )' /etc/apt/sources.list.d/*.sources /etc/apt/sources.list 2>/dev/null |
    grep -oE 'https?://[^ ]*/debian/?' | head -n1 || true)"
  echo "${uri:-http://deb.debian.org/debian}"
}

# root_base SUITE DIR: prints the cached base tarball's path, making it when missing.
root_base() {
  local suite="$1" dir="$2" tarball="$2/$1-base.tar" work
  mkdir -p "$dir"
  if [ ! -s "$tarball" ]; then
    work="$dir/$suite-debootstrap"
    rm -rf "$work"
    echo "debian-root: debootstrap $suite from $(root_mirror)" >&2
    debootstrap --components=main "$suite" "$work" "$(root_mirror)" >"$dir/$suite-debootstrap.log" 2>&1 ||
      { tail -n 20 "$dir/$suite-debootstrap.log" >&2; return 1; }
    rm -f "$work"/var/cache/apt/archives/*.deb
    tar -C "$work" -cf "$tarball.part" . && mv "$tarball.part" "$tarball"
    rm -rf "$work"
  fi
  echo "$tarball"
}

# root_fresh SUITE CACHE-DIR ROOT: ROOT made anew from the base tarball.
root_fresh() {
  local tarball
  tarball="$(root_base "$1" "$2")"
  rm -rf "$3" && mkdir -p "$3"
  tar -C "$3" -xf "$tarball"
  # As an installed system has them: the point-release updates and the security archive.
  local security suite="$1"
  security="$(grep -hsE '^(URIs:|deb )' /etc/apt/sources.list.d/*.sources /etc/apt/sources.list 2>/dev/null |
    grep -oE 'https?://[^ ]*/debian-security/?' | head -n1 || true)"
  {
    echo "deb $(root_mirror) $suite main"
    echo "deb $(root_mirror) $suite-updates main"
    echo "deb ${security:-http://security.debian.org/debian-security} $suite-security main"
  } >"$3/etc/apt/sources.list"
}

# in_root ROOT [bwrap options --] COMMAND...: runs COMMAND in ROOT.
in_root() {
  local root="$1" options=()
  shift
  if printf '%s\n' "$@" | grep -qx -- --; then
    while [ "$1" != -- ]; do options+=("$1"); shift; done
    shift
  fi
  bwrap --bind "$root" / --proc /proc --dev /dev --perms 1777 --tmpfs /tmp --tmpfs /run --dir /run/user \
    --ro-bind /etc/resolv.conf /etc/resolv.conf --unshare-pid --unshare-ipc --die-with-parent \
    --cap-add ALL --setenv PATH /usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
    --setenv DEBIAN_FRONTEND noninteractive --setenv LANG C.UTF-8 --setenv HOME /root \
    "${options[@]}" "$@"
}

# The build dependencies named in debian/control, first alternatives, without versions.
build_depends() {
  sed -n '/^Build-Depends:/,/^[A-Z]/p' "$_root_here/../debian/control" | sed '$d' |
    sed 's/^Build-Depends://; s/([^)]*)//g; s/<[^>]*>//g; s/|[^,]*//g; s/:any//g' | tr ',' '\n' |
    tr -d ' \t' | grep -v '^$' | sed 's/^debhelper-compat$/debhelper/'
}

root_build() {
  local suite="$1" out="$2" root="$2/$1-build-root" top="$_root_here/.."
  # VELMORA_KEEP_ROOT=1 builds again in the root of the last run, its build
  # dependencies already installed.
  if [ "${VELMORA_KEEP_ROOT:-0}" != 1 ] || [ ! -d "$root/build" ]; then
    root_fresh "$suite" "$out" "$root"
    in_root "$root" sh -c "apt-get update -q && apt-get install -y -q --no-install-recommends \
      build-essential fakeroot $(build_depends | tr '\n' ' ')" >"$out/$suite-build-deps.log" 2>&1 ||
      { tail -n 30 "$out/$suite-build-deps.log" >&2; return 1; }
  fi
  local release
  release="$(. "$root/etc/os-release" && echo "${VERSION_ID%%.*}")"
  rm -rf "$root/build" && mkdir -p "$root/build/src"
  (cd "$top" && git ls-files -z -co --exclude-standard | tar --null --ignore-failed-read -T - -cf - 2>/dev/null) |
    tar -xf - -C "$root/build/src"
  local version
  version="$(sed -n 's/^project(Velmora VERSION \([0-9.]*\).*/\1/p' "$top/CMakeLists.txt")"
  sed -i "1s/^velmora ([^)]*)/velmora ($version+deb$release)/" "$root/build/src/debian/changelog"
  # Debian 13 ships the private QtWaylandClient headers, but wlroots' protocol files are in
  # no binary package there either: the copies install-deps.sh fetched serve (the protocols
  # are versioned on the wire, so an older file only offers less).
  local sources="${VELMORA_WAYLAND_SOURCES:-$HOME/.cache/velmora/wayland-sources}"
  mkdir -p "$root/build/wayland-sources"
  cp -r "$sources/wlroots-protocols" "$root/build/wayland-sources/"
  echo "debian-root: building in $root (log: $out/$suite-build.log)" >&2
  in_root "$root" --chdir /build/src --setenv DEB_BUILD_OPTIONS "parallel=$(nproc)" \
    --setenv VELMORA_WAYLAND_SOURCES /build/wayland-sources -- \
    nice -n 19 dpkg-buildpackage -b -us -uc --no-sign >"$out/$suite-build.log" 2>&1 ||
    { tail -n 60 "$out/$suite-build.log" >&2; return 1; }
  grep -E 'tests passed|tests failed' "$out/$suite-build.log" >&2 || true
  cp "$root"/build/velmora_*.deb "$out/"
}

if [ "${BASH_SOURCE[0]}" = "$0" ]; then
  case "${1:-}" in
    base) root_base "$2" "$3" ;;
    build) root_build "$2" "$3" ;;
    *) echo "usage: scripts/debian-root.sh base|build SUITE DIR" >&2; exit 2 ;;
  esac
fi
