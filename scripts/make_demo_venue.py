#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes the demo's venue: its seat map, the videos that light it, and a show that plays them.

  make_demo_venue.py               write everything; the videos take some minutes
  make_demo_venue.py --no-videos   write everything but the videos and the stills
  make_demo_venue.py --check       exit 1 unless everything is as this script makes it
  make_demo_venue.py --draw PNG [--map N] [--at SECONDS]
                                   draw the seats with their colours, to look at

The hall is in demo_hall.py, its light in demo_light.py. The videos light the ground around the
seats as well: areas compress better than dots, and no seat's own pixel is smeared with black.
They are painted in blocks of 2 x 2 pixels, one sample of colour each; every seat has one to itself.

PHOTOSENSITIVE VIEWERS: no seat flashes more than three times in any second. `--check` counts the
flashes of one seat in 29, over the whole loop of every map; keep the rule when you edit a pattern.
"""

import argparse
import functools
import json
import math
import operator
import pathlib
import subprocess
import sys
import zlib
from dataclasses import dataclass

from demo_hall import COLUMNS, HEIGHT, MARGIN, ROWS, WIDTH, blocks, hall, map_text, spot
from demo_light import FRAMES, MAPS, RATE, flashes, luminance
from make_example_show import DEVICE
from make_gobos import png_chunk

APPLICATION_ID = 4242
VENUE_ID = 7
STAGE_TRANSMITTER = 1

DEMO = pathlib.Path(__file__).resolve().parent.parent / "assets" / "demo"
VENUE = DEMO / "HVAssets" / "Maps" / f"Venue-{VENUE_ID}"
MAP_FILE = VENUE / "map.json"
OVERLAY_FILE = VENUE / "standing-overlay.png"
SHOW_FILE = DEMO / "pixel-map-show.jsonl"

KEY_FRAMES = 30  # from one key frame to the next
STILLS = range(1, 6)  # frames of map 1 that are also pictures

# Frames. Colours are BT.601 in the limited range, 8 bits, one sample of colour to a block: what a
# reader takes for granted in a picture of this size, and what the file says besides.


@functools.cache
def to_yuv(colour):
    red, green, blue = (level / 255 for level in colour)
    luma = 0.299 * red + 0.587 * green + 0.114 * blue
    u, v = (blue - luma) / 1.772, (red - luma) / 1.402
    return round(16 + 219 * luma), round(128 + 224 * u), round(128 + 224 * v)


def to_rgb(luma, u, v):
    luma, u, v = (luma - 16) / 219, (u - 128) / 224, (v - 128) / 224
    red, blue = luma + 1.402 * v, luma + 1.772 * u
    green = (luma - 0.299 * red - 0.114 * blue) / 0.587
    return tuple(min(255, max(0, round(255 * level))) for level in (red, green, blue))


@functools.cache
def spots():
    """The spot of every block, or none."""
    places = ((2 * x, 2 * y) for y in range(ROWS) for x in range(COLUMNS))
    return [
        None if owner is None else spot(hall()[owner], x, y)
        for owner, (x, y) in zip(blocks(), places)
    ]


def wide(plane):
    """A plane of blocks at twice the width and height."""
    doubled = bytearray(2 * len(plane))
    doubled[0::2] = doubled[1::2] = plane
    lines = (doubled[at : at + WIDTH] for at in range(0, len(doubled), WIDTH))
    return b"".join(line + line for line in lines)


def paint(pattern, frame, samples_of=lambda colour: colour):
    """A frame's three planes, in blocks."""
    shade = pattern(frame)
    dark = samples_of((0, 0, 0))
    samples = [samples_of(shade(place)) if place else dark for place in spots()]
    return map(bytes, zip(*samples))


RAW = ["-f", "rawvideo", "-pix_fmt", "yuv420p", "-video_size", f"{WIDTH}x{HEIGHT}"]
TAGS = ["-color_range", "tv", "-colorspace", "smpte170m", "-color_primaries", "smpte170m"]
TAGS += ["-color_trc", "smpte170m"]
# The same bytes from the same encoder everywhere: no dates, no versions, a set number of threads.
# Without B-frames every reader finds frame N at N / RATE, whether it follows edit lists or not.
ENCODING = f"""-c:v libx264 -preset slower -crf 23 -bf 0 -g {KEY_FRAMES} -keyint_min {KEY_FRAMES}
    -sc_threshold 0 -threads 2 -bsf:v filter_units=remove_types=6 -fflags +bitexact
    -flags:v +bitexact -map_metadata -1 -video_track_timescale {512 * RATE} -movflags +faststart
    """.split()


