#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the pages and the reference as a site in build/site; a broken link, a class without a
# description and every other warning fail it. Needs mkdocs, mkdocs-material, python3-pymdownx and
# doxygen.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

for tool in mkdocs doxygen python3; do
  command -v "$tool" >/dev/null || { echo "site: $tool not found" >&2; exit 1; }
done

site=$PWD/build/site
work=$PWD/build/site-parts
rm -rf "$site" "$work"
mkdir -p "$work/pages"

version=$(sed -nE 's/.*VERSION ([0-9.]+).*/\1/p' CMakeLists.txt | sed -n '/\..*\./{p;q;}')
doxygen -l "$work/layout.xml"
sed -i 's|<tab type="mainpage".*|<tab type="user" url="../index.html" title="Guide and pages"/>|' \
  "$work/layout.xml"
{ cat docs/site/Doxyfile; echo "LAYOUT_FILE = $work/layout.xml"; echo "PROJECT_NUMBER = $version"; echo "OUTPUT_DIRECTORY = $work"; } |
  doxygen -

python3 docs/site/collect.py "$work"
mkdocs build --strict --quiet -f "$work/mkdocs.yml" -d "$site"
cp -r "$work/reference" "$site/reference"
python3 docs/site/check.py "$site"
echo "site: $site/index.html"
