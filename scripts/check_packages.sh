#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Installs what packaging/build.sh made in a bare Debian root, and uses it there as strangers do: a
# host by CMake, one by pkg-config, one in QML, the command, and a picture of the console's. The root
# is changed; only its own mirror is asked. As root:
#   debootstrap --variant=minbase bookworm ROOT && scripts/check_packages.sh ROOT
set -euo pipefail
root=${1:?a folder with a bare Debian root}
cd "$(dirname "${BASH_SOURCE[0]}")/.."
compgen -G 'build/packages/*.deb' >/dev/null || {
  echo "no packages: packaging/build.sh makes them" >&2
  exit 2
}
rm -rf "$root/halvora"
mkdir -p "$root/halvora"
cp build/packages/*.deb "$root/halvora"
rm -f "$root"/halvora/*-dbgsym_*.deb
cat >"$root/halvora/use.sh" <<'END'
set -euo pipefail
cd /halvora
export DEBIAN_FRONTEND=noninteractive QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software
export XDG_RUNTIME_DIR=/halvora LC_ALL=C.UTF-8
begin() { printf '\n== %s\n' "$*"; }
apt-get -q update >log
begin "What runs, without a compiler"
apt-get -qy install --no-install-recommends ./halvora-tools_*.deb ./halvora-console_*.deb >>log
halvora --version
halvora trace /usr/share/halvora/demo/example-show.jsonl --assets /usr/share/halvora/demo | wc -l
halvora-demo --contact-sheet sheet.png
[[ -s sheet.png ]]

begin "A host by CMake, and one by pkg-config"
apt-get -qy install --no-install-recommends g++ cmake ninja-build pkg-config ./libhalvora-dev_*.deb \
  ./libhalvora0*.deb ./libhalvora-qt0*.deb ./qml6-module-halvora_*.deb ./halvora-doc_*.deb >>log
examples=/usr/share/doc/halvora-doc/examples
cmake -S $examples/cmake-consumer -B by-cmake -G Ninja -DHALVORA_FROM=installation >>log
cmake --build by-cmake >>log
by-cmake/cmake-consumer
g++ -std=c++20 $examples/cmake-consumer/main.cpp -o by-modules \
  $(pkg-config --cflags --libs halvora-virtual halvora-json)
./by-modules
for module in $(pkg-config --list-package-names | grep ^halvora-); do
  [[ $module == halvora-qt ]] || pkg-config --cflags --libs "$module" >>log
done

begin "A host in QML"
apt-get -qy install --no-install-recommends qt6-base-dev qt6-declarative-dev >>log
pkg-config --cflags halvora-qt >>log
cmake -S $examples/qml-host -B by-qml -G Ninja -DHALVORA_FROM=installation >>log
cmake --build by-qml >>log
status=0
timeout 5 by-qml/qml-host 2>qml || status=$?
cat qml
if [[ $status != 124 ]] || grep -q 'not installed' qml; then
  echo "The host in QML did not stay: status $status" >&2
  exit 1
fi
echo "it stays until it is ended"
begin "All of it was used"
END
# What is mounted for it goes with it.
unshare --mount --fork bash -euc 'mount -t proc proc "$1/proc"; mount --rbind /dev "$1/dev"
  exec env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/halvora chroot "$1" bash /halvora/use.sh' \
  - "$root"