def video_file(map_id):
    return VENUE / str(map_id) / "video.mp4"


def still_file(frame):
    return VENUE / "1" / f"f{frame}.jpg"


def ffmpeg(*arguments):
    return ["ffmpeg", "-v", "error", "-nostdin", "-y", *map(str, arguments)]


def write_video(map_id):
    file = video_file(map_id)
    file.parent.mkdir(parents=True, exist_ok=True)
    command = ffmpeg(*RAW, "-framerate", RATE, *TAGS, "-i", "-", *ENCODING, *TAGS, file)
    with subprocess.Popen(command, stdin=subprocess.PIPE) as encoder:
        for frame in range(FRAMES):
            luma, u, v = paint(MAPS[map_id], frame, to_yuv)
            encoder.stdin.write(wide(luma) + u + v)
        encoder.stdin.close()
    if encoder.returncode:
        raise SystemExit(f"{file}: ffmpeg failed")


def write_still(frame):
    """Still N is frame N. The picture is painted anew: the video's losses need not be kept."""
    pixels = bytearray(3 * WIDTH * HEIGHT)
    for channel, plane in enumerate(paint(MAPS[1], frame)):
        pixels[channel::3] = wide(plane)
    raw = ["-f", "rawvideo", "-pix_fmt", "rgb24", "-video_size", f"{WIDTH}x{HEIGHT}", "-i", "-"]
    jpeg = ["-frames:v", 1, "-c:v", "mjpeg", "-pix_fmt", "yuvj444p", "-q:v", 4]
    bare = ["-fflags", "+bitexact", "-flags:v", "+bitexact", "-update", 1]
    subprocess.run(ffmpeg(*raw, *jpeg, *bare, still_file(frame)), input=pixels, check=True)


# The plan behind the dot of a person who stands. One picture serves all standing areas, each of
# which fills it: it tells front from back and left from right, and no distances.

PLAN = 480  # pixels, both ways
RGB, RGBA = 2, 6  # a PNG's kinds of colour


def plan_row(y):
    for x in range(PLAN):
        off, down = abs(x + 0.5 - PLAN / 2), y + 0.5
        border = 235 - max(off, abs(down - PLAN / 2))
        stage = min(150 - off, 30 - down)
        radius = math.hypot(off, down + 60)
        arc = abs((radius - 40) % 70 - 35)
        light = 0.1 + 0.12 * max(0.0, 1 - radius / 560)
        light += 0.18 * max(0.0, 1 - arc)
        light += 0.5 * max(0.0, 1 - abs(border))
        if stage > 0:
            light = 0.85
        yield from (255, 255, 255, round(255 * light) if border > -1 else 0)


def png(width, height, kind, rows):
    header = width.to_bytes(4, "big") + height.to_bytes(4, "big") + bytes([8, kind, 0, 0, 0])
    packed = zlib.compress(b"".join(b"\0" + row for row in rows), 9)
    chunks = ((b"IHDR", header), (b"IDAT", packed), (b"IEND", b""))
    return b"\x89PNG\r\n\x1a\n" + b"".join(png_chunk(kind, data) for kind, data in chunks)


def plan():
    return png(PLAN, PLAN, RGBA, (bytes(plan_row(y)) for y in range(PLAN)))


def draw(file, map_id, seconds):
    """Every seat as a dot with the colour of its phone, at twice the size of the videos."""
    rows = [bytearray((24, 24, 28) * 2 * WIDTH) for _ in range(2 * HEIGHT)]
    shade = MAPS[map_id](round(seconds * RATE) % FRAMES)
    for seat in hall():
        dot = bytes(shade(spot(seat, seat.x, seat.y))) * 6
        left = 3 * (2 * seat.x - 1)
        for row in rows[2 * seat.y - 1 : 2 * seat.y + 5]:
            row[left : left + len(dot)] = dot
    pathlib.Path(file).write_bytes(png(2 * WIDTH, 2 * HEIGHT, RGB, rows))


