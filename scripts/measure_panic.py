#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""How long from a command to black on the air, from each source of commands, and how exact the times
of cues are, while the whole machine is busy: the tables of docs/live.md.

scripts/measure_panic.py HALVORA [--trials N] [--busy N] [--source NAME]…

A show of a pixel map, 30 new packets a second, is played to standard output. Every figure counts from
the moment before the command is given until this script has read the packet, so it is never less than
what an adapter would wait.
"""

import argparse
import json
import os
import pty
import queue
import random
import shutil
import signal
import socket
import statistics
import struct
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

REPEAT = 0.1
LIMIT = 10
OLA_PORT = 9010
ART_NET_PORT = 6454
UNIVERSE = 1
NOBODY = 65534
# Cues every quarter of a second, and a map behind them.
TIMED_CUES = 120
STEP = 0.25
OFF = ["dummy", "e131", "espnet", "ftdidmx", "gpio", "karate", "kinet", "milinst", "opendmx"]
OFF += ["openpixelcontrol", "osc", "pathport", "renard", "sandnet", "shownet", "spi", "stageprofi"]
OFF += ["uartdmx", "usbdmx", "usbserial"]


def show_file(folder, cues):
    path = folder / "show.yaml"
    path.write_text(f"application: 1\nrepeat: {REPEAT}\ncues:\n{cues}")
    return path


def map_cues():
    return '- {name: Map, look: {mode: Steady, map: {id: 1}}}\n'


def timed_cues():
    rows = [
        f"- {{name: c{n}, at: {n * STEP}, look: {{mode: Steady, speed: {n % 200}}}}}"
        for n in range(TIMED_CUES)
    ]
    return "\n".join(rows) + "\n"


class Player:
    """`halvora live`, whose packets are read as they come."""

    def __init__(self, halvora, show, options=(), stdin=subprocess.PIPE):
        self.process = subprocess.Popen(
            [halvora, "live", show, "--air", "stdout", *options],
            stdin=stdin,
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
        )
        self.packets = queue.SimpleQueue()
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        for line in self.process.stdout:
            self.packets.put((time.monotonic(), json.loads(line)))

    def wait(self, is_it, since):
        """When the first packet after that moment was read that is what is waited for."""
        while True:
            at, line = self.packets.get(timeout=LIMIT)
            data = bytes.fromhex(line["packet"])
            if at >= since and is_it(data):
                return at

    def end(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.wait(LIMIT)


def is_black(data):
    return data[11] == 1 and data[7] == 0


def is_over(data):
    return data[11] == 0


def is_lit(data):
    return data[11] == 1 and data[7] == 255


class Input:
    """Lines on standard input."""

    def __init__(self, halvora, show):
        self.player = Player(halvora, show, ["--control", "-"])

    def give(self, command):
        self.player.process.stdin.write(f"{command}\n".encode())
        self.player.process.stdin.flush()

    def end(self):
        self.player.end()


class Keys:
    """Single keys of a terminal."""

    KEYS = {"go": b" ", "blackout": b"o", "panic": b"p", "release": b"u", "resume": b"r"}

    def __init__(self, halvora, show):
        self.keyboard, terminal = pty.openpty()
        self.player = Player(halvora, show, stdin=terminal)
        os.close(terminal)
        time.sleep(0.5)

    def give(self, command):
        os.write(self.keyboard, self.KEYS[command])

    def end(self):
        self.player.end()
        os.close(self.keyboard)


class Osc:
    """Messages over UDP."""

    def __init__(self, halvora, show):
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
            probe.bind(("127.0.0.1", 0))
            self.port = probe.getsockname()[1]
        self.player = Player(halvora, show, ["--osc", str(self.port)])
        time.sleep(0.5)

    def give(self, command):
        address = f"/halvora/{command}".encode() + b"\0"
        address += bytes(-len(address) % 4)
        self.socket.sendto(address + b",\0\0\0", ("127.0.0.1", self.port))

    def end(self):
        self.player.end()


class Desk:
    """A desk's Art-Net through the real daemon."""

    CHANNELS = {"go": 0, "hold": 2, "blackout": 3, "panic": 4, "release": 5}

    def __init__(self, halvora, show):
        self.folder = Path(tempfile.mkdtemp())
        for name in OFF:
            (self.folder / f"ola-{name}.conf").write_text("enabled = false\n")
        (self.folder / "ola-artnet.conf").write_text("enabled = true\nip = 127.0.0.1\n")
        (self.folder / "ola-port.conf").write_text(f"2-1-I-0 = {UNIVERSE}\n")
        user = {}
        if os.geteuid() == 0:
            user = {"user": NOBODY, "group": NOBODY}
            for path in [self.folder, *self.folder.iterdir()]:
                os.chown(path, NOBODY, NOBODY)
        command = ["olad", "-c", self.folder, "-r", str(OLA_PORT), "--no-http"]
        command += ["--no-register-with-dns-sd"]
        quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        self.daemon = subprocess.Popen(command, **quiet, **user)
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.levels = bytearray(512)
        time.sleep(2)
        self.player = Player(halvora, show, ["--ola", str(UNIVERSE), "--control", "-"])
        time.sleep(0.5)
        self.send()
        time.sleep(0.2)

    def send(self):
        head = b"Art-Net\0" + bytes([0, 0x50, 0, 14, 0, 0]) + struct.pack("<H", UNIVERSE)
        packet = head + struct.pack(">H", len(self.levels)) + self.levels
        self.socket.sendto(packet, ("127.0.0.1", ART_NET_PORT))

    # A button: up, and down long after it was seen.
    def give(self, command):
        channel = self.CHANNELS.get(command)
        if channel is None:
            self.player.process.stdin.write(f"{command}\n".encode())
            self.player.process.stdin.flush()
            return
        self.levels[channel] = 255
        self.send()
        if command == "blackout":
            return
        threading.Timer(0.15, self.let_go, [channel]).start()

    def let_go(self, channel):
        self.levels[channel] = 0
        self.send()

    def end(self):
        self.player.end()
        self.daemon.kill()
        self.daemon.wait()
        shutil.rmtree(self.folder, ignore_errors=True)


