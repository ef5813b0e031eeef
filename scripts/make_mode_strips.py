#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes docs/pictures/modes: what one phone's screen shows in each mode, from left to right in time.

make_mode_strips.py LIBRARY           writes the strips (LIBRARY is libhalvora_c.so)
make_mode_strips.py LIBRARY --check   fails where one is not what the kit shows now

A column is a fortieth of a second, a strip eight seconds; the look is on the air all the time. Where a
gobo lies over the light, the column shows how much of it is to be seen, in white.
"""

import struct
import sys
import zlib
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "examples/python-phone"))
from phone import Phone  # noqa: E402

FOLDER = ROOT / "docs/pictures/modes"
# Mode and palette; the colour is orange and the speed in the middle.
MODES = {mode: 0 for mode in (1, 2, 3, 4, 5, 6, 7, 10, 11, 12, 13, 14)} | {
    mode: 1 for mode in range(15, 21)}
GOBO_MODES = (10, 11, 12)
ORANGE = (255, 128, 0)
SPEED = 192
COLUMNS, A_SECOND, HEIGHT = 320, 40, 24
# A look fades in with the brightness; strips begin after that.
LISTENS, SHOWS = 1.5, 6.5


def packet(mode, palette, sequence):
    gobo = 1 if mode in GOBO_MODES else 0
    return bytes([0x09, 0xC9, 1, 2, 0, 7, 0, 255, *ORANGE, mode, SPEED, *[0] * 7, gobo, 0, palette,
                  0, sequence % 256, 7])


def shown(phone):
    """The colour of the light, and of a picture over it as if that were all white."""
    mixed = (0.0, 0.0, 0.0)
    for item in phone.look():
        over = (item.red, item.green, item.blue) if item.content == 0 else (1.0, 1.0, 1.0)
        if item.content in (0, 2):
            mixed = tuple(b + (t - b) * item.opacity for b, t in zip(mixed, over))
    return mixed


def strip_of(library, mode, palette):
    """The colours of the columns."""
    phone = Phone(library, lambda *_: None, assets=str(ROOT / "assets/demo").encode(), seed=1)
    phone.act({"start": True})
    phone.run_until(LISTENS)
    colours = []
    for tick in range(int((SHOWS - LISTENS) * A_SECOND) + COLUMNS):
        if tick % 8 == 0:
            phone.act({"packet": packet(mode, palette, tick // 8 + 1).hex()})
        phone.run_until(LISTENS + (tick + 1) / A_SECOND)
        colours.append(shown(phone))
    phone.call("phone_free", phone.handle)
    return colours[-COLUMNS:]


def row_of(colours):
    return bytes(round(255 * level) for colour in colours for level in colour)


def png(row):
    def part(name, data):
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))

    lines = (b"\0" + row) * HEIGHT
    head = struct.pack(">IIBBBBB", COLUMNS, HEIGHT, 8, 2, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + part(b"IHDR", head) + part(b"IDAT", zlib.compress(lines, 9)) +
            part(b"IEND", b""))


def row_in(path):
    """The first row of a strip that this script has written."""
    data = path.read_bytes()
    begin = data.index(b"IDAT") + 4
    size = struct.unpack(">I", data[begin - 8:begin - 4])[0]
    return zlib.decompress(data[begin:begin + size])[1:1 + 3 * COLUMNS]


def main():
    library, check = sys.argv[1], sys.argv[2:] == ["--check"]
    FOLDER.mkdir(parents=True, exist_ok=True)
    wrong = []
    for mode, palette in MODES.items():
        path = FOLDER / f"{mode:02}.png"
        row = row_of(strip_of(library, mode, palette))
        if not check:
            path.write_bytes(png(row))
        elif not path.exists() or row_in(path) != row:
            wrong.append(path.name)
    print(f"{len(MODES)} strips" + (f", not as they are shown: {' '.join(wrong)}" if wrong else ""))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
