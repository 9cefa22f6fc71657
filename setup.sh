#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what a build needs and this machine lacks. An option adds what else is needed:
#   --pictures   for the example of parts on a belt
#   --python     for the Python module and its tests
#   --ci         for the stricter checks, the two above included
#   --docs       to make the pages a site
#   --packages   to make and check Debian packages
#   --peers      to measure other libraries beside this one (bench/peers)
#   --machines   to build and run for other processors (tests/machines)
set -euo pipefail

packages=(g++ cmake ninja-build pkgconf libgtest-dev libgmock-dev libbenchmark-dev libfmt-dev
          libcli11-dev nlohmann-json3-dev)
pictures=(libopencv-imgproc-dev libopencv-imgcodecs-dev)
python=(python3 python3-dev python3-venv python3-pip python3-setuptools python3-wheel pybind11-dev
        python3-numpy python3-sklearn python3-matplotlib python3-pandas python3-dask
        python3-distributed python3-pytest python3-hypothesis mypy)
case "${1:-}" in
  "") ;;
  --pictures) packages+=("${pictures[@]}") ;;
  --python) packages+=("${python[@]}") ;;
  --ci) packages+=(git binutils clang clang-format libclang-rt-14-dev gcovr chromium groff zsh
                   abigail-tools "${pictures[@]}" "${python[@]}") ;;
  --docs) packages+=(mkdocs mkdocs-material python3-pymdownx doxygen) ;;
  --packages) packages+=(dpkg-dev lintian debootstrap groff gzip "${python[@]}") ;;
  --peers) packages+=(libfaiss-dev libopencv-ml-dev libflann-dev libnanoflann-dev libcereal-dev
                      libboost-serialization-dev libblas-dev liblapack-dev python3-sklearn) ;;
  --machines) packages+=(clang googletest qemu-user g++-aarch64-linux-gnu g++-s390x-linux-gnu
                         g++-i686-linux-gnu) ;;
  *) echo "usage: $0 [--pictures | --python | --ci | --docs | --packages | --peers | --machines]" >&2; exit 2 ;;
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
