#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# How long a newcomer waits: clones the committed tree, runs ./run there without a display and
# without anything that an earlier build has left, and says after how many seconds the first picture
# was there. The Debian packages are those of the machine; files that it still has in memory stay.
#   scripts/first_light.sh [TIMES]
set -euo pipefail

tree=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
unset DISPLAY WAYLAND_DISPLAY QT_QPA_PLATFORM
export HOME="$scratch/home" XDG_CACHE_HOME="$scratch/home/cache" CCACHE_DISABLE=1
TIMEFORMAT='  all of it: %R s, of which the processors worked %U s + %S s'

newcomer() {
  local begun=$SECONDS line
  (cd "$scratch" && tree/run) | while IFS= read -r line; do
    printf '%5d s  %s\n' "$((SECONDS - begun))" "$line"
  done
}

for ((turn = 1; turn <= ${1:-1}; turn++)); do
  rm -rf "$scratch"/*
  mkdir -p "$XDG_CACHE_HOME"
  git clone --quiet --no-hardlinks "$tree" "$scratch/tree"
  time newcomer
  [[ -s "$scratch/halvora-contact-sheet.png" ]] || {
    echo "no picture came" >&2
    exit 1
  }
done
