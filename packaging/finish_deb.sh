#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Usage: finish_deb.sh PACKAGE.deb
#
# Adds to a package what Debian asks for and CPack doesn't do: copyright and change logs, packed
# manual pages, the trigger for ldconfig in place of scripts that call it, scripts that compile
# Python files and remove what was compiled, the field Multi-Arch. The date of the change log's last
# entry becomes that of every file, so that one tree gives one package, byte for byte.
set -euo pipefail
export LC_ALL=C
deb=$1
source_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
changelog=$source_dir/packaging/debian/changelog

SOURCE_DATE_EPOCH=$(dpkg-parsechangelog --file "$changelog" --show-field Timestamp)
export SOURCE_DATE_EPOCH
package=$(dpkg-deb --field "$deb" Package)
version=$(dpkg-deb --field "$deb" Version)
if [[ $version != "$(dpkg-parsechangelog --file "$changelog" --show-field Version)" ]]; then
  echo "finish_deb.sh: $changelog does not begin with version $version" >&2
  exit 1
fi

tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
dpkg-deb --raw-extract "$deb" "$tree/package"
cd "$tree/package"

doc=usr/share/doc/$package
mkdir -p "$doc"
cp "$source_dir/packaging/debian/copyright" "$doc/copyright"
gzip -9nc "$changelog" >"$doc/changelog.Debian.gz"
gzip -9nc "$source_dir/CHANGELOG.md" >"$doc/changelog.gz"
find usr -type f \( -name '*.so.*' -o -name '*.so' -o -path 'usr/bin/*' \) -exec \
  strip --remove-section=.comment --remove-section=.note {} +
mkdir -p usr/share/lintian/overrides
cp "$source_dir/packaging/debian/lintian-overrides" "usr/share/lintian/overrides/$package"
find usr -type f -path 'usr/share/man/*' -exec gzip -9n {} +

rm -f DEBIAN/postinst DEBIAN/postrm
scripts=()
case $package in
  lib*-dev) multi_arch=same ;;
  lib*)
    multi_arch=same
    echo "activate-noawait ldconfig" >DEBIAN/triggers
    ;;
  python3-*)
    multi_arch=no
    for script in postinst prerm; do
      sed "s/@PACKAGE@/$package/" "$source_dir/packaging/debian/python3.$script" >"DEBIAN/$script"
      scripts+=("DEBIAN/$script")
    done
    ;;
  *) multi_arch=foreign ;;
esac
[[ $multi_arch == no ]] || sed -i "/^Architecture:/a Multi-Arch: $multi_arch" DEBIAN/control

find . -type d -exec chmod 755 {} +
find . -type f -exec chmod 644 {} +
[[ ! -d usr/bin ]] || chmod 755 usr/bin/*
[[ ${#scripts[@]} -eq 0 ]] || chmod 755 "${scripts[@]}"
size=$(find . -path ./DEBIAN -prune -o -type f -printf '%s\n' -o -printf '1024\n' |
  awk '{ total += int(($1 + 1023) / 1024) } END { print total }')
sed -i "s/^Installed-Size:.*/Installed-Size: $size/" DEBIAN/control
find usr -type f -print0 | sort -z | xargs -0 md5sum >DEBIAN/md5sums
find . -exec touch --no-dereference --date "@$SOURCE_DATE_EPOCH" {} +
dpkg-deb --root-owner-group -Zxz --build . "$deb" >/dev/null
