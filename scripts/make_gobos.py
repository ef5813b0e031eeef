#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Draws the demo's gobos, the pictures that lie over the light, and its torch stills.

  make_gobos.py                  write the pictures of assets/demo/HVAssets/Gobos
  make_gobos.py --check          exit 1 unless each of them is what this script draws
  make_gobos.py --stills FOLDER  write the torch stills as PPM files, ready to become JPEG

A gobo is white on a transparent ground, so that the light gives it its colour. A phone fills its
screen with the square picture and crops it: held upright it shows little more than the middle half
of the width. Each picture therefore has its heart in the middle and runs on to its edges.

Edges are smoothed by distance: a pixel's opacity follows from how far its centre is from the edge.
"""

import math
import pathlib
import random
import struct
import sys
import zlib

GOBO_FOLDER = (
    pathlib.Path(__file__).resolve().parent.parent / "assets" / "demo" / "HVAssets" / "Gobos"
)

SIZE = 512
CENTRE = SIZE / 2
LEVELS = 16  # of opacity, clear included
LARGEST_FILE = 12_000  # bytes
TURN = 2 * math.pi


# Shapes. A shape is a function of a point, measured in pixels from the picture's middle, to an
# opacity from 0 to 1.


def inside(distance):
    """Opacity of a pixel whose centre is this far outside an edge; negative is inside."""
    return min(1.0, max(0.0, 0.5 - distance))


def fold(angle, parts):
    """The angle from the middle of the nearest of `parts` equal sectors, the first of them at 0."""
    sector = TURN / parts
    return (angle + sector / 2) % sector - sector / 2


def star(radius, angle, points, tip, notch):
    """Signed distance from the edge of a star with one tip at angle 0."""
    angle = abs(fold(angle, points))
    x, y = radius * math.cos(angle), radius * math.sin(angle)
    notch_x = notch * math.cos(math.pi / points)
    notch_y = notch * math.sin(math.pi / points)
    along_x, along_y = notch_x - tip, notch_y
    return ((x - tip) * along_y - y * along_x) / math.hypot(along_x, along_y)


def star_burst(x, y):
    """A star of two sizes of ray, in a halo of dots that grow outwards."""
    radius, angle = math.hypot(x, y), math.atan2(y, x)
    if radius < 116:
        angle -= TURN / 4
        long_rays = star(radius, angle, 8, 106, 30)
        short_rays = star(radius, angle + TURN / 16, 8, 66, 30)
        hole = 15 - radius
        return inside(max(min(long_rays, short_rays), hole))
    ring = max(0, round(math.log(radius / 138) / math.log(1.3)))
    ring_radius = 138 * 1.3**ring
    off = fold(angle + ring % 2 * TURN / 40, 20)
    to_dot = math.hypot(radius - ring_radius * math.cos(off), ring_radius * math.sin(off))
    return inside(to_dot - 0.088 * ring_radius)


def rings(x, y):
    """Rings like a drop's on water: the further out, the further apart and the finer."""
    radius = math.hypot(x, y)
    edge, gap, width = 18.0, 16.0, 15.0
    distance = radius - edge
    while edge < radius:
        distance = min(distance, abs(radius - edge - gap - width / 2) - width / 2)
        edge, gap, width = edge + gap + width, gap * 1.3, width * 0.95
    return inside(distance)


def beams(x, y):
    """Beams of two lengths out of a dark middle."""
    radius, angle = math.hypot(x, y), math.atan2(y, x) - TURN / 4
    long_beam = max(abs(radius * math.sin(fold(angle, 8))) - radius * 0.115, 34 - radius)
    between = abs(radius * math.sin(fold(angle + TURN / 16, 8)))
    short_beam = max(between - radius * 0.035, 70 - radius)
    return inside(min(long_beam, short_beam))


