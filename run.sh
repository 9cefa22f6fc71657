#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the vxclss command and evaluates nearest neighbours and Bayes on measured flowers.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

./setup.sh
cmake --preset release
cmake --build --preset release --target vxclss_tool

set -x
build/release/tools/vxclss evaluate examples/data/iris.csv --label species --method knn --k 5 --folds 10
build/release/tools/vxclss evaluate examples/data/iris.csv --label species --method bayes --folds 10
