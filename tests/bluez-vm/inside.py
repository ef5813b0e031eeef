#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs in the emulated machine: starts a bus, two controllers and the real Bluetooth daemon, lets
the kit hear what is in their air, and says on the console what came of it. Everything is waited for
by what tells of it; limits are only reached by what has failed."""

import itertools
import json
import os
import queue
import re
import signal
import subprocess
import threading
import time
from pathlib import Path

VM = Path("/run/vm")
HALVORA = VM / "halvora"
DEMO = VM / "halvora-demo"
QT_LISTENER = VM / "halvora_vm_qt_listener"
SHOW = VM / "show.jsonl"
LIVE_SHOW = VM / "live.yaml"
# On a disk of the machine's own, as a player has it.
JOURNAL = Path("/run/live.journal")
LIMIT = 120
CROWD_SECONDS = 60
REPEATS_SECONDS = 30
FALLBACK_SECONDS = 10
QT_SECONDS = 10
# How long hearing may take to come back.
RESUMED_WITHIN = 5
# A discovery whose daemon was killed goes on in the kernel, for nobody and in everybody's way.
LEFT_OVER = 10.24
TRANSMITTERS = 8
# Of 1 January 2026, universal time, when virtual days begin.
NOON = 1767268800
RETRY_STATUS = 3

PROPERTIES = "org.freedesktop.DBus.Properties"
ADAPTER = "org.bluez.Adapter1"
MONITOR = "org.bluez.AdvertisementMonitor1"


class Failure(Exception):
    pass


class NoController(Exception):
    pass


class LeftOut(Exception):
    pass


def say(text):
    print(text, flush=True)


class Lines:
    """The lines of a stream, each with the time at which it came."""

    def __init__(self, stream):
        self.all = []
        self.new = queue.SimpleQueue()
        threading.Thread(target=self.read, args=(stream,), daemon=True).start()

    def read(self, stream):
        for raw in stream:
            line = (time.monotonic(), raw.decode(errors="replace").rstrip("\n"))
            self.all.append(line)
            self.new.put(line)
        self.new.put(None)

    def wait(self, is_it, what, limit=LIMIT, since=0.0):
        """The next line that is what is waited for, and has come since then."""
        end = time.monotonic() + limit
        while True:
            try:
                line = self.new.get(timeout=max(end - time.monotonic(), 0.01))
            except queue.Empty:
                raise Failure(f"no {what} within {limit} s") from None
            if line is None:
                raise Failure(f"no {what}: the program has ended")
            if line[0] >= since and is_it(line[1]):
                return line

    def forget(self):
        while not self.new.empty():
            self.new.get()


def start(command, log, **options):
    options.setdefault("stdin", subprocess.DEVNULL)
    with open(VM / log, "ab") as file:
        return subprocess.Popen(
            [str(word) for word in command], stdout=subprocess.PIPE, stderr=file, **options
        )


def processor_seconds(process):
    fields = Path(f"/proc/{process.pid}/stat").read_text().rsplit(") ")[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def bus_call(path, interface, member, *arguments):
    command = ["dbus-send", "--system", "--print-reply=literal", "--dest=org.bluez", path]
    done = subprocess.run([*command, f"{interface}.{member}", *arguments], capture_output=True, text=True)
    return done.stdout if done.returncode == 0 else None


def bus_get(adapter, interface, name):
    answer = bus_call(f"/org/bluez/{adapter}", PROPERTIES, "Get", f"string:{interface}", f"string:{name}")
    return answer and answer.removeprefix("   variant").strip()


def flag(adapter, name):
    return bus_get(adapter, ADAPTER, name) == "boolean true"


def set_power(adapter, is_on):
    value = f"variant:boolean:{'true' if is_on else 'false'}"
    names = [f"string:{ADAPTER}", "string:Powered", value]
    if bus_call(f"/org/bluez/{adapter}", PROPERTIES, "Set", *names) is None:
        raise Failure("the daemon does not switch the adapter")


class Bus:
    """The system's bus, with an ear on everything that the daemon says."""

    def __init__(self):
        command = ["dbus-daemon", "--system", "--nofork", "--nopidfile", "--print-address"]
        self.daemon = start(command, "dbus.log")
        self.daemon.stdout.readline()
        rules = [
            "type='signal',sender='org.bluez'",
            f"type='method_call',interface='{MONITOR}'",
            "type='method_call',destination='org.bluez'",
            "type='signal',member='NameOwnerChanged',arg0='org.bluez'",
        ]
        self.monitor = start(["dbus-monitor", "--system", "--profile", *rules], "dbus.log")
        self.lines = Lines(self.monitor.stdout)
        self.lines.wait(lambda line: "NameAcquired" in line or line.startswith("#"), "bus")

    def wait(self, is_so, what, limit=LIMIT):
        """Looks again whenever the daemon has said something."""
        end = time.monotonic() + limit
        while not is_so():
            self.lines.wait(lambda line: True, what, end - time.monotonic())

    def forget(self):
        self.lines.forget()
        self.lines.all.clear()

    def write(self, file):
        """What was said, for whoever wants to know why."""
        file.write_text("".join(f"{at:.3f} {line}\n" for at, line in self.lines.all))

    def daemon_came(self):
        """When the daemon last took its name."""
        return max(at for at, line in self.lines.all if line.endswith("\tNameOwnerChanged"))

    def wait_for_member(self, member, limit=LIMIT):
        return self.lines.wait(lambda line: line.endswith(f"\t{member}"), member, limit)


