#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the vxclss command, evaluates nearest neighbours and Bayes on measured flowers, and sorts
# parts on pictures of a belt.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

./setup.sh --pictures
cmake --preset release
cmake --build --preset release --target vxclss_tool
# Without OpenCV there are no pictures.
pictures=no
if grep -q '^build inspect_parts:' build/release/build.ninja; then
  pictures=yes
  cmake --build --preset release --target inspect_parts
fi

set -x
build/release/tools/vxclss evaluate examples/data/iris.csv --label species --method knn --k 5 --folds 10
build/release/tools/vxclss evaluate examples/data/iris.csv --label species --method bayes --folds 10

if [[ $pictures == yes ]]; then
  build/release/examples/inspect_parts/inspect_parts --output build/parts
fi
