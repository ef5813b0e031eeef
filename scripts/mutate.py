#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Do the tests notice? Plants faults in the sources, one at a time, and runs the tests that reach it.

mutate.py                        a sample of every folder, as far as it is not known already
mutate.py --folder light --all   every place in light/
mutate.py --folder light --beside    by the tests in tests/light alone, with build/dev as it is
mutate.py --summary              a table of what is known, a line a folder
mutate.py --list-survivors       file, line, operator and change of what no test noticed

A source is compiled once with all its mutants, and the program of tests chooses one of them when it
starts; only what the compiler itself computes is compiled anew for each. One run of all tests says
which test reaches which mutant. Results are kept in build/mutate, one file a folder: a mutant is tried
again only where its source changed, or the test that noticed it, or, if none did, any test that
reaches it. What can make no difference stands in scripts/mutants/equivalent.txt with its reason.

With --beside only the folder's own sources are prepared, and linked before the objects of build/dev:
minutes instead of an hour. What only tests of other folders notice then counts as survived, unless
they are named by --with: a room of the venue is tested by the commands that use it, too.

Needs what the tests need, gcc and mold. Exit status: 0 where every folder asked for has at least the
share of --least (90 %) noticed, 1 where one has not, 2 where something else went wrong.
"""

import argparse
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent / "mutants"))
import campaign  # noqa: E402


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter
    )
    parser.add_argument("--folder", action="append", help="only this folder; may be repeated")
    parser.add_argument("--beside", action="store_true",
                        help="only by the tests beside a folder, with the objects of build/dev")
    parser.add_argument("--with", action="append", dest="more", metavar="FOLDER", default=[],
                        help="with --beside: the tests of tests/FOLDER too; may be repeated")
    parser.add_argument("--file", action="append", help="only this source; may be repeated")
    parser.add_argument("--sample", type=int, default=100, metavar="N",
                        help="so many mutants a folder, the same ones every time (100)")
    parser.add_argument("--all", action="store_true", help="every mutant")
    parser.add_argument("--survivors", action="store_true", help="only those that no test noticed")
    parser.add_argument("--seed", default="7", help="of the sample (7)")
    parser.add_argument("--summary", action="store_true", help="run nothing, print the table")
    parser.add_argument("--list-survivors", action="store_true", help="run nothing, list them")
    parser.add_argument("--no-build", action="store_true", help="take the program of tests as it is")
    parser.add_argument("--jobs", type=int, default=2, help="compilers side by side (2)")
    parser.add_argument("--minutes", type=float, default=0, help="begin no mutant after that time")
    parser.add_argument("--least", type=float, default=90, help="of a hundred, to be noticed (90)")
    return campaign.run(parser.parse_args())


if __name__ == "__main__":
    try:
        sys.exit(main())
    except campaign.Trouble as trouble:
        print(trouble, file=sys.stderr)
        sys.exit(2)
