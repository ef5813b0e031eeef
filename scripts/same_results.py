#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Do two builds of the command give the same bytes? For changes of shape that change no behaviour.

same_results.py OLD NEW   both are `halvora` programs; run in the tree whose files are asked for

Traces of every scenario of the tests and of the demo under several chances, the demo venue's map,
tables of seats, packets, and a crowd's report and pictures. What a report says of speed, and a trace of
the machine, is not compared. Exit status: 0 where all is the same, 1 with the name of what is not.
"""

import argparse
import json
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
TRACES = ROOT / "tests/venue/traces"
ASSETS = ROOT / "tests/venue/assets"
DEMO = ROOT / "assets/demo"
VENUE = DEMO / "HVAssets/Maps/Venue-7"
CROWD = ["--venue", "7", "--phones", "300", "--loss", "0.3", "--jitter", "40", "--late", "0.1,3",
         "--leave", "0.1", "--seed", "3", "--fps", "10", "--size", "320x180", "--no-progress"]


def cases():
    """Names and arguments; OUT stands for a folder of the run's own."""
    for scenario in sorted(TRACES.glob("*.jsonl")):
        if scenario.name.endswith(".expected.jsonl"):
            continue
        beside = scenario.with_suffix(".options")
        options = beside.read_text(encoding="utf-8").split() if beside.exists() else []
        options = [word.replace("ASSETS", str(ASSETS)) for word in options]
        for seed in ([] if "--random" in options else [["--random", str(n)] for n in (1, 2)]) or [[]]:
            yield f"trace {scenario.name} {seed}", ["trace", str(scenario), *options, *seed]
    for show in sorted(DEMO.glob("*-show.jsonl")):
        for chance in ("min", "max", "1", "77"):
            yield (f"trace {show.name} {chance}",
                   ["trace", str(show), "--assets", str(DEMO), "--random", chance])
        yield (f"crowd {show.name}",
               ["crowd", "--assets", str(DEMO), "--scenario", str(show), *CROWD, "--out", "OUT/sheet.png"])
    yield "map dump", ["map", "dump", str(VENUE / "map.json")]
    yield "map check", ["map", "check", str(VENUE / "map.json")]
    yield "map draw", ["map", "draw", str(VENUE / "map.json"), "--out", "OUT/plan.png"]
    for video in sorted(VENUE.glob("*/*.mp4")):
        for threads in ("1", "2"):
            yield (f"lut {video.parent.name} {threads}",
                   ["lut", "build", str(video), "--seat", "3,4", "--seat", "100,50", "--threads", threads,
                    "--documents", "OUT/documents", "--no-progress"])
    yield "packet", ["packet", "decode", "e0ff01020304050607080910111213141516171819202122aabb"]


def without_speed(text):
    try:
        report = json.loads(text)
    except ValueError:
        return text

    def cleaned(value):
        if isinstance(value, dict):
            return {key: cleaned(one) for key, one in value.items() if key != "simulatedSecondsPerSecond"}
        return [cleaned(one) for one in value] if isinstance(value, list) else value

    return json.dumps(cleaned(report))


def result_of(program, arguments):
    with tempfile.TemporaryDirectory() as folder:
        words = [word.replace("OUT", folder, 1) if word.startswith("OUT") else word for word in arguments]
        run = subprocess.run([program, *words], capture_output=True, check=False)
        files = {file.relative_to(folder).as_posix(): file.read_bytes()
                 for file in sorted(Path(folder).rglob("*")) if file.is_file()}
        output = run.stdout.decode("utf-8", "replace").replace(folder, "OUT")
        error = run.stderr.decode("utf-8", "replace").replace(folder, "OUT")
        if arguments[0] == "crowd":
            output = without_speed(output)
        for name, data in files.items():
            files[name] = data.replace(folder.encode(), b"OUT")
        return run.returncode, output, error, files


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("old")
    parser.add_argument("new")
    arguments = parser.parse_args()
    programs = [shutil.which(one) for one in (arguments.old, arguments.new)]
    if None in programs:
        parser.error("not a program: " + (arguments.old if programs[0] is None else arguments.new))
    count, empty, different = 0, 0, []
    for name, words in cases():
        old, new = (result_of(program, words) for program in programs)
        count += 1
        empty += not (old[1] or old[3])
        if old != new:
            different.append(name)
            print(f"not the same: {name}")
    print(f"{count} results compared, {len(different)} differ"
          + (f"; {empty} of them give nothing" if empty else ""))
    return 1 if different or empty == count else 0


if __name__ == "__main__":
    sys.exit(main())
