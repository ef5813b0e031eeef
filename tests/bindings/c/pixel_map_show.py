#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Plays the demo's pixel-map show through the C interface, from Python and with the kit's decoders,
and compares every colour of the light with the trace of the engine in C++.

pixel_map_show.py LIBRARY MEDIA_LIBRARY COMMAND SOURCE_FOLDER
"""

import ctypes
import json
import subprocess
import sys
import tempfile
from ctypes import byref, c_char_p, c_int, c_int64, c_size_t, c_void_p, sizeof
from pathlib import Path

LIBRARY, MEDIA, COMMAND, ROOT = (Path(argument) for argument in sys.argv[1:])
sys.path.insert(0, str(ROOT / "examples/python-phone"))
import phone  # noqa: E402

ASSETS = ROOT / "assets/demo"
END = 20
FEWEST = 120


class Media(ctypes.Structure):
    """Of no interest but for its size: it is filled in and handed on."""
    _fields_ = [("size", c_size_t), ("context", c_void_p), ("acts", c_void_p * 14)]


class Options(phone.Options):
    _fields_ = [("media", ctypes.POINTER(Media)), ("show_key", c_char_p),
                ("authentication", c_int), ("guards_air", c_int)]


def actions_of(folder):
    """The show without what prepares its tables, which are built on the air then."""
    lines = (ASSETS / "pixel-map-show.jsonl").read_text(encoding="utf-8").splitlines()
    lines = [line for line in lines if "precompute" not in line]
    scenario = Path(folder) / "show.jsonl"
    scenario.write_text("\n".join(lines) + "\n", encoding="utf-8")
    return scenario, lines


def expected(scenario):
    """The colour of the light from each millisecond on at which it is set."""
    printed = subprocess.run([COMMAND, "trace", scenario, "--assets", ASSETS, "--until", str(END)],
                             check=True, capture_output=True, text=True).stdout
    colours = {}
    for line in map(json.loads, printed.splitlines()):
        if "light" in line:
            colours[line["t"]] = line["light"][:3]
    return colours


def played(lines, documents, times):
    media = Media()
    if ctypes.CDLL(str(MEDIA)).halvora_standard_media(byref(media), c_size_t(sizeof(media))) != 0:
        raise RuntimeError("no decoders")
    phone.Options = Options
    kit = phone.Phone(LIBRARY, lambda *_: None, brightness=0.4, seed=1, languages=b"en",
                      assets=str(ASSETS).encode(), documents=documents.encode(),
                      media=ctypes.pointer(media))
    plan = phone.moments(lines)
    found = {}
    for time in sorted(times):
        while plan and round(plan[0][0] * 1000) <= time:
            at, _, action = plan.pop(0)
            kit.call("phone_run_before", kit.handle, c_int64(round(at * 1e6)))
            kit.act(action)
        kit.run_until(time / 1000)
        look = kit.look()
        # While all of it fades in from nothing there is nothing to draw.
        if look:
            found[time] = [round(level, 4) for level in (look[0].red, look[0].green, look[0].blue)]
    kit.call("phone_free", kit.handle)
    return found


def main():
    with tempfile.TemporaryDirectory() as folder:
        scenario, lines = actions_of(folder)
        wanted = expected(scenario)
        found = played(lines, folder, wanted)
    wrong = [time for time in found if found[time] != wanted[time]]
    for time in wrong[:5]:
        print(f"{time} ms: in C++ {wanted[time]}, in C {found[time]}", file=sys.stderr)
    distinct = len({tuple(colour) for colour in found.values()})
    print(f"{len(found)} colours of the light, {distinct} of them different, {len(wrong)} wrong")
    return 1 if wrong or distinct < FEWEST else 0


if __name__ == "__main__":
    sys.exit(main())
