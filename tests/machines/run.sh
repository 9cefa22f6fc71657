#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds and runs the tests in this directory for other processors, compilers and levels of
# optimisation. Usage: tests/machines/run.sh [BUILD...], of
#
#   gcc-O0 ... gcc-O3, clang-O0 ... clang-O3   this machine
#   arm64 s390x i386                           cross-built at -O2, in emulation where need be
#
# or all of them. ./setup.sh --machines installs what they need. Build directories and logs are
# build/machines-BUILD.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1

builds=("$@")
if [[ $# -eq 0 ]]; then
  builds=({gcc,clang}-O{0,1,2,3} arm64 s390x i386)
fi

# configure BUILD DIRECTORY
configure() {
  local options=()
  case $1 in
    gcc-O[0-3]) options=(-DCMAKE_CXX_COMPILER=g++ -DCMAKE_CXX_FLAGS="-${1#*-}") ;;
    clang-O[0-3]) options=(-DCMAKE_CXX_COMPILER=clang++ -DCMAKE_CXX_FLAGS="-${1#*-}") ;;
    arm64 | s390x | i386)
      options=(--toolchain "$PWD/cmake/toolchains/$1.cmake" -DCMAKE_CXX_FLAGS=-O2) ;;
    *) echo "$0: no build $1" >&2; return 2 ;;
  esac
  cmake -G Ninja -S tests/machines -B "$2" -DVXCLSS_WERROR=ON "${options[@]}"
}

# The hashes that the first build printed. All of one machine have the same ones.
native=""
broken=0
for build in "${builds[@]}"; do
  directory=build/machines-$build
  start=$SECONDS
  # What a configuration without its compiler left behind would spoil the next one.
  [[ -e $directory/build.ninja ]] || rm -rf "$directory"
  mkdir -p "$directory"
  if ! { configure "$build" "$directory" && cmake --build "$directory" --target machine_tests &&
         ctest --test-dir "$directory" --verbose; } >"$directory/log" 2>&1; then
    grep -E 'error|Failure|FAILED' "$directory/log" | tail -40
    echo "$build: FAILED, see $directory/log"
    broken=$((broken + 1))
    continue
  fi

  bits=$(sed -n 's/.*\[   BITS   \] //p' "$directory/log")
  differing=$(comm -13 <(sort <<<"$native") <(sort <<<"$bits") | cut -d ' ' -f 1 | xargs)
  if [[ -z $native && -n $bits ]]; then
    note="its results that go through the C library are what others are compared with"
    native=$bits
  elif [[ -z $differing && -n $bits ]]; then
    note="the same bits through the C library"
  elif [[ $build == *-O? ]]; then
    note="FAILED, other bits through the C library: $differing"
    broken=$((broken + 1))
  else
    note="other bits through its C library: $differing"
  fi
  passed=$(sed -nE 's/.*\[  PASSED  \] ([0-9]+) tests.*/\1/p' "$directory/log")
  skipped=$(sed -nE 's/.*\[  SKIPPED \] ([0-9]+) tests?,.*/, \1 skipped/p' "$directory/log")
  echo "$build: $passed passed$skipped, $((SECONDS - start)) s; $note"
done
[[ $broken -eq 0 ]]