# The show: one phone with a seat in the upper tier, and thirty looks a second.

SECTION, ROW, NUMBER = "209", "8", 10
PRECOMPUTE_AT = 0.2


@dataclass(frozen=True)
class Cue:
    at: float
    light: str
    mode: int = 1
    master: int = 255


def state(cue, master):
    """The 23 bytes of a look that stand before its sequence number."""
    return (
        b"\x09\xC9" + APPLICATION_ID.to_bytes(2, "big") + bytes([0, VENUE_ID, 0, master])
        + bytes.fromhex(cue.light[1:]) + bytes([cue.mode]) + bytes(11)
    )


HOUSE_LIGHT = Cue(1.5, "#FFB46B", master=120)
FIRST_FRAME_AT = 3
CUTS = ((1, 1, 210), (1, 440, 150), (2, 1, 180), (2, 440, 150), (3, 1, 240))  # map, frame, frames
THANKS = Cue(0, "#FFE0B0")
OFF = Cue(0, "#000000", mode=0)
STEADY = 2  # seconds of a look that is not a pixel map


def looks():
    """(seconds, state, how long it is repeated), in order."""
    yield HOUSE_LIGHT.at, state(HOUSE_LIGHT, HOUSE_LIGHT.master), FIRST_FRAME_AT - HOUSE_LIGHT.at
    shown = 0
    for map_id, first, count in CUTS:
        for frame in range(first, first + count):
            look = bytearray(state(Cue(0, "#000000"), 255))
            look[6] = map_id
            look[16:18] = frame.to_bytes(2, "little")
            yield FIRST_FRAME_AT + shown / RATE, bytes(look), 0
            shown += 1
    end = FIRST_FRAME_AT + shown / RATE
    yield end, state(THANKS, THANKS.master), STEADY
    yield end + STEADY, state(OFF, 0), STEADY


def scenario():
    seat = next(s for s in hall() if (s.section, s.row, s.number) == (SECTION, ROW, NUMBER))
    stored = {"selectedSection": f"Section {SECTION}", "selectedRow": f"Row {ROW}"}
    stored |= {"selectedSeat": f"Seat {NUMBER}", "xPos": str(seat.x), "yPos": str(seat.y)}
    yield {"at": 0, "device": DEVICE}
    yield {"at": 0, "defaults": stored}
    yield {"at": 0, "start": True}
    place = {"venueId": VENUE_ID, "seatX": seat.x, "seatY": seat.y}
    yield {"at": PRECOMPUTE_AT, "precompute": place}
    for sequence, (at, look, lasts) in enumerate(looks(), start=1):
        packet = look + sequence.to_bytes(2, "big") + bytes([STAGE_TRANSMITTER])
        line = {"at": round(at, 3), "packet": packet.hex().upper()}
        if lasts:
            line |= {"every": 0.1, "until": round(at + lasts - 0.05, 3)}
        yield line


def show_text():
    return "".join(json.dumps(line) + "\n" for line in scenario())


# Checks. Each yields what is wrong, in words.

MOST_BYTES = 8_000_000
MOST_SHOW_BYTES = 200_000
CHECKED_FRAMES = (0, 1, 77, 218, 361, 436, 449, 450, 512, 655, 731, 888, FRAMES - 1)
CHECKED_SEATS = 29  # of so many seats one is looked at
FAR, FARTHEST_MEAN = 40, 6  # of a channel's level, 0 to 255, from the pattern's
MOST_FAR = 0.01  # so many levels may be farther off: those at the edge of a letter


def faults_of_hall():
    places = {(seat.x, seat.y) for seat in hall()}
    if len(places) < len(hall()):
        yield f"{len(hall()) - len(places)} seats share a pixel with another"
    for seat in hall():
        inside_x = MARGIN <= seat.x < WIDTH - MARGIN
        inside_y = MARGIN <= seat.y < HEIGHT - MARGIN
        if seat.x % 2 or seat.y % 2 or not inside_x or not inside_y:
            yield f"seat {seat.section} {seat.row} {seat.number} is at {seat.x}, {seat.y}"