class Daemon:
    """The real Bluetooth daemon."""

    def __init__(self, bus, has_monitors):
        self.bus = bus
        self.command = ["/usr/libexec/bluetooth/bluetoothd", "--nodetach"]
        if has_monitors:
            self.command.append("--experimental")
        self.start()

    def start(self):
        self.process = start(self.command, "bluetoothd.log")
        self.bus.wait(lambda: flag("hci0", "Powered") and flag("hci1", "Powered"), "adapters")

    def kill(self):
        self.process.kill()
        self.process.wait()

    def stop(self):
        """As the system stops it."""
        self.process.terminate()
        self.process.wait(LIMIT)


class Listener:
    """`halvora listen`, until it is told to end."""

    def __init__(self, machine, name, has_monitors, adapter="hci0", options=()):
        self.record = VM / f"{name}.jsonl"
        command = [HALVORA, "listen", "--record", self.record, *options]
        self.process = start(command, f"{name}.err")
        machine.listeners.append(self.process)
        self.lines = Lines(self.process.stdout)
        machine.wait_for_scan(has_monitors, adapter)

    def wait_for_packet(self, limit=LIMIT, is_it=lambda packet: True, since=0.0):
        def is_packet(line):
            packet = json.loads(line)
            return "sequence" in packet and is_it(packet)

        return self.lines.wait(is_packet, "packet", limit, since)[0]

    def end(self):
        self.process.send_signal(signal.SIGINT)
        if self.process.wait(LIMIT) != 0:
            raise Failure(f"listen ended with {self.process.returncode}")
        lines = [json.loads(line) for _, line in self.lines.all]
        self.packets = [line for line in lines if "sequence" in line]


class QtListener:
    """The radio through Qt Bluetooth, on the adapter that Qt takes, until it is told to end."""

    def __init__(self, machine, name):
        self.process = start([QT_LISTENER], f"{name}.err")
        machine.listeners.append(self.process)
        self.lines = Lines(self.process.stdout)
        machine.wait_for_scan(False)

    def wait_for_packet(self, limit=LIMIT, since=0.0):
        return self.lines.wait(lambda line: '"sequence"' in line, "packet through Qt", limit, since)[0]

    def end(self):
        self.process.terminate()
        self.process.wait(LIMIT)


class Machine:
    def __init__(self):
        self.bus = Bus()
        self.controllers = start([VM / "halvora_vm_controllers"], "controllers.err", stdin=subprocess.PIPE)
        self.listeners = []
        self.air = Lines(self.controllers.stdout)
        self.air.wait(lambda line: line == "ready", "controllers")

    def wait_for_scan(self, has_monitors, adapter="hci0"):
        if has_monitors:
            self.bus.wait_for_member("Activate")
        else:
            self.bus.wait(lambda: flag(adapter, "Discovering"), "discovery")

    def calm(self):
        """Ends what a scenario that failed has left."""
        self.wish("show 0")
        self.wish("refuse 0")
        self.wish("plug 1")
        self.wish("unplug 2")
        for process in self.listeners:
            if process.poll() is None:
                process.kill()
                process.wait()
        self.listeners.clear()

    def wish(self, line):
        self.controllers.stdin.write(f"{line}\n".encode())
        self.controllers.stdin.flush()


def packets_of(scenario):
    """Its packets in order, each once."""
    packets = []
    for line in scenario.read_text().splitlines():
        packet = json.loads(line).get("packet")
        if packet and packet.upper() not in packets[-1:]:
            packets.append(packet.upper())
    return packets


