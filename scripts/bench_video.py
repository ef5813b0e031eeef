#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Measures the building of seat tables from real videos beside other programs, in one run.

bench_video.py [--rounds N] [--seconds S] [--sizes 1280x720,1920x1080] [--seats 1,1000,60000]
               [--markdown]

Every round runs all programs once, one after the other; what counts are the medians of the rounds'
own ratios, so that what slows a round down as a whole does not count. Processor time, wall time and
the largest resident size are those the system reports of each process. The videos are made once and
kept in build/bench-video. Needs ffmpeg; the program that uses OpenCV is left out, with a word, where
libopencv-dev is not installed. Exit status 1: a target is missed.
"""

import argparse
import os
import shutil
import statistics
import subprocess
import sys
import time
from pathlib import Path

from printed_table import print_table

ROOT = Path(__file__).resolve().parent.parent
BUILD = ROOT / "build" / "release"
FOLDER = ROOT / "build" / "bench-video"
SEAT = (333, 222)


def make_video(size, seconds):
    """Moving patterns with grain over them, so that a frame costs what filmed frames cost."""
    FOLDER.mkdir(parents=True, exist_ok=True)
    video = FOLDER / f"{size}-{seconds}.mp4"
    if video.exists():
        return video
    print(f"making {video.name} …", file=sys.stderr)
    partial = video.with_suffix(".part.mp4")
    subprocess.run(
        ["ffmpeg", "-v", "error", "-nostdin", "-y", "-f", "lavfi", "-i",
         f"testsrc2=size={size}:rate=30:duration={seconds},noise=alls=12:allf=t",
         "-c:v", "libx264", "-preset", "medium", "-crf", "26", "-pix_fmt", "yuv420p",
         "-movflags", "+faststart", partial],
        check=True,
    )
    partial.rename(video)
    return video


def make_opencv_program():
    """The program, or None without the library."""
    source = ROOT / "bench" / "video" / "opencv_seat.cpp"
    program = FOLDER / "opencv_seat"
    flags = subprocess.run(["pkg-config", "--cflags", "--libs-only-L", "opencv4"],
                           stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=False)
    if flags.returncode != 0:
        print("libopencv-dev is not installed: measured without OpenCV", file=sys.stderr)
        return None
    subprocess.run(["g++", "-O2", "-std=c++17", source, "-o", program, *flags.stdout.split(),
                    "-lopencv_videoio", "-lopencv_core"], check=True)
    return program


def measure(command):
    """Processor seconds, wall seconds and mebibytes of one process; and what it printed."""
    begin = time.perf_counter()
    process = subprocess.Popen([str(word) for word in command], stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    printed = process.stdout.read()
    _, status, usage = os.wait4(process.pid, 0)
    wall = time.perf_counter() - begin
    process.stdout.close()
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{command[0]} failed with status {process.returncode}")
    return {
        "cpu": usage.ru_utime + usage.ru_stime,
        "wall": wall,
        "memory": usage.ru_maxrss / 1024,
    }, printed


def programs(video, seat_counts, opencv):
    x, y = SEAT
    ffmpeg = ["ffmpeg", "-v", "error", "-nostdin"]
    tables = BUILD / "bin" / "halvora_seat_tables"
    found = {
        "decode, one thread": [*ffmpeg, "-threads", "1", "-i", video, "-map", "0:v", "-f", "null",
                               "-"],
        "decode": [*ffmpeg, "-i", video, "-map", "0:v", "-f", "null", "-"],
        "crop": [*ffmpeg, "-i", video, "-map", "0:v", "-vf", f"format=bgra,crop=1:1:{x}:{y}",
                 "-f", "rawvideo", "-y", "/dev/null"],
        "lut build": [BUILD / "bin" / "halvora", "lut", "build", video, "--seat", f"{x},{y}",
                      "--raw", FOLDER / "table.bin"],
    }
    if opencv:
        found["opencv"] = [opencv, video, x, y]
    for count in seat_counts:
        found[f"{count} seats"] = [tables, video, count, 0]
        found[f"{count} seats, one thread"] = [tables, video, count, 1]
    return found


# What is measured, of what kind, over what, and at most how much.
def targets(seat_counts):
    yield "lut build", "cpu", "decode, one thread", 1.05
    yield "lut build", "wall", "decode", 0.90
    yield "lut build", "wall", "crop", 0.90
    yield "lut build", "wall", "opencv", 0.50
    yield "lut build", "memory", "decode", 1.20
    if 1 in seat_counts and 1000 in seat_counts:
        yield "1000 seats", "cpu", "1 seats", 1.05
    if 60000 in seat_counts:
        yield "60000 seats", "cpu", "decode, one thread", 1.30


def print_rows(head, lines, is_markdown):
    print_table([head, *lines], ["---", *["--:"] * (len(head) - 1)], is_markdown)
    print()


def run_size(size, options, seat_counts, opencv):
    video = make_video(size, options.seconds)
    commands = programs(video, seat_counts, opencv)
    rounds = {name: [] for name in commands}
    sums = {}
    for number in range(options.rounds):
        for name, command in commands.items():
            result, printed = measure(command)
            rounds[name].append(result)
            if name.endswith((" seats", " seats, one thread")):
                count = name.split()[0]
                if sums.setdefault(count, printed) != printed:
                    sys.exit(f"{name}: other tables than before: {printed} and {sums[count]}")
        print(f"{size}: round {number + 1} of {options.rounds}", file=sys.stderr)

    def median(name, kind):
        return statistics.median(result[kind] for result in rounds[name])

    print_rows(
        [size, "processor", "wall", "memory"],
        [[name, f"{median(name, 'cpu'):.2f} s", f"{median(name, 'wall'):.2f} s",
          f"{median(name, 'memory'):.0f} MiB"] for name in commands],
        options.markdown,
    )
    lines, all_met = [], True
    for name, kind, reference, most in targets(seat_counts):
        if reference not in rounds:
            continue
        ratio = statistics.median(
            ours[kind] / theirs[kind] for ours, theirs in zip(rounds[name], rounds[reference])
        )
        all_met = all_met and ratio <= most
        word = {"cpu": "processor time", "wall": "wall time", "memory": "memory"}[kind]
        lines.append([f"{name} ÷ {reference}", word, f"{ratio:.2f}", f"{most:.2f}",
                      "met" if ratio <= most else "MISSED"])
    print_rows([size, "of", "ratio", "at most", ""], lines, options.markdown)
    return all_met


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--seconds", type=int, default=180)
    parser.add_argument("--sizes", default="1280x720,1920x1080")
    parser.add_argument("--seats", default="1,1000,60000")
    parser.add_argument("--markdown", action="store_true", help="print tables for a document")
    options = parser.parse_args()
    if shutil.which("ffmpeg") is None:
        sys.exit("the ffmpeg command is not installed")
    for program in ("halvora", "halvora_seat_tables"):
        if not (BUILD / "bin" / program).is_file():
            sys.exit("build first: cmake --preset release && "
                     "cmake --build --preset release --target halvora halvora_seat_tables")
    FOLDER.mkdir(parents=True, exist_ok=True)
    opencv = make_opencv_program()
    seat_counts = [int(count) for count in options.seats.split(",")]
    results = [run_size(size, options, seat_counts, opencv) for size in options.sizes.split(",")]
    return 0 if all(results) else 1


if __name__ == "__main__":
    sys.exit(main())