def faults_of_texts():
    for file, text in ((MAP_FILE, map_text()), (SHOW_FILE, show_text())):
        if not file.exists() or file.read_bytes() != text.encode("ascii"):
            yield f"{file.name}: not what this script makes; run it with --no-videos"
    document = json.loads(map_text())
    listed = [seat for rows in document["s"].values() for row in rows.values() for seat in row]
    if len(listed) != len(hall()):
        yield f"{MAP_FILE.name}: {len(listed)} seats of {len(hall())}; a name stands there twice"
    if len(show_text()) > MOST_SHOW_BYTES:
        yield f"{SHOW_FILE.name}: {len(show_text())} bytes"


def faults_of_flashing():
    checked = [spot(seat, seat.x, seat.y) for seat in hall()[::CHECKED_SEATS]]
    for map_id, pattern in MAPS.items():
        frames = [[luminance(shade(at)) for at in checked] for shade in map(pattern, range(FRAMES))]
        most = max(flashes(levels) for levels in map(list, zip(*frames)))
        if most > 3:
            yield f"map {map_id}: {most} flashes in a second"


def output_of(command):
    return subprocess.run(command, check=True, capture_output=True).stdout


def faults_of_stream(map_id):
    asked = ["-select_streams", "v", "-show_streams", "-show_packets", "-of", "json"]
    entries = "packet=pts,duration,flags:stream=codec_name,width,height,pix_fmt,color_space"
    entries += ",color_range,color_primaries,color_transfer,avg_frame_rate,duration"
    command = ["ffprobe", "-v", "error", *asked, "-show_entries", entries, str(video_file(map_id))]
    found = json.loads(output_of(command))
    wanted = {"codec_name": "h264", "width": WIDTH, "height": HEIGHT, "pix_fmt": "yuv420p"}
    wanted |= {"color_range": "tv", "color_space": "smpte170m", "color_primaries": "smpte170m"}
    wanted |= {"color_transfer": "smpte170m", "avg_frame_rate": f"{RATE}/1"}
    wanted |= {"duration": f"{FRAMES / RATE:.6f}"}
    for key, value in wanted.items():
        if found["streams"][0].get(key) != value:
            yield f"map {map_id}: {key} is {found['streams'][0].get(key)}, not {value}"
    times = [(packet["pts"], packet["duration"]) for packet in found["packets"]]
    if times != [(512 * frame, 512) for frame in range(FRAMES)]:
        yield f"map {map_id}: {len(times)} frames, not {FRAMES} of 1/{RATE} s each in their order"
    for frame, packet in enumerate(found["packets"]):
        if frame % KEY_FRAMES == 0 and "K" not in packet["flags"]:
            yield f"map {map_id}: frame {frame} is no key frame"


def faults_of_colours(name, pattern, frame, colour_at):
    """Compares pixels with what a pattern says, and says a frame earlier and later."""
    seats = hall()[frame % CHECKED_SEATS :: CHECKED_SEATS]
    found = [level for seat in seats for level in colour_at(seat.x, seat.y)]
    places = [spot(seat, seat.x, seat.y) for seat in seats]
    off, means = {}, {}
    for other in (frame - 1, frame, frame + 1):
        shade = pattern(other % FRAMES)
        meant = [level for place in places for level in shade(place)]
        off[other] = [abs(a - b) for a, b in zip(found, meant)]
        means[other] = sum(off[other]) / len(found)
    far = sum(level > FAR for level in off[frame])
    if far > MOST_FAR * len(found) or means[frame] > FARTHEST_MEAN:
        mean = f"{means[frame]:.1f}"
        yield f"{name}: frame {frame} is off by {mean}, {far} of {len(found)} levels far"
    like = min(means, key=means.get)
    if like != frame:
        yield f"{name}: frame {frame} looks more like frame {like}"


def faults_of_pixels(map_id):
    chosen = "+".join(f"eq(n,{frame})" for frame in CHECKED_FRAMES)
    select = ["-vf", f"select='{chosen}'", "-vsync", "passthrough"]
    file = video_file(map_id)
    video = output_of(ffmpeg("-xerror", "-i", file, *select, *RAW[:4], "-"))
    luma, chroma = WIDTH * HEIGHT, COLUMNS * ROWS
    size = luma + 2 * chroma
    if len(video) != size * len(CHECKED_FRAMES):
        yield f"map {map_id}: frames are missing"
        return
    for index, frame in enumerate(CHECKED_FRAMES):
        start = index * size

        def colour_at(x, y):
            block = start + luma + y // 2 * COLUMNS + x // 2
            return to_rgb(video[start + y * WIDTH + x], video[block], video[block + chroma])

        yield from faults_of_colours(f"map {map_id}", MAPS[map_id], frame, colour_at)


