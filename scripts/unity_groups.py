#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Which sources can be compiled as one: prints a line for each group, its files divided by "|".

unity_groups.py SIZE FILE…

What one file keeps to itself must mean nothing else to the others of its group: a name that it
declares in an anonymous namespace, a macro, or an alias of a header keeps it from all files that
declare the same name, themselves or in a header of this tree that they include. Groups have at most
SIZE files.
"""

import re
import sys
from functools import cache
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
INCLUDE = re.compile(r'^#include "([^"]+)"', re.MULTILINE)
NAMELESS = re.compile(r"^namespace \{$.*?^\}  // namespace$", re.MULTILINE | re.DOTALL)
# What a line that begins in the first column declares: the formatter indents what is within braces,
# but for namespaces.
DECLARED = re.compile(
    r"^(?:template\s*<.*>\s*)?(?:(?:struct|class|enum(?: class)?|union)\s+(\w+)|using (\w+) ="
    r"|(?!TEST|INSTANTIATE|using|namespace|return|#)[A-Za-z_][\w:<>,&*\s.]*?[\s&*](\w+)\s*[\[({=;])"
    r"|^#define (\w+)",
    re.MULTILINE,
)


def declared_in(text):
    return {name for names in DECLARED.findall(text) for name in names if name}


def kept_apart(text, is_header):
    """What nothing else of the same name may stand beside."""
    if is_header:
        return set(re.findall(r"^using (\w+) =", text, re.MULTILINE))
    macros = set(re.findall(r"^#define (\w+)", text, re.MULTILINE))
    return macros.union(*(declared_in(part) for part in NAMELESS.findall(text)))


@cache
def facts_of(file):
    text = file.read_text(encoding="utf-8")
    included = [ROOT / name for name in INCLUDE.findall(text)]
    return declared_in(text), kept_apart(text, file.suffix == ".h"), included


def names_of(file):
    """By name, where it is declared: the file and this tree's headers that are included in the end.
    First all names, then those that are kept apart."""
    seen, waiting, names, apart = set(), [file], {}, {}
    while waiting:
        one = waiting.pop()
        if one in seen or not one.exists():
            continue
        seen.add(one)
        declared, own, included = facts_of(one)
        for name in declared:
            names.setdefault(name, set()).add(one)
        for name in own:
            apart.setdefault(name, set()).add(one)
        waiting += included
    return names, apart


def clash(apart, names):
    return any(len(places | names.get(name, places)) > 1 for name, places in apart.items())


def groups(files, size):
    found = []
    for file in files:
        names, apart = names_of(file)
        for group in found:
            fits = len(group["files"]) < size
            if fits and not clash(apart, group["names"]) and not clash(group["apart"], names):
                break
        else:
            group = {"files": [], "names": {}, "apart": {}}
            found.append(group)
        group["files"].append(file)
        for name, places in names.items():
            group["names"].setdefault(name, set()).update(places)
        for name, places in apart.items():
            group["apart"].setdefault(name, set()).update(places)
    return [group["files"] for group in found]


def main():
    for group in groups([Path(name) for name in sys.argv[2:]], int(sys.argv[1])):
        print("|".join(str(file) for file in group))


if __name__ == "__main__":
    main()
