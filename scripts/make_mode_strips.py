#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes docs/pictures/modes: what one phone's screen shows in each mode, and its torch in each of its
own, from left to right in time.

make_mode_strips.py LIBRARY MEDIA           writes the strips (libhalvora_c.so, libhalvora_c_media.so)
make_mode_strips.py LIBRARY MEDIA --check   fails where one is not what the kit shows now

A column is a fortieth of a second, a strip eight seconds; the look is on the air all the time. Where a
gobo lies over the light, the column shows how much of it is to be seen, in white; where the torch is
lit, it is yellow. A grey line below holds what is as white as the page.
"""

import ctypes
import struct
import sys
import tempfile
import zlib
from ctypes import byref, c_size_t, c_void_p, sizeof
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "examples/python-phone"))
import phone as binding  # noqa: E402
from phone import Phone  # noqa: E402

DEMO = ROOT / "assets/demo"
FOLDER = ROOT / "docs/pictures/modes"
# Mode and palette; the colour is orange and the speed in the middle.
MODES = {mode: 0 for mode in (1, 2, 3, 4, 5, 6, 7, 9, 10, 11, 12, 13, 14, 50)} | {
    mode: 1 for mode in range(15, 21)}
PIXEL_MAP_MODE = 21
TORCH_MODES = range(1, 8)
GOBO_MODES = (10, 11, 12)
ORANGE = (255, 128, 0)
SPEED = 192
LIT, DARK = (1.0, 0.9, 0.5), (0.0, 0.0, 0.0)
COLUMNS, A_SECOND, HEIGHT = 320, 40, 24
# A look fades in with the brightness; strips begin after that.
LISTENS, SHOWS = 1.5, 6.5


class Media(ctypes.Structure):
    """Of no interest but for its size: it is filled in and handed on."""
    _fields_ = [("size", c_size_t), ("context", c_void_p), ("acts", c_void_p * 14)]


class Options(binding.Options):
    _fields_ = [("media", ctypes.POINTER(Media)), ("show_key", ctypes.c_char_p),
                ("authentication", ctypes.c_int), ("guards_air", ctypes.c_int)]


def packet(mode, palette, sequence, torch=0):
    gobo = 1 if mode in GOBO_MODES else 0
    return bytes([0x09, 0xC9, 1, 2, 0, 7, 0, 255, *ORANGE, mode, SPEED, torch, SPEED, *[0] * 5, gobo,
                  0, palette, 0, sequence % 256, 7])


def shown(phone):
    """The colour of the light, and of a picture over it as if that were all white."""
    mixed = (0.0, 0.0, 0.0)
    for item in phone.look():
        over = (item.red, item.green, item.blue) if item.content == 0 else (1.0, 1.0, 1.0)
        if item.content in (0, 2):
            mixed = tuple(b + (t - b) * item.opacity for b, t in zip(mixed, over))
    return mixed


def strip_of(library, mode, palette, torch=0):
    """The colours of the columns: of the screen, or of the torch where that has a mode."""
    lit = [False]

    def heard(what, value):
        if what == "torch":
            lit[0] = value

    phone = Phone(library, heard, assets=str(DEMO).encode(), seed=1, has_torch=1)
    phone.act({"start": True})
    phone.run_until(LISTENS)
    colours = []
    for tick in range(int((SHOWS - LISTENS) * A_SECOND) + COLUMNS):
        if tick % 8 == 0:
            phone.act({"packet": packet(mode, palette, tick // 8 + 1, torch).hex()})
        phone.run_until(LISTENS + (tick + 1) / A_SECOND)
        colours.append(LIT if torch and lit[0] else DARK if torch else shown(phone))
    phone.call("phone_free", phone.handle)
    return colours[-COLUMNS:]


def in_pixel_map_mode(action):
    """What the demo's show does, with the mode that asks for a map in those of its packets that have
    one."""
    data = bytearray.fromhex(action.get("packet", ""))
    if data and data[6] != 0:
        data[11] = PIXEL_MAP_MODE
    return {**action, "packet": data.hex()} if data else action


def pixel_map_strip(library, decoders):
    """The demo's show of pixel maps, from its first map on, at the seat that it is made for."""
    media = Media()
    if ctypes.CDLL(str(decoders)).halvora_standard_media(byref(media), c_size_t(sizeof(media))) != 0:
        raise RuntimeError("no decoders")
    lines = (DEMO / "pixel-map-show.jsonl").read_text(encoding="utf-8").splitlines()
    plan = binding.moments(lines)
    first = next(at for at, _, action in plan if action.get("packet", "")[12:14] not in ("", "00"))
    binding.Options, plain = Options, binding.Options
    with tempfile.TemporaryDirectory() as documents:
        phone = Phone(library, lambda *_: None, assets=str(DEMO).encode(), seed=1,
                      documents=documents.encode(), media=ctypes.pointer(media))
        colours = []
        for column in range(COLUMNS):
            time = first + (column + 1) / A_SECOND
            while plan and plan[0][0] <= time:
                at, _, action = plan.pop(0)
                phone.run_until(at)
                phone.act(in_pixel_map_mode(action))
            phone.run_until(time)
            colours.append(shown(phone))
        phone.call("phone_free", phone.handle)
    binding.Options = plain
    return colours


def row_of(colours):
    return bytes(round(255 * level) for colour in colours for level in colour)


def png(row):
    def part(name, data):
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))

    lines = (b"\0" + row) * (HEIGHT - 1) + b"\0" + b"\x99" * len(row)
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
    library, decoders, check = sys.argv[1], sys.argv[2], sys.argv[3:] == ["--check"]
    FOLDER.mkdir(parents=True, exist_ok=True)
    strips = {f"{mode:02}": strip_of(library, mode, palette) for mode, palette in MODES.items()}
    strips |= {f"torch-{mode}": strip_of(library, 1, 0, mode) for mode in TORCH_MODES}
    strips[f"{PIXEL_MAP_MODE}"] = pixel_map_strip(library, decoders)
    wrong = []
    for name, colours in strips.items():
        path = FOLDER / f"{name}.png"
        row = row_of(colours)
        if not check:
            path.write_bytes(png(row))
        elif not path.exists() or row_in(path) != row:
            wrong.append(path.name)
    print(f"{len(strips)} strips" + (f", not as they are shown: {' '.join(wrong)}" if wrong else ""))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