def trace_of(scenario):
    """What a phone does, in order, without the times."""
    done = subprocess.run([HALVORA, "trace", scenario], capture_output=True, text=True, check=True)
    lines = [json.loads(line) for line in done.stdout.splitlines()]
    for line in lines:
        del line["t"]
        if str(line.get("defaults")).endswith("Date"):
            del line["value"]
    return lines


def show(machine, name, has_monitors):
    """A transmitter's whole show, from one adapter through the air to the other."""
    listener = Listener(machine, name, has_monitors)
    began = time.monotonic()
    sender = start([HALVORA, "transmit", "--adapter", "hci1", "--scenario", SHOW], f"{name}-transmit.err")
    (VM / f"{name}-transmitted.jsonl").write_bytes(sender.stdout.read())
    if sender.wait(LIMIT) != 0:
        raise Failure(f"transmit ended with {sender.returncode}: {(VM / f'{name}-transmit.err').read_text()}")
    seconds = time.monotonic() - began
    listener.end()
    expected, heard = packets_of(SHOW), packets_of(listener.record)
    if heard != expected:
        raise Failure(f"{len(heard)} packets in the recording are not the {len(expected)} of the show")
    shown, replayed = trace_of(SHOW), trace_of(listener.record)
    for wanted, done in itertools.zip_longest(shown, replayed):
        if wanted != done:
            raise Failure(f"a phone that hears the recording does {done} for {wanted}")
    return (
        f"{len(expected)} packets in {len(listener.packets)} reports over {seconds:.1f} s; "
        f"the trace of the recording is the show's, {len(shown)} lines"
    )


def repeats(machine, name, has_monitors):
    """A look that stays, from a transmitter that the controller reports once a scan."""
    machine.wish("show 100")
    listener = Listener(machine, name, has_monitors)
    first = listener.wait_for_packet()
    listener.wait_for_packet(since=first + REPEATS_SECONDS)
    listener.end()
    times = [at for at, line in listener.lines.all if "broadcastKey" in line]
    longest = max(later - earlier for earlier, later in zip(times, times[1:]))
    places = [line["insideVenue"] for line in trace_of(listener.record) if "insideVenue" in line]
    # The last one is when the recording has ended.
    text = f"{len(times)} packets in {REPEATS_SECONDS} s, {longest:.2f} s between two at most"
    if places != [True, False]:
        raise Failure(f"{text}; the venue was left {places.count(False) - 1} times")
    return f"{text}; the venue was never left"


def resumption(machine, name, has_monitors):
    """Power and daemon go and come back; how soon after that a packet is heard."""
    # Else the kit would go on with the other adapter.
    set_power("hci1", False)
    machine.wish("show 100")
    listener = Listener(machine, name, has_monitors)
    listener.wait_for_packet()
    times = []

    def resumed(what, since, limit=RESUMED_WITHIN):
        try:
            heard = listener.wait_for_packet(limit, since=since)
        except Failure as failure:
            raise Failure(f"after {what} ({', '.join(times)}): {failure}") from None
        times.append(f"{what} {heard - since:.2f} s")

    for _ in range(2):
        set_power("hci0", False)
        machine.bus.wait(lambda: not flag("hci0", "Powered"), "end of power")
        set_power("hci0", True)
        resumed("power", time.monotonic())
    machine.daemon.stop()
    machine.daemon.start()
    resumed("daemon stopped and started", machine.bus.daemon_came())
    for _ in range(2):
        machine.daemon.kill()
        machine.daemon.start()
        resumed(
            "daemon killed and started",
            machine.bus.daemon_came(),
            RESUMED_WITHIN + (0 if has_monitors else LEFT_OVER),
        )
    listener.end()
    return "heard again after " + ", ".join(times)


def fallback(machine, name, has_monitors):
    """Two adapters have power, and the first one's controller is out of order."""
    machine.wish("refuse 1")
    machine.wish("show 100")
    began = time.monotonic()
    listener = Listener(machine, name, has_monitors, "hci1")
    heard = listener.wait_for_packet()
    listener.wait_for_packet(since=heard + FALLBACK_SECONDS)
    listener.end()
    lines = [json.loads(line) for _, line in listener.lines.all]
    adapters = [line["adapter"] for line in lines if "adapter" in line]
    if adapters != ["hci1"]:
        raise Failure(f"listen says that it scans on {', '.join(adapters) or 'none'}")
    return (
        f"heard on {adapters[0]} {heard - began:.2f} s after the start of listen; "
        f"{len(listener.packets)} packets in {FALLBACK_SECONDS} s"
    )


