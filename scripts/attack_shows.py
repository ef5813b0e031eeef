#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Throws damaged shows, tickets, journals, parts of crowds and commands at the program, from outside.

attack_shows.py HALVORA [--times N] [--seed S]

Each time a good input is changed at random and given to `show check`, `show compile`, `map import`,
`crowd merge` and `live`: its show, its lines of commands, its journal, the place that a dead player has
left, and datagrams at its port for OSC. Whatever it is, the program ends by itself within a minute, with 0
or 2 (1 where an import lists tickets that have no seat), with nothing on standard output where it refuses,
with words that fit on lines of their own, and without a half written file. A damaged part of a crowd is
never merged, a journal's player begins above its last number, and a player is black after a panic, whatever
came before it. Prints each thing that is otherwise, with the seed and the number that show it again; exit
status 1 then.
"""

import argparse
import contextlib
import fcntl
import json
import pathlib
import random
import re
import socket
import struct
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
# Whole cues of it.
SHOW = (ROOT / "assets/demo/example-show.yaml").read_bytes()[:6000].rpartition(b"\n  - name:")[0] + b"""
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
JOURNAL = b"reserved 1024\nreserved 7\nreserved 2048\n"
LIMIT = 60
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
    case = chance.randint(0, 5)
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
        given.write_bytes(SHOW if chance.random() < 0.7 else changed(SHOW, chance))
        lines = changed(COMMANDS, chance)
        return ["live", given, "--assets", ROOT / "assets/demo", "--air", "stdout", "--control", "-"], \
            lines + b"\nquit\n", (0, 2), None
    if case == 4:
        given.write_bytes(SHOW)
        journal = folder / "journal"
        journal.write_bytes(changed(JOURNAL, chance))
        return ["live", given, "--assets", ROOT / "assets/demo", "--air", "stdout", "--control", "-",
                "--journal", journal], b"go\nquit\n", (0, 2), None
    part = changed(PART[0], chance)
    given.write_bytes(part)
    may_end = (0,) if part == PART[0] else (2,)
    return ["crowd", "merge", given, "--out", folder / "out.png", "--no-progress"], b"", may_end, folder / "out.png"


PART = [b""]
PLACE = [b""]


def numbers(output):
    """The sequence numbers of packets that were played."""
    return [int.from_bytes(bytes.fromhex(json.loads(line)["packet"])[23:25], "big") for line in output.splitlines()]


def is_black(line):
    packet = bytes.fromhex(json.loads(line)["packet"])
    return packet[11] == 1 and packet[7] == 0


