#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs clang-tidy over the core and the tools, only where something changed since it last passed.

lint.py BUILD_FOLDER [--jobs N]

The build folder is a finished Ninja build with compile commands. What a source depends on is asked
of the build; a source that passed leaves a stamp with the hash of all of that.
"""

import argparse
import hashlib
import json
import re
import shlex
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

TIDY = "clang-tidy-14"
FOLDERS = ("platform", "light", "usage", "pixelmap", "engine", "seats", "host", "tools")
NOT_CORE = ("platform/qt/",)
ROOT = Path(__file__).resolve().parent.parent
# The build's compiler has warnings that clang does not know. A function's paths are followed through
# so many states and no further: in some sources the last ones took as long as all the rest.
EXTRA = ("-Wno-unknown-warning-option", "-Xclang", "-analyzer-config", "-Xclang", "max-nodes=40000")


def sources(build):
    """Compile commands by the source's path from the root, each with its object file."""
    found = {}
    for entry in json.loads((build / "compile_commands.json").read_text(encoding="utf-8")):
        file = Path(entry["directory"], entry["file"]).resolve()
        if not file.is_relative_to(ROOT) or file.is_relative_to(build):
            continue
        path = file.relative_to(ROOT).as_posix()
        if path.split("/")[0] in FOLDERS and not path.startswith(NOT_CORE):
            words = shlex.split(entry["command"])
            found[path] = entry | {"object": words[words.index("-o") + 1]}
    return found


def dependencies(build):
    """What the build knows: object file to the files that it was made from."""
    listing = subprocess.run(
        ["ninja", "-C", build, "-t", "deps"], check=True, capture_output=True, text=True
    ).stdout
    found, current = {}, []
    for line in listing.splitlines():
        if line.startswith("    "):
            current.append(line.strip())
        elif line:
            current = found.setdefault(line.split(": #deps")[0], [])
    return found


class Hashes:
    """File hashes, each computed once. Headers of the system are taken by size and time."""

    def __init__(self, build):
        self.build = build
        self.known = {}

    def of(self, name):
        if name not in self.known:
            file = (self.build / name).resolve()
            if not file.exists():
                self.known[name] = "missing"
            elif file.is_relative_to(ROOT):
                self.known[name] = hashlib.sha256(file.read_bytes()).hexdigest()
            else:
                state = file.stat()
                self.known[name] = f"{state.st_size} {state.st_mtime_ns}"
        return self.known[name]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=Path)
    parser.add_argument("--jobs", type=int, default=2)
    arguments = parser.parse_args()
    build = arguments.build.resolve()
    stamps = build / "lint"
    stamps.mkdir(exist_ok=True)

    version = subprocess.run([TIDY, "--version"], check=True, capture_output=True, text=True).stdout
    depends = dependencies(build)
    hashes = Hashes(build)

    def key_of(path, entry):
        parts = [version, *EXTRA, entry["command"], hashes.of(str(ROOT / path))]
        parts += [hashes.of(str(folder / ".clang-tidy")) for folder in (ROOT / path).parents]
        parts += [f"{name} {hashes.of(name)}" for name in sorted(depends[entry["object"]])]
        return hashlib.sha256("\n".join(parts).encode()).hexdigest()

    def lint(item):
        path, entry = item
        stamp = stamps / (path.replace("/", "+") + ".stamp")
        key = key_of(path, entry)
        if stamp.exists() and stamp.read_text(encoding="utf-8") == key:
            return path, None
        command = [TIDY, "--quiet", *(f"--extra-arg={word}" for word in EXTRA), "-p", build]
        run = subprocess.run([*command, ROOT / path], capture_output=True, text=True, cwd=ROOT)
        if run.returncode == 0:
            stamp.write_text(key, encoding="utf-8")
            return path, ""
        return path, re.sub(r"^\d+ warnings? generated\.\n", "", run.stdout + run.stderr, flags=re.M)

    found = sources(build)
    for path, entry in found.items():
        if entry["object"] not in depends:
            sys.exit(f"{path} is not built: build first")
    with ThreadPoolExecutor(arguments.jobs) as pool:
        results = list(pool.map(lint, sorted(found.items())))

    failed = [(path, output) for path, output in results if output]
    for path, output in failed:
        print(f"{path}:\n{output}", file=sys.stderr)
    checked = sum(output is not None for _, output in results)
    print(f"{len(results)} sources, {checked} looked at again, {len(failed)} with findings")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
