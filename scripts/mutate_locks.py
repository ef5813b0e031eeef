#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Does the thread sanitizer notice where a lock is missing?

mutate_locks.py [TEXT...]   each lock of the tree, or of files whose name contains one of these

Takes locks out, one of each file at a time, builds the tests of the preset `tsan` and runs those of
threads. A lock that is missing is noticed where a race is reported in its file, or a test fails or
never ends with that lock alone out. A race is in the file of this tree that is nearest to either of
its two accesses. The sources are changed in place and put back, so the tree has to
be without changes of its own. Exit status: 0 where every lock that is missing is noticed.
"""

import os
import re
import subprocess
import sys
from itertools import zip_longest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
BUILD = ROOT / "build/tsan"
ROOMS = ("light", "pixelmap", "engine", "seats", "host", "adapters", "venue", "apps/halvora")
# What the tests of this preset do not have in them.
ELSEWHERE = ("adapters/qt/",)
GUARD = re.compile(r"^[ \t]*const std::(?:lock_guard|scoped_lock) \w+[({].*[)}];$", re.M)
SECONDS = 300


class Trouble(Exception):
    """Something other than a lock that nobody misses."""


def files(words):
    """Those with locks, and the place of each. What a thread waits with is left alone."""
    for room in ROOMS:
        for file in sorted((ROOT / room).rglob("*")):
            name = file.relative_to(ROOT).as_posix()
            if file.suffix not in (".cpp", ".h") or name.startswith(ELSEWHERE):
                continue
            if words and not any(word in name for word in words):
                continue
            found = list(GUARD.finditer(file.read_text(encoding="utf-8")))
            if found:
                yield [(file, guard) for guard in found]


def build():
    done = subprocess.run(["cmake", "--build", BUILD, "--target", "halvora_tests"],
                          capture_output=True, text=True)  # fmt: skip
    if done.returncode:
        raise Trouble("the tests cannot be built:\n" + (done.stdout + done.stderr)[-2000:])


def run():
    """Whether the tests of threads passed, and what they and the sanitizer said."""
    try:
        done = subprocess.run(
            [BUILD / "bin/halvora_tests", "--gtest_filter=*Threads*.*"],
            capture_output=True, text=True, errors="replace", timeout=SECONDS,
            env=os.environ | {"TSAN_OPTIONS": "allow_addr2line=1"},
        )  # fmt: skip
    except subprocess.TimeoutExpired:
        return False, "the tests do not end"
    return done.returncode == 0, done.stdout + done.stderr


def run_without(guards):
    """What is said of the tree without these."""
    texts = {file: file.read_text(encoding="utf-8") for file, _ in guards}
    try:
        for file, guard in guards:
            text = texts[file]
            file.write_text(text[: guard.start()] + text[guard.end() :], encoding="utf-8")
        build()
        return run()
    finally:
        for file, text in texts.items():
            file.write_text(text, encoding="utf-8")


def racing(said):
    """The files whose own accesses race."""
    for race in re.findall(r"WARNING: ThreadSanitizer: data race.*?\n={10,}", said, re.S):
        # What follows is where the threads, and what they share, were made.
        for access in race.split("\n\n")[:2]:
            # A cache of compilers may have made the paths relative to the build.
            for frame in re.findall(rf"^ +#\d+ .*?(?:{ROOT}|(?: \.\.)(?:/\.\.)*)/(\S+?):\d+", access,
                                    re.M):  # fmt: skip
                if not frame.startswith("build/"):
                    yield frame
                    break


def judged(guards):
    """Of each, whether it was missed."""
    is_good, said = run_without(guards)
    races = set(racing(said))
    for file, guard in guards:
        name = file.relative_to(ROOT).as_posix()
        if name in races:
            yield file, guard, "a race is reported"
        elif not is_good and len(guards) > 1:
            yield from judged([(file, guard)])
        else:
            yield file, guard, None if is_good else "the tests fail"


def main(words):
    if words and words[0].startswith("-"):
        print(__doc__)
        return 0 if words[0] in ("-h", "--help") else 2
    wanted = list(files(words))
    if not wanted:
        raise Trouble("no lock in files that are named so")
    changed = subprocess.run(["git", "diff", "--quiet", "HEAD", "--", *ROOMS], cwd=ROOT)
    if changed.returncode:
        raise Trouble("the tree has changes; commit them first")
    subprocess.run(["cmake", "--preset", "tsan"], cwd=ROOT, capture_output=True, check=True)
    build()
    is_good, said = run()
    if not is_good:
        raise Trouble("wrong with every lock in its place:\n" + said[-2000:])
    missed = 0
    for batch in zip_longest(*wanted):
        for file, guard, verdict in judged([place for place in batch if place]):
            line = guard.string.count("\n", 0, guard.start()) + 1
            missed += verdict is None
            print(f"{file.relative_to(ROOT)}:{line}: {verdict or 'NOT NOTICED'}", flush=True)
    build()
    return 1 if missed else 0


if __name__ == "__main__":
    try:
        sys.exit(main(sys.argv[1:]))
    except Trouble as trouble:
        print(trouble, file=sys.stderr)
        sys.exit(2)
