#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Makes build/reference/html/index.html: the reference of all that a host includes, and the pages of
# docs/. A warning is a failure. Needs the package doxygen.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
if ! command -v doxygen >/dev/null; then
  echo "doxygen is not there: install the package of that name" >&2
  exit 2
fi
rm -rf build/reference
mkdir -p build/reference
doxygen docs/Doxyfile
echo "build/reference/html/index.html"
