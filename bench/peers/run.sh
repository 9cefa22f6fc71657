#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Measures this library beside others, with and without code for wide registers, and renews the
# figures and plots of docs/performance.md. Usage: bench/peers/run.sh [--quick]
#
# --quick prints the tables after about a minute and leaves the page alone.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

quick=no
case "${1:-}" in
  "") ;;
  --quick) quick=yes ;;
  *) echo "usage: $0 [--quick]" >&2; exit 2 ;;
esac

./setup.sh --peers

# build DIRECTORY ON|OFF
build() {
  cmake --preset release -B "$1" -DVXCLSS_SIMD="$2" -DVXCLSS_BUILD_PEERS=ON \
    -DVXCLSS_BUILD_BENCHMARKS=OFF -DVXCLSS_BUILD_EXAMPLES=OFF -DVXCLSS_BUILD_TOOLS=OFF \
    -DBUILD_TESTING=OFF >/dev/null
  cmake --build "$1" --target vxclss_peers
}
build build/peers ON
build build/peers-plain OFF

commit=$(git rev-parse --short HEAD 2>/dev/null || echo unknown)
[[ -z $(git status --porcelain -- CMakeLists.txt bench clss cmake foundation include) ]] ||
  commit+=", with changes"

run() { "$1/bench/peers/vxclss_peers" --commit "$commit" --json "$1/peers.json" "${@:2}"; }
if [[ $quick == yes ]]; then
  run build/peers --quick
  run build/peers-plain --quick
  exit
fi
run build/peers --plots
run build/peers-plain
/usr/bin/env python3 bench/peers/page.py build/peers/peers.json build/peers-plain/peers.json
