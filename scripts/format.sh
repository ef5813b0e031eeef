#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Formats every C++ file in place; with --check only says which differ, and fails.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

how=(-i)
[[ "${1:-}" == --check ]] && how=(--dry-run --Werror)

find . \( -path ./build -o -path './build-*' -o -path './.*' \) -prune -o \
  -type f \( -name '*.h' -o -name '*.cpp' \) -print0 |
  xargs -0 -r -n 16 -P "$(nproc)" clang-format-14 "${how[@]}"
