#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Compares the shared libraries of two installations: is what was built against the old one served by
# the new one? Libraries of different names may differ: their names say so.
#   scripts/check_abi.sh OLD_PREFIX NEW_PREFIX
set -euo pipefail
if (($# != 2)); then
  sed -n 's/^#   /usage: /p' "$0" >&2
  exit 2
fi
if ! command -v abidiff >/dev/null; then
  echo "abidiff is not there: install the package abigail-tools" >&2
  exit 2
fi
old=$1 new=$2 compared=0 broken=0
for library in "$old"/lib*/libhalvora_*.so.*.*.* "$old"/lib*/*/libhalvora_*.so.*.*.*; do
  [[ -e "$library" ]] || continue
  name=$(basename "$library")
  # Up to the part that may break: libhalvora_core.so.0.1
  name=${name%.*}
  other=$(find "$new" -name "$name" -print -quit)
  if [[ -z "$other" ]]; then
    echo "$name: the new installation has another one, which says so by its name"
    continue
  fi
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
