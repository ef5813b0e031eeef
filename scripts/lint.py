#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs clang-tidy over sources of the core and the tools, and over their headers through them.

lint.py BUILD_FOLDER [--all] [--jobs N]

Nearly all of its time goes to headers of the standard library, so sources are looked at in groups
whose local names do not clash: those that changed since what landed last (or in the last commits),
for each changed header one source that includes it, and a part of the others, another one with each
commit. With --all every source is looked at, and alone: a few checks only look at main files.
A source that passed is not looked at again before something changes that it depends on.
"""

import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

from selection import ROOT, Build, Stamps, arguments_of, changed_files, key_of, selected
from unity_groups import groups

TIDY = "clang-tidy-14"
FOLDERS = ("include", "needs", "text", "light", "usage", "pixelmap", "engine", "seats", "host", "adapters",
           "venue", "apps/halvora")
NOT_CORE = ("adapters/qt/", "adapters/system/")
# What a group includes counts as written in it.
HEADERS = f"/({'|'.join(FOLDERS)})/[^ ]*\\.(h|cpp)$"
# The build's compiler has warnings that clang does not know. A function's paths are followed through
# so many states and no further: in some sources the last ones took as long as all the rest.
ANALYSER = ("-analyzer-opt-analyze-headers", "-analyzer-config", "max-nodes=40000")
EXTRA = ("-Wno-unknown-warning-option", *(f for word in ANALYSER for f in ("-Xclang", word)))
GROUP = 12
# Of the sources that changed, and of the others one in so many.
MOST_CHANGED = 150
SHARE = 8


def wanted_of(build, sources):
    """Sources that changed, and one for each header that did; all if nobody knows what changed."""
    changed = changed_files()
    if changed is None or ".clang-tidy" in changed:
        return None
    wanted = {path for path in sources if path in changed}
    seen = set().union(*(build.depends_of(path) for path in wanted))
    headers = build.headers()
    for header in sorted(changed & headers.keys() - seen):
        if headers[header] in sources:
            wanted.add(headers[header])
    return wanted


def main():
    arguments = arguments_of(__doc__)
    build = Build(arguments.build)
    sources = {
        path
        for path in build.sources
        if path.split("/")[0] in FOLDERS and not path.startswith(NOT_CORE)
    }
    for path in sorted(sources):
        if build.depends_of(path) is None:
            sys.exit(f"{path} is not built: build first")
    wanted = None if arguments.all else wanted_of(build, sources)
    chosen = sorted(sources)
    if wanted is not None:
        chosen = selected(sources, wanted, SHARE, MOST_CHANGED)

    folder = build.folder / "lint"
    stamps = Stamps(folder)
    version = subprocess.run([TIDY, "--version"], check=True, capture_output=True, text=True).stdout
    rules = build.hash_of(".clang-tidy")

    def key(path):
        # As the build compiles, but without its precompiled headers.
        depends = [f"{name} {build.hash_of(name)}" for name in sorted(build.depends_of(path))]
        how = "alone" if arguments.all else "with others"
        return key_of(version, how, rules, *EXTRA, *build.sources[path]["words"], *depends)

    keys = {path: key(path) for path in chosen}
    waiting = [path for path in chosen if not stamps.has(path, keys[path])]
    kinds = {}
    for path in waiting:
        kinds.setdefault(tuple(build.sources[path]["words"]), []).append(ROOT / path)
    size = 1 if arguments.all else GROUP
    work = [(words, group) for words, files in kinds.items() for group in groups(files, size)]

    def lint(numbered):
        number, (words, group) = numbered
        source = group[0]
        if len(group) > 1:
            source = folder / f"group_{number}.cpp"
            lines = "".join(f'#include "{file}"\n' for file in group)
            source.write_text(lines, encoding="utf-8")
        command = [
            TIDY,
            "--quiet",
            "--checks=-bugprone-suspicious-include",
            f"--config-file={ROOT / '.clang-tidy'}",
            f"--header-filter={HEADERS}",
            *(f"--extra-arg={word}" for word in EXTRA),
            str(source),
            "--",
            *words[1:],
        ]
        run = subprocess.run(command, capture_output=True, text=True, cwd=build.folder)
        if run.returncode == 0:
            for file in group:
                path = file.relative_to(ROOT).as_posix()
                stamps.leave(path, keys[path])
            return ""
        said = re.sub(r"^\d+ warnings? generated\.\n", "", run.stdout + run.stderr, flags=re.M)
        return said or f"{source}: {TIDY} ended with status {run.returncode} and said nothing"

    with ThreadPoolExecutor(arguments.jobs) as pool:
        findings = [output for output in pool.map(lint, enumerate(work)) if output]
    print("\n".join(findings), file=sys.stderr)
    print(
        f"note: {len(chosen)} of {len(sources)} sources, {len(waiting)} looked at again, "
        f"{len(findings)} of {len(work)} groups with findings"
    )
    sys.exit(1 if findings else 0)


if __name__ == "__main__":
    main()
