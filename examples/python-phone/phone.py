#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A phone in Python: hears a recorded show through the kit's C interface and writes what it shows.

phone.py RECORDING --assets FOLDER --out FOLDER [--library libhalvora_c.so] [--every SECONDS]

RECORDING is what `halvora listen --record` writes. Pictures show plain colours only, no gobos or texts.
"""

import argparse
import ctypes
import json
import struct
import zlib
from ctypes import CFUNCTYPE, Structure, byref, c_char_p, c_double, c_float, c_int, c_int64, c_size_t
from ctypes import c_uint64, c_void_p, sizeof
from pathlib import Path

SET = CFUNCTYPE(None, c_void_p, c_int, c_int)
WORD = CFUNCTYPE(None, c_void_p, c_int)
LEVEL = CFUNCTYPE(c_double, c_void_p)
SET_LEVEL = CFUNCTYPE(None, c_void_p, c_double)


class Callbacks(Structure):
    _fields_ = [("size", c_size_t), ("context", c_void_p), ("now", c_void_p), ("wake_at", c_void_p),
                ("set", SET), ("haptic", WORD), ("event", WORD), ("brightness", LEVEL),
                ("set_brightness", SET_LEVEL)]


class Options(Structure):
    _fields_ = [("size", c_size_t), ("assets", c_char_p), ("documents", c_char_p),
                ("languages", c_char_p), ("width", c_double), ("height", c_double),
                ("seed", c_uint64), ("has_torch", c_int), ("default_venue", c_int64)]


class Item(Structure):
    _fields_ = [("size", c_size_t), ("content", c_int), ("x", c_double), ("y", c_double),
                ("width", c_double), ("height", c_double), ("red", c_float), ("green", c_float),
                ("blue", c_float), ("opacity", c_double), ("text", c_char_p), ("font_size", c_double)]


class Phone:
    """One phone; `heard` is called with what it does: ("torch", True), ("brightness", 0.5) …"""
    SWITCHES = ("torch", "scan", "idleTimerDisabled", "statusBarHidden")
    HAPTICS = ("light", "heavy", "sound", "dispose")

    def __init__(self, library, heard, brightness=0.5, **options):
        self.kit = ctypes.CDLL(str(library))
        self.kit.halvora_status_text.restype = c_char_p
        self.level, self.heard = brightness, heard
        # Kept here: the kit calls them for as long as the phone is there.
        self.callbacks = Callbacks(
            size=sizeof(Callbacks),
            set=SET(lambda _, which, on: heard(self.SWITCHES[which], bool(on))),
            haptic=WORD(lambda _, haptic: heard("haptic", self.HAPTICS[haptic])),
            event=WORD(lambda _, event: heard("event", event)),
            brightness=LEVEL(lambda _: self.level), set_brightness=SET_LEVEL(self.write_level))
        chosen = Options()
        self.call("options_init", byref(chosen), c_size_t(sizeof(Options)))
        for name, value in options.items():
            setattr(chosen, name, value)
        self.size, self.handle = (chosen.width, chosen.height), c_void_p()
        self.call("phone_make", byref(self.callbacks), byref(chosen), byref(self.handle))

    def call(self, name, *arguments):
        status = getattr(self.kit, f"halvora_{name}")(*arguments)
        if status != 0:
            raise RuntimeError(f"{name}: {self.kit.halvora_status_text(status).decode()}")

    def write_level(self, _, level):
        self.level = level
        self.heard("brightness", level)

    def run_until(self, seconds):
        self.call("phone_run_until", self.handle, c_int64(round(seconds * 1e6)))

    def act(self, action):
        if "start" in action:
            self.call("phone_start", self.handle)
        elif "packet" in action:
            data = bytes.fromhex(action["packet"])
            self.call("phone_advertisement", self.handle, data, c_size_t(len(data)))
        elif "app" in action:
            self.call("phone_active", self.handle, c_int(action["app"] == "active"))
        for key, text in action.get("defaults", {}).items():
            self.call("phone_set_default", self.handle, key.encode(),
                      None if text is None else str(text).encode())

    def look(self):
        count, items = c_size_t(), []  # From bottom to top.
        self.call("phone_look", self.handle, *map(c_double, self.size), byref(count))
        for index in range(count.value):
            item = Item(size=sizeof(Item))
            self.call("phone_item", self.handle, c_size_t(index), byref(item))
            items.append(item)
        return items

    def colour(self):
        """Of the screen: plain fills, one over the other."""
        mixed = (0.0, 0.0, 0.0)
        for item in self.look():
            if item.content == 0:
                over = (item.red, item.green, item.blue)
                mixed = tuple(b + (t - b) * item.opacity for b, t in zip(mixed, over))
        return mixed


def moments(lines):  # Repeats included.
    found = []
    for order, action in enumerate(map(json.loads, filter(str.strip, lines))):
        first, every = action["at"], action.get("every", 0)
        times = int((action.get("until", first) - first) / every + 1e-9) + 1 if every else 1
        found += [(round(first + n * every, 6), order, action) for n in range(times)]
    return sorted(found, key=lambda moment: moment[:2])


def png(colour, width=78, height=169):
    row = b"\0" + bytes(round(255 * level) for level in colour) * width
    parts = [(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)),
             (b"IDAT", zlib.compress(row * height)), (b"IEND", b"")]
    return b"\x89PNG\r\n\x1a\n" + b"".join(
        struct.pack(">I", len(d)) + n + d + struct.pack(">I", zlib.crc32(n + d)) for n, d in parts)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("recording", type=Path)
    parser.add_argument("--assets", default="")
    parser.add_argument("--out", type=Path, required=True)
    parser.add_argument("--library", default="libhalvora_c.so")
    parser.add_argument("--every", type=float, default=0.5)
    arguments = parser.parse_args()
    arguments.out.mkdir(parents=True, exist_ok=True)
    phone = Phone(arguments.library, print, assets=arguments.assets.encode())
    plan = moments(arguments.recording.read_text(encoding="utf-8").splitlines())
    for number in range(int((plan[-1][0] + 2) / arguments.every)):
        time = number * arguments.every
        while plan and plan[0][0] <= time:
            at, _, action = plan.pop(0)
            phone.run_until(at)
            phone.act(action)
        phone.run_until(time)
        (arguments.out / f"{number:05}.png").write_bytes(png(phone.colour()))
    phone.call("phone_free", phone.handle)


if __name__ == "__main__":
    main()
