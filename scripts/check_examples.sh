#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Builds the examples as a host application would, each with the kit as a folder of its own project,
# checks the interface of the one, and runs the one that needs no window.
#   scripts/check_examples.sh [BUILD_FOLDER]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=${1:-build/examples}

# Neither optimised nor with symbols: quick to compile, and the compiler's cache knows a source of
# the one example in the other one's folder too.
options=(-G Ninja -DCMAKE_BUILD_TYPE=None)
if command -v ccache >/dev/null; then
  options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi

for example in cmake-consumer qml-host; do
  cmake -S "examples/$example" -B "$build/$example" "${options[@]}"
  cmake --build "$build/$example"
done
cmake --build "$build/qml-host" --target qml-host_qmllint

printed=$("$build/cmake-consumer/cmake-consumer")
echo "$printed"
[[ "$printed" == $'the show begins\nlight 1.00 0.50 0.00' ]]
