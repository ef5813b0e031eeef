#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Compares what rounds of benchmarks take in two programs, in instructions.

count_instructions.py [--rounds N] OLD NEW [BENCHMARK...]

OLD and NEW are `halvora_bench` of two trees, built alike; without names it goes through all
benchmarks of the engine that both have. Instructions are the same on a busy machine and on a quiet
one, so that a hundredth shows where times differ by a tenth from one minute to the next; what waits
for memory does not show. Counted by valgrind's callgrind: the whole program with ten times as many
rounds, less the same with fewer, so that what is done once falls out. N is how many rounds the
largest run has, a power of ten (default: 10000; 100 for rows whose rounds are long). Exit status 1:
something could not be measured.
"""

import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
LONG = ("Gather", "SeatMap", "StandingDrag", "TableLoad", "Trace")


def benchmarks_of(program):
    listed = subprocess.run([program, "--benchmark_list_tests"], check=True, text=True, stdout=subprocess.PIPE)
    return listed.stdout.split()


def instructions(program, name, power, clock):
    """Of the whole program, with a go of 1 round, one of 10 and so on up to 10 to that power."""
    command = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", program,
               f"--benchmark_filter=^{re.escape(name)}$", "--benchmark_min_time=900"]
    environment = {**os.environ, "LD_PRELOAD": str(clock), "COUNTED_ROUNDS": str(power)}
    run = subprocess.run(command, env=environment, text=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    counted = re.search(r"Collected : (\d+)", run.stderr)
    if run.returncode or not counted:
        sys.exit(f"{program} {name}: not counted\n{run.stderr}")
    return int(counted.group(1))


def a_round(program, name, power, clock):
    """The third run has 10^power rounds more than the second, the second a tenth of that more than
    the first, and each difference also has one beginning and one end."""
    first, second, third = (instructions(program, name, power - back, clock) for back in (2, 1, 0))
    return ((third - second) - (second - first)) / (10**power - 10 ** (power - 1))


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("old")
    parser.add_argument("new")
    parser.add_argument("names", nargs="*")
    parser.add_argument("--rounds", type=int)
    arguments = parser.parse_args()

    if not shutil.which("valgrind"):
        sys.exit("valgrind is not there: install the package of that name")
    both = set(benchmarks_of(arguments.old))
    names = arguments.names or [
        name for name in benchmarks_of(arguments.new)
        if name in both and (name.endswith("/engine") or "/" not in name)
    ]
    print(f"{'instructions of a round':28} {'old':>14} {'new':>14}  ratio")
    with tempfile.TemporaryDirectory() as folder:
        clock = Path(folder) / "counted_rounds.so"
        source = ROOT / "bench/counted_rounds.c"
        subprocess.run(["cc", "-D_GNU_SOURCE", "-O1", "-shared", "-fPIC", source, "-o", clock, "-ldl"], check=True)
        for name in names:
            rounds = arguments.rounds or (100 if name.startswith(LONG) else 10000)
            power = len(str(rounds)) - 1
            old, new = (a_round(program, name, power, clock) for program in (arguments.old, arguments.new))
            print(f"{name:28} {old:14,.1f} {new:14,.1f}  {new / old:.3f}", flush=True)


if __name__ == "__main__":
    main()
