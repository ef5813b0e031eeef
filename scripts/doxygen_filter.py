#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Hands a header to the reference as it is meant there: what stands at its head is about the file,
and about the one type that has the file's name; plain C comments of the C header are documentation,
of what stands before them where they do not begin their line. Words behind a member end with their
line: Doxygen would go on with those that the next member has above it.

doxygen_filter.py FILE
"""

import re
import sys
from pathlib import Path


def of_c(text):
    # Functions of a file that nothing is said of would be left out.
    text = text.replace("/* ", "/** \\file\n * ", 1)
    text = re.sub(r"^(\s*)/\*(?!\*)", r"\1/**", text, flags=re.M)
    return re.sub(r"(?<=\S)(\s+)/\*(?!\*)(?=.*\*/$)", r"\1/**<", text, flags=re.M)


def of_cpp(path, text):
    lines = text.splitlines()
    head = []
    for line in lines[1:]:
        if not line.startswith("//"):
            break
        head.append(line[2:].strip())
    if not head:
        return text
    rest = [re.sub(r"///<(.*)$", r"/**<\1 */", line) for line in lines[1 + len(head):]]
    named = path.stem.replace("_", "").lower()
    declared = [re.match(r"(?:class|struct) (\w+)[^;]*$", line) for line in rest]
    types = [(at, found[1].lower()) for at, found in enumerate(declared) if found]
    undocumented = [at for at, _ in types if not rest[at - 1].lstrip().startswith(("///", "//", "template"))]
    # The type of that name, else the only one.
    of_name = [at for at, name in types if name == named and at in undocumented]
    main = of_name or (undocumented if len(types) == 1 else [])
    words = [f"/// {line}" for line in head]
    for at in main[:1]:
        rest[at:at] = words
    return "\n".join(["/// \\file", *words, "", *rest]) + "\n"


def main():
    path = Path(sys.argv[1])
    text = path.read_text(encoding="utf-8")
    print(of_c(text) if "bindings/c" in str(path) else of_cpp(path, text), end="")


if __name__ == "__main__":
    main()
