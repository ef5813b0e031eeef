#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Compares the shared libraries of two installations: is what was built against the old one served by
# the new one? Libraries of different names may differ: their names say so.
#   scripts/check_abi.sh OLD_PREFIX NEW_PREFIX   two installations, with debug information
#   scripts/check_abi.sh OLD_COMMIT [-DOPTION…]  that tag or commit and the checked-out one, without Qt
#                                                unless -DHALVORA_QT=ON is among the options of CMake
set -euo pipefail
if (($# < 1)) || { (($# > 2)) && [[ "$2" != -D* ]]; }; then
  sed -n 's/^#   /usage: /p' "$0" >&2
  exit 2
fi
if ! command -v abidiff >/dev/null; then
  echo "abidiff is not there: install the package abigail-tools" >&2
  exit 2
fi

# installed COMMIT OPTION…: the folder of its installation, made once.
installed() {
  local commit prefix
  commit=$(git rev-parse --verify --short "$1^{commit}") || return
  shift
  prefix=$PWD/build/abi/$commit$(IFS=; tr -c '[:alnum:]=' - <<<"$*" | sed 's/-*$//')
  if [[ ! -e "$prefix/done" ]]; then
    local source=$prefix/source
    rm -rf "$prefix"
    mkdir -p "$source"
    git archive "$commit" | tar -x -C "$source"
    {
      cmake -S "$source" -B "$prefix/build" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
        -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g" -DCMAKE_INSTALL_PREFIX="$prefix" -DBUILD_SHARED_LIBS=ON \
        -DHALVORA_UNITY=ON -DHALVORA_PRECOMPILE=ON "$@" &&
        cmake --build "$prefix/build" &&
        cmake --install "$prefix/build"
    } >"$prefix/log" 2>&1 || {
      echo "$commit cannot be built: $prefix/log" >&2
      return 2
    }
    touch "$prefix/done"
  fi
  echo "$prefix"
}

if (($# == 1)) || [[ "$2" == -D* ]]; then
  cd "$(dirname "${BASH_SOURCE[0]}")/.."
  old=$(installed "$@")
  new=$(installed HEAD "${@:2}")
else
  old=$1 new=$2
fi

compared=0 broken=0
for library in "$old"/lib*/libhalvora_*.so.*.*.* "$old"/lib*/*/libhalvora_*.so.*.*.*; do
  [[ -e "$library" ]] || continue
  name=$(basename "$library")
  # Up to the part that may break: libhalvora_core.so.0.1
  name=${name%.*}
  other=$(find "$new"/lib* -name "$name" -print -quit)
  if [[ -z "$other" ]]; then
    echo "$name: the new installation has another one, which says so by its name"
    continue
  fi
  for one in "$library" "$other"; do
    # Without it nothing but the names of functions would be compared.
    [[ "$(readelf -SW "$one")" == *.debug_info* ]] && continue
    echo "$one: has no debug information; build it with -g" >&2
    exit 2
  done
  compared=$((compared + 1))
  # Bits of the status: 4 a change of the interface, 8 one that breaks.
  status=0
  abidiff --headers-dir1 "$old/include" --headers-dir2 "$new/include" "$library" "$other" || status=$?
  if ((status & 1 || status & 2)); then
    echo "$name: could not be compared" >&2
    exit 2
  fi
  if ((status & 8)); then
    broken=$((broken + 1))
    echo "$name: BREAKS what was built against the old one"
  fi
done
echo "$compared libraries compared, $broken of them break"
((compared > 0 && broken == 0))
