#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Builds the Debian packages of the committed tree, in build/packages, and lets lintian look at them.
# Needs debhelper, lintian and doxygen beside what the build needs.
#   packaging/build.sh [OPTION OF dpkg-buildpackage…]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
for tool in dh lintian doxygen; do
  command -v "$tool" >/dev/null && continue
  echo "$tool is not there: install the packages debhelper, lintian and doxygen" >&2
  exit 2
done
version=$(sed -n 's/^#define HALVORA_VERSION "\(.*\)"$/\1/p' include/halvora/version.h)
packaged=$(sed -n '1s/^halvora (\(.*\)) .*$/\1/p' packaging/debian/changelog)
if [[ "$packaged" != "$version" ]]; then
  echo "packaging/debian/changelog is of $packaged, the kit of $version" >&2
  exit 2
fi
root=$PWD/build/packages
rm -rf "$root"
mkdir -p "$root/halvora-$version"
git archive HEAD | tar -x -C "$root/halvora-$version"
cp -r packaging/debian "$root/halvora-$version/debian"
(cd "$root/halvora-$version" && dpkg-buildpackage --build=binary --no-sign "$@")
lintian --allow-root --fail-on error "$root"/*.changes
ls -l "$root"/*.deb
