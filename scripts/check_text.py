#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Fails on a missing licence line, a path of one machine, or a C++ line over 100 columns.

check_text.py [ROOT]       checks the tree
check_text.py --self-test  plants every kind of fault and expects each to be found
"""

import re
import sys
import tempfile
from pathlib import Path

from checker import run_checker, told

LICENCE = "SPDX-License-Identifier: Apache-2.0"
MAX_COLUMNS = 100

# How a file's comment lines begin: by name, then by ending. Other files need no licence line.
COMMENT_BY_NAME = {
    name: "# " for name in ("CMakeLists.txt", "packages.txt", "run", "test", "fuzz")
}
COMMENT_BY_ENDING = {
    ".h": "// ",
    ".cpp": "// ",
    ".qml": "// ",
    ".js": "// ",
    ".cmake": "# ",
    ".py": "# ",
    ".sh": "# ",
}
CPP_ENDINGS = (".h", ".cpp")

# Folders where a machine keeps its people's and its jobs' files; no file may name one.
MACHINE_FOLDERS = ("home", "root", "tmp", "work", "Users")
MACHINE_PATH = re.compile(rf"(?<![\w./}})~-])/(?:{'|'.join(MACHINE_FOLDERS)})/\w")

# Not ours to check: what was built, the version control's own, and the licence's text.
SKIPPED = re.compile(r"^(build|build-[^/]*|\.git|\.cache|LICENSE)(/|$)|(^|/)__pycache__/")


def complaints(root):
    """Yields (path, line number, text) for every fault below the root."""
    for file in sorted(root.rglob("*")):
        path = file.relative_to(root).as_posix()
        if SKIPPED.search(path) or not file.is_file():
            continue
        data = file.read_bytes()
        if b"\0" in data:
            continue
        try:
            lines = data.decode("utf-8").split("\n")
        except UnicodeDecodeError:
            # Test data may be in any encoding; our own sources are UTF-8.
            if file.suffix in COMMENT_BY_ENDING:
                yield path, 1, "not UTF-8"
            continue

        comment = COMMENT_BY_NAME.get(file.name) or COMMENT_BY_ENDING.get(file.suffix)
        if comment:
            first = 1 if lines[0].startswith("#!") else 0
            if lines[first : first + 1] != [comment + LICENCE]:
                yield path, first + 1, f'this line is to be "{comment}{LICENCE}"'
        for number, line in enumerate(lines, 1):
            if MACHINE_PATH.search(line):
                yield path, number, f"a path of one machine: {line.strip()[:80]}"
            if file.suffix in CPP_ENDINGS and len(line) > MAX_COLUMNS:
                yield path, number, f"{len(line)} columns, {MAX_COLUMNS} are allowed"


def check(root):
    found = list(complaints(root))
    for path, number, text in found:
        print(f"{path}:{number}: {text}", file=sys.stderr)
    return not found


def self_test():
    tmp = "/" + "tmp"
    good = {
        "a.cpp": f"// {LICENCE}\n{'x' * 100}\n",
        "run": f"#!/usr/bin/env bash\n# {LICENCE}\n",
        "notes.md": "https://example.com/{0}/it and ${{ROOT}}/tmp/x and platform/{0}/x\n".format("work"),
        "pixels.bin": f"\0{tmp}/x",
    }
    bad = {
        "a.cpp": f"// {LICENCE}\n{'x' * 101}\n",
        "b.h": "#pragma once\n",
        "run": "#!/usr/bin/env bash\n\n",
        "CMakeLists.txt": f"\n# {LICENCE}\n",
        "notes.md": f"see {tmp}/x\n",
        "show.json": f'{{"path": "{tmp}/x"}}\n',
        "c.cpp": f"// {LICENCE}\n// \udcff\n",
    }
    failures = []
    with tempfile.TemporaryDirectory() as folder:
        for wanted, files in ((0, good), (1, bad)):
            for name, text in files.items():
                file = Path(folder) / name
                file.write_bytes(text.encode("utf-8", "surrogateescape"))
                found = list(complaints(Path(folder)))
                file.unlink()
                if len(found) != wanted:
                    failures.append(f"{name}: {wanted} fault planted, found: {found}")
    return told(failures, len(bad))


if __name__ == "__main__":
    run_checker(check, self_test)