def fan(phase):
    """A fan of five bent blades in a ring, turned by `phase` blades."""

    def shape(x, y):
        radius, angle = math.hypot(x, y), math.atan2(y, x)
        hub = radius - 20
        rim = abs(radius - 244) - 5
        middle = angle - TURN * phase / 5 - 0.0042 * radius
        blade = abs(fold(middle, 5)) * radius / 1.3 - radius * (0.36 - 0.0005 * radius)
        blade = max(blade, 32 - radius, radius - 230)
        return inside(min(hub, rim, blade))

    return shape


# Pictures. A picture is SIZE rows of SIZE bytes, each a level of opacity.


def level(opacity):
    return round(opacity * (LEVELS - 1))


def draw(shape):
    return [
        bytes(level(shape(x + 0.5 - CENTRE, y + 0.5 - CENTRE)) for x in range(SIZE))
        for y in range(SIZE)
    ]


def leaf(x, y, half_length, half_width):
    """Signed distance from the edge of a leaf along the x axis, with a vein cut into it."""
    bow = (half_length**2 + half_width**2) / (2 * half_width)
    blade = math.hypot(x, abs(y) + bow - half_width) - bow
    vein = abs(y) - 0.035 * (0.7 * half_length - x)
    return max(blade, -vein)


def scatter(chance, spacing):
    """Points all over the picture, none nearer to another than `spacing`."""
    points = []
    for _ in range(4000):
        point = chance.uniform(-20, SIZE + 20), chance.uniform(-20, SIZE + 20)
        if all(math.dist(point, other) >= spacing for other in points):
            points.append(point)
    return points


def stamp(rows, middle, reach, shape):
    """Draws a shape that extends no further than `reach` from its middle; the stronger stays."""
    first_x, first_y = (max(0, int(at - reach)) for at in middle)
    last_x, last_y = (min(SIZE, int(at + reach) + 1) for at in middle)
    for row in range(first_y, last_y):
        for column in range(first_x, last_x):
            seen = level(shape(column + 0.5 - middle[0], row + 0.5 - middle[1]))
            rows[row][column] = max(rows[row][column], seen)


def draw_breakup():
    """Sun through foliage: leaves over faint discs of light."""
    chance = random.Random(32)
    rows = [bytearray(SIZE) for _ in range(SIZE)]
    for middle in scatter(chance, 150):
        size = chance.uniform(26, 60)
        stamp(rows, middle, size + 1, lambda x, y: 0.4 * inside(math.hypot(x, y) - size))
    for middle in scatter(chance, 114):
        length = chance.uniform(48, 80)
        width = length * chance.uniform(0.32, 0.44)
        tilt = chance.uniform(0, TURN)
        cos, sin = math.cos(tilt), math.sin(tilt)
        stamp(
            rows,
            middle,
            length + 1,
            lambda x, y: inside(leaf(x * cos + y * sin, y * cos - x * sin, length, width)),
        )
    return rows


GOBOS = {
    "1.png": lambda: draw(star_burst),
    "2.png": draw_breakup,
    **{f"3_{i}_4.png": lambda i=i: draw(fan((i - 1) / 4)) for i in range(1, 5)},
    "4.png": lambda: draw(rings),
    "5.png": lambda: draw(beams),
}


# Files. Every level of opacity is a palette entry of its own, all of them white: no dark fringe
# comes out of scaling such a picture. Two pixels share a byte, the left one in the high half.


def png_chunk(kind, data):
    body = kind + data
    return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))


PNG_START = b"".join(
    (
        b"\x89PNG\r\n\x1a\n",
        png_chunk(b"IHDR", struct.pack(">IIBBBBB", SIZE, SIZE, 4, 3, 0, 0, 0)),
        png_chunk(b"PLTE", b"\xFF\xFF\xFF" * LEVELS),
        png_chunk(b"tRNS", bytes(round(255 * at / (LEVELS - 1)) for at in range(LEVELS))),
    )
)
PNG_END = png_chunk(b"IEND", b"")
FILTERED_ROW = 1 + SIZE // 2  # its filter, always none, and its pixels


