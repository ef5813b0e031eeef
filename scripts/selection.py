# SPDX-License-Identifier: Apache-2.0
"""What checks of single files share: how the build compiles a file, what the file depends on, what
changed, and what passed before. The build folder is a finished Ninja build with compile commands."""

import argparse
import hashlib
import json
import random
import shlex
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
# How far back "changed" reaches where the checked-out commit is the landed one.
COMMITS = 30


def arguments_of(what):
    """BUILD [--all] [--jobs N]."""
    parser = argparse.ArgumentParser(description=what)
    parser.add_argument("build", type=Path, help="folder of a finished build")
    parser.add_argument("--all", action="store_true", help="not only what changed")
    parser.add_argument("--jobs", type=int, default=2)
    return parser.parse_args()


def output_of(*command):
    run = subprocess.run(command, capture_output=True, text=True, cwd=ROOT)
    return run.stdout if run.returncode == 0 else None


def plain(words):
    """The compiler's words without its output, and without the headers that the build precompiles."""
    kept, waiting = [], iter(words)
    for word in waiting:
        if word in ("-o", "-c", "-include", "--param"):
            if word != "-c":
                next(waiting)
        elif word != "-Winvalid-pch" and not word.endswith("ccache"):
            kept.append(word)
    return kept


class Build:
    """The sources of this tree that a build compiles, by path from the root."""

    def __init__(self, folder):
        self.folder = folder.resolve()
        self.sources = {}
        commands = json.loads((self.folder / "compile_commands.json").read_text(encoding="utf-8"))
        for entry in commands:
            file = Path(entry["directory"], entry["file"]).resolve()
            if file.is_relative_to(ROOT) and not file.is_relative_to(ROOT / "build"):
                words = shlex.split(entry["command"])
                path = file.relative_to(ROOT).as_posix()
                # Without the source's own name at the end.
                self.sources[path] = {
                    "object": words[words.index("-o") + 1],
                    "words": plain(words)[:-1],
                }
        self.depends = self._dependencies()
        self._hashes = {}

    def _dependencies(self):
        """Object file to the files of this tree that it was made from."""
        listing = output_of("ninja", "-C", str(self.folder), "-t", "deps") or ""
        found, current = {}, set()
        for line in listing.splitlines():
            if line.startswith("    "):
                file = (self.folder / line.strip()).resolve()
                if file.is_relative_to(ROOT) and not file.is_relative_to(ROOT / "build"):
                    current.add(file.relative_to(ROOT).as_posix())
            elif line:
                current = found.setdefault(line.split(": #deps")[0], set())
        return found

    def depends_of(self, path):
        return self.depends.get(self.sources[path]["object"])

    def headers(self):
        """Every header that a source depends on, with the source that says how to compile it: the one
        of the same name, or else one of those that depend on least."""
        found = {}
        for path in sorted(self.sources):
            depends = self.depends_of(path) or set()
            for header in depends:
                if header.endswith(".h"):
                    order = (header[:-2] != path[:-4], len(depends), path)
                    found[header] = min(found.get(header, order), order)
        return {header: order[-1] for header, order in found.items()}

    def hash_of(self, path):
        if path not in self._hashes:
            file = ROOT / path
            known = file.read_bytes() if file.exists() else b"missing"
            self._hashes[path] = hashlib.sha256(known).hexdigest()
        return self._hashes[path]


def changed_files():
    """Paths that differ from what landed last, as far as git knows; None if it knows nothing."""
    base = output_of("git", "merge-base", "HEAD", "origin/main")
    head = output_of("git", "rev-parse", "HEAD")
    if head is None:
        return None
    if base is None or base == head:
        commits = output_of("git", "rev-list", "--first-parent", f"--max-count={COMMITS + 1}", "HEAD")
        base = commits.split()[-1]
    found = output_of("git", "diff", "--name-only", base.strip()).splitlines()
    found += output_of("git", "ls-files", "--others", "--exclude-standard").splitlines()
    return set(found)


def selected(paths, wanted, share, limit):
    """The wanted ones of the paths, at most `limit`, and a share of the others: with each commit
    others, the same ones whenever it is checked."""
    order = sorted(paths)
    random.Random(output_of("git", "rev-parse", "HEAD") or "").shuffle(order)
    first = [path for path in order if path in wanted]
    rest = [path for path in order if path not in wanted]
    if len(first) > limit:
        print(f"note: {len(first)} files changed, of which {limit} are looked at")
    return sorted(first[:limit] + rest[: len(rest) // share])


class Stamps:
    """A file that passed leaves a stamp with the hash of all that its result depends on."""

    def __init__(self, folder):
        self.folder = folder
        folder.mkdir(exist_ok=True)

    def _file(self, path):
        return self.folder / (path.replace("/", "+") + ".stamp")

    def has(self, path, key):
        return self._file(path).exists() and self._file(path).read_text(encoding="utf-8") == key

    def leave(self, path, key):
        self._file(path).write_text(key, encoding="utf-8")


def key_of(*parts):
    return hashlib.sha256("\n".join(parts).encode()).hexdigest()
