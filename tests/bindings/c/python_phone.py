#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the example phone in Python on the example show and looks at its pictures.

python_phone.py LIBRARY SOURCE_FOLDER OUT_FOLDER
"""

import shutil
import subprocess
import sys
import zlib
from pathlib import Path

LIBRARY, ROOT, OUT = map(Path, sys.argv[1:4])
FEWEST_COLOURS = 5


def colour_of(picture):
    """Of the first pixel of a picture that the example has written."""
    bytes_ = picture.read_bytes()
    begin = bytes_.index(b"IDAT") + 4
    return tuple(zlib.decompress(bytes_[begin:])[1:4])


def main():
    shutil.rmtree(OUT, ignore_errors=True)
    demo = ROOT / "assets/demo"
    subprocess.run(
        [sys.executable, ROOT / "examples/python-phone/phone.py", demo / "example-show.jsonl",
         "--assets", demo, "--out", OUT, "--library", LIBRARY],
        check=True, stdout=subprocess.DEVNULL)
    pictures = sorted(OUT.glob("*.png"))
    colours = [colour_of(picture) for picture in pictures]
    lines = (ROOT / "examples/python-phone/phone.py").read_text(encoding="utf-8").count("\n")
    print(f"{len(pictures)} pictures of {len(set(colours))} colours by {lines} lines")
    # Dark before the first packet at 1.2 s, and by 4 s its warm light has faded in.
    dark, warm = colours[1], colours[8]
    is_warm = warm[0] >= 200 and warm[0] > warm[2] + 50
    return 0 if dark == (0, 0, 0) and is_warm and len(set(colours)) >= FEWEST_COLOURS else 1


if __name__ == "__main__":
    sys.exit(main())