def png(rows):
    filtered = b"".join(
        b"\0" + bytes(left << 4 | right for left, right in zip(row[::2], row[1::2]))
        for row in rows
    )
    return PNG_START + png_chunk(b"IDAT", zlib.compress(filtered, 9)) + PNG_END


def read_png(data):
    """The rows of a picture that png() wrote; ValueError for any other file."""
    if not data.startswith(PNG_START) or not data.endswith(PNG_END):
        raise ValueError("another kind of PNG")
    chunk = data[len(PNG_START) : -len(PNG_END)]
    try:
        filtered = zlib.decompress(chunk[8:-4])
    except zlib.error as error:
        raise ValueError(str(error)) from error
    if chunk != png_chunk(b"IDAT", chunk[8:-4]) or len(filtered) != SIZE * FILTERED_ROW:
        raise ValueError("damaged")
    if any(filtered[::FILTERED_ROW]):
        raise ValueError("another filter")
    packed = [filtered[at + 1 : at + FILTERED_ROW] for at in range(0, len(filtered), FILTERED_ROW)]
    return [bytes(half for byte in row for half in (byte >> 4, byte & 15)) for row in packed]


def faults_of(name, rows):
    file = GOBO_FOLDER / name
    if not file.exists():
        yield f"{name}: missing; run this script without --check"
        return
    data = file.read_bytes()
    try:
        committed = read_png(data)
    except ValueError as error:
        yield f"{name}: {error}; run this script without --check"
        return
    if len(data) > LARGEST_FILE:
        yield f"{name}: {len(data)} bytes, the most is {LARGEST_FILE}"
    # The last digit of a sine is the machine's own, and may tip a pixel to the next level.
    far = sum(
        abs(a - b) > 1 for row, other in zip(committed, rows) for a, b in zip(row, other)
    )
    if far:
        yield f"{name}: {far} pixels are not as drawn; run this script without --check"


def all_faults():
    for file in sorted(GOBO_FOLDER.glob("*")):
        if file.name not in GOBOS:
            yield f"{file.name}: nothing draws it"
    for name, drawn in GOBOS.items():
        yield from faults_of(name, drawn())


# Torch stills: a phone's torch is on where the pixel of its seat is pure white. A bar that leans
# sweeps over the hall; it is lit for every seat at some time, and in every still for some seat.
# Its edges lie between the blocks of a JPEG, which thus keeps black and white exactly.

STILLS = 8
STILL_WIDTH, STILL_HEIGHT = 96, 64
BLOCK = 8


def is_lit(still, x, y):
    left = BLOCK * (2 * still - 6 + y // (2 * BLOCK))
    return left <= x < left + 3 * BLOCK


def write_stills(folder):
    for still in range(1, STILLS + 1):
        pixels = b"".join(
            (b"\xFF\xFF\xFF" if is_lit(still, x, y) else b"\0\0\0")
            for y in range(STILL_HEIGHT)
            for x in range(STILL_WIDTH)
        )
        start = f"P6\n{STILL_WIDTH} {STILL_HEIGHT}\n255\n".encode("ascii")
        (folder / f"v7_m0_f{still}.ppm").write_bytes(start + pixels)


def main(arguments):
    if len(arguments) == 2 and arguments[0] == "--stills":
        write_stills(pathlib.Path(arguments[1]))
        return 0
    if arguments == ["--check"]:
        faults = list(all_faults())
        for fault in faults:
            print(fault, file=sys.stderr)
        return 1 if faults else 0
    if arguments:
        print(f"usage: {pathlib.Path(__file__).name} [--check | --stills FOLDER]", file=sys.stderr)
        return 2
    GOBO_FOLDER.mkdir(parents=True, exist_ok=True)
    for name, drawn in GOBOS.items():
        (GOBO_FOLDER / name).write_bytes(png(drawn()))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
