#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Makes build/reference/html/index.html: the reference of all that a host or a port includes, and the
# pages of docs/. A warning is a failure, and so is a name that nothing is said of. Needs the package
# doxygen.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
if ! command -v doxygen >/dev/null; then
  echo "doxygen is not there: install the package of that name" >&2
  exit 2
fi
rm -rf build/reference
mkdir -p build/reference
python3 scripts/make_qml_reference.py build/reference/qml.md
doxygen docs/Doxyfile
# Doxygen says nothing of values of enumerations.
python3 scripts/check_reference.py --self-test
python3 scripts/check_reference.py build/reference/xml
echo "build/reference/html/index.html"
