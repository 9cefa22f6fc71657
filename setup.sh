#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what a build needs and this machine lacks; with --ci, also what the stricter checks need;
# with --peers, also the libraries that bench/peers measures beside this one; with --machines, also
# the compilers and emulators that tests/machines builds and runs for other processors with.
set -euo pipefail

packages=(g++ cmake ninja-build pkgconf libgtest-dev libgmock-dev libbenchmark-dev libfmt-dev
          libcli11-dev nlohmann-json3-dev)
case "${1:-}" in
  "") ;;
  --ci) packages+=(git binutils clang clang-format libclang-rt-14-dev gcovr) ;;
  --peers) packages+=(libfaiss-dev libopencv-ml-dev libflann-dev libnanoflann-dev libcereal-dev
                      libboost-serialization-dev libblas-dev liblapack-dev python3-sklearn) ;;
  --machines) packages+=(clang googletest qemu-user g++-aarch64-linux-gnu g++-s390x-linux-gnu
                         g++-i686-linux-gnu) ;;
  *) echo "usage: $0 [--ci | --peers | --machines]" >&2; exit 2 ;;
esac

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
  echo "setup: no apt-get here; the build needs the equivalents of: ${packages[*]}" >&2
  exit 0
fi

missing=()
for package in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
  [[ $status == installed ]] || missing+=("$package")
done
[[ ${#missing[@]} -gt 0 ]] || exit 0

if [[ $(id -u) -eq 0 ]]; then
  as_root=(env)
elif command -v sudo >/dev/null; then
  as_root=(sudo env)
else
  echo "setup: neither root nor sudo; as root, run: apt-get install ${missing[*]}" >&2
  exit 1
fi

echo "setup: installing ${missing[*]}"
as_root+=(DEBIAN_FRONTEND=noninteractive)
"${as_root[@]}" apt-get -o DPkg::Lock::Timeout=300 update -q </dev/null
"${as_root[@]}" apt-get -o DPkg::Lock::Timeout=300 install -q -y \
  --no-install-recommends "${missing[@]}" </dev/null