def told_of_the_crowd(lines):
    """How many messages of each kind the daemon sent, until the first of who came after the crowd."""
    counts = {"InterfacesAdded": 0, "PropertiesChanged": 0, "DeviceFound": 0}
    for _, line in lines:
        path, _, member = line.split("\t")[-3:]
        if path.endswith("dev_C0_00_00_00_00_00"):
            break
        if member == "InterfacesAdded" and counts[member] == TRANSMITTERS:
            break
        if member in counts and (member != "PropertiesChanged" or "/dev_" in path):
            counts[member] += 1
    return counts


def crowd(machine, name, has_monitors):
    """8 transmitters among 20,000 other devices, for a minute."""
    listener = Listener(machine, name, has_monitors)
    machine.bus.forget()
    processes = [listener.process, machine.daemon.process]
    before = [processor_seconds(process) for process in processes]
    machine.wish(f"crowd {CROWD_SECONDS}")
    told = machine.air.wait(lambda line: line.startswith("crowd "), "crowd", CROWD_SECONDS + LIMIT)
    # What comes last on the same way says that everything before it has come.
    machine.wish("show 100")
    listener.wait_for_packet(is_it=lambda packet: packet["transmitter"] == 0)
    own, daemon = (processor_seconds(process) - first for process, first in zip(processes, before))
    listener.end()
    shows, foreign = (int(word) for word in told[1].split()[1:])
    heard = [packet for packet in listener.packets if packet["transmitter"] != 0]
    different = {(packet["transmitter"], packet["sequence"]) for packet in heard}
    counts = told_of_the_crowd(machine.bus.lines.all)
    messages = sum(counts.values())
    text = (
        f"{shows} packets and {foreign} foreign reports in the air; the daemon reported "
        f"{counts['DeviceFound']}, {counts['InterfacesAdded'] + counts['PropertiesChanged']} of them "
        f"with new data; heard {len(heard)}, {len(different)} of them different; "
        f"{own:.2f} s of processor time to hear and print {messages} messages, "
        f"{own * 1e6 / max(messages, 1):.0f} µs each; the daemon {daemon * 100 / CROWD_SECONDS:.0f} % of a core"
    )
    is_whole = len(heard) == counts["DeviceFound"]
    is_new = len(different) == counts["InterfacesAdded"] + counts["PropertiesChanged"]
    if not (is_whole and is_new and heard):
        raise Failure(text)
    return text


class Player:
    """`halvora live` on some adapters, told what to do on its standard input."""

    def __init__(self, machine, adapters=("hci0", "hci1"), options=("--journal", JOURNAL)):
        airs = [word for adapter in adapters for word in ("--air", adapter)]
        command = [HALVORA, "live", LIVE_SHOW, *airs, *options, "--control", "-"]
        self.process = subprocess.Popen(
            [str(word) for word in command], stdin=subprocess.PIPE, stderr=subprocess.PIPE
        )
        machine.listeners.append(self.process)
        self.lines = Lines(self.process.stderr)

    def tell(self, command):
        """When it was told."""
        self.process.stdin.write(f"{command}\n".encode())
        self.process.stdin.flush()
        return time.monotonic()

    def wait(self, text, since=0.0, limit=LIMIT):
        return self.lines.wait(lambda line: text in line, f'"{text}" of the player', limit, since)[0]


