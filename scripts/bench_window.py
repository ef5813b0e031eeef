#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Measures the Qt Quick face in a window: start, latency, motion, strobe, steady colour, wizard.

bench_window.py [--program FILE] [--seconds S] [--steady S] [--starts N] [--surfaces "a;b"]
                [--markdown]

Everything is measured off screen with the software renderer and, where Xvfb is installed, in a
window of a real X server, with the software renderer and with OpenGL. Each measurement is a process
of its own. The steady colour and the empty window, which do next to nothing, run beside the others;
all others run alone. Exit status 1: a target is missed, or the program failed. Takes about two
minutes; nothing is written but the table.
"""

import argparse
import contextlib
import json
import os
import shutil
import statistics
import subprocess
import sys
import time
from pathlib import Path

from printed_table import print_table

ROOT = Path(__file__).resolve().parent.parent
PROGRAM = ROOT / "build" / "release" / "bin" / "halvora_window_bench"
ASSETS = ROOT / "assets" / "demo"
SURFACES = ("off screen", "X", "X, OpenGL")
OPENGL = "X, OpenGL"
# Scan cycle and range reset once a second each, the low-light poll twice.
TURNS_A_SECOND = 4

FRAME = 1000 / 60
WORST_FRAME = 2 * FRAME


@contextlib.contextmanager
def x_server():
    """The display of an X server of its own; None where there is no Xvfb."""
    if shutil.which("Xvfb") is None:
        yield None
        return
    command = ["Xvfb", "-displayfd", "1", "-screen", "0", "1400x1100x24", "-nolisten", "tcp"]
    with subprocess.Popen(
        command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True
    ) as server:
        try:
            yield ":" + server.stdout.readline().strip()
        finally:
            server.terminate()


def environment(surface, display):
    variables = {
        name: value
        for name, value in os.environ.items()
        if name not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QUICK_BACKEND")
    }
    variables["QT_QPA_PLATFORM"] = "offscreen" if surface == SURFACES[0] else "xcb"
    if surface != SURFACES[0]:
        variables["DISPLAY"] = display
    if surface != OPENGL:
        variables["QT_QUICK_BACKEND"] = "software"
    return variables


class Surface:
    """Runs measurements on one kind of window."""

    def __init__(self, name, display, options):
        self.name = name
        self.variables = environment(name, display)
        self.options = options

    def begin(self, measurement, seconds):
        command = [self.options.program, measurement, "--seconds", str(seconds)]
        command += ["--assets", ASSETS, "--spawned", str(time.monotonic_ns())]
        return subprocess.Popen(command, env=self.variables, stdout=subprocess.PIPE, text=True)

    def result(self, process):
        output, _ = process.communicate()
        if process.returncode != 0:
            sys.exit(f"{process.args[1]}, {self.name}: failed with status {process.returncode}")
        return json.loads(output)

    def measure(self, measurement, seconds):
        return self.result(self.begin(measurement, seconds))


class Table:
    """Rows of what was measured, beside its target."""

    def __init__(self):
        self.rows = []
        self.is_met = True

    def add(self, surface, what, value, target="", is_met=True):
        self.rows.append((surface, what, value, f"{target}: {'met' if is_met else 'MISSED'}"
                          if target else ""))
        self.is_met = self.is_met and is_met

    def at_most(self, surface, what, value, most, unit):
        """OpenGL is reckoned by the processor in an X server without a screen: no target there."""
        target = "" if surface == OPENGL else f"at most {most:g} {unit}"
        self.add(surface, what, f"{value:.1f} {unit}", target, value <= most or not target)

    def print(self, is_markdown):
        print_table([("window", "what", "measured", "target"), *self.rows],
                    ("---", "---", "--:", "---"), is_markdown)


def add_start(table, surface):
    name = surface.name
    starts = [surface.measure("start", 1) for _ in range(surface.options.starts)]
    first = statistics.median(start["firstFrame"] for start in starts)
    processor = statistics.median(start["processor"] for start in starts)
    table.at_most(name, "process asked for to first frame", first, 500, "ms")
    table.add(name, "processor time of that", f"{processor:.0f} ms")
    memory = surface.measure("memory", 1)
    for what, size in (("at the first frame", memory["firstFrame"]),
                       ("in a show, at most", memory["largest"])):
        table.at_most(name, f"memory {what}", size, 150, "MiB")


def add_pauses(table, name, what, found):
    title = f"longest of {found['count']} pauses between frames of {what}"
    table.at_most(name, title, found["worst"], WORST_FRAME, "ms")
    table.add(name, "most processor time in one of them", f"{found['worstEffort']:.1f} ms")


def add_latency(table, surface):
    found = surface.measure("latency", max(surface.options.seconds // 2, 1))
    name = surface.name
    table.add(name, "foreign advertisements beside", f"{found['foreignASecond']:.0f} a second",
              "at least 990", found["foreignASecond"] >= 990)
    table.add(name, "advertisement to its frame, median", f"{found['median']:.2f} ms")
    table.add(name, "advertisement to its frame, p99", f"{found['p99']:.2f} ms")
    table.add(name, "the kit's own share, median", f"{found['oursMedian']:.2f} ms")
    table.at_most(name, "the kit's own share, p99", found["oursP99"], FRAME, "ms")
    table.add(name, "looks shown by the next frame", f"{found['inNextFrame']} of {found['looks']}",
              "all", found["inNextFrame"] == found["looks"])


def add_motion(table, surface):
    found = surface.measure("motion", 0)
    name = surface.name
    table.add(name, "frames while fades and pictures move",
              f"{found['framesASecond']:.0f} a second")
    table.add(name, "processor meanwhile", f"{100 * found['processorShare']:.1f} % of a core")
    add_pauses(table, name, "what moves", found["pauses"])


def add_strobe(table, surface, empty):
    seconds = surface.options.seconds
    strobe = surface.measure("strobe", seconds)
    plain = surface.measure("plain", max(seconds // 2, 1))
    for what, found in (("strobe of 10 ms", strobe), ("plain rectangle that flickers so", plain)):
        share = f"{100 * found['processorShare']:.1f} % of a core"
        table.add(surface.name, what, f"{share}, {found['framesASecond']:.0f} frames a second")
    table.add(surface.name, "empty window", f"{100 * empty['processorShare']:.2f} % of a core")


def add_steady(table, name, found):
    # One more of each may fall into the time at its edges.
    most_turns = TURNS_A_SECOND * (found["seconds"] + 1)
    most_wakes = most_turns + found["packets"] + 2
    time_text = f"{found['seconds']:.0f} s"
    table.add(name, f"frames of a steady colour in {time_text}", str(found["frames"]), "none",
              found["frames"] == 0)
    table.add(name, "turns of the kit's run loop meanwhile", str(found["turns"]),
              f"the named timers', {most_turns:.0f}", found["turns"] <= most_turns)
    table.add(name, f"wake-ups beside {found['packets']} packets", str(found["wakeUps"]),
              f"packets and turns, {most_wakes:.0f}", found["wakeUps"] <= most_wakes)


def add_wizard(table, surface):
    found = surface.measure("wizard", 0)
    name = surface.name
    table.at_most(name, "wizard of 100,000 seats, open to painted", found["open"], 300, "ms")
    table.add(name, "the same again", f"{found['openAgain']:.1f} ms")
    table.add(name, "to the row of 100,000 seats", f"{found['toSeats']:.1f} ms")
    table.add(name, "a letter in the filter, then another",
              f"{found['firstLetter']:.1f} ms, {found['secondLetter']:.1f} ms")
    add_pauses(table, name, "scrolling", found["scroll"])
    add_pauses(table, name, "the sheet's sliding in", found["slide"])


def run(options, display, servers):
    surfaces = [
        Surface(name, display, options)
        for name in options.surfaces
        if display is not None or name == SURFACES[0]
    ]
    # On a screen of its own: a window that others lay over is drawn anew when they go.
    idle = []
    for surface in surfaces:
        own = Surface(surface.name, servers.enter_context(x_server()), options)
        idle.append((own, own.begin("steady", options.steady)))
    table = Table()
    for surface in surfaces:
        add_start(table, surface)
        add_latency(table, surface)
        add_motion(table, surface)
        if surface.name != OPENGL:
            add_strobe(table, surface, surface.measure("empty", 2))
            add_wizard(table, surface)
    for surface, process in idle:
        add_steady(table, surface.name, surface.result(process))
    return table


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--program", type=Path, default=PROGRAM)
    parser.add_argument("--seconds", type=int, default=10,
                        help="of the strobe; of the latency half as many")
    parser.add_argument("--steady", type=int, default=60, help="seconds of a steady colour")
    parser.add_argument("--starts", type=int, default=5)
    parser.add_argument("--surfaces", type=lambda text: text.split(";"), default=list(SURFACES),
                        help="some of: " + "; ".join(SURFACES))
    parser.add_argument("--markdown", action="store_true", help="print the table for a document")
    options = parser.parse_args()
    if not options.program.is_file():
        sys.exit("no such program; build it: cmake --preset release && "
                 "cmake --build --preset release --target halvora_window_bench")
    with contextlib.ExitStack() as servers:
        table = run(options, servers.enter_context(x_server()), servers)
    table.print(options.markdown)
    return 0 if table.is_met else 1


if __name__ == "__main__":
    sys.exit(main())
