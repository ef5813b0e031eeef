#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# A command that fails behind `quietly` says what it said, on a terminal and off one, to a caller that
# ends at its first failure.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

log=check-setup
export caller="set -euo pipefail; source scripts/setup.sh
  broken() { echo 'error: no such file'; return 3; }
  mute() { return 3; }
  quietly $log \$WHAT"

# said_by WHAT COMMAND…: what the caller says in there.
said_by() {
  WHAT=$1 "${@:2}" 2>&1 </dev/null || true
}

status=0
expect() {
  grep -qF -- "$2" <<<"$1" && return
  printf 'quietly, %s: "%s" is missing in:\n%s\n' "$3" "$2" "$1" >&2
  status=1
}

for what in broken mute; do
  # The terminal's own shell may be any; the text goes past it.
  on=$(said_by "$what" script -qec 'bash -c "$caller"' /dev/null)
  off=$(said_by "$what" bash -c "$caller")
  for said in "$on" "$off"; do
    [[ "$what" == mute ]] || expect "$said" 'error: no such file' "$what"
    expect "$said" "FAILED: $what (all of the output: build/logs/$log.log)" "$what"
  done
done
rm -f "build/logs/$log.log"
exit $status
