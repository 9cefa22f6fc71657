#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Usage: coverage.sh SOURCE_DIR BUILD_DIR
#
# A call that may throw counts as a branch of its own; the second pair of numbers leaves those out.
set -euo pipefail

report() {
  gcovr --root "$1" --object-directory "$2" --filter "$1/foundation/" --filter "$1/clss/" \
    --filter "$1/include/" --exclude-unreachable-branches "${@:3}" "$2"
}

report "$1" "$2" --exclude-throw-branches --txt --print-summary
echo "With the branches that only an exception takes:"
report "$1" "$2" --txt /dev/null --print-summary
