#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Makes docs/pictures/venue.png: the console's view of the demo venue during a pixel map.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
demo=build/release/bin/halvora-demo
if [[ ! -x $demo ]]; then
  cmake --preset release
  cmake --build --preset release --target halvora_demo
fi
QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software \
  "$demo" --assets assets/demo --venue 3000 --map "${1:-2}" --screenshot docs/pictures/venue.png
