#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Usage: packaging/build_debs.sh [BUILD_DIR]
#
# Builds the Debian packages with Debian's compiler flags, into build/packages if nothing else is
# given, and has lintian look at them. The same tree gives the same bytes, in whatever folder it is
# built.
set -euo pipefail
export LC_ALL=C
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=$(mkdir -p "${1:-build/packages}" && cd "${1:-build/packages}" && pwd)

SOURCE_DATE_EPOCH=$(dpkg-parsechangelog --file packaging/debian/changelog --show-field Timestamp)
export SOURCE_DATE_EPOCH
export DEB_BUILD_MAINT_OPTIONS="hardening=+all"
cxxflags="$(dpkg-buildflags --get CPPFLAGS) $(dpkg-buildflags --get CXXFLAGS) -DNDEBUG"

rm -f "$build"/*.deb
cmake --fresh -G Ninja -S . -B "$build" \
  -DCMAKE_BUILD_TYPE=None \
  -DCMAKE_CXX_FLAGS="$cxxflags -ffile-prefix-map=$build=." \
  -DCMAKE_SHARED_LINKER_FLAGS="$(dpkg-buildflags --get LDFLAGS)" \
  -DCMAKE_EXE_LINKER_FLAGS="$(dpkg-buildflags --get LDFLAGS)" \
  -DCMAKE_INSTALL_PREFIX=/usr \
  -DCMAKE_INSTALL_LIBDIR="lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)" \
  -DCMAKE_SKIP_INSTALL_RPATH=ON \
  -DVXCLSS_BUILD_PYTHON=ON \
  -DBUILD_TESTING=OFF
cmake --build "$build"
(cd "$build" && cpack)
ls -l "$build"/*.deb

if command -v lintian >/dev/null; then
  lintian --allow-root --fail-on error,warning "$build"/*.deb
  echo "lintian: clean"
else
  echo "lintian is not installed, the packages were not looked at" >&2
fi
