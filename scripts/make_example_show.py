#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes assets/demo/example-show.jsonl, the show that the demo plays, from the cue list below.

  make_example_show.py           write the file
  make_example_show.py --check   exit 1 unless the cue list is whole and the file is what it makes

The cue list is the show. Each cue is a look and stands until the next one; edit it, run the script,
and play the file with `halvora trace` or in the demo. The output depends on nothing but this file.

PHOTOSENSITIVE VIEWERS: the show contains flashing light. A look that lasts more than two seconds
flashes no more than three times a second on average, on the screen and on the torch; single phones
may exceed that for a moment, their pauses being random. One look goes far beyond: the fast strobe,
shown once, for about a second, in a dimmed master. `--check` holds the cue list to both rules; keep
them when you edit it, and tell an audience beforehand.
"""

import json
import pathlib
import sys
from dataclasses import dataclass

ASSETS = pathlib.Path(__file__).resolve().parent.parent / "assets" / "demo"
SHOW_FILE = ASSETS / "example-show.jsonl"
PALETTE_FILE = ASSETS / "HVAssets" / "palettes.json"
GOBO_FOLDER = ASSETS / "HVAssets" / "Gobos"

# Where the torch stills are looked at.
SEAT = {"selectedSection": "Stalls", "xPos": "44", "yPos": "20"}
DEVICE = {"brightness": 0.4, "torch": True, "width": 390, "height": 844}

APPLICATION_ID = 4242
VENUE_ID = 7
STAGE_TRANSMITTER = 1  # its transmitter key is "4242:1"
FALLBACK_TRANSMITTER = 255  # venue-wide, obeyed only while no other transmitter is heard
STAGE_ON_AIR = 9000  # ms: the stage takes over
FALLBACK_OFF_AIR = 12000  # ms: until then the fallback repeats its last look, which phones ignore

REPEAT = 100  # ms between two copies of a look
END_HOLD = 3000  # ms that the last cue stays on the air


@dataclass(frozen=True)
class Cue:
    at: float  # seconds, a whole number of tenths
    name: str
    mode: int
    speed: int  # 0 slow to 255 fast; also the gobo's
    light: object  # "#RRGGBB" or a palette id
    master: int = 255
    fade: float = 0  # seconds that the master takes to get here from the cue before
    torch: int = 0
    torch_speed: int = 0
    still: int = 0  # the picture that decides the torch in mode 9
    gobo: int = 0
    vibrate: int = 0


SHOW = [
    # Doors: the audience comes in; only the venue-wide fallback is on the air.
    Cue(1.2, "Doors", 1, 0, "#FFB46B", master=40),
    Cue(2.2, "House lights", 1, 0, "#FFB46B", master=200, fade=1.5),
    Cue(4.4, "Line check", 9, 40, "#3D8BFF", master=200),
    Cue(5.8, "Line check, answered", 9, 220, "#00E5A0", master=200, gobo=1, vibrate=1),
    Cue(7.2, "Candles in the hall", 1, 200, 11, master=200, gobo=1),

    # Dawn: slow light out of the dark.
    Cue(9.0, "First light", 17, 125, 46, master=70),
    Cue(11.0, "Horizon", 17, 125, 3, fade=2.5),
    Cue(14.0, "Sun disc", 17, 125, 24, gobo=5),
    Cue(17.0, "Haze lifts", 17, 225, 38, torch=9, still=1),
    Cue(19.6, "First bird", 13, 70, 31, torch=9, still=2),
    Cue(22.2, "All the birds", 13, 205, 31, vibrate=1, torch=9, still=3),
    Cue(24.6, "Dew", 4, 110, 4, gobo=2, torch=9, still=4),
    Cue(27.2, "Dew in the wind", 4, 205, 17, torch=9, still=5),
    Cue(29.6, "Warm breath", 16, 125, 1, torch=9, still=6),
    Cue(32.4, "Quicker breath", 16, 215, 30, torch=9, still=7),
    Cue(34.8, "Morning mist", 18, 135, 44, torch=9, still=8),
    Cue(36.4, "Mist turns gold", 18, 135, 27),
    Cue(38.4, "Mist opens", 18, 135, 32, gobo=1),
    Cue(40.2, "Heat shimmer", 18, 225, 32),
    Cue(42.6, "Sun up", 1, 0, 14, torch=1),
    Cue(44.2, "Eyes closed", 1, 0, 14, master=40, fade=1.5),

    # Water: colours drift, pictures swim over them.
    Cue(46.2, "Surface", 1, 0, 28, fade=1.0),
    Cue(48.0, "Ripples", 20, 140, 2, gobo=4),
    Cue(51.0, "Rapids", 20, 240, 43),
    Cue(53.2, "Shoal", 19, 140, 13),
    Cue(55.8, "Shoal turns", 19, 210, 22),
    Cue(58.0, "Lantern sinks", 10, 130, "#0091FF", gobo=5),
    Cue(61.0, "Lantern goes out", 10, 240, "#00C8F0"),
    Cue(62.4, "Another lights", 10, 240, "#00FFC8", gobo=1),
    Cue(63.2, "Ripples from it", 10, 240, "#00FFC8", gobo=4),
    Cue(64.4, "Jellyfish", 11, 140, 36, gobo=4),
    Cue(67.4, "Jellyfish flee", 11, 245, 35, gobo=3),
    Cue(69.8, "Stars in the deep", 12, 150, 39, gobo=1),
    Cue(72.8, "Stars above", 12, 235, 33, gobo=1),
    Cue(75.0, "Foam", 13, 190, 7, gobo=2),
    Cue(77.2, "Swell", 14, 125, 15),
    Cue(80.2, "Breakers", 14, 220, 25),
    Cue(82.6, "Moon path", 18, 200, 21),
    Cue(85.0, "Undertow", 1, 0, "#0047FF", master=60, fade=1.5),

    # City: lights go on, the crowd begins to dance.
    Cue(87.0, "Windows", 15, 120, 26, torch=3, torch_speed=120),
    Cue(89.2, "Shop fronts", 20, 235, 40, torch=2, torch_speed=200),
    Cue(91.0, "Camera crews", 3, 130, "#FFFFFF", torch=4, torch_speed=150),
    Cue(93.2, "Neon alley", 19, 215, 5),
    Cue(95.0, "Red carpet", 3, 208, "#FF4D6D", torch=4, torch_speed=200),
    Cue(96.4, "Traffic lights: dark", 7, 100, "#FF1744"),
    Cue(97.0, "Traffic lights: red", 7, 101, "#FF1744", torch=7),
    Cue(97.6, "Traffic lights: dark again", 7, 102, "#FFD423", torch=7, torch_speed=1),
    Cue(98.2, "Traffic lights: amber", 7, 103, "#FFD423", torch=7, torch_speed=2),
    Cue(98.8, "Junction: dark", 8, 110, 41, torch=8, torch_speed=3),
    Cue(99.4, "Junction: go", 8, 111, 41, gobo=1, torch=8, torch_speed=4),
    Cue(100.2, "Turn signal: dark", 7, 220, 38),
    Cue(100.6, "Turn signal: lit", 7, 221, 38, gobo=5),
    Cue(101.0, "Crossing: dark", 8, 222, 10),
    Cue(101.4, "Crossing: lit", 8, 223, 10, gobo=4),
    Cue(102.4, "Who calls", 2, 140, 45),
    Cue(105.2, "Who answers", 2, 230, 9, gobo=1),
    Cue(107.0, "Everyone answers", 2, 230, 34, gobo=1),
    Cue(108.4, "Dance floor opens", 20, 235, 49, vibrate=2),
    Cue(110.4, "Pop", 19, 220, 16),
    Cue(112.4, "Bass", 16, 220, 29, vibrate=2),
    Cue(114.4, "Sugar", 20, 238, 19),
    Cue(116.4, "Orchard", 19, 215, 8, gobo=2),
    Cue(118.4, "Spotlights", 15, 205, 23),
    Cue(120.4, "Slow dance", 18, 215, 6),
    Cue(122.8, "Slow dance, closer", 18, 215, 44, gobo=3),
    Cue(125.2, "Last song", 20, 240, 42, vibrate=2),
    Cue(127.2, "Doors open to the rain", 1, 0, 36, master=80, fade=1.5),

    # Storm: darkness, thunder, and the one fast strobe.
    Cue(129.4, "Sheet lightning", 6, 120, "#B388FF", master=160, vibrate=3),
    Cue(132.0, "Rain", 13, 200, 18, master=160),
    Cue(134.2, "Lightning", 6, 205, "#DCE8FF", 140, torch=6, torch_speed=180, gobo=5, vibrate=3),
    Cue(136.4, "Power lines", 4, 215, 18, master=200, gobo=4),
    Cue(138.4, "Generator fails", 5, 20, "#6EA8FF", 180, torch=5, torch_speed=10, gobo=3),
    Cue(140.8, "Sparks", 3, 215, "#FFD54A", gobo=1, vibrate=3),
    Cue(142.8, "Fire", 19, 225, 20),
    Cue(144.8, "Fire spreads", 20, 238, 37),
    Cue(146.8, "Strike", 5, 255, "#FFFFFF", master=90, vibrate=3),
    Cue(147.8, "Blackout", 1, 0, "#000000", master=0),
    Cue(150.0, "Heartbeat", 1, 0, "#FF0A3C", master=90, vibrate=2),
    Cue(150.4, "Silence", 1, 0, "#000000", master=90),
    Cue(151.6, "Heartbeat, stronger", 1, 0, "#FF0A3C", master=140, vibrate=2),
    Cue(152.0, "Silence, shorter", 1, 0, "#000000", master=140),
    Cue(152.8, "Heartbeat, awake", 1, 0, "#FF3358", master=200, vibrate=2),
    Cue(153.2, "Silence ends", 1, 0, "#000000", master=200),

    # Aurora: the sky answers.
    Cue(154.0, "One candle", 1, 0, "#FF9A3C", master=60, gobo=1),
    Cue(155.6, "A thousand candles", 1, 0, 11, fade=1.5, vibrate=1),
    Cue(158.0, "Green veil", 17, 150, 12, master=220),
    Cue(161.0, "Veil folds", 17, 215, 25, master=220, gobo=2),
    Cue(163.6, "Cosmos", 14, 140, 29),
    Cue(166.4, "Meteors", 13, 200, 9, torch=4, torch_speed=170),
    Cue(168.6, "Reindeer bells", 15, 140, 33, gobo=3),
    Cue(171.0, "Night breathes", 16, 140, 46),
    Cue(173.6, "Glow-worms", 19, 150, 45, gobo=2),
    Cue(175.8, "Dawn again", 18, 215, 3),
    Cue(178.2, "Hold it up", 1, 255, 47, torch=1, vibrate=1),

    # Encore: everyone, everything, home.
    Cue(179.8, "Festival", 20, 236, 10, vibrate=2),
    Cue(181.8, "Rainbow", 19, 215, 49, gobo=4),
    Cue(183.8, "Fireworks", 15, 208, 47, torch=4, torch_speed=190, vibrate=2),
    Cue(186.0, "Sky of gold", 13, 208, 38, gobo=5, torch=6, torch_speed=160),
    Cue(188.0, "Disco", 16, 228, 26),
    Cue(190.0, "Tropic night", 20, 240, 22, gobo=2),
    Cue(192.0, "Shimmer", 4, 215, 50, gobo=1),
    Cue(194.0, "White surf", 14, 228, 13),
    Cue(196.0, "Finale", 15, 212, 50, torch=4, torch_speed=200, vibrate=3),
    Cue(198.6, "Bow", 1, 0, "#FFFFFF", torch=1),
    Cue(200.0, "Homecoming", 18, 200, 48, vibrate=1),
    Cue(202.8, "Hearth", 17, 230, 30, gobo=1),
    Cue(205.4, "Walk home", 20, 225, 27, master=200),
    Cue(207.6, "Last ember", 1, 0, 1, master=200),
    Cue(209.2, "Good night", 1, 0, 1, master=20, fade=2.5),
    Cue(212.4, "Off", 0, 0, "#000000", master=20),
]


def tenths(seconds):
    """Whole milliseconds of a cue's time."""
    return round(seconds * 10) * 100