def live(machine, name, has_monitors):
    """A show on two adapters; one is unplugged and comes back, then the player is killed, and one that
    stands by goes on."""
    machine.wish("plug 2")
    machine.bus.wait(lambda: flag("hci2", "Powered"), "third adapter")
    listener = Listener(machine, name, has_monitors, "hci2", ["--adapter", "hci2"])
    steps = []

    def heard(what, since, is_it, limit=RESUMED_WITHIN):
        at = listener.wait_for_packet(limit, is_it, since)
        steps.append(f"{what} {at - since:.2f} s")
        return at

    player = Player(machine)
    # From then on it has the journal.
    while not Path(f"{JOURNAL}.place").exists() and player.process.poll() is None:
        os.sched_yield()
    standby = Player(machine, options=("--journal", JOURNAL, "--standby"))
    standby.wait("stands by")
    player.tell("go")
    began = player.wait('"playing"')
    for number in (1, 2):
        heard(f"transmitter {number}", began, lambda packet: packet["transmitter"] == number)
    machine.wish("unplug 1")
    unplugged = time.monotonic()
    alarmed = player.wait("hci1 is lost", unplugged) - unplugged
    steps.append(f"alarm {alarmed:.2f} s")
    told = player.tell("go")
    heard("next cue on one adapter", told, lambda packet: packet["green"] == 255)
    machine.wish("plug 1")
    plugged = time.monotonic()
    back = player.wait("hci1 is back", plugged)
    steps.append(f"back {back - plugged:.2f} s after it was plugged in")
    heard(
        "its next packet",
        back,
        lambda packet: packet["transmitter"] == 2 and packet["green"] == 255,
    )
    last = max(json.loads(line).get("sequence", 0) for _, line in listener.lines.all)
    player.process.kill()
    killed = time.monotonic()
    player.process.wait()
    player = standby
    heard(
        "the same look after kill -9",
        killed,
        lambda packet: packet["green"] == 255 and packet["sequence"] > last,
    )
    told = player.tell("go")
    heard("next cue of who stood by", told, lambda packet: packet["blue"] == 255)
    told = player.tell("panic")
    heard("black after panic", told, lambda packet: packet["mode"] == 1 and packet["master"] == 0)
    heard("end after panic", told, lambda packet: packet["mode"] == 0)
    player.tell("quit")
    if player.process.wait(LIMIT) != 0:
        raise Failure(f"the player ended with {player.process.returncode}")
    listener.end()
    return judge(listener, steps, alarmed, last)


def judge(listener, steps, alarmed, last):
    """Of what the receiving kit has heard."""
    times = [at for at, line in listener.lines.all if "broadcastKey" in line]
    gap = max(later - earlier for earlier, later in zip(times, times[1:]))
    # What the dead player sent may be heard a moment longer than the first packet of the next one.
    numbers = [packet["sequence"] for packet in listener.packets]
    below = [number for number in numbers if number <= last]
    above = [number for number in numbers if number > last]
    trace = trace_of(listener.record)
    places = [line["insideVenue"] for line in trace if "insideVenue" in line]
    lights = [line["light"] for line in trace if "light" in line]
    text = (
        f"{', '.join(steps)}; {len(times)} packets, {gap:.2f} s between two at most; "
        f"numbers up to {last}, after the death from {min(above, default=0)}"
    )
    seen = [colour for colour in ([1, 0, 0, 1], [0, 1, 0, 1], [0, 0, 1, 1]) if colour in lights]
    if gap > 1 or alarmed > 1 or not above or below + above != sorted(numbers):
        raise Failure(text)
    if places != [True, False] or len(seen) != 3:
        raise Failure(f"{text}; the kit's trace has the places {places} and the lights {lights}")
    return f"{text}; the kit's trace has each cue, and leaves the venue at the end alone"


def key_file(name, digits):
    path = Path("/tmp") / name
    path.write_text(digits * 16)
    path.chmod(0o600)
    return path


def encoded(fields):
    words = [word for key, value in fields.items() for word in (f"--{key}", str(value))]
    command = [str(HALVORA), "packet", "encode", *words]
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout.strip()


class Rogue:
    """A white look with the torch under the show's own name, from an adapter of its own."""

    FIELDS = {"applicationId": 4242, "venueId": 7, "mode": 1, "master": 255, "red": 255, "green": 255}
    FIELDS |= {"blue": 255, "ledMode": 1, "transmitter": 1}
    STEPS = 50

    def __init__(self, machine, options):
        self.log = "rogue.err"
        command = [HALVORA, "transmit", "--adapter", "hci1", *options]
        self.process = start(command, self.log)
        machine.listeners.append(self.process)
        Lines(self.process.stdout).wait(lambda line: "sequence" in line, "packet of the rogue")

    @classmethod
    def looks(cls, sequence, step):
        """Its look under numbers so far apart, from one on."""
        first = encoded(cls.FIELDS)
        numbers = (f"{sequence + step * at:04X}" for at in range(cls.STEPS))
        return cls.scenario([first[:46] + number + first[50:] for number in numbers])

    @classmethod
    def scenario(cls, packets):
        """Those packets, a tenth of a second apart."""
        path = VM / "rogue.jsonl"
        lines = [{"at": round(at / 10, 1), "packet": packet} for at, packet in enumerate(packets)]
        path.write_text("".join(f"{json.dumps(line)}\n" for line in lines))
        return ["--scenario", path]

    def end(self):
        """After what it had to send."""
        if self.process.wait(LIMIT) != 0:
            raise Failure(f"the rogue ended with {self.process.returncode}: {(VM / self.log).read_text()}")


