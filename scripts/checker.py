# SPDX-License-Identifier: Apache-2.0
"""What checkers of the whole tree share: how they are called, and how one that checks itself says
what it found."""

import sys
from pathlib import Path


def told(failures, planted):
    """Whether a checker found all that was planted, and nothing else."""
    print("\n".join(failures), file=sys.stderr, end="\n" if failures else "")
    if not failures:
        print(f"self-test: {planted} planted faults found")
    return not failures


def run_checker(check, self_test):
    """CHECKER [--self-test | ROOT]; exit status 1 where something was found."""
    arguments = sys.argv[1:]
    if arguments == ["--self-test"]:
        sys.exit(0 if self_test() else 1)
    root = Path(arguments[0]) if arguments else Path(__file__).resolve().parent.parent
    sys.exit(0 if check(root) else 1)
