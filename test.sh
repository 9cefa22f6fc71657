#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds everything, assertions on, and runs the tests. Arguments go to ctest.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

./setup.sh
cmake --preset dev
cmake --build --preset dev
ctest --preset dev "$@"