WHITE, CUES = [1, 1, 1, 1], ([1, 0, 0, 1], [0, 1, 0, 1], [0, 0, 1, 1])
COLOURS = ("red", "green", "blue")
SETTLED_SECONDS = 4
BACK_WITHIN = 4.5
# Of a show that is heard often, and of one that is heard once a scan: some five packets of it.
SEEN_AT_MOST = {True: 2, False: 6}


def attacked(machine, name, options, attacks):
    """The show's three cues by one adapter, an attack by another after each; the third one listens."""
    # What is signed is for its minute, and a trace's days begin then.
    time.clock_settime(time.CLOCK_REALTIME, NOON)
    machine.wish("plug 2")
    machine.bus.wait(lambda: flag("hci2", "Powered"), "third adapter")
    listener = Listener(machine, name, name.endswith("monitor"), "hci2", ["--adapter", "hci2"])
    player = Player(machine, ["hci0"], ["--no-journal", *options])
    turns = []
    for cue, attack in zip(COLOURS, attacks):
        told = player.tell("go")
        heard = listener.wait_for_packet(LIMIT, lambda packet: is_cue(packet, cue), told)
        turns.append(heard)
        listener.wait_for_packet(since=heard + SETTLED_SECONDS)
        if attack is None:
            continue
        packets = [json.loads(line) for _, line in listener.lines.all if '"sequence"' in line]
        Rogue(machine, attack(packets)).end()
        # A phone that held its look has it again before the next cue.
        listener.wait_for_packet(since=time.monotonic() + BACK_WITHIN)
    player.tell("quit")
    if player.process.wait(LIMIT) != 0:
        raise Failure(f"the player ended with {player.process.returncode}")
    listener.end()
    return listener


def is_cue(packet, colour):
    return packet["master"] == 255 and [name for name in COLOURS if packet[name] == 255] == [colour]


def seen_by(listener, *policy):
    """What a phone that hears the recording shows: its colours one after the other, for how long it
    is white at most and with the torch, and why packets were not obeyed."""
    command = [HALVORA, "trace", listener.record, *policy]
    done = subprocess.run([str(word) for word in command], capture_output=True, text=True, check=True)
    colours, white, torches, fates, since = [], 0.0, 0, set(), None
    for line in map(json.loads, done.stdout.splitlines()):
        if "light" in line and line["light"] != (colours[-1] if colours else None):
            colours.append(line["light"])
            white = max(white, (line["t"] - since) / 1000 if since is not None else 0)
            since = line["t"] if line["light"] == WHITE else None
        torches += line.get("torch") is True
        fates |= {line["fate"]} if "fate" in line else set()
    return colours, white, torches, fates


def has_in_order(colours, wanted):
    rest = iter(colours)
    return all(colour in rest for colour in wanted)


def far(packets):
    """One number, far ahead, for five seconds."""
    return Rogue.looks(40000, 0)


def ahead(packets):
    """Always a little ahead of the show, for five seconds."""
    return Rogue.looks(packets[-1]["sequence"] + 2, 1)


def near(packets):
    """One number a little ahead of the show, for five seconds."""
    return Rogue.looks(packets[-1]["sequence"] + 2, 0)


def check_attack(listener):
    """Whoever believes everything shows the rogue's look: else nobody has attacked."""
    colours, _, torches, _ = seen_by(listener)
    if WHITE not in colours or torches == 0:
        raise Failure(f"no attack: a phone that believes everything shows {colours}")


def rogue_guarded(machine, name, has_monitors):
    """A rogue beside the show, first far ahead of it, then a little; phones in guarded air."""
    # Under discovery the controllers report who says something new, and the others once a scan: beside
    # a rogue that changes its packet all the time a show that stands is not heard at all.
    listener = attacked(machine, name, [], [far, ahead if has_monitors else near, None])
    check_attack(listener)
    colours, white, torches, fates = seen_by(listener, "--air", "guarded")
    text = (
        f"{len(listener.packets)} packets heard; the rogue's look is shown for {white:.2f} s at a stretch at "
        f"most, its torch lit {torches} times; not obeyed: {', '.join(sorted(fates))}"
    )
    # Of who is far ahead nothing is seen, of who is near not for long.
    is_held = has_in_order(colours, CUES) and WHITE not in colours[: colours.index(CUES[1])]
    if not is_held or white > SEEN_AT_MOST[has_monitors]:
        raise Failure(f"{text}; the colours are {colours}")
    return f"{text}; each cue is shown"


