#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Usage: run_test.sh INSPECT_PARTS SOURCE_DIR WORK_DIR [VXCLSS]
#
# Runs the picture example on a seed, checks what came of it by its table of parts, and runs the
# commands of docs/picture_example.md, which hand its tables to the vxclss command.
set -euo pipefail
export LC_ALL=C
inspect_parts=$(realpath "$1") page=$2/docs/picture_example.md work=$3
vxclss=${4:+$(realpath "$4")}

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

# What the page prints has the rows that the example prints.
rows() { sed -nE 's/^(washer|nut|bolt|pin|spring|other kinds|touching parts)(, cut off)? .*/\1/p' | uniq; }
diff <(rows <"$page") <(rows <"$work/first.txt") || fail "$page shows other rows"

[[ -n $vxclss ]] || exit 0
# The commands of the page, in a folder that looks like the tree; fewer pictures will do.
mkdir -p "$work/tree/build/release/examples/inspect_parts" "$work/tree/build/release/tools"
ln -s "$vxclss" "$work/tree/build/release/tools/vxclss"
cat >"$work/tree/build/release/examples/inspect_parts/inspect_parts" <<END
#!/bin/sh
exec "$inspect_parts" "\$@" --seed 3 --training 8 --inspected 2
END
chmod 755 "$work/tree/build/release/examples/inspect_parts/inspect_parts"
sed -n '/^```sh$/,/^```$/p' "$page" | grep -vE '^(```|cmake )' >"$work/commands"
[[ $(grep -c '^build/release/' "$work/commands") -eq 4 ]] || fail "$page has other commands"
(cd "$work/tree" && bash -euo pipefail "$work/commands") >"$work/output" || fail "$page: failed"
grep -q accuracy "$work/output" || fail "vxclss evaluate printed no accuracy"
decisions=$(sed -n '/^row,category/,$p' "$work/output" | wc -l)
[[ $decisions -eq $(wc -l <"$work/tree/build/parts/inspected.csv") ]] ||
  fail "vxclss run printed $decisions lines"
