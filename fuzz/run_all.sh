#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Fuzzes every target in turn. Usage: fuzz/run_all.sh SECONDS_PER_TARGET [LIBFUZZER_OPTION...]
#
# Ends with the totals of all runs in the build directory, and with an error after a finding.
# fuzz/run_all.sh 3600 executes about half a billion inputs on one core in two days; run it again
# and again, each goes on from the last.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

[[ $# -ge 1 ]] || { echo "usage: $0 SECONDS_PER_TARGET [LIBFUZZER_OPTION...]" >&2; exit 2; }
seconds=$1
shift
findings=0
for source in fuzz/*_fuzz.cpp; do
  fuzz/run.sh "$(basename "${source%_fuzz.cpp}")" "$seconds" "$@" || findings=$((findings + 1))
done

echo
awk -F '\t' '
  { executions[$2] += $3; all += $3; if ($5 > cov[$2]) cov[$2] = $5; if ($7 > corpus[$2]) corpus[$2] = $7; rate[$2] = $4 }
  END {
    printf "%-18s %12s %8s %8s %8s\n", "target", "executions", "per s", "edges", "corpus"
    for (t in executions)
      printf "%-18s %12d %8d %8d %8d\n", t, executions[t], rate[t], cov[t], corpus[t] | "sort"
    close("sort")
    printf "%-18s %12d\n", "all", all
  }' "${VXCLSS_FUZZ_BUILD:-build/fuzz}/state/totals.tsv"
echo "targets with a finding in this run: $findings"
[[ $findings -eq 0 ]]
