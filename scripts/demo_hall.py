# SPDX-License-Identifier: Apache-2.0
"""The demo's hall: where every seat is, and its name.

Seen from above, the stage at the top. A seat's position is a pixel of the hall's videos, the upper
left one of a block of 2 x 2 pixels that is this seat's alone.
"""

import functools
import math
import random
from dataclasses import dataclass

WIDTH, HEIGHT = 640, 480
COLUMNS, ROWS = WIDTH // 2, HEIGHT // 2  # blocks of 2 x 2 pixels
MARGIN = 8  # pixels between a seat and the frame's edge
REACH = 3  # blocks: so far around a seat the frame is lit

# The hall, in pixels. The bowl lies around the floor on three sides, its corners rounded. A depth
# is how far a row is from the edge of the floor, a piece is a straight or a corner of the bowl.
MIDDLE = 320
TOP = 44  # where the sides begin, beside the stage
FLOOR_HALF, FLOOR_BOTTOM, CORNER = 100, 262, 40
BEND = FLOOR_BOTTOM - CORNER  # where the sides end
STAGE = MIDDLE, 56
CENTRE = MIDDLE, 200
TEXT_DEPTH = 154  # where letters have their true width
SEAT_PITCH, ROW_PITCH, AISLE = 4, 4.87, 7.3


@dataclass(frozen=True)
class Spot:
    """What a pattern goes by: where a block is in the hall, and what it has of the nearest seat."""

    tier: str  # "floor", "lower", "box" or "upper"
    line: int  # the row's index from the front of its tier
    chance: float  # 0 to 1, the seat's own
    depth: float  # negative on the floor
    around: float  # 0 at the left end of the bowl, 1 at the right end
    from_stage: float
    bearing: float  # as seen from the hall's centre
    from_stage_bearing: float  # as seen from behind the stage, 0 straight down the hall


@dataclass(frozen=True)
class Seat:
    section: str
    row: str
    number: int
    x: int
    y: int
    tier: str
    line: int
    chance: float


# Geometry of the bowl.

PIECES = ("left", "left corner", "bottom", "right corner", "right")


def length(piece, depth):
    if piece == "bottom":
        return 2 * (FLOOR_HALF - CORNER)
    if piece in ("left", "right"):
        return BEND - TOP
    return math.pi / 2 * (CORNER + depth)


def point(piece, part, depth):
    """Where a row of that depth is after a part, 0 to 1, of the piece, going left to right."""
    side = -1 if piece.startswith("left") else 1
    if piece == "bottom":
        return MIDDLE + (2 * part - 1) * (FLOOR_HALF - CORNER), FLOOR_BOTTOM + depth
    if side > 0:
        part = 1 - part
    if piece in ("left", "right"):
        return MIDDLE + side * (FLOOR_HALF + depth), TOP + part * length(piece, depth)
    angle, radius = part * math.pi / 2, CORNER + depth
    x = MIDDLE + side * (FLOOR_HALF - CORNER + radius * math.cos(angle))
    return x, BEND + radius * math.sin(angle)


def around(piece, part):
    lengths = [length(each, TEXT_DEPTH) for each in PIECES]
    at = PIECES.index(piece)
    return (sum(lengths[:at]) + part * lengths[at]) / sum(lengths)


def depth_and_around(x, y):
    """The way back from point(): of any place, the floor included."""
    side, beyond = ("left", MIDDLE - x) if x < MIDDLE else ("right", x - MIDDLE)
    turned = (lambda part: part) if side == "left" else (lambda part: 1 - part)
    right, down = beyond - (FLOOR_HALF - CORNER), y - BEND
    if right > 0 and down > 0:
        part = math.atan2(down, right) / (math.pi / 2)
        return math.hypot(right, down) - CORNER, around(f"{side} corner", turned(part))
    depth = max(right, down) - CORNER
    if depth < 0:
        return depth, 0.5 - math.atan2(x - MIDDLE, y - TOP + 26) / math.pi
    if right > 0:
        return depth, around(side, turned((y - TOP) / length(side, depth)))
    return depth, around("bottom", 0.5 + (x - MIDDLE) / length("bottom", depth))


def spot(seat, x, y):
    """Of the block at x, y, which takes its colour from the seat's place in the hall."""
    depth, turn = depth_and_around(x, y)
    return Spot(
        seat.tier,
        seat.line,
        seat.chance,
        depth,
        turn,
        math.dist((x, y), STAGE),
        math.atan2(y - CENTRE[1], x - CENTRE[0]),
        math.atan2(x - MIDDLE, y - STAGE[1] + 30),
    )


# Who sits where. The letters I and O are left out, as they are taken for numbers.

LETTERS = "ABCDEFGHJKLMNPQRSTUVWXYZ"


@dataclass(frozen=True)
class Tier:
    name: str
    front: float  # depth of the first row
    rows: tuple
    parts: tuple  # how many sections each piece is cut into
    first: int  # number of the first section
    prefix: str = ""


