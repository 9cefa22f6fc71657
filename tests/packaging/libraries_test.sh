#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Usage: libraries_test.sh STRIP READELF LIBRARY...
#
# The libraries, stripped, stay small, and need each other and the run times of C and C++ alone.
set -euo pipefail
export LC_ALL=C
strip=$1 readelf=$2
shift 2
limit=700000

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
names=""
for library in "$@"; do
  names+=" $("$readelf" --dynamic "$library" | sed -nE 's/.*\(SONAME\).*\[(.*)\]/\1/p')"
done

total=0
failed=0
for library in "$@"; do
  "$strip" --strip-unneeded -o "$work/library" "$library"
  size=$(stat -c %s "$work/library")
  total=$((total + size))
  echo "$(basename "$library"): $size bytes"
  needed=$("$readelf" --dynamic "$library" | sed -nE 's/.*\(NEEDED\).*\[(.*)\]/\1/p')
  [[ -n $needed ]] || { echo "$library needs nothing at all"; failed=1; }
  for name in $needed; do
    case " libstdc++.so.6 libm.so.6 libgcc_s.so.1 libc.so.6 $names " in
      *" $name "*) ;;
      # The loader, which is a part of the C library.
      *) [[ $name == ld-linux*.so.* ]] || { echo "$library needs $name"; failed=1; } ;;
    esac
  done
done
echo "together: $total bytes of at most $limit"
[[ $failed -eq 0 && $total -le $limit ]]
