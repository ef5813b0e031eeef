#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Throws damaged shows, tickets and commands at the program, from outside.

attack_shows.py HALVORA [--times N] [--seed S]

Each time a good input is changed at random and given to `show check`, `show compile`, `map import`,
`live --control -` and `crowd merge`. Whatever it is, the program ends by itself within ten seconds, with 0
or 2 (1 where an import lists tickets that have no seat), with nothing on standard output where it refuses,
with words that fit on lines of their own, and without a half written file. Prints each thing that is
otherwise and keeps its input beside; exit status 1 then.
"""

import argparse
import pathlib
import random
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
SHOW = (ROOT / "assets/demo/example-show.yaml").read_bytes()[:6000] + b"""
looks:
  warm: &warm {mode: Steady, colour: "#ffb46b", master: 50 %}
  waves: {mode: 1, map: {id: 1, from: 3, rate: 30}}
"""
TICKETS = b"section,row,seat,x,y\n" + b"".join(
    b"%s,%d,%d,%d.5,%d\n" % (name, row, seat, seat, row)
    for name in (b"Stalls", b"\"Balc,ony\"", "Loge ä".encode()) for row in range(4) for seat in range(6))
PLAN = b"""{"name": "x", "zones": [{"name": "Z", "zone_id": "Z", "position": {"x": 1, "y": 2}, "rows": [
 {"row_number": "1", "position": {"x": 0, "y": 0}, "seats": [
  {"seat_number": "1", "seat_guid": "a", "position": {"x": 0, "y": 0}},
  {"seat_number": "2", "seat_guid": "b", "position": {"x": 20, "y": 0}}]}]}]}"""
COMMANDS = b"go\nback\ngoto Doors\nhold\nresume\nblackout\nrelease\npanic\nrelease\ngo\ngo\n"
PIECES = [b"", b"\0", b"\xff\xfe", b"\xef\xbb\xbf", b"99999999999999999999", b"-1", b"1e999", b"nan", b"\n" * 50,
          b"{" * 200, b"[" * 200, b"&a [*a, *a]", b"- ", b": ", b"\t", b"\"", b"'", b"#", b"%", b",,,,", b"*warm",
          b"<<: *warm", b"!!binary x", b"--- \n", b"\r\n", b"a" * 5000, "é€😀".encode(), b"\x80\x80", b"0x10",
          b"1:99.9999", b"{}", b"[]", b"null", b"~", b"true", b"go", b"quit", b"\x1b[2J"]


def changed(data, chance):
    data = bytearray(data)
    for _ in range(chance.randint(1, 6)):
        at, end = sorted(chance.randint(0, len(data)) for _ in range(2))
        end = min(end, at + chance.randint(0, 60))
        act = chance.randint(0, 5)
        if act == 0:
            data[at:end] = chance.choice(PIECES)
        elif act == 1:
            data[at:at] = data[end:end + chance.randint(1, 200)]
        elif act == 2 and at < len(data):
            data[at] = chance.randint(0, 255)
        elif act == 3:
            del data[at:end]
        elif act == 4:
            data[at:at] = chance.choice(PIECES)
        else:
            lines = bytes(data).split(b"\n")
            chance.shuffle(lines) if chance.random() < 0.2 else lines.insert(
                chance.randint(0, len(lines)), chance.choice(lines))
            data = bytearray(b"\n".join(lines))
    return bytes(data)


def attacks(folder, chance):
    """What is run, its standard input, what it may end with and the files it may leave."""
    case = chance.randint(0, 4)
    out = folder / "out"
    given = folder / "given"
    if case == 0:
        given.write_bytes(changed(SHOW, chance))
        return ["show", "check", given, "--assets", ROOT / "assets/demo"], b"", (0, 2), None
    if case == 1:
        given.write_bytes(changed(SHOW, chance))
        return ["show", "compile", given, "--assets", ROOT / "assets/demo", "--out", out], b"", (0, 2), out
    if case == 2:
        given.write_bytes(changed(chance.choice([TICKETS, PLAN]), chance))
        words = ["map", "import", given, "--out", out]
        if chance.random() < 0.3:
            tickets = folder / "tickets"
            tickets.write_bytes(changed(TICKETS, chance))
            words += ["--expect", tickets]
        if chance.random() < 0.3:
            words += ["--place", chance.choice(["Stalls=-40,40,60,5", "Stalls=0,0,0,0", "x", "=", "Stalls=1,2,3"])]
        return words, b"", (0, 1, 2), out
    if case == 3:
        given.write_bytes(SHOW[:-150] if chance.random() < 0.7 else changed(SHOW, chance))
        lines = changed(COMMANDS, chance)
        return ["live", given, "--assets", ROOT / "assets/demo", "--air", "stdout", "--control", "-"], \
            lines + b"\nquit\n", (0, 2), None
    given.write_bytes(changed(PART[0], chance))
    return ["crowd", "merge", given, "--out", folder / "out.png", "--no-progress"], b"", (0, 2), folder / "out.png"


PART = [b""]


def faults(halvora, words, lines, may_end, out):
    try:
        run = subprocess.run([str(word) for word in (halvora, *words)], input=lines, capture_output=True,
                             timeout=10, check=False)
    except subprocess.TimeoutExpired:
        yield "does not end"
        return
    if run.returncode not in may_end:
        yield f"ends with {run.returncode}: {run.stderr[:300]!r}"
    if run.returncode == 2 and run.stdout:
        yield "refuses, and prints on standard output"
    if run.returncode == 2 and not run.stderr.strip():
        yield "refuses without a word"
    if any(byte < 32 and byte != 10 for byte in run.stderr):
        yield f"says what is no text: {run.stderr[:200]!r}"
    several = words[0] in ("show", "live") or run.returncode != 2
    if not several and run.stderr.count(b"\n") != 1:
        yield f"refuses in more than a line: {run.stderr[:300]!r}"
    if out is not None and run.returncode == 2 and out.exists():
        yield "refuses, and leaves a file"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("halvora", type=pathlib.Path)
    parser.add_argument("--times", type=int, default=2000)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    halvora = options.halvora.resolve()
    wrong, ends = 0, {}
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        subprocess.run([halvora, "crowd", "--assets", ROOT / "assets/demo", "--venue", "7", "--scenario",
                        ROOT / "assets/demo/example-show.jsonl", "--phones", "9", "--until", "6", "--fps", "5",
                        "--size", "32x32", "--out", folder / "x.png", "--shard", "1/1"],
                       check=True, capture_output=True)
        PART[0] = (folder / "x.png.shard-1-of-1").read_bytes()
        for number in range(options.times):
            chance = random.Random(options.seed * 1_000_003 + number)
            for old in ("out", "out.png", "given", "tickets"):
                (folder / old).unlink(missing_ok=True)
            before = {file.name for file in folder.iterdir()}
            words, lines, may_end, out = attacks(folder, chance)
            found = list(faults(halvora, words, lines, may_end, out))
            left = {file.name for file in folder.iterdir()} - before - {"given", "tickets", "out", "out.png"}
            found += [f"leaves {sorted(left)}"] if left else []
            kind = " ".join(map(str, words[:2] if words[0] != "live" else words[:1]))
            ends[kind] = ends.get(kind, 0) + 1
            for fault in found:
                wrong += 1
                print(f"{options.seed}:{number} {kind}: {fault}", flush=True)
    print(f"{options.times} attacks {ends}, {wrong} wrong")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
