#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Every header and source compiles alone: it includes what it uses, though the build precompiles
headers. Syntax only. What a host may include sees nothing but its own folder, as in a host.

check_alone.py BUILD_FOLDER [--all] [--jobs N]

Without --all: the files that changed since what landed last (or in the last commits), and a tenth of
the others, another one with each commit, and all that a host may include. A file that passed is not compiled again before something
changes that it depends on.
"""

import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

from selection import ROOT, Build, Stamps, arguments_of, changed_files, key_of, selected

MOST_CHANGED = 120
SHARE = 10
FACE = "include/"


def words_for(path, words):
    """What compiles that file, without debug information."""
    words = [word for word in words if word != "-g1"]
    if path.startswith(FACE):
        words = [word for word in words if not word.startswith("-I")] + [f"-I{ROOT / FACE}"]
    return words


def main():
    arguments = arguments_of(__doc__)
    build = Build(arguments.build)
    # Each with the source that says how it is compiled.
    files = build.headers() | {path: path for path in build.sources}
    changed = None if arguments.all else changed_files()
    chosen = sorted(files)
    if changed is not None:
        face = {path for path in files if path.startswith(FACE)}
        chosen = sorted(face.union(selected(files, changed, SHARE, MOST_CHANGED)))
    stamps = Stamps(build.folder / "alone")

    def check(path):
        words = words_for(path, build.sources[files[path]]["words"])
        depends = build.depends_of(files[path]) or {path}
        hashes = [f"{name} {build.hash_of(name)}" for name in sorted(depends)]
        key = key_of(path, *words, *hashes)
        if stamps.has(path, key):
            return path, None
        # As one that is included: a header's own `#pragma once` in a main file is a warning.
        language = "c" if files[path].endswith(".c") else "c++"
        command = [*words, "-fsyntax-only", "-x", language, "-"]
        run = subprocess.run(
            command, input=f'#include "{ROOT / path}"\n', capture_output=True, text=True,
            cwd=build.folder,
        )
        if run.returncode == 0:
            stamps.leave(path, key)
            return path, ""
        return path, run.stderr or f"the compiler ended with status {run.returncode}"

    with ThreadPoolExecutor(arguments.jobs) as pool:
        results = list(pool.map(check, chosen))

    failed = [(path, output) for path, output in results if output]
    for path, output in failed:
        print(f"{path}:\n{output}", file=sys.stderr)
    checked = sum(output is not None for _, output in results)
    print(
        f"note: {len(results)} of {len(files)} files, {checked} compiled again, "
        f"{len(failed)} that do not compile alone"
    )
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
