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
python3 scripts/make_qml_reference.py build/reference/qml.md
doxygen docs/Doxyfile
# Every type that a host sees is documented; of a member its name may say all.
{
  cat docs/Doxyfile
  echo "GENERATE_HTML = NO"
  echo "WARN_IF_UNDOCUMENTED = YES"
  echo "WARN_AS_ERROR = NO"
  echo "WARN_LOGFILE = build/reference/undocumented"
} | doxygen -
if grep -E "warning: (Compound .*|Member [^ ]+ \((enumeration|typedef)\) of (namespace|file) .*) is not documented" \
  build/reference/undocumented >&2; then
  echo "Each of these types needs a word on what it is" >&2
  exit 1
fi
echo "build/reference/html/index.html"
