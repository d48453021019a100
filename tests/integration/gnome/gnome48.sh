#!/usr/bin/env bash
# it_gnome_lock.sh under GNOME Shell 48 from Debian 13, in a root folder made with debootstrap
# (kept in VELMORA_GNOME48_ROOT, /var/tmp/velmora-trixie unless set; made once, some 10
# minutes and 1.5 GB). The program runs on this system and reaches that shell's sockets in
# the shared /tmp. Needs root, debootstrap and bwrap (bubblewrap).
#   VELMORA_BIN=build/bin/velmora VELMORA_PREFS=build/bin/velmora-prefs tests/integration/gnome/gnome48.sh
set -euo pipefail
root="${VELMORA_GNOME48_ROOT:-/var/tmp/velmora-trixie}"
if [ ! -x "$root/usr/bin/gnome-shell" ]; then
    debootstrap --variant=minbase trixie "$root" http://deb.debian.org/debian
    printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d" # no services start in there
    chmod +x "$root/usr/sbin/policy-rc.d"
    chroot "$root" sh -c 'apt-get update -q && DEBIAN_FRONTEND=noninteractive apt-get install -y -q \
        --no-install-recommends gnome-shell dbus dbus-daemon libglib2.0-bin libgl1-mesa-dri'
fi
VELMORA_GNOME_ROOT="$root" exec bash "$(dirname "$0")/it_gnome_lock.sh"
