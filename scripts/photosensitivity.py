#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Puts a rendered movie through FFmpeg's `photosensitivity` filter and says what it thinks of it.

photosensitivity.py MOVIE [--report REPORT]

  MOVIE    of a crowd (`halvora crowd --out hall.mp4`), or any other
  REPORT   what `halvora safety` printed of the same show, to set beside it

The filter adds up how much the picture changes from frame to frame, over the last second, and calls
that badness; above 1 it would blend frames until it is not. Here it leaves them as they are. One
JSON object: the frames, how many of them are above 1, and the worst moments, at most one in each
second.
"""

import argparse
import json
import re
import subprocess
import sys

KEY = "lavfi.photosensitivity."
FRAME = re.compile(r"pts_time:\s*([0-9.]+)")


def rate_of(movie):
    shown = subprocess.run(["ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries",
                            "stream=r_frame_rate", "-of", "csv=p=0", movie],
                           check=True, capture_output=True, text=True).stdout.strip()
    over, _, under = shown.partition("/")
    return round(float(over) / float(under or 1))


def badness_of(movie, frames):
    """(seconds, badness), frame by frame."""
    filters = f"photosensitivity=f={frames}:bypass=1,metadata=mode=print:file=-"
    done = subprocess.run(["ffmpeg", "-v", "error", "-i", movie, "-vf", filters, "-f", "null", "-"],
                          check=True, capture_output=True, text=True)
    seconds, found = 0.0, []
    values = {}
    for line in done.stdout.splitlines() + ["frame:end pts_time:0"]:
        if line.startswith("frame:"):
            if values:
                found.append((seconds, values.get("badness", 0.0)))
            seconds, values = float(FRAME.search(line).group(1)), {}
        elif line.startswith(KEY):
            name, _, value = line[len(KEY):].partition("=")
            values[name] = float(value)
    return found


def worst_of(frames, most=10):
    by_second = {}
    for seconds, badness in frames:
        second = int(seconds)
        if badness > by_second.get(second, (0, 0))[1]:
            by_second[second] = (seconds, badness)
    worst = sorted(by_second.values(), key=lambda moment: -moment[1])[:most]
    return [{"at": round(seconds, 2), "badness": round(badness, 3)} for seconds, badness in worst]


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("movie")
    parser.add_argument("--report")
    options = parser.parse_args()
    frames = badness_of(options.movie, min(max(rate_of(options.movie), 2), 240))
    if not frames:
        sys.exit(f"{options.movie}: no frames in it")
    changed = [seconds for seconds, badness in frames if badness > 1]
    verdict = {"filter": "fail" if changed else "pass", "frames": len(frames),
               "changed": len(changed), "seconds": sorted({int(at) for at in changed}),
               "worst": worst_of(frames)}
    if options.report:
        with open(options.report, encoding="utf-8") as file:
            report = json.load(file)
        verdict["safety"] = {key: report[key] for key in ("verdict", "venue", "flash") if key in report}
    print(json.dumps(verdict, indent=2))


if __name__ == "__main__":
    main()
