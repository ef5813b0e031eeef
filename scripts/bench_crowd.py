#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Measures how the crowd simulator grows with its phones.

bench_crowd.py [--phones 1000,8000,60000,100000] [--seconds S] [--threads N] [--markdown]

A venue with as many seats as the largest crowd and a pixel-map video are made once and kept in
build/bench-crowd. Two shows are run for each number of phones, each with 30 packets a second: a
pixel map, for the speed, and colours without tables, for the memory a phone takes beside its table.
A phone's memory is the difference of the largest resident size to that of a crowd of one phone. Exit
status 1: a target is missed.
"""

import argparse
import json
import os
import subprocess
import sys
from pathlib import Path

from printed_table import print_table

ROOT = Path(__file__).resolve().parent.parent
TOOL = ROOT / "build" / "release" / "bin" / "halvora"
FOLDER = ROOT / "build" / "bench-crowd"
WIDTH, HEIGHT, FPS = 640, 360, 30
APPLICATION, VENUE = 4242, 7
REAL_TIME_PHONES = 60000
MOST_BYTES = 2048


def make_venue(seats, seconds):
    folder = FOLDER / "HVAssets" / "Maps" / f"Venue-{VENUE}"
    (folder / "1").mkdir(parents=True, exist_ok=True)
    rows = []
    per_row = 500
    for first in range(0, seats, per_row):
        row = {"name": str(len(rows) + 1), "seats": []}
        for at in range(first, min(first + per_row, seats)):
            pixel = at * WIDTH * HEIGHT // seats
            row["seats"].append({"name": str(at), "x": pixel % WIDTH, "y": pixel // WIDTH})
        rows.append(row)
    (folder / "map.json").write_text(json.dumps({"sections": [{"name": "Hall", "rows": rows}]}))
    video = folder / "1" / "video.mp4"
    if not video.exists():
        partial = video.with_suffix(".part.mp4")
        subprocess.run(
            ["ffmpeg", "-v", "error", "-nostdin", "-y", "-f", "lavfi", "-i",
             f"testsrc2=size={WIDTH}x{HEIGHT}:rate={FPS}:duration={seconds}",
             "-c:v", "libx264", "-crf", "23", "-pix_fmt", "yuv420p", partial], check=True)
        partial.rename(video)


def packet(sequence, **fields):
    data = bytearray(26)
    data[0:2] = b"\x09\xc9"
    data[2:4] = APPLICATION.to_bytes(2, "big")
    data[5] = VENUE
    data[6] = fields.get("map", 0)
    data[7] = 255
    data[8:11] = bytes(fields.get("colour", (0, 0, 0)))
    data[11] = 1
    frame = fields.get("frame", 0)
    data[16], data[17] = frame & 255, frame >> 8
    data[23:25] = sequence.to_bytes(2, "big")
    data[25] = 1
    return data.hex().upper()


def make_shows(seconds):
    shows = {"map": [], "colours": []}
    for lines in shows.values():
        lines.append({"at": 0, "start": True})
    for at in range(seconds * 30):
        time = round(1.5 + at / 30, 3)
        colour = (at * 7 % 256, at * 13 % 256, at * 29 % 256)
        shows["map"].append({"at": time, "packet": packet(at + 1, map=1, frame=at % 290 + 1)})
        shows["colours"].append({"at": time, "packet": packet(at + 1, colour=colour)})
    for name, lines in shows.items():
        (FOLDER / f"{name}.jsonl").write_text("".join(json.dumps(line) + "\n" for line in lines))


def run(show, phones, threads):
    command = [TOOL, "crowd", "--assets", FOLDER, "--venue", VENUE, "--scenario",
               FOLDER / f"{show}.jsonl", "--out", FOLDER / "sheet.png", "--size", "320x180",
               "--phones", phones, "--no-progress"]
    if threads:
        command += ["--threads", threads]
    process = subprocess.Popen([str(word) for word in command], stdout=subprocess.PIPE)
    report = process.stdout.read()
    _, status, usage = os.wait4(process.pid, 0)
    if os.waitstatus_to_exitcode(status) != 0:
        sys.exit(f"the crowd of {phones} failed")
    return json.loads(report), usage.ru_maxrss * 1024


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--phones", default="1000,8000,60000,100000")
    parser.add_argument("--seconds", type=int, default=10)
    parser.add_argument("--threads", type=int, default=0)
    parser.add_argument("--markdown", action="store_true", help="print a table for a document")
    options = parser.parse_args()
    if not TOOL.is_file():
        sys.exit("build first: cmake --preset release && "
                 "cmake --build --preset release --target halvora")
    counts = sorted(int(count) for count in options.phones.split(","))
    FOLDER.mkdir(parents=True, exist_ok=True)
    make_venue(counts[-1], 10)
    make_shows(options.seconds)

    _, empty = run("colours", 1, options.threads)
    rows, all_met = [], True
    for count in counts:
        report, _ = run("map", count, options.threads)
        _, memory = run("colours", count, options.threads)
        speed = report["simulatedSecondsPerSecond"]
        heard = report["packets"]["heard"]
        each = report["simulatedSeconds"] / speed / heard * 1e9
        a_phone = (memory - empty) / (count - 1)
        exact = report["pixelMap"]["exact"] == report["pixelMap"]["frames"]
        is_met = exact and a_phone < MOST_BYTES and (count != REAL_TIME_PHONES or speed >= 1)
        all_met = all_met and is_met
        rows.append([f"{count:,}", f"{speed:.2f}", f"{each:.0f} ns", f"{a_phone:.0f} B",
                     "yes" if exact else "NO", "met" if is_met else "MISSED"])
    head = ["phones", "simulated s per s", "a phone and packet", "memory a phone",
            "picture exact", "targets"]
    print_table([head, *rows], ["--:"] * len(head), options.markdown)
    return 0 if all_met else 1


if __name__ == "__main__":
    sys.exit(main())