SOURCES = {"keys": Keys, "stdin": Input, "osc": Osc, "dmx": Desk}


def measure(source, trials):
    """Milliseconds to black, of panic and of blackout."""
    chance = random.Random(7)
    times = {"panic": [], "blackout": []}
    began = time.monotonic()
    source.give("go")
    source.player.wait(is_lit, began)
    for _ in range(trials):
        for command, taken in times.items():
            time.sleep(chance.uniform(0.2, 0.35))
            told = time.monotonic()
            source.give(command)
            taken.append((source.player.wait(is_black, told) - told) * 1000)
            if command == "panic":
                source.player.wait(is_over, told)
            time.sleep(0.2)
            told = time.monotonic()
            if command == "blackout" and isinstance(source, Desk):
                source.let_go(source.CHANNELS["blackout"])
            else:
                source.give("release")
            source.player.wait(is_lit, told)
            if command == "panic":
                source.give("resume")
    return times


def exactness(halvora, folder):
    """How late each cue's packet is, in milliseconds, by the player's own clock."""
    player = Player(halvora, show_file(folder, timed_cues()), ["--control", "-"])
    player.process.stdin.write(b"go\n")
    player.process.stdin.flush()
    late, first, last = [], None, None
    while len(late) < TIMED_CUES - 1:
        _, line = player.packets.get(timeout=LIMIT)
        speed = bytes.fromhex(line["packet"])[12]
        if speed == last:
            continue
        last = speed
        if first is None:
            first = line["t"]
            continue
        late.append(line["t"] - first - (len(late) + 1) * STEP * 1000)
    player.end()
    return late


def row(name, values):
    values = sorted(values)
    at = lambda share: values[min(len(values) - 1, int(len(values) * share))]
    numbers = [statistics.median(values), at(0.95), values[-1]]
    print(f"| {name} | {len(values)} | " + " | ".join(f"{n:.1f}" for n in numbers) + " |", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("halvora")
    parser.add_argument("--trials", type=int, default=50)
    parser.add_argument("--busy", type=int, default=2 * os.cpu_count(), help="busy processes")
    parser.add_argument("--source", action="append", choices=SOURCES, help="only these")
    arguments = parser.parse_args()
    busy = [
        subprocess.Popen([sys.executable, "-c", "while True: pass"]) for _ in range(arguments.busy)
    ]
    folder = Path(tempfile.mkdtemp())
    worst = 0
    print(f"{os.cpu_count()} processors, {arguments.busy} busy processes, load {os.getloadavg()[0]:.0f}")
    print("| command | times | median ms | 95 % | most |\n|---|---|---|---|---|")
    try:
        show = show_file(folder, map_cues())
        for name in arguments.source or SOURCES:
            source = SOURCES[name](arguments.halvora, show)
            try:
                for command, times in measure(source, arguments.trials).items():
                    row(f"{command}, {name}", times)
                    worst = max(worst, *times)
            finally:
                source.end()
        late = exactness(arguments.halvora, folder)
        row("a cue's time", late)
    finally:
        for process in busy:
            process.kill()
        shutil.rmtree(folder, ignore_errors=True)
    is_good = worst <= REPEAT * 1000 and max(late) <= 5
    print("within a repeat, and times within 5 ms" if is_good else "NOT within the limits")
    return 0 if is_good else 1


if __name__ == "__main__":
    sys.exit(main())
