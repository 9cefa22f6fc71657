#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the vxclss command and evaluates nearest neighbours on measured flowers.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

./setup.sh
cmake --preset release
cmake --build --preset release --target vxclss_tool

set -x
build/release/tools/vxclss evaluate examples/data/iris.csv --label species --method knn --k 5 --folds 10
