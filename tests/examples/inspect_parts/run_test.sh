#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Usage: run_test.sh INSPECT_PARTS WORK_DIR [VXCLSS]
#
# Runs the picture example on a seed, checks what came of it by its table of parts, and hands its
# tables to the vxclss command.
set -euo pipefail
export LC_ALL=C
inspect_parts=$1 work=$2 vxclss=${3:-}

fail() { echo "run_test: $*" >&2; exit 1; }

# refused CODE TEXT ARGUMENT...: ends with that code and says so in one line that holds the text.
refused() {
  local code=$1 text=$2 got=0
  shift 2
  "$inspect_parts" "$@" >/dev/null 2>"$work/errors" || got=$?
  [[ $got -eq $code ]] || fail "$*: exit code $got, not $code"
  [[ $(wc -l <"$work/errors") -eq 1 ]] || fail "$*: $(cat "$work/errors")"
  grep -qF -- "$text" "$work/errors" || fail "$*: $(cat "$work/errors")"
}

rm -rf "$work"
mkdir -p "$work"
for run in first second; do
  "$inspect_parts" --seed 3 --training 8 --inspected 3 --output "$work/$run" >"$work/$run.txt"
done
diff -r "$work/first" "$work/second" || fail "the same seed gave other files"
cat "$work/first.txt"

# Whole parts, touching ones included: of each kind, how many; of what was decided, how much is right.
awk -F, '
  NR == 1 { for (i = 1; i <= NF; ++i) column[$i] = i; next }
  $column["area"] == "" { ++cutOff; next }
  {
    kind = $column["kind"]; decision = $column["decision"]
    known = kind ~ /^(washer|nut|bolt|pin|spring)$/
    accepted = decision != "unknown" && decision != "unsure"
    if (!known) { ++foreign; if (!accepted) ++caught }
    else { ++parts; if (decision == kind) ++right; else if (accepted) ++wrong }
  }
  END {
    printf "%d known parts, %d right, %d wrong; %d others, %d rejected; %d cut off\n",
           parts, right, wrong, foreign, caught, cutOff
    exit !(parts >= 30 && right >= 0.85 * parts && wrong <= 0.02 * parts &&
           foreign >= 12 && caught >= 0.95 * foreign && cutOff >= 3)
  }' "$work/first/inspected.csv" || fail "the inspection was not good enough"

for picture in belt inspected; do
  [[ $(head -c 8 "$work/first/$picture.png" | od -An -tx1) == " 89 50 4e 47 0d 0a 1a 0a" ]] ||
    fail "$picture.png is no PNG"
done
[[ $(stat -c %s "$work/first/inspected.png") -lt 250000 ]] || fail "inspected.png is large"

"$inspect_parts" --help | grep -q -- --training || fail "--help names no --training"
refused 2 "--seed" --seed x
refused 2 "--training" --training 0
refused 2 "--nonsense" --nonsense
refused 1 "errors: " --output "$work/errors"

[[ -n $vxclss ]] || exit 0
columns=(--label kind --ignore picture --ignore x --ignore y --method bayes)
"$vxclss" evaluate "$work/first/training.csv" "${columns[@]}" | tee "$work/evaluation.txt"
grep -qi accuracy "$work/evaluation.txt" || fail "vxclss evaluate printed no accuracy"
"$vxclss" train "$work/first/training.csv" "${columns[@]}" -o "$work/parts.model"
"$vxclss" run "$work/parts.model" "$work/first/inspected.csv" >"$work/decisions.csv"
[[ $(wc -l <"$work/decisions.csv") -eq $(wc -l <"$work/first/inspected.csv") ]] ||
  fail "vxclss run gave $(wc -l <"$work/decisions.csv") lines"
