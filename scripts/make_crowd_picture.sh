#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Makes docs/pictures/crowd.png: the demo venue in the middle of a pixel map, as its phones show it;
# and coverage.png: how well each of its seats could hear a transmitter that does not reach them all.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
tool=build/release/bin/halvora
if [[ ! -x $tool ]]; then
  cmake --preset release
  cmake --build --preset release --target halvora
fi
frames=$(mktemp -d)
trap 'rm -rf "$frames"' EXIT
"$tool" crowd --assets assets/demo --venue 7 --scenario assets/demo/pixel-map-show.jsonl \
  --out "$frames" --size 960x720 --fps 2 --until 12 > /dev/null
cp "$frames/frame-000021.png" docs/pictures/crowd.png
"$tool" crowd --assets assets/demo --venue 7 --scenario assets/demo/example-show.jsonl \
  --coverage docs/pictures/coverage.png --size 640x440 --air 200 --loss 0.4 \
  --reach 1@250,250,330 --reach 255@250,250,330 > /dev/null
