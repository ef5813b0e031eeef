#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes assets/demo/example-show.jsonl, the show that the demo plays, from example-show.yaml beside it.

  make_example_show.py HALVORA   write the file; HALVORA is the program, which compiles the show
  make_example_show.py --check   exit 1 unless the show in the file is whole and keeps to the rule below

The YAML is the show: edit it, run the script, and play the file with `halvora trace` or in the demo. A
test holds the file to be what the YAML compiles to.

PHOTOSENSITIVE VIEWERS: the show contains flashing light. A look that lasts more than two seconds
flashes no more than three times a second on average, on the screen and on the torch; single phones
may exceed that for a moment, their pauses being random. One look goes far beyond: the fast strobe,
shown once, for about a second, in a dimmed master. `--check` holds the show to both rules; keep
them when you edit it, and tell an audience beforehand. Where phones limit their flashes, the mean
of every box of the hall keeps to three a second as well: torches that flash at random, each at its
own times, are slow and short, and the random flashes of screens dimmed. A test holds the show to
that.
"""

import json
import pathlib
import subprocess
import sys
import tempfile
from dataclasses import dataclass, replace

ASSETS = pathlib.Path(__file__).resolve().parent.parent / "assets" / "demo"
SOURCE = ASSETS / "example-show.yaml"
SHOW_FILE = ASSETS / "example-show.jsonl"
PALETTE_FILE = ASSETS / "HVAssets" / "palettes.json"
GOBO_FOLDER = ASSETS / "HVAssets" / "Gobos"

# Where the torch stills are looked at.
SEAT = {"selectedSection": "Stalls", "xPos": "44", "yPos": "20"}
DEVICE = {"brightness": 0.4, "torch": True, "width": 390, "height": 844}


def compiled(halvora):
    """The lines of the file: the phone, and the packets of the show."""
    yield {"at": 0, "device": DEVICE}
    yield {"at": 0, "defaults": SEAT}
    yield {"at": 0, "start": True}
    with tempfile.TemporaryDirectory() as folder:
        made = pathlib.Path(folder) / "show.jsonl"
        subprocess.run([halvora, "show", "compile", SOURCE, "--assets", ASSETS, "--out", made], check=True)
        for text in made.read_text(encoding="utf-8").splitlines():
            line = json.loads(text)
            if "packet" in line:
                yield line


@dataclass(frozen=True)
class Look:
    """What a packet shows, fields as it has them."""

    at: float
    mode: int
    speed: int
    palette: int
    master: int
    torch: int
    torch_speed: int
    gobo: int
    vibrate: int

    @property
    def name(self):
        return f"the look at {self.at} s"


def looks():
    """Those of the show in the file, a fade as one with the master that it comes to."""
    show = []
    for text in SHOW_FILE.read_text(encoding="utf-8").splitlines():
        line = json.loads(text)
        if "packet" not in line:
            continue
        data = bytes.fromhex(line["packet"])
        look = Look(line["at"], mode=data[11], speed=data[12], palette=data[22], master=data[7],
                    torch=data[13], torch_speed=data[14], gobo=data[20], vibrate=data[21])
        is_fade = show and replace(look, at=show[-1].at, master=show[-1].master) == show[-1]
        is_same = is_fade and data[8:11] == colour
        colour = data[8:11]
        if is_same:
            show[-1] = replace(look, at=show[-1].at)
        else:
            show.append(look)
    return show


SHOW = looks() if SHOW_FILE.exists() else []


def slowness(speed):
    """The phones' measure of speed: 0 is fastest, 100 slowest."""
    return 100 - round(speed / 255 * 100)


# Mean flashes a second of one phone by slowness p. A flash is a pair of opposite changes, so a
# change of palette colour counts half. A random strobe bursts twice, then pauses. What is not here
# does not flash.
def random_pause(p):
    return (p * 47 + 300) / 2000


def pulse(p):
    return 1 / ((p * 48 + 200) / 1000 + random_pause(p))