def rogue_signed(machine, name, has_monitors):
    """A rogue beside a signed show: far ahead without a tag, then with tags of another key, then what
    it recorded of the first cue."""
    key, other = key_file("show.key", "5a"), key_file("other.key", "a5")

    def forged(packets):
        return [*ahead(packets), "--show-key", other]

    def replayed(packets):
        red = recorded(next(packet for packet in packets if is_cue(packet, "red")))
        return Rogue.scenario([red] * Rogue.STEPS)

    listener = attacked(machine, name, ["--show-key", key], [far, forged, replayed])
    check_attack(listener)
    colours, white, torches, fates = seen_by(
        listener, "--air", "guarded", "--show-key", key, "--authentication", "require"
    )
    text = (
        f"{len(listener.packets)} packets heard; the rogue's look is never shown, its torch never lit; "
        f"not obeyed: {', '.join(sorted(fates))}"
    )
    shown = [colour for colour in colours if colour in (*CUES, WHITE)]
    if shown != list(CUES) or white > 0 or torches > 0 or not {"untagged", "bad tag", "replayed"} <= fates:
        raise Failure(f"{len(listener.packets)} packets, not obeyed: {fates}; the colours are {colours}")
    return f"{text}; each cue is shown, and nothing else"


# In the order of the bytes, as `packet encode` names them.
TRANSMITTED = """applicationId syncFlag venueId pixelMapId master red green blue mode speed ledMode
    ledSpeed videoId minutes seconds hundredths videoStatus gobo vibrate paletteId sequence
    transmitter""".split()


def recorded(packet):
    """A signed packet as it was on the air."""
    plain = encoded({key: packet[key] for key in TRANSMITTED})
    return plain[:-2] + packet["tag"] + plain[-2:]


def first_heard(listener, since):
    """When each packet was heard first since then, by its number."""
    found = {}
    for at, line in listener.lines.all:
        if at >= since and '"sequence"' in line:
            found.setdefault(json.loads(line)["sequence"], at)
    return found


def qt_radio(machine, name, has_monitors):
    """The radio through Qt on the first adapter and the kit's own on the third hear one show; then a
    transmitter that never changes its address; then power goes and comes back."""
    if not QT_LISTENER.exists():
        raise LeftOut("the radio through Qt is not built")
    machine.wish("plug 2")
    machine.bus.wait(lambda: flag("hci2", "Powered"), "third adapter")
    qt = QtListener(machine, name)
    kit = Listener(machine, f"{name}-listen", has_monitors, "hci2", ["--adapter", "hci2"])
    began = time.monotonic()
    sender = start([HALVORA, "transmit", "--adapter", "hci1", "--scenario", SHOW], f"{name}-transmit.err")
    machine.listeners.append(sender)
    sender.stdout.read()
    if sender.wait(LIMIT) != 0:
        raise Failure(f"transmit ended with {sender.returncode}")
    by_kit, by_qt = first_heard(kit, began), first_heard(qt, began)
    delays = sorted(1000 * (by_qt[number] - by_kit[number]) for number in by_qt.keys() & by_kit.keys())
    told = [f"of a show {len(by_qt)} packets to the kit's own {len(by_kit)}"]
    if not by_kit or by_qt.keys() != by_kit.keys():
        raise Failure(f"{told[0]}, numbers {sorted(by_qt)} and {sorted(by_kit)}")
    told[0] += f", heard {delays[0]:.0f} to {delays[-1]:.0f} ms later, {delays[len(delays) // 2]:.0f} in the middle"

    machine.wish("show 100")
    began = kit.wait_for_packet(since=time.monotonic())
    kit.wait_for_packet(since=began + QT_SECONDS)
    told.append(
        f"of 10 packets a second with one address {len(first_heard(qt, began))} in {QT_SECONDS} s "
        f"to {len(first_heard(kit, began))}"
    )
    kit.end()
    set_power("hci0", False)
    machine.bus.wait(lambda: not flag("hci0", "Powered"), "end of power")
    set_power("hci0", True)
    began = time.monotonic()
    told.append(f"heard again {qt.wait_for_packet(since=began) - began:.2f} s after power")
    qt.end()
    return "; ".join(told)


