#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the benchmarks several times and prints each time beside its reference's.

bench.py [--program FILE] [--repetitions N] [--min-time SECONDS] [--filter REGEX] [--markdown]

Times are processor times, medians over the repetitions. A ratio is the median of the repetitions'
own ratios, engine over reference, so that what slows both down at one time does not count. The
repetitions of all benchmarks are interleaved. Exit status 1: a target is missed, or the program
failed. Nothing is written but the table.
"""

import argparse
import json
import statistics
import subprocess
import sys
from pathlib import Path

from printed_table import print_table

ROOT = Path(__file__).resolve().parent.parent
UNITS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
NOTHING_NEW = {"ratio": {"text": 0.1}}
SEAT_MAP = {"ratio": {"simdjson": 1.0, "qt": 0.12}}

# Topic: what it is called in the table, and its targets (nanoseconds, or shares of references).
TOPICS = {
    "OtherMaker": ("advertisement of another maker", {"time": 20, **NOTHING_NEW}),
    "StaleSequence": ("stale packet", NOTHING_NEW),
    "SameBroadcast": ("new sequence number, same look", NOTHING_NEW),
    "NotAllowed": ("transmitter not on the host's list", NOTHING_NEW),
    "NewColour": ("new look: colour", {}),
    "NewPalette": ("new look: palette", {}),
    "StrobeStep": ("step of the strobe", {}),
    "FlashBulbStep": ("step of the flash bulb", {}),
    "CrossfadeStep": ("step of the colour crossfade", {}),
    "TraceBusyMinute": ("trace of a busy minute", {"time": 50e6}),
    "TraceExampleShow": ("trace of the example show", {}),
    "TableLookup": ("colour of a frame from the seat's table", {}),
    "PreloadFromMemory": ("pixel-map packet, table in memory", {}),
    "TableLoad": ("three minutes' table from disk, checked", {}),
    "GatherVenue": ("10,000 seats' pixels of 5,400 frames into tables", {}),
    "SeatMapVerbose": ("map of 100,000 seats, verbose", SEAT_MAP),
    "SeatMapIndented": ("the same, indented", SEAT_MAP),
    "SeatMapCompact": ("map of 100,000 seats, compact", SEAT_MAP),
    "SeatMapAlphabetical": ("the same, keys in the alphabet's order", SEAT_MAP),
    "EngineStart": ("engine made, loaded, taken down", {}),
    "EngineStartPalettes": ("the same with 50 palettes", {}),
}
# Counters that are worth a column's room, and how to say them.
NOTES = {
    "allocations": "{:.0f} allocations",
    "lines": "{:.0f} lines",
    "nanosecondsAWord": "{:.1f} ns a word",
    "showSeconds": "{:.1f} s of show",
    "objectBytes": "object of {:.0f} bytes",
    "heapBytes": "{:.0f} bytes of heap",
}
ENGINE = "engine"
REFERENCES = (
    "text", "tabledText", "plain", "simdjson", "qt", "nlohmann", "simdjsonReading", "rapidjsonReading"
)


def measure(options):
    """Runs the program; a dictionary of name to its repetitions, in their order."""
    program = Path(options.program).resolve()
    command = [
        program,
        f"--benchmark_filter={options.filter}",
        f"--benchmark_repetitions={options.repetitions}",
        f"--benchmark_min_time={options.min_time}",
        "--benchmark_enable_random_interleaving=true",
        "--benchmark_format=json",
    ]
    # The traces read the demo's assets from the folder in which the program runs.
    run = subprocess.run(command, cwd=ROOT, stdout=subprocess.PIPE, text=True, check=False)
    if run.returncode != 0:
        sys.exit(f"{program.name} failed with status {run.returncode}")
    found = {}
    for entry in json.loads(run.stdout)["benchmarks"]:
        if entry["run_type"] != "iteration":
            continue
        if entry.get("error_occurred"):
            sys.exit(f"{entry['name']}: {entry['error_message']}")
        found.setdefault(entry["run_name"], []).append(entry)
    for repetitions in found.values():
        repetitions.sort(key=lambda entry: entry["repetition_index"])
    return found


def nanoseconds(entry):
    return entry["cpu_time"] * UNITS[entry["time_unit"]]


def spoken(time):
    for unit, size in reversed(UNITS.items()):
        if time >= size or size == 1:
            return f"{time / size:.3g} {unit.replace('us', 'µs')}"


def notes(entry):
    return ", ".join(form.format(entry[name]) for name, form in NOTES.items() if name in entry)


def verdict(is_met):
    return "met" if is_met else "MISSED"


def rows(found):
    """Yields (cells, whether no target is missed), a row for each pair of a topic and reference."""
    for topic, (title, targets) in TOPICS.items():
        ours = found.get(f"{topic}/{ENGINE}", found.get(topic))
        if ours is None:
            continue
        time = statistics.median(map(nanoseconds, ours))
        most = targets.get("time")
        others = [
            (reference, found[f"{topic}/{reference}"])
            for reference in REFERENCES
            if f"{topic}/{reference}" in found
        ]
        for number, (reference, theirs) in enumerate(others or [("", None)]):
            cells = [title, spoken(time), "", "", "", "", notes(ours[0])]
            wanted = []
            if most is not None and number == 0:
                wanted.append((f"at most {spoken(most)}", time <= most))
            if theirs is not None:
                ratio = statistics.median(
                    nanoseconds(our) / nanoseconds(their) for our, their in zip(ours, theirs)
                )
                cells[2] = reference
                cells[3] = spoken(statistics.median(map(nanoseconds, theirs)))
                cells[4] = f"{ratio:.2g}" if ratio < 0.1 else f"{ratio:.2f}"
                most_ratio = targets.get("ratio", {}).get(reference)
                if most_ratio is not None:
                    wanted.append((f"ratio at most {most_ratio:g}", ratio <= most_ratio))
            cells[5] = "; ".join(f"{what}: {verdict(met)}" for what, met in wanted)
            yield cells, all(met for _, met in wanted)


def not_measured(found):
    """What the table is to have and the program has not: a check that is not made is not met."""
    for topic, (_, targets) in TOPICS.items():
        if topic not in found and f"{topic}/{ENGINE}" not in found:
            yield topic
            continue
        for reference in targets.get("ratio", {}):
            if f"{topic}/{reference}" not in found:
                yield f"{topic}/{reference}"


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--program", default=ROOT / "build" / "release" / "bin" / "halvora_bench")
    parser.add_argument("--repetitions", type=int, default=15)
    parser.add_argument("--min-time", type=float, default=0.05, help="seconds a repetition")
    parser.add_argument("--filter", default=".", help="only benchmarks that match")
    parser.add_argument("--markdown", action="store_true", help="print the table for a document")
    options = parser.parse_args()
    if not Path(options.program).is_file():
        sys.exit("no such program; build it: cmake --preset release && "
                 "cmake --build --preset release --target halvora_bench")
    found = measure(options)
    measured = list(rows(found))
    head = ["what", "engine", "reference", "takes", "ratio", "target", "an engine's round"]
    print_table([head, *(cells for cells, _ in measured)],
                ["---", "--:", "---", "--:", "--:", "---", "---"], options.markdown)
    lacking = list(not_measured(found)) if options.filter == "." else []
    for name in lacking:
        print(f"not measured: {name}", file=sys.stderr)
    is_good = measured and not lacking and all(is_met for _, is_met in measured)
    return 0 if is_good else 1


if __name__ == "__main__":
    sys.exit(main())