def strobe(p):
    return 500 / (p * 190 // 100 + 10)


def random_strobe(p):
    return 2 / (0.15 + random_pause(p))


SCREEN_FLASHES = {
    3: lambda p: 1 / random_pause(p),
    4: lambda p: 0.5 / random_pause(p),
    5: strobe,
    6: random_strobe,
    13: lambda p: 1 / random_pause(p),
    14: pulse,
    15: lambda p: 1 / random_pause(p),
    16: pulse,
    17: lambda p: 500 / (2 * (p * 48 + 200) + p * 47 + 300),
    18: lambda p: 500 / (2 * (p * 48 + 200) + (p * 45 + 700) / 2),
    19: lambda p: 0.5 / random_pause(p),
    20: lambda p: 500 / (p * 4950 // 100 + 50),
}
TORCH_FLASHES = {4: lambda q: 1 / random_pause(q), 5: strobe, 6: random_strobe}


def faults_of_flashing():
    beyond = []
    for look, following in zip(SHOW, SHOW[1:]):
        lasts = following.at - look.at
        screen = SCREEN_FLASHES.get(look.mode, lambda p: 0)(slowness(look.speed))
        torch = TORCH_FLASHES.get(look.torch, lambda q: 0)(slowness(look.torch_speed))
        if look.mode == 5 and screen > 3:
            beyond.append(look)
            if lasts > 1.25 or look.master > 100:
                yield f"{look.name}: a fast strobe must be short and dimmed"
        elif lasts > 2 and max(screen, torch) > 3:
            yield f"{look.name}: {max(screen, torch):.1f} flashes a second for {lasts:.1f} s"
    if len(beyond) > 1:
        yield f"{beyond[1].name}: the show has its one fast strobe already"


def gobo_acts():
    """What each look makes the phones do with the gobo, where it makes them do anything."""
    with_gobo = {10: "fade in", 11: "pulse", 12: "random pulse"}
    gobo = mode = 0
    shown = False
    for look in SHOW:
        if (look.gobo != gobo and look.mode) or (look.mode > 9 and look.mode != mode):
            if look.mode == 10 and shown:
                yield "cross-fade" if look.gobo else "fade out"
            elif look.gobo:
                yield with_gobo.get(look.mode, "show")
            elif shown:
                yield "hide"
            gobo, shown = look.gobo, look.gobo != 0
        mode = look.mode


def faults_of_coverage():
    gobos = {int(file.stem.split("_")[0]) for file in GOBO_FOLDER.glob("*.png")}
    gobo_rules = {"show", "hide", "fade in", "fade out", "cross-fade", "pulse", "random pulse"}
    palettes = {p["id"] for p in json.loads(PALETTE_FILE.read_text(encoding="utf-8"))["palettes"]}
    whole = {
        "screen modes, slow": (set(range(1, 21)), {c.mode for c in SHOW if c.speed <= 150}),
        "screen modes, fast": (set(range(1, 21)), {c.mode for c in SHOW if c.speed >= 200}),
        "palettes": (palettes, {c.palette for c in SHOW if c.palette}),
        "modes with a gobo": (set(range(1, 14)), {c.mode for c in SHOW if c.gobo}),
        "gobos": (gobos, {c.gobo for c in SHOW}),
        "gobo rules": (gobo_rules, set(gobo_acts())),
        "torch modes": (set(range(10)), {c.torch for c in SHOW}),
        "vibrations": ({0, 1, 2, 3}, {c.vibrate for c in SHOW}),
    }
    for what, (wanted, used) in whole.items():
        if wanted - used:
            yield f"{what}: the show leaves out {sorted(wanted - used)}"
    for look in SHOW:
        if look.palette not in palettes | {0}:
            yield f"{look.name}: there is no palette {look.palette}"
        if look.gobo not in gobos | {0}:
            yield f"{look.name}: there is no gobo {look.gobo}"


def main(arguments):
    if len(arguments) != 1:
        print(f"usage: {pathlib.Path(__file__).name} HALVORA | --check", file=sys.stderr)
        return 2
    if arguments != ["--check"]:
        lines = "".join(json.dumps(line) + "\n" for line in compiled(arguments[0]))
        SHOW_FILE.write_bytes(lines.encode("ascii"))
        return 0
    faults = [fault for rule in (faults_of_flashing, faults_of_coverage) for fault in rule()]
    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults or not SHOW else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
