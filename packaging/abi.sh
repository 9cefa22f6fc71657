#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Usage: abi.sh --check LIBRARY DESCRIPTION HEADER_DIR...
#        abi.sh --update LIBRARY DESCRIPTION HEADER_DIR...
#
# DESCRIPTION (packed XML) says what programs rely on that were built against a library: its
# functions, and how the types of its public headers are laid out. --check fails if the library, which
# needs debug information, breaks that without a new SONAME; additions break nothing. Inline functions
# and templates are left out, since they come and go with compiler and optimisation level.
set -euo pipefail
export LC_ALL=C
[[ $# -ge 4 && $1 =~ ^--(check|update)$ ]] || { sed -n 's/^# \?//; 3,4p' "$0" >&2; exit 2; }
mode=$1 library=$2 description=$3
shift 3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# describe OUTPUT HEADER_DIR...
describe() {
  local output=$1 directory headers=()
  shift
  for directory in "$@"; do headers+=(--headers-dir "$directory"); done
  nm --dynamic --defined-only "$library" |
    awk 'BEGIN { print "[abi_whitelist]" } $2 ~ /[TDBR]/ && $3 !~ /^_ZN?K?S/ { print "  " $3 }' \
      >"$work/symbols"
  readelf --sections --wide "$library" | grep -q '\.debug_info' || {
    echo "abi.sh: $library has no debug information" >&2
    exit 1
  }
  abidw --no-show-locs --no-corpus-path --no-comp-dir-path --no-parameter-names --no-elf-needed \
    --no-write-default-sizes --exported-interfaces-only --drop-private-types --type-id-style hash \
    --kmi-whitelist "$work/symbols" "${headers[@]}" --out-file "$output" "$library"
}

soname_of() { sed -nE "1,/<abi-corpus/s/.*<abi-corpus .*soname='([^']*)'.*/\1/p" "$1"; }

describe "$work/new.abi" "$@"
if [[ $mode == --update ]]; then
  mkdir -p "$(dirname "$description")"
  # Where the sources stood is nobody's business.
  tree=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
  sed "s| path='$tree/| path='|" "$work/new.abi" | gzip -9nc >"$description"
  exit 0
fi

gzip -dc "$description" >"$work/old.abi"
old=$(soname_of "$work/old.abi") new=$(soname_of "$work/new.abi")
if [[ $old != "$new" ]]; then
  echo "$new instead of $old: nothing to keep. Renew $description."
  exit 0
fi
status=0
abidiff --no-added-syms --no-show-locs "$work/old.abi" "$work/new.abi" || status=$?
[[ $status -ne 0 ]] || exit 0
if [[ $((status & 3)) -ne 0 ]]; then
  echo "abi.sh: abidiff failed ($status)" >&2
else
  echo "Programs built against $old would break. If that is meant, raise the major version, and"
  echo "renew the description: cmake --build BUILD_DIR --target update_abi"
fi
exit 1
