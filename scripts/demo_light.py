# SPDX-License-Identifier: Apache-2.0
"""The light of the demo's hall: what every seat shows in every frame of its three videos.

A pattern is a function of a frame to a function of a spot to a colour: red, green and blue, 0 to
255. Whatever depends only on the frame is thus worked out once. All patterns repeat after FRAMES.
"""

import colorsys
import functools
import math

RATE = 30  # frames a second
FRAMES = 900  # of every video

STEPS = 64  # from one colour to another


def blend(one, other, part):
    """On the way from one colour to another, 0 to 1."""
    part = round(part * STEPS) / STEPS
    return tuple(round(a + (b - a) * part) for a, b in zip(one, other))


@functools.cache
def ramp(one, other):
    return [blend(one, other, step / STEPS) for step in range(STEPS + 1)]


def mix(one, other, part):
    """The same as blend(), faster for the few colours that a pattern is made of."""
    return ramp(one, other)[round(part * STEPS)]


@functools.cache
def hue(turn):
    return tuple(round(255 * level) for level in colorsys.hsv_to_rgb(turn % 1, 0.9, 1))


def bump(distance):
    """1 at 0, 0 from 1 on, smooth between."""
    return (1 - distance * distance) ** 2 if -1 < distance < 1 else 0.0


def wave(frame):
    """A crest runs around the bowl every five seconds and leaves a tail."""
    crest = (frame / 150 + 0.4) % 1 * 1.5 - 0.1
    deep = (0, 44, 176)

    def shade(spot):
        behind = crest - spot.around
        light = bump(behind / 0.05) if behind < 0 else bump(behind / 0.3)
        if light > 0.7:
            return mix((255, 150, 24), (255, 244, 200), (light - 0.7) / 0.3)
        return mix(deep, (255, 150, 24), light / 0.7)

    return shade


def beams(frame):
    """Three beams turn about the middle of the hall, once in ten seconds."""
    turned = frame / 300 * 2 * math.pi
    colours = ((0, 220, 255), (255, 40, 190), (255, 190, 40))

    def shade(spot):
        parts = (spot.bearing - turned) / (2 * math.pi) % 1 * 3
        off = (parts + 0.5) % 1 - 0.5
        return mix((10, 6, 44), colours[int(parts + 0.5) % 3], bump(off / 0.36))

    return shade


def rings(frame):
    """Rings leave the stage every two and a half seconds, each in a colour of its own."""
    left = frame / 75

    def shade(spot):
        phase = left - spot.from_stage / 100
        ring = round(phase)
        return mix((16, 0, 34), hue(ring / 6), bump((phase - ring) / 0.46))

    return shade


def sparkles(frame):
    """Stars over a night sky: each twinkles in its own time, every eight to fifteen seconds."""

    def shade(spot):
        sky = mix((4, 10, 110), (90, 10, 150), min(1.0, spot.from_stage / 400))
        times = 2 + int(spot.chance * 3)
        phase = (frame * times / FRAMES + spot.chance * 997) % 1
        # In few steps, so that most stars stand still from one frame to the next.
        light = round(6 * bump((phase - 0.5) / 0.12)) / 6
        return mix(sky, (255, 250, 226), light)

    return shade


# A letter is five columns, each seven bits with the uppermost the lowest.
FONT = {
    " ": (0, 0, 0, 0, 0),
    "*": (0x08, 0x2A, 0x1C, 0x2A, 0x08),
    "A": (0x7E, 0x09, 0x09, 0x09, 0x7E),
    "G": (0x3E, 0x41, 0x49, 0x49, 0x3A),
    "H": (0x7F, 0x08, 0x08, 0x08, 0x7F),
    "I": (0x00, 0x41, 0x7F, 0x41, 0x00),
    "L": (0x7F, 0x40, 0x40, 0x40, 0x40),
    "N": (0x7F, 0x04, 0x08, 0x10, 0x7F),
    "O": (0x3E, 0x41, 0x41, 0x41, 0x3E),
    "R": (0x7F, 0x09, 0x19, 0x29, 0x46),
    "T": (0x01, 0x01, 0x7F, 0x01, 0x01),
    "V": (0x1F, 0x20, 0x40, 0x20, 0x1F),
}
TEXT = [column for letter in "HALVORA * TONIGHT " for column in (*FONT[letter], 0)]
TEXT_LINE, TEXT_SCALE = 4, 2  # the letters' uppermost row of seats, and rows of seats to a bit
FLAG = ((255, 96, 24), (250, 244, 232), (0, 150, 140))


def banner(frame):
    """Letters march around the upper tier, a flag waves in the lower one, the stage shines."""
    marched = frame * len(TEXT) / FRAMES
    seconds = frame / RATE

    def shade(spot):
        if spot.tier == "upper":
            bit = (spot.line - TEXT_LINE) // TEXT_SCALE
            column = TEXT[int(spot.around * len(TEXT) + marched) % len(TEXT)]
            is_lit = 0 <= bit < 7 and column >> bit & 1
            return (255, 236, 150) if is_lit else (70, 0, 150)
        if spot.tier == "floor":
            rays = math.cos(16 * spot.from_stage_bearing + math.tau * seconds / 3)
            return mix((70, 0, 60), (255, 70, 120), 0.5 + 0.5 * rays)
        waved = spot.depth - 5 + 9 * math.sin(math.tau * (4 * spot.around - seconds / 3))
        return FLAG[min(2, max(0, int(waved / 31)))]

    return shade


def after_another(first, second):
    """Half of the video each; the second one is the first at the loop's end again."""
    half, fade = FRAMES // 2, 30

    def pattern(frame):
        into = frame % half
        one, other = (first, second) if frame < half else (second, first)
        if into < half - fade:
            return one(frame)
        part = (into - half + fade) / fade
        here, there = one(frame), other(frame)
        return lambda spot: blend(here(spot), there(spot), part)

    return pattern


MAPS = {1: after_another(wave, beams), 2: after_another(rings, sparkles), 3: banner}


def luminance(colour):
    """As the eye adds light up, 0 to 1."""
    linear = ((level / 255 + 0.055) / 1.055 if level > 10 else 0.0 for level in colour)
    red, green, blue = (level**2.4 for level in linear)
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue


def flashes(levels):
    """The most flashes in any second of a loop. A flash is a change by a tenth of full light and
    one back, the darker side below 0.8."""
    changes = []
    low = high = levels[0]
    direction = 0
    for frame, level in enumerate(levels + levels[: 2 * RATE]):
        low, high = min(low, level), max(high, level)
        if direction != 1 and level - low >= 0.1 and low < 0.8:
            changes.append(frame)
            direction, high = 1, level
        elif direction != -1 and high - level >= 0.1 and level < 0.8:
            changes.append(frame)
            direction, low = -1, level
    return max((sum(at <= one < at + RATE for one in changes) for at in changes), default=0) / 2
