#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Makes the committed corpus anew of what runs have found: the fewest small inputs that reach all
# that inputs of their size reach. Usage: fuzz/merge.sh [TARGET...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Together the files stay below 2 MB, and replaying them takes seconds. Models and tools hold more
# than other objects.
largestOf() {
  case $1 in
    model_file | tool) echo 768 ;;
    *) echo 448 ;;
  esac
}

if [[ $# -eq 0 ]]; then
  for source in fuzz/*_fuzz.cpp; do set -- "$@" "$(basename "${source%_fuzz.cpp}")"; done
fi
build=${VXCLSS_FUZZ_BUILD:-build/fuzz}
for target in "$@"; do
  work=$build/state/$target
  largest=$(largestOf "$target")
  rm -rf "$work/small" "$work/merged"
  mkdir -p "$work/small" "$work/merged" "$work/findings"
  find "$work/corpus" -type f -size -$((largest + 1))c -exec cp -t "$work/small" {} +
  "$build/fuzz/${target}_fuzz" -merge=1 -max_len=$largest -artifact_prefix="$work/findings/" \
    "$work/merged" "$work/small" >"$work/merge.log" 2>&1
  "$build/fuzz/vxclss_fuzz_corpus" pack "$work/merged" "fuzz/corpus/$target.bin"
done
