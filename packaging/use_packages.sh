#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# What a user does with the packages installed; run by try_in_clean_root.sh in its Debian, in /host.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
fail() { echo "use_packages.sh: $*" >&2; exit 1; }
version=$(dpkg-query -W -f '${Version}' libvxclss-dev)
version=${version%-*}

echo "==> find_package"
examples=$(find /usr/share/doc/libvxclss-dev/examples -name '*.cpp' | sort | paste -sd,)
[[ -n $examples ]] || fail "no examples"
cmake -S . -B cmake -DVXCLSS_WANTED="$version" -DEXAMPLES="$examples" >/dev/null
cmake --build cmake
[[ $(cmake/consumer) == "$version" ]] || fail "the host prints another version"

echo "==> pkg-config"
[[ $(pkg-config --modversion vxclss) == "$version" ]] || fail "pkg-config tells another version"
# shellcheck disable=SC2046
g++ -std=c++17 consumer.cpp $(pkg-config --cflags --libs vxclss) -o consumer
[[ $(./consumer) == "$version" ]] || fail "the host prints another version"

echo "==> examples"
for source in ${examples//,/ }; do
  "cmake/$(basename "$source" .cpp)" >/dev/null || fail "$source does not run"
done

echo "==> vxclss"
vxclss --version
vxclss evaluate iris.csv --label species
vxclss train iris.csv --label species -o iris.model
vxclss run iris.model iris.csv | tail -n 3
man vxclss | grep -q vxclss || fail "no manual page"
[[ -s /usr/share/bash-completion/completions/vxclss ]] || fail "no completion for bash"

echo "==> python3"
vxclss run iris.model iris.csv >answers.csv
python3 use_module.py iris.model iris.csv answers.csv

for file in cmake/consumer /usr/bin/vxclss /usr/lib/python3/dist-packages/vxclss/_core.*.so; do
  ldd "$file" | grep -q 'libvxclss.so.0 => /\(usr/\)\?lib/' || fail "$file takes another library"
done
