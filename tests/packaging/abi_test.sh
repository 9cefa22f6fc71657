#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Usage: abi_test.sh ABI_SH CXX WORK_DIR
#
# Whether the ABI check sees what breaks a program, and lets pass what doesn't: a small library is
# described, changed in one way after the other, and compared.
set -euo pipefail
abi=$1 cxx=$2 work=$3
rm -rf "$work"
mkdir -p "$work"
failed=0

header='
  class Shape {
   public:
    Shape();
    virtual ~Shape();
    virtual double area() const;
    double scaled(double factor) const;
    int sides() const { return sides_; }
   private:
    int sides_;
    double size_;
  };
  double total(const Shape& a, const Shape& b);'
source='
  Shape::Shape() : sides_(4), size_(1) {}
  Shape::~Shape() {}
  double Shape::area() const { return size_; }
  double Shape::scaled(double factor) const { return factor * size_; }
  double total(const Shape& a, const Shape& b) { return a.area() + b.area(); }'

# build HEADER SOURCE [SONAME]
build() {
  mkdir -p "$work/include"
  printf '#pragma once\n%s\n' "$1" >"$work/include/shape.h"
  printf '#include "shape.h"\n%s\n' "$2" >"$work/shape.cpp"
  "$cxx" -g -fPIC -shared -I"$work/include" "$work/shape.cpp" -Wl,-soname,"${3:-libshape.so.1}" \
    -o "$work/libshape.so"
}

# expect passes|breaks WHAT HEADER SOURCE [SONAME]
expect() {
  local expected=$1 what=$2 outcome=passes
  shift 2
  build "$@"
  "$abi" --check "$work/libshape.so" "$work/shape.abi.gz" "$work/include" >"$work/out" 2>&1 ||
    outcome=breaks
  if [[ $outcome != "$expected" ]]; then
    echo "$what: $outcome"
    cat "$work/out"
    failed=1
  fi
}

build "$header" "$source"
"$abi" --update "$work/libshape.so" "$work/shape.abi.gz" "$work/include"
cp "$work/shape.abi.gz" "$work/first.abi.gz"
"$abi" --update "$work/libshape.so" "$work/shape.abi.gz" "$work/include"
cmp "$work/first.abi.gz" "$work/shape.abi.gz" || { echo "two descriptions differ"; failed=1; }

expect passes "the same" "$header" "$source"
expect passes "another body" "$header" "${source/factor \*/2 * factor *}"
expect passes "a new function" "$header int zero();" "$source int zero() { return 0; }"
expect passes "a new class" "$header class Other { int x; public: Other(); };" \
  "$source Other::Other() : x(1) {}"
expect passes "a new function that is not virtual" \
  "${header/double scaled/double half() const; double scaled}" \
  "$source double Shape::half() const { return 0.5 * size_; }"
expect passes "a class of no header" "$header" "$source struct Own { int a; } own;"

expect breaks "a removed function" "${header/double total*/}" "${source/double total*/}"
expect breaks "another argument" "${header/double factor/float factor}" \
  "${source/double factor/float factor}"
expect breaks "another result" "${header/double scaled/float scaled}" \
  "${source/double Shape::scaled/float Shape::scaled}"
expect breaks "a larger member" "${header/int sides_/long sides_}" "$source"
expect breaks "a new member" "${header/double size_;/double size_; double more_;}" "$source"
swapped=${header/int sides_;/double first_;}
swapped=${swapped/double size_;/int sides_;}
expect breaks "members in another order" "${swapped/first_/size_}" "$source"
expect breaks "a new virtual function in front" \
  "${header/virtual double area/virtual double edge() const; virtual double area}" \
  "$source double Shape::edge() const { return 0; }"
expect breaks "a removed virtual function" "${header/virtual double area/double area}" "$source"

expect passes "a break with a new SONAME" "${header/int sides_/long sides_}" "$source" libshape.so.2

"$cxx" -fPIC -shared -I"$work/include" "$work/shape.cpp" -o "$work/libshape.so"
if "$abi" --check "$work/libshape.so" "$work/shape.abi.gz" "$work/include" 2>"$work/out" ||
  ! grep -q "no debug information" "$work/out"; then
  echo "a library without debug information was taken"
  failed=1
fi
exit "$failed"
