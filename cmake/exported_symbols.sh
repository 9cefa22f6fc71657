#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Usage: exported_symbols.sh --check NM LIBRARY LIST BUILD_DIR
#        exported_symbols.sh --update NM LIBRARY LIST
#
# The list holds a library's own exported names, demangled and sorted. Weak symbols are left out
# (inline functions and templates come and go with compiler and optimisation level), except the
# virtual tables and type infos of our classes: those are what a host derives from and catches.
set -euo pipefail
export LC_ALL=C

exported() {
  "$1" --dynamic --defined-only --demangle "$2" |
    sed -nE -e 's/^[0-9a-f]+ [TDBRVu] (vtable|VTT|typeinfo) for (vx.*)$/\1 for \2/p' \
            -e '/^[0-9a-f]+ [TDBRu] (construction vtable |typeinfo name for |vtable for |typeinfo for |VTT for |std::|_)/d' \
            -e 's/^[0-9a-f]+ [TDBRu] //p' |
    sort -u
}

mode=$1 nm=$2 library=$3 list=$4
case $mode in
  --update)
    mkdir -p "$(dirname "$list")"
    exported "$nm" "$library" >"$list"
    ;;
  --check)
    if ! exported "$nm" "$library" | diff -u --label "$list" --label "$library" "$list" -; then
      echo "Exported symbols differ (- missing, + new). If that is meant:"
      echo "  cmake --build $5 --target update_symbols"
      exit 1
    fi
    ;;
  *) echo "usage: $0 --check|--update NM LIBRARY LIST [BUILD_DIR]" >&2; exit 2 ;;
esac
