#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Usage: coverage.sh SOURCE_DIR BUILD_DIR
#
# Prints what the tests that have run since the build have reached of the two libraries, and what is
# left out of the count. Fails below the goal: every line, and 98 % of the branches.
#
# Branches that the compiler makes on its own don't count: checks of addresses that can't be null,
# as of the object of a dynamic_cast, or of what a constructor that threw leaves to delete.
#
# Branches that only an exception takes don't count. gcov marks them, but not in code that didn't
# run: the clean-up after an exception, and inline functions in the objects that never call them. So
# what lies behind a way not taken isn't counted as well; that way is.
set -euo pipefail
cd "$1"
build=$2
work=$build/gcov
own_checks='^(?!.*(\bif\b|\?|&&|\|\|)).*(\bdynamic_cast<const \w+\*>\(&\w+\)|\bnew \w+)'
goals=(--fail-under-line 100 --fail-under-branch 98)

# One folder for each object: inline functions are in many.
one_object() {
  local folder=$3/${1#"$2"/}
  mkdir -p "$folder"
  cd "$folder"
  gcov --branch-counts --branch-probabilities --demangled-names --hash-filenames \
    --relative-only --source-prefix "$4" "$1" >/dev/null || return
  find . -name '*.gcov' -exec sed -i '/^branch .*never executed/d' {} +
}
export -f one_object

rm -rf "$work"
find "$build" -name '*.gcda' -print0 |
  xargs -0 -P "$(nproc)" -I{} bash -c 'one_object "$@"' _ {} "$build" "$work" "$1"

outcome=0
gcovr --root "$1" --use-gcov-files --keep --filter foundation/ --filter clss/ --filter include/ \
  --exclude-unreachable-branches --exclude-throw-branches \
  --exclude-branches-by-pattern "$own_checks" --txt --print-summary \
  --json "$work/coverage.json" "${goals[@]}" "$work" || outcome=$?
echo "Left out, with the reasons in docs/reliability.md:"
grep -rn GCOVR_EXCL foundation clss include || echo "nothing"
exit "$outcome"