@contextlib.contextmanager
def player(halvora, folder, *options):
    """A player of a good show, with pipes; killed at the end."""
    given = folder / "given"
    given.write_bytes(SHOW)
    words = ["live", given, "--assets", ROOT / "assets/demo", "--air", "stdout", "--control", "-", *options]
    run = subprocess.Popen([str(word) for word in (halvora, *words)], stdin=subprocess.PIPE,
                           stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    try:
        yield run
    finally:
        run.kill()
        run.communicate()


def ended(run, lines):
    try:
        output, errors = run.communicate(lines, timeout=LIMIT)
    except subprocess.TimeoutExpired:
        return "does not end", b"", b""
    what = f"ends with {run.returncode}: {errors[:300]!r}" if run.returncode != 0 else ""
    return what, output, errors


def place_faults(halvora, folder, chance):
    """A player dies, what it has left is damaged, and the one that stands by takes over."""
    journal = folder / "journal"
    journal.write_bytes(JOURNAL)
    place = folder / "journal.place"
    damaged = changed(PLACE[0], chance)
    place.write_bytes(damaged)
    with open(journal, "rb") as dead:
        fcntl.flock(dead, fcntl.LOCK_EX)
        with player(halvora, folder, "--journal", journal, "--standby") as run:
            said = run.stderr.readline()
            if b"stands by" not in said:
                yield f"does not stand by: {said!r}"
                return
            fcntl.flock(dead, fcntl.LOCK_UN)
            while b"is gone" not in (said := run.stderr.readline()):
                if not said:
                    yield "ends before it takes over"
                    return
            if damaged != PLACE[0] and b"cannot be read" not in said:
                yield f"takes a damaged place for a good one: {said!r}"
            fault, output, _ = ended(run, b"goto Doors\nquit\n")
            if fault:
                yield fault
            if min(numbers(output), default=0) <= 2048:
                yield f"begins with number {min(numbers(output), default=0)}"


def osc_message(word, argument=None):
    pad = lambda text: text + bytes(4 - len(text) % 4)
    if argument is None:
        return pad(b"/halvora/" + word) + pad(b",")
    return pad(b"/halvora/" + word) + pad(b",s") + pad(argument)


def osc_faults(halvora, folder, chance):
    """Anything at the port, and then a panic."""
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as desk:
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as taken:
            taken.bind(("127.0.0.1", 0))
            port = taken.getsockname()[1]
        with player(halvora, folder, "--osc", str(port)) as run:
            run.stdin.write(b"go\n")
            run.stdin.flush()
            run.stdout.readline()
            good = [osc_message(word) for word in (b"go", b"back", b"hold", b"resume", b"blackout", b"release")]
            good += [osc_message(b"goto", b"Doors"), osc_message(b"go") + bytes(4)]
            good += [b"#bundle\0" + bytes(8) + b"".join(struct.pack(">i", len(one)) + one for one in good[:3])]
            for _ in range(chance.randint(1, 60)):
                message = changed(chance.choice(good), chance)
                if b"panic" not in message and b"quit" not in message:
                    desk.sendto(message[:60000], ("127.0.0.1", port))
            desk.sendto(osc_message(b"panic"), ("127.0.0.1", port))
            while not is_black(line := run.stdout.readline() or b'{"packet":"' + b"00" * 26 + b'"}'):
                if b'"t"' not in line:
                    yield "ends before the panic"
                    return
            fault, _, errors = ended(run, b"quit\n")
            if fault:
                yield fault
            if any(byte < 32 and byte != 10 for byte in errors):
                yield f"says what is no text: {errors[:200]!r}"


def faults(halvora, words, lines, may_end, out):
    journal = words[-1].read_bytes() if "--journal" in words else b""
    before = re.findall(rb"^reserved (\d+)\n", journal, re.M)
    try:
        run = subprocess.run([str(word) for word in (halvora, *words)], input=lines, capture_output=True,
                             timeout=LIMIT, check=False)
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
    if before and run.returncode == 0 and run.stdout and numbers(run.stdout)[0] != int(before[-1]) % 65535 + 1:
        yield f"plays number {numbers(run.stdout)}, and the journal said {before[-1]!r}"


def attack(halvora, folder, chance):
    """The kind, and what was wrong."""
    special = chance.randint(0, 7)
    if special == 0:
        return "live, place", list(place_faults(halvora, folder, chance))
    if special == 1:
        return "live, osc", list(osc_faults(halvora, folder, chance))
    words, lines, may_end, out = attacks(folder, chance)
    kind = " ".join(map(str, words[:2] if words[0] != "live" else words[:1]))
    kind += ", journal" if "--journal" in words else ""
    return kind, list(faults(halvora, words, lines, may_end, out))


def left_place(halvora, folder):
    """Where a player was that was killed."""
    journal = folder / "journal"
    journal.write_bytes(JOURNAL)
    place = folder / "journal.place"
    with player(halvora, folder, "--journal", journal) as run:
        run.stdin.write(b"go\n")
        run.stdin.flush()
        run.stdout.readline()
        # It is on its way to the file when that is said.
        end = time.monotonic() + LIMIT
        while b"Doors" not in (place.read_bytes() if place.exists() else b"") and time.monotonic() < end:
            pass
    return place.read_bytes()


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
        # What is damaged must have been good.
        (folder / "given").write_bytes(SHOW)
        subprocess.run([halvora, "show", "check", folder / "given", "--assets", ROOT / "assets/demo"],
                       check=True, capture_output=True)
        PLACE[0] = left_place(halvora, folder)
        for number in range(options.times):
            chance = random.Random(options.seed * 1_000_003 + number)
            own = {"out", "out.png", "given", "tickets", "journal"}
            for old in (*own, "journal.place"):
                (folder / old).unlink(missing_ok=True)
            before = {file.name for file in folder.iterdir()}
            kind, found = attack(halvora, folder, chance)
            left = {file.name for file in folder.iterdir()} - before - own
            found += [f"leaves {sorted(left)}"] if left else []
            ends[kind] = ends.get(kind, 0) + 1
            for fault in found:
                wrong += 1
                print(f"{options.seed}:{number} {kind}: {fault}", flush=True)
    print(f"{options.times} attacks {ends}, {wrong} wrong")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
