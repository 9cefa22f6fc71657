#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Fuzzes one target. Usage: fuzz/run.sh TARGET SECONDS [LIBFUZZER_OPTION...]
#
# The target is built with the preset fuzz in build/fuzz, or in $VXCLSS_FUZZ_BUILD as that was
# configured. It goes on from what earlier runs found there, from the committed corpus and from the
# seeds. A finding ends it with an error and stays in state/TARGET/findings. Each run adds a line to
# state/totals.tsv.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

[[ $# -ge 2 ]] || { echo "usage: $0 TARGET SECONDS [LIBFUZZER_OPTION...]" >&2; exit 2; }
target=$1
seconds=$2
shift 2
[[ -e fuzz/${target}_fuzz.cpp ]] || { echo "$0: no target $target" >&2; exit 2; }

build=${VXCLSS_FUZZ_BUILD:-build/fuzz}
[[ -e $build/build.ninja ]] || cmake --preset fuzz -B "$build" >/dev/null
cmake --build "$build" --target "${target}_fuzz" vxclss_fuzz_corpus >"$build/build.log" ||
  { cat "$build/build.log"; exit 1; }

tool=$build/fuzz/vxclss_fuzz_corpus
work=$build/state/$target
mkdir -p "$work/corpus" "$work/findings"
for corpus in "fuzz/corpus/$target.bin" "fuzz/corpus/$target.found.bin"; do
  [[ ! -e $corpus ]] || "$tool" unpack "$corpus" "$work/corpus"
done
"$tool" seeds "$target" "$work/corpus"
dictionary=fuzz/$target.dict
if [[ ! -e $dictionary ]]; then
  dictionary=$work/dictionary
  "$tool" dictionary >"$dictionary"
fi

# Twice as fast: two frames kept of each allocation, which the leak check needs (a finding is run
# again by itself for the rest), and no weighing of rare features, which takes a quarter of the time
# of so small inputs. Comparisons allocate and free by the thousand; what they freed is to stay in
# the processor's cache.
case $target in
  same_*) allocator=quarantine_size_mb=1:thread_local_quarantine_size_kb=64:max_malloc_fill_size=64 ;;
  *) allocator=quarantine_size_mb=16 ;;
esac
export ASAN_OPTIONS=malloc_context_size=2:$allocator:${ASAN_OPTIONS:-}
export UBSAN_OPTIONS=print_stacktrace=1
outcome=0
"$build/fuzz/${target}_fuzz" "$work/corpus" -max_total_time="$seconds" -dict="$dictionary" \
  -entropic=0 -max_len=4096 -timeout=20 -rss_limit_mb=2048 -malloc_limit_mb=64 -print_final_stats=1 \
  -artifact_prefix="$work/findings/" "$@" >"$work/log" 2>&1 || outcome=$?

stat() { sed -n "s/^stat::$1: *//p" "$work/log"; }
reached=$(sed -nE 's/.* cov: ([0-9]+) ft: ([0-9]+) corp: ([0-9]+).*/\1\t\2\t\3/p' "$work/log" | tail -1)
printf '%s\t%s\t%s\t%s\t%s\t%s\n' "$(date -u +%Y-%m-%dT%H:%MZ)" "$target" \
  "$(stat number_of_executed_units)" "$(stat average_exec_per_sec)" "$reached" "$outcome" |
  tee -a "$build/state/totals.tsv"
if [[ $outcome -ne 0 ]]; then
  tail -60 "$work/log" >&2
  echo "$0: $target: a finding, see $work/findings" >&2
fi
exit "$outcome"