TIERS = (
    Tier("lower", 8, tuple(LETTERS[:16]), (3, 2, 2, 2, 3), 101),
    Tier("box", 91.5, ("1", "2"), (4, 3, 3, 3, 4), 1, "Box "),
    Tier("upper", 109, tuple(str(row) for row in range(1, 22)), (3, 4, 2, 4, 3), 201),
)


def is_left_out(tier, section, line, number, count):
    """Seats that a real hall has not: ways in, sight lines beside the stage, cameras."""
    middle = abs(number - (count + 1) / 2)
    if tier.name == "lower":
        return section in (101, 112) and line < 4 or section in (106, 107) and line > 13
    if tier.name == "upper":
        way_in = section in (202, 204, 206, 211, 213, 215) and 2 <= line <= 5 and middle < 3
        return way_in or section in (201, 216) and line < 3
    return False


def row_of_bowl(tier, section, line, piece, first, last):
    """Where the seats of one row are, as parts of the piece."""
    depth = tier.front + line * ROW_PITCH
    usable = length(piece, depth) * (last - first) - AISLE
    staggered = line % 2 if piece in ("left", "bottom", "right") else 0
    count = int(usable / SEAT_PITCH) + 1 - staggered
    for number in range(1, count + 1):
        if not is_left_out(tier, section, line, number, count):
            off = (number - (count + 1) / 2) * SEAT_PITCH / length(piece, depth)
            yield (first + last) / 2 + off


def bowl():
    for tier in TIERS:
        section = tier.first
        for piece, parts in zip(PIECES, tier.parts):
            for at in range(parts):
                for line, row in enumerate(tier.rows):
                    depth = tier.front + line * ROW_PITCH
                    first, last = at / parts, (at + 1) / parts
                    places = row_of_bowl(tier, section, line, piece, first, last)
                    for number, part in enumerate(places, start=1):
                        name = f"{tier.prefix}{section}"
                        place = point(piece, part, depth)
                        yield name, row, number, place, tier.name, line
                section += 1


# Standing areas: left, top, right, bottom. Nobody stands there, these are marks on the floor some
# 80 cm apart. The runway reaches from the stage into the pit, the mixing desk stands at the rear.

STANDING = {
    "Standing Pit": (230, 82, 410, 118),
    "Standing Floor Left": (226, 130, 314, 204),
    "Standing Floor Right": (326, 130, 414, 204),
    "Standing Rear": (226, 216, 414, 257),
}
KEPT_CLEAR = ((308, 60, 332, 110), (290, 222, 350, 246))
MARK_PITCH = 6


def is_clear(x, y):
    in_the_way = any(a <= x <= c and b <= y <= d for a, b, c, d in KEPT_CLEAR)
    return in_the_way or depth_and_around(x, y)[0] > -5


def floor():
    for name, (left, top, right, bottom) in STANDING.items():
        for line, y in enumerate(range(top, bottom + 1, MARK_PITCH)):
            marks = [x for x in range(left, right + 1, MARK_PITCH) if not is_clear(x, y)]
            for number, x in enumerate(marks, start=1):
                yield name, str(line + 1), number, (x, y), "floor", line


@functools.cache
def hall():
    chance = random.Random(7)
    seats = []
    for section, row, number, place, tier, line in (*floor(), *bowl()):
        # The third of a pixel keeps places that fall between two blocks from the last digit's whim.
        x, y = (2 * int((at + 1 / 3) // 2) for at in place)
        seats.append(Seat(section, row, number, x, y, tier, line, chance.random()))
    return seats


@functools.cache
def blocks():
    """By block, row after row, the index of the nearest seat, or none where none is near."""
    owners = [None] * (COLUMNS * ROWS)
    edge = []
    for index, seat in enumerate(hall()):
        at = seat.y // 2 * COLUMNS + seat.x // 2
        owners[at] = index
        edge.append(at)
    straight = (-1, 1, -COLUMNS, COLUMNS)
    diagonal = (-COLUMNS - 1, -COLUMNS + 1, COLUMNS - 1, COLUMNS + 1)
    for step in range(REACH):
        grown = []
        for at in edge:
            # Diagonals every other time: what is reached is round rather than square.
            for beside in straight + (diagonal if step % 2 else ()):
                if owners[at + beside] is None:
                    owners[at + beside] = owners[at]
                    grown.append(at + beside)
        edge = grown
    return owners


def map_text():
    """The seat map document in the compact layout; a row of seats to a line."""
    sections = {}
    for seat in hall():
        rows = sections.setdefault(seat.section, {})
        rows.setdefault(seat.row, []).append(f'"{seat.number}":[{seat.x},{seat.y}]')
    listed = ",\n".join(
        f' "{section}":{{\n'
        + ",\n".join(f'  "{row}":{{{",".join(seats)}}}' for row, seats in rows.items())
        + "}"
        for section, rows in sections.items()
    )
    return f'{{"seatVersion":1,"mapAssetsVersion":1,"s":{{\n{listed}}}}}\n'
