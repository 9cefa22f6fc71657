#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Usage: packaging/try_in_clean_root.sh [PACKAGE_DIR]
#
# Installs the packages (build/packages, if nothing else is given) in a fresh Debian 12 of their own,
# builds and runs a host there through find_package and pkg-config, uses the command, and removes
# everything again. Needs root and debootstrap. The fresh Debian is kept in build/clean_root, so that
# it is fetched once.
set -euo pipefail
export LC_ALL=C
cd "$(dirname "${BASH_SOURCE[0]}")/.."
packages=${1:-build/packages}
cache=$PWD/build/clean_root/bookworm.tar
root=$PWD/build/clean_root/root
mirror=${VXCLSS_DEBIAN_MIRROR:-http://deb.debian.org/debian}

fail() { echo "try_in_clean_root.sh: $*" >&2; exit 1; }
[[ $(id -u) -eq 0 ]] || fail "needs root, for debootstrap and chroot"
command -v debootstrap >/dev/null || fail "debootstrap is not installed"
compgen -G "$packages/*.deb" >/dev/null || fail "no packages in $packages; run packaging/build_debs.sh"

in_root() {
  chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
    DEBIAN_FRONTEND=noninteractive "$@"
}

# The compiler and what else a host's author has belong to the kept Debian.
if [[ ! -e $cache ]]; then
  rm -rf "$root"
  mkdir -p "$root"
  debootstrap --variant=minbase --include=ca-certificates,g++,cmake,make,pkgconf,man-db \
    bookworm "$root" "$mirror"
  in_root apt-get clean
  tar -C "$root" -cf "$cache.part" .
  mv "$cache.part" "$cache"
fi
rm -rf "$root"
mkdir -p "$root"
tar -C "$root" -xf "$cache"
trap 'rm -rf "$root"' EXIT
# Services of this machine must not be started, names are looked up as outside.
printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d"
chmod 755 "$root/usr/sbin/policy-rc.d"
cp /etc/resolv.conf "$root/etc/resolv.conf"

mkdir "$root/packages" "$root/host"
cp "$packages"/*.deb "$root/packages/"
cp tests/install/consumer.cpp tests/install/CMakeLists.txt examples/data/iris.csv "$root/host/"
cp packaging/use_packages.sh packaging/use_module.py "$root/host/"

in_root apt-get update -q
in_root sh -c 'apt-get install -q -y --no-install-recommends /packages/*.deb'
in_root bash /host/use_packages.sh

in_root apt-get purge -q -y '*vxclss*'
left=$(in_root find /usr /etc /var/lib/dpkg/info -name '*vxclss*' -o -name '*vxfoundation*')
[[ -z $left ]] || fail "left behind after removal: $left"
echo "try_in_clean_root.sh: installed, used and removed"