def state(cue, master):
    """The 23 bytes of a look that stand before its sequence number."""
    is_palette = isinstance(cue.light, int)
    rgb = bytes(3) if is_palette else bytes.fromhex(cue.light[1:])
    sync_flag = pixel_map = video = seconds = hundredths = video_status = 0
    minutes = cue.still
    return (
        b"\x09\xC9" + APPLICATION_ID.to_bytes(2, "big")
        + bytes([sync_flag, VENUE_ID, pixel_map, master]) + rgb
        + bytes([cue.mode, cue.speed, cue.torch, cue.torch_speed])
        + bytes([video, minutes, seconds, hundredths, video_status])
        + bytes([cue.gobo, cue.vibrate, cue.light if is_palette else 0])
    )


def looks():
    """(ms, state) for every look: the cues, and a step every REPEAT while a master fades."""
    master = 0
    for cue in SHOW:
        steps = max(1, tenths(cue.fade) // REPEAT)
        for step in range(1, steps + 1):
            level = master + (2 * (cue.master - master) * step + steps) // (2 * steps)
            yield tenths(cue.at) + (step - 1) * REPEAT, state(cue, level)
        master = cue.master


def changes():
    """The looks that differ from the one before; only these get a sequence number of their own."""
    before = None
    for at, look in looks():
        if look != before:
            yield at, look
        before = look


def in_seconds(ms):
    return ms // 1000 if ms % 1000 == 0 else ms / 1000


def scenario():
    """The lines of the file."""
    yield {"at": 0, "device": DEVICE}
    yield {"at": 0, "defaults": SEAT}
    yield {"at": 0, "start": True}
    timeline = list(changes())
    ends = [at for at, _ in timeline[1:]] + [timeline[-1][0] + END_HOLD]
    for sequence, ((at, look), end) in enumerate(zip(timeline, ends), start=1):
        transmitter = STAGE_TRANSMITTER if at >= STAGE_ON_AIR else FALLBACK_TRANSMITTER
        if at < STAGE_ON_AIR <= end:
            end = FALLBACK_OFF_AIR
        packet = look + sequence.to_bytes(2, "big") + bytes([transmitter])
        line = {"at": in_seconds(at), "packet": packet.hex().upper()}
        if end - at > REPEAT:
            # Half a step before the next look, so that no rounding decides about the last copy.
            line.update(every=in_seconds(REPEAT), until=in_seconds(end - REPEAT // 2))
        yield line


def text():
    return "".join(json.dumps(line) + "\n" for line in scenario())


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


def faults_of_timing():
    for cue, following in zip(SHOW, SHOW[1:]):
        if tenths(cue.at) + max(tenths(cue.fade), REPEAT) > tenths(following.at):
            yield f"{following.name}: comes before the cue above it is done"
    if tenths(SHOW[0].at) < 1000:
        yield f"{SHOW[0].name}: phones scan only from 1 s on"
    for cue in SHOW:
        if abs(cue.at * 10 - round(cue.at * 10)) > 1e-6:
            yield f"{cue.name}: at {cue.at} is not a whole number of tenths"


def faults_of_flashing():
    beyond = []
    for cue, following in zip(SHOW, SHOW[1:]):
        lasts = following.at - cue.at
        screen = SCREEN_FLASHES.get(cue.mode, lambda p: 0)(slowness(cue.speed))
        torch = TORCH_FLASHES.get(cue.torch, lambda q: 0)(slowness(cue.torch_speed))
        if cue.mode == 5 and screen > 3:
            beyond.append(cue)
            if lasts > 1.25 or cue.master > 100:
                yield f"{cue.name}: a fast strobe must be short and dimmed"
        elif lasts > 2 and max(screen, torch) > 3:
            yield f"{cue.name}: {max(screen, torch):.1f} flashes a second for {lasts:.1f} s"
    if len(beyond) > 1:
        yield f"{beyond[1].name}: the show has its one fast strobe already"


def gobo_acts():
    """What each cue makes the phones do with the gobo, where it makes them do anything."""
    with_gobo = {10: "fade in", 11: "pulse", 12: "random pulse"}
    gobo = mode = 0
    shown = False
    for cue in SHOW:
        if (cue.gobo != gobo and cue.mode) or (cue.mode > 9 and cue.mode != mode):
            if cue.mode == 10 and shown:
                yield "cross-fade" if cue.gobo else "fade out"
            elif cue.gobo:
                yield with_gobo.get(cue.mode, "show")
            elif shown:
                yield "hide"
            gobo, shown = cue.gobo, cue.gobo != 0
        mode = cue.mode


def faults_of_coverage():
    gobos = {int(file.stem.split("_")[0]) for file in GOBO_FOLDER.glob("*.png")}
    gobo_rules = {"show", "hide", "fade in", "fade out", "cross-fade", "pulse", "random pulse"}
    palettes = {p["id"] for p in json.loads(PALETTE_FILE.read_text(encoding="utf-8"))["palettes"]}
    whole = {
        "screen modes, slow": (set(range(1, 21)), {c.mode for c in SHOW if c.speed <= 150}),
        "screen modes, fast": (set(range(1, 21)), {c.mode for c in SHOW if c.speed >= 200}),
        "palettes": (palettes, {c.light for c in SHOW if isinstance(c.light, int)}),
        "modes with a gobo": (set(range(1, 14)), {c.mode for c in SHOW if c.gobo}),
        "gobos": (gobos, {c.gobo for c in SHOW}),
        "gobo rules": (gobo_rules, set(gobo_acts())),
        "torch modes": (set(range(10)), {c.torch for c in SHOW}),
        "vibrations": ({0, 1, 2, 3}, {c.vibrate for c in SHOW}),
    }
    for what, (wanted, used) in whole.items():
        if wanted - used:
            yield f"{what}: the show leaves out {sorted(wanted - used)}"
    for cue in SHOW:
        if isinstance(cue.light, int) and cue.light not in palettes:
            yield f"{cue.name}: there is no palette {cue.light}"
        if cue.gobo not in gobos | {0}:
            yield f"{cue.name}: there is no gobo {cue.gobo}"


def faults_of_file():
    if not SHOW_FILE.exists() or SHOW_FILE.read_bytes() != text().encode("ascii"):
        yield f"{SHOW_FILE.name}: not what this script makes; run it without --check"


def main(arguments):
    if arguments not in ([], ["--check"]):
        print(f"usage: {pathlib.Path(__file__).name} [--check]", file=sys.stderr)
        return 2
    if not arguments:
        SHOW_FILE.write_bytes(text().encode("ascii"))
        return 0
    rules = (faults_of_timing, faults_of_flashing, faults_of_coverage, faults_of_file)
    faults = [fault for rule in rules for fault in rule()]
    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
