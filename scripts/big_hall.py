#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A hall of 20,000 seats from a ticket office's table to a rehearsed show, with the time of each step.

big_hall.py HALVORA [--folder DIR] [--jobs N]   HALVORA is the program; DIR is kept where it is given

Writes the table (four tiers of a bowl and a floor, no places: sections are put on arcs), a show of four
minutes and twelve cues, and a clip for its map; then imports, checks, draws, fits the clip, compiles,
measures the coverage and simulates the whole crowd, in one run and in shards that GNU parallel runs.
Prints a row for docs/venue.md a step: seconds on the clock, of processors, and the most memory. The
report and the picture of the shards must be those of the one run, or the exit status is 1.
"""

import argparse
import math
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
# Name, rows, seats a row, and how far the first row is from the middle.
TIERS = [("Floor", 20, 40, 30), ("Lower", 24, 120, 135), ("Middle", 24, 180, 265), ("Upper", 26, 240, 395),
         ("Top", 20, 290, 535)]
SEATS = 20_000
PITCH = 5

SHOW = """application: 4242
venue: 12
transmitter: 1
cues:
  - {name: Doors, at: 2, look: {mode: Steady, colour: "#ffb46b", master: 40 %}}
  - {name: House down, at: 15, fade: 3, look: {mode: Steady, colour: "#ffb46b", master: 5 %}}
  - {name: First light, at: 24, look: {mode: Crossfade, palette: 46, speed: 125}}
  - {name: Waves, at: 48, look: {mode: Steady, map: {id: 1, rate: 10}}}
  - {name: Verse, at: 78, look: {mode: White sparkle, palette: 31, speed: 70}}
  - {name: Drums, at: 96, look: {mode: Bursts, colour: "#b388ff", speed: 60, master: 60 %}}
  - {name: Torches, at: 112, look: {mode: Steady, colour: "#1020ff", torch: {mode: On}}}
  - {name: Bridge, at: 130, fade: 4, look: {mode: Free crossfade, palette: 13, speed: 140}}
  - {name: Silence, at: 158, look: {mode: Steady, colour: "#000000"}}
  - {name: Chorus, at: 164, look: {mode: Palette pulse, palette: 29, speed: 140}}
  - {name: Encore, at: 196, look: {mode: Palette mix, palette: 49, speed: 215}}
  - {name: Good night, at: 228, fade: 4, hold: 12, look: {mode: Steady, colour: "#ff9a3c", master: 10 %}}
"""


def table():
    """The ticket office's seats, as many as SEATS."""
    lines = ["section,row,seat"]
    sizes = [rows * seats for _, rows, seats, _ in TIERS]
    left = SEATS
    for (name, rows, seats, _), size in zip(TIERS, sizes):
        share = min(left, size)
        lines += [f"{name},{at // seats + 1},{at % seats + 1}" for at in range(share)]
        left -= share
    assert left == 0, left
    return "\n".join(lines) + "\n"


def places():
    """Each tier on arcs around the stage, as --place has it."""
    for name, _, seats, radius in TIERS:
        half = min(150, math.degrees(seats * 4 / radius) / 2)
        yield f"{name}={-half:.1f},{half:.1f},{radius},{PITCH}"


class Steps:
    def __init__(self):
        self.rows = []

    def run(self, what, *command, out=None, cwd=None):
        """The standard output; the row of the step."""
        begin = time.monotonic()
        process = subprocess.Popen([str(word) for word in command], stdout=subprocess.PIPE, cwd=cwd)
        text = process.stdout.read()
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        wall = time.monotonic() - begin
        if process.returncode not in (0, *(out or ())):
            sys.exit(f"{what}: exit status {process.returncode}")
        self.rows.append((what, wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024))
        print(f"| {what} | {wall:.1f} | {self.rows[-1][2]:.1f} | {self.rows[-1][3]:.0f} |", flush=True)
        return text.decode()


def without_speed(report):
    return re.sub(r'\n  "simulatedSecondsPerSecond".*\n', "\n", report)


def rehearse(halvora, folder, jobs):
    steps = Steps()
    hall = folder / "hall"
    venue = hall / "HVAssets/Maps/Venue-12"
    venue.mkdir(parents=True, exist_ok=True)
    (folder / "seats.csv").write_text(table(), encoding="utf-8")
    (folder / "show.yaml").write_text(SHOW, encoding="utf-8")
    # What an application brings: without it looks with palettes are dark.
    shutil.copy(ROOT / "assets/demo/HVAssets/palettes.json", hall / "HVAssets")
    seat_map = venue / "map.json"
    print("| step | seconds | of processors | MB |\n|---|---|---|---|")
    arcs = [word for place in places() for word in ("--place", place)]
    steps.run("map import", halvora, "map", "import", folder / "seats.csv", "--out", seat_map, *arcs)
    steps.run("map check", halvora, "map", "check", seat_map)
    steps.run("map draw", halvora, "map", "draw", seat_map, "--out", folder / "plan.png")
    steps.run("map template", halvora, "map", "template", seat_map, "--out", folder / "artwork")
    (venue / "1").mkdir(exist_ok=True)
    clip = folder / "clip.mp4"
    subprocess.run(["ffmpeg", "-loglevel", "error", "-y", "-f", "lavfi", "-i",
                    "testsrc2=size=640x360:rate=25:duration=30", "-pix_fmt", "yuv420p", clip], check=True)
    steps.run("map fit, 30 s of film to the hall's canvas", halvora, "map", "fit", clip, "--map", seat_map,
              "--out", venue / "1/video.mp4")
    show = ["--show", folder / "show.yaml"]
    steps.run("show check", halvora, "show", "check", show[1], "--assets", hall)
    steps.run("show compile", halvora, "show", "compile", show[1], "--assets", hall, "--out",
              folder / "show.jsonl")
    crowd = [halvora, "crowd", *show, "--assets", hall, "--venue", "12", "--air", "100", "--loss", "0.2",
             "--jitter", "20", "--size", "960x540", "--no-progress"]
    steps.run("coverage alone", *crowd, "--coverage", folder / "coverage.png")
    whole = steps.run("crowd, the whole show", *crowd, "--out", folder / "whole.png")
    sheet = folder / "shared.png"
    steps.run(f"crowd, 4 shards, {jobs} at a time (memory: of one)", "parallel", "--will-cite", "--jobs", jobs,
              *crowd, "--threads", "1", "--out", sheet, "--shard", "{}/4", ":::", "1", "2", "3", "4")
    parts = [f"{sheet}.shard-{number}-of-4" for number in range(1, 5)]
    merged = steps.run("crowd merge", halvora, "crowd", "merge", *parts, "--out", sheet, "--no-progress")
    is_same = (without_speed(whole) == without_speed(merged)
               and (folder / "whole.png").read_bytes() == sheet.read_bytes())
    (folder / "report.json").write_text(whole, encoding="utf-8")
    print("\nThe shards are the one run, byte for byte." if is_same else "\nThe shards are NOT the one run.")
    return 0 if is_same else 1


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("halvora", type=lambda text: pathlib.Path(text).resolve())
    parser.add_argument("--folder", type=pathlib.Path)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    options = parser.parse_args()
    if shutil.which("parallel") is None:
        sys.exit("GNU parallel is not there (package parallel)")
    if options.folder:
        options.folder.mkdir(parents=True, exist_ok=True)
        return rehearse(options.halvora, options.folder, options.jobs)
    with tempfile.TemporaryDirectory() as folder:
        return rehearse(options.halvora, pathlib.Path(folder), options.jobs)


if __name__ == "__main__":
    sys.exit(main())
