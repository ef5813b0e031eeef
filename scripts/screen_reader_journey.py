#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Chooses a seat in the demo through AT-SPI alone, and writes down what Orca says of it.

Needs Xvfb, dbus-run-session, at-spi2-core and the Atspi bindings of Python (gir1.2-atspi-2.0,
python3-gi); with Orca (orca, speech-dispatcher) its speech is recorded too. Everything runs on a
private bus, a private display and a private home, and ends with the script.

    scripts/screen_reader_journey.py build/dev/bin/halvora-demo [--orca] [--speech FILE]

Ends with 0 if the seat was chosen and every step was announced, 1 if not, 77 if something that it
needs is not there.
"""
import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
import warnings

PATIENCE = 40.0
INSIDE = "HALVORA_JOURNEY_INSIDE"

# What a user does, by the names that they hear, and what has to be said afterwards.
JOURNEY = [
    ("Change Seat", "Step 1 of 3"),
    ("Section 208, * of *", "Section 208"),
    ("Next", "Step 2 of 3"),
    ("Row 1, 1 of *", "Row 1"),
    ("Next", "Step 3 of 3"),
    ("Seat 2, 2 of *", "Seat 2"),
    ("Confirm Seat", "Section 208, Row 1, Seat 2"),
]


def missing(orca):
    """What this machine lacks."""
    tools = ["Xvfb", "dbus-run-session"] + (["orca"] if orca else [])
    lacks = [tool for tool in tools if not shutil.which(tool)]
    try:
        import gi
        gi.require_version("Atspi", "2.0")
    except (ImportError, ValueError):
        lacks.append("Atspi for Python")
    return lacks


def start_again(arguments):
    """Runs this script once more, on a bus and a display of its own."""
    home = tempfile.mkdtemp(prefix="journey-")
    runtime = os.path.join(home, "run")
    os.mkdir(runtime, 0o700)
    read, write = os.pipe()
    display = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", "1600x1000x24",
                                "-nolisten", "tcp"], pass_fds=[write],
                               stderr=subprocess.DEVNULL)
    os.close(write)
    try:
        number = os.read(read, 20).decode().strip()
        here = dict(os.environ, DISPLAY=":" + number, HOME=home, XDG_RUNTIME_DIR=runtime,
                    XDG_CONFIG_HOME=home, XDG_DATA_HOME=home, XDG_CACHE_HOME=home,
                    QT_QPA_PLATFORM="xcb", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
                    QT_QUICK_BACKEND="software", LC_ALL="C.UTF-8", **{INSIDE: "1"})
        here.pop("WAYLAND_DISPLAY", None)
        here.pop("DBUS_SESSION_BUS_ADDRESS", None)
        command = ["dbus-run-session", "--", sys.executable, __file__] + arguments
        return subprocess.call(command, env=here)
    finally:
        display.terminate()
        display.wait()
        shutil.rmtree(home, ignore_errors=True)


class Desktop:
    """What AT-SPI shows of the demo."""

    def __init__(self):
        import gi
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi, GLib
        self.atspi, self.glib = Atspi, GLib
        Atspi.init()
        self.heard = []
        self.listener = Atspi.EventListener.new(self.on_event)
        self.listener.register("object:state-changed:showing")

    def on_event(self, event):
        try:
            if event.source.get_role() == self.atspi.Role.NOTIFICATION and event.detail1:
                self.heard.extend((event.source.get_name() or "").split("\n"))
        except self.glib.Error:
            pass

    def turn(self, seconds):
        context = self.glib.MainContext.default()
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            while context.pending():
                context.iteration(False)
            time.sleep(0.02)

    def listen(self, since, wanted):
        """What is announced until the wanted words are."""
        end = time.monotonic() + PATIENCE
        self.turn(0.5)
        while time.monotonic() < end and not any(wanted in text for text in self.heard[since:]):
            self.turn(0.1)
        return self.heard[since:]

    def walk(self, node):
        yield node
        try:
            count = node.get_child_count()
        except self.glib.Error:
            return
        for index in range(count):
            try:
                child = node.get_child_at_index(index)
            except self.glib.Error:
                continue
            if child is not None:
                yield from self.walk(child)

    def find(self, pattern):
        wanted = re.compile("^" + re.escape(pattern).replace(r"\*", ".*") + "$")
        for index in range(self.atspi.get_desktop(0).get_child_count()):
            program = self.atspi.get_desktop(0).get_child_at_index(index)
            if program is None or "halvora" not in (program.get_name() or "").lower():
                continue
            for node in self.walk(program):
                try:
                    if wanted.match(node.get_name() or "") and self.press_of(node) is not None:
                        return node
                except self.glib.Error:
                    continue
        return None

    @staticmethod
    def press_of(node):
        actions = node.get_action_iface()
        if actions is None:
            return None
        for index in range(actions.get_n_actions()):
            if actions.get_action_name(index) == "Press":
                return index
        return None

    def wait_for(self, pattern):
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            node = self.find(pattern)
            if node is not None:
                return node
            self.turn(0.2)
        return None

    def increase_list(self):
        """Turns the picker on by a row."""
        for index in range(self.atspi.get_desktop(0).get_child_count()):
            program = self.atspi.get_desktop(0).get_child_at_index(index)
            for node in self.walk(program) if program is not None else []:
                try:
                    if node.get_role() != self.atspi.Role.LIST:
                        continue
                    actions = node.get_action_iface()
                    for action in range(actions.get_n_actions()):
                        if actions.get_action_name(action) == "Increase":
                            actions.do_action(action)
                            self.turn(0.2)
                            return True
                except self.glib.Error:
                    continue
        return False


def reach(desktop, pattern):
    """The node of that name, turning the picker where it is not in sight yet."""
    node = desktop.find(pattern)
    turns = 0
    while node is None and turns < 60 and " of " in pattern:
        if not desktop.increase_list():
            break
        turns += 1
        node = desktop.find(pattern)
    return (node or desktop.wait_for(pattern)), turns


def play(desktop):
    """Failures, as sentences."""
    failures, actions = [], 0
    begin = time.monotonic()
    for name, announced in JOURNEY:
        node, turns = reach(desktop, name)
        if node is None:
            return ["nothing is called " + name]
        said = len(desktop.heard)
        called = node.get_name()
        node.get_action_iface().do_action(desktop.press_of(node))
        actions += 1 + turns
        new = desktop.listen(said, announced)
        print(f"pressed {called!r}: announced {new}")
        if not any(announced in text for text in new):
            failures.append(f"{announced!r} was not announced after {name!r}")
    print(f"{actions} actions, {time.monotonic() - begin:.1f} s with pauses to listen")
    return failures


def speech_of(debug_file):
    with open(debug_file, encoding="utf-8", errors="replace") as file:
        return re.findall(r"SPEECH OUTPUT: '(.*?)'(?:\{[^{}\n]*\})?(?: |$)", file.read(),
                          re.MULTILINE | re.DOTALL)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n", 1)[0])
    parser.add_argument("demo")
    parser.add_argument("--orca", action="store_true", help="record what Orca says")
    parser.add_argument("--speech", default="", help="where to write it")
    options = parser.parse_args()
    lacks = missing(options.orca)
    if lacks:
        print("not tried, for want of " + ", ".join(lacks))
        return 77
    if INSIDE not in os.environ:
        return start_again([os.path.abspath(options.demo)] + sys.argv[2:])

    # The newer names are not there yet in every release that is in use.
    warnings.simplefilter("ignore", DeprecationWarning)
    desktop = Desktop()
    programs = []
    debug_file = os.path.join(os.environ["HOME"], "orca.log")
    try:
        if options.orca:
            programs.append(subprocess.Popen(["orca", "--debug-file", debug_file],
                                             stdout=subprocess.DEVNULL,
                                             stderr=subprocess.DEVNULL))
            desktop.turn(6)
        programs.append(subprocess.Popen([options.demo]))
        failures = play(desktop)
        desktop.turn(2)
    finally:
        for program in reversed(programs):
            program.terminate()
            try:
                program.wait(5)
            except subprocess.TimeoutExpired:
                program.kill()
    if options.orca:
        spoken = speech_of(debug_file) if os.path.exists(debug_file) else []
        print(f"Orca said {len(spoken)} things")
        for text in spoken:
            print("  " + text)
        if options.speech:
            with open(options.speech, "w", encoding="utf-8") as file:
                file.write("\n".join(spoken) + "\n")
        if not spoken:
            failures.append("Orca said nothing")
    for failure in failures:
        print("FAILED: " + failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