def faults_of_still(frame):
    rgb = ["-f", "rawvideo", "-pix_fmt", "rgb24", "-"]
    picture = output_of(ffmpeg("-i", still_file(frame), *rgb))
    if len(picture) != 3 * WIDTH * HEIGHT:
        yield f"{still_file(frame).name}: not {WIDTH} x {HEIGHT}"
        return

    def colour_at(x, y):
        return picture[3 * (y * WIDTH + x) : 3 * (y * WIDTH + x) + 3]

    yield from faults_of_colours(still_file(frame).name, MAPS[1], frame, colour_at)


def faults_of_plan():
    """Of the pixels, not of the compressed bytes: these are another zlib's to choose."""
    made, kept = plan(), OVERLAY_FILE.read_bytes()
    try:
        pixels, others = (zlib.decompress(data[41:-16]) for data in (made, kept))
    except zlib.error:
        pixels, others = b"", b"damaged"
    # The last digit of a square root is the machine's own, and may tip a pixel to the next level.
    near = all(abs(a - b) <= 1 for a, b in zip(pixels, others))
    if made[:33] != kept[:33] or len(pixels) != len(others) or not near:
        yield f"{OVERLAY_FILE.name}: not what this script draws; run it with --no-videos"


def faults_of_folder():
    videos, stills = map(video_file, MAPS), map(still_file, STILLS)
    wanted = {MAP_FILE, OVERLAY_FILE, *videos, *stills}
    found = {file for file in VENUE.rglob("*") if file.is_file()}
    for file in sorted(wanted ^ found):
        where = file.relative_to(DEMO)
        yield f"{where}: missing" if file in wanted else f"{where}: nothing makes it"
    size = sum(file.stat().st_size for file in found)
    if size > MOST_BYTES:
        yield f"{VENUE.name}: {size} bytes, the most is {MOST_BYTES}"


def faults_of_file(rule, which, file):
    if file.exists():
        try:
            yield from rule(which)
        except subprocess.CalledProcessError as error:
            yield f"{file.relative_to(DEMO)}: {error.stderr.decode(errors='replace').strip()}"


def all_faults():
    for rule in (faults_of_hall, faults_of_texts, faults_of_flashing, faults_of_folder):
        yield from rule()
    if OVERLAY_FILE.exists():
        yield from faults_of_plan()
    for map_id in MAPS:
        yield from faults_of_file(faults_of_stream, map_id, video_file(map_id))
        yield from faults_of_file(faults_of_pixels, map_id, video_file(map_id))
    for frame in STILLS:
        yield from faults_of_file(faults_of_still, frame, still_file(frame))


def write(with_videos):
    VENUE.mkdir(parents=True, exist_ok=True)
    MAP_FILE.write_bytes(map_text().encode("ascii"))
    SHOW_FILE.write_bytes(show_text().encode("ascii"))
    OVERLAY_FILE.write_bytes(plan())
    if with_videos:
        for map_id in MAPS:
            write_video(map_id)
        for frame in STILLS:
            write_still(frame)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    what = parser.add_mutually_exclusive_group()
    what.add_argument("--no-videos", action="store_true", help="neither videos nor stills")
    what.add_argument("--check", action="store_true", help="exit 1 unless all is as made here")
    what.add_argument("--draw", metavar="PNG", help="draw the seats with their colours")
    parser.add_argument("--map", type=int, choices=MAPS, default=1, help="the map to draw")
    parser.add_argument("--at", type=float, default=0, metavar="SECONDS", help="the time to draw")
    options = parser.parse_args()
    if options.check:
        faults = list(all_faults())
        for fault in faults:
            print(fault, file=sys.stderr)
        return 1 if faults else 0
    if options.draw:
        draw(options.draw, options.map, options.at)
    else:
        write(not options.no_videos)
    return 0


if __name__ == "__main__":
    sys.exit(main())