def most_of(picture):
    """The colour that most of a picture has, and how much of it."""
    command = ["convert", picture, "-depth", "8", "-format", "%c", "histogram:info:-"]
    text = subprocess.run(command, capture_output=True, text=True, check=True).stdout
    counts = re.findall(r"^ *(\d+): \( *(\d+), *(\d+), *(\d+)", text, re.MULTILINE)
    most = max(counts, key=lambda row: int(row[0]))
    share = int(most[0]) / sum(int(row[0]) for row in counts)
    return tuple(int(level) for level in most[1:]), share


def demo(machine, name, has_monitors):
    """The demo shows the colour of a packet from the air."""
    if not DEMO.exists():
        raise LeftOut("the demo is not built")
    picture = VM / f"{name}.png"
    surroundings = os.environ | {"QT_QPA_PLATFORM": "offscreen", "QT_QUICK_BACKEND": "software"}
    command = [DEMO, "--radio", "system", "--assets", VM / "demo", "--screenshot", picture]
    phone = start(command, f"{name}.err", env=surroundings)
    machine.listeners.append(phone)
    machine.wait_for_scan(has_monitors)
    colour = (10, 200, 30)
    fields = {"applicationId": 4242, "mode": 1, "master": 255, "transmitter": 1}
    fields |= dict(zip(["red", "green", "blue"], colour))
    words = [word for key, value in fields.items() for word in (f"--{key}", value)]
    sender = start([HALVORA, "transmit", "--adapter", "hci1", *words], f"{name}-transmit.err")
    machine.listeners.append(sender)
    if phone.wait(LIMIT) != 0:
        raise Failure(f"the demo ended with {phone.returncode}")
    sender.send_signal(signal.SIGINT)
    if sender.wait(LIMIT) != 0:
        raise Failure(f"transmit ended with {sender.returncode}")
    if bus_get("hci1", "org.bluez.LEAdvertisingManager1", "ActiveInstances") != "byte 0":
        raise Failure("the advertisement is still there after Ctrl-C")
    seen, share = most_of(picture)
    if seen != colour or share < 0.5:
        raise Failure(f"the demo shows {seen} on {share:.0%} of its window, not {colour}")
    return f"{share:.0%} of its window is {seen}, as the packet says; off the air after Ctrl-C"


# Name, what it runs, and whether under the daemon's monitors.
SCENARIOS = [
    ("show-discovery", show, False),
    ("show-monitor", show, True),
    ("repeats-discovery", repeats, False),
    ("resumption-discovery", resumption, False),
    ("fallback-discovery", fallback, False),
    ("qtbluetooth-discovery", qt_radio, False),
    ("live-discovery", live, False),
    ("rogue-guarded-discovery", rogue_guarded, False),
    ("rogue-signed-discovery", rogue_signed, False),
    ("resumption-monitor", resumption, True),
    ("live-monitor", live, True),
    ("rogue-guarded-monitor", rogue_guarded, True),
    ("rogue-signed-monitor", rogue_signed, True),
    ("demo-monitor", demo, True),
    ("crowd-monitor", crowd, True),
]


def run_all(only):
    machine = Machine()
    failures = 0
    for has_monitors in (False, True):
        chosen = [row for row in SCENARIOS if row[2] == has_monitors and (not only or row[0] in only)]
        if not chosen:
            continue
        try:
            machine.daemon = Daemon(machine.bus, has_monitors)
        except Failure as failure:
            raise NoController from failure
        say(f"note bluetoothd {'with' if has_monitors else 'without'} monitors")
        for name, scenario, _ in chosen:
            began = time.monotonic()
            machine.bus.forget()
            try:
                text = f"ok {name}: {scenario(machine, name, has_monitors)}"
            except LeftOut as reason:
                text = f"note {name} left out: {reason}"
            except Failure as failure:
                failures += 1
                text = f"FAILED {name}: {failure}"
            machine.calm()
            machine.bus.write(VM / f"{name}.bus")
            say(f"{text} [{time.monotonic() - began:.1f} s]")
        machine.daemon.kill()
        machine.bus.wait(lambda: bus_call("/", PROPERTIES, "GetAll") is None, "end of the daemon")
    return failures


def main():
    only = [name for name in (VM / "only").read_text().split(",") if name]
    try:
        status = 1 if run_all(only) else 0
    except NoController as failure:
        say(f"note no controllers: {failure.__cause__}")
        status = RETRY_STATUS
    except Exception as failure:
        say(f"FAILED {type(failure).__name__}: {failure}")
        status = 1
    say(f"end {status}")


if __name__ == "__main__":
    main()
