#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Does the thread sanitizer notice where a lock is missing?

mutate_locks.py [TEXT...]   each lock of the tree, or of files whose name contains one of these

Takes the guards of one function out at a time, builds the tests of the preset `tsan` and runs those of
threads; says for each whether they failed. The sources are changed in place and put back, so the tree
has to be without changes of its own. Exit status: 0 where every lock that is missing is noticed.
"""

import os
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
BUILD = ROOT / "build/tsan"
ROOMS = ("light", "pixelmap", "engine", "seats", "host", "adapters", "venue", "apps/halvora")
# What the tests of this preset do not have in them.
ELSEWHERE = ("adapters/qt/",)
GUARD = re.compile(r"^[ \t]*const std::(?:lock_guard|scoped_lock) \w+[({].*[)}];$", re.M)
SECONDS = 600


def places(words):
    """File, line, and the text of each guard; those that somebody waits with are left alone."""
    for room in ROOMS:
        for file in sorted((ROOT / room).rglob("*")):
            name = file.relative_to(ROOT).as_posix()
            if file.suffix not in (".cpp", ".h") or name.startswith(ELSEWHERE):
                continue
            if words and not any(word in name for word in words):
                continue
            text = file.read_text(encoding="utf-8")
            for found in GUARD.finditer(text):
                line = text.count("\n", 0, found.start()) + 1
                yield file, line, found


def built():
    done = subprocess.run(["cmake", "--build", BUILD, "--target", "halvora_tests"],
                          capture_output=True, text=True)  # fmt: skip
    return done.returncode == 0, done.stdout + done.stderr


def noticed():
    """What the tests of threads say: None, or the first that is wrong."""
    try:
        done = subprocess.run(
            [BUILD / "bin/halvora_tests", "--gtest_filter=*Threads*.*"],
            capture_output=True, text=True, errors="replace", timeout=SECONDS,
            env=os.environ | {"TSAN_OPTIONS": "halt_on_error=1 allow_addr2line=1"},
        )  # fmt: skip
    except subprocess.TimeoutExpired:
        return "the tests do not end"
    if done.returncode == 0:
        return None
    said = re.search(r"WARNING: ThreadSanitizer: (.*?) \(pid|^\[  FAILED  \] (\S+)",
                     done.stdout + done.stderr, re.M)  # fmt: skip
    return next(filter(None, said.groups())) if said else f"status {done.returncode}"


def try_without(file, found):
    """The verdict on the tree without this guard."""
    text = file.read_text(encoding="utf-8")
    try:
        file.write_text(text[: found.start()] + text[found.end() :], encoding="utf-8")
        is_built, said = built()
        return noticed() if is_built else "not built:\n" + said[-2000:]
    finally:
        file.write_text(text, encoding="utf-8")


def main(words):
    if words and words[0].startswith("-"):
        print(__doc__)
        return 0 if words[0] in ("-h", "--help") else 2
    changed = subprocess.run(["git", "diff", "--quiet", "HEAD", "--", *ROOMS], cwd=ROOT)
    if changed.returncode:
        print("The tree has changes; commit them first.", file=sys.stderr)
        return 2
    is_built, said = built()
    if not is_built or (wrong := noticed()):
        print(said[-2000:] if not is_built else f"wrong with every lock in its place: {wrong}")
        return 2
    missed = 0
    for file, line, found in places(words):
        verdict = try_without(file, found)
        missed += verdict is None
        print(f"{file.relative_to(ROOT)}:{line}: {verdict or 'NOT NOTICED'}", flush=True)
    built()
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
