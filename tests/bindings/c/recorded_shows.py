#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Plays the tests' scenarios through the C interface, from Python, and compares what the phone does
with the traces that are known of the engine in C++.

recorded_shows.py LIBRARY SOURCE_FOLDER
"""

import json
import sys
from pathlib import Path

LIBRARY, ROOT = Path(sys.argv[1]), Path(sys.argv[2])
sys.path.insert(0, str(ROOT / "examples/python-phone"))
from phone import Phone, c_int64, moments  # noqa: E402

TRACES = ROOT / "tests/venue/traces"
ASSETS = ROOT / "tests/venue/assets"
# What a phone of this kind reports, and the kinds of lines that such a host can act out.
COMPARED = ("torch", "brightness", "haptic", "callback", "idleTimerDisabled", "statusBarHidden")
ACTED = {"start", "packet", "app", "defaults", "device"}
FEWEST = 20


def options_of(scenario):
    words = scenario.with_suffix(".options")
    words = words.read_text(encoding="utf-8").split() if words.exists() else []
    return dict(zip(words[::2], words[1::2]))


def can_act(actions, options):
    """Neither other chances than a seed, nor what the host's radio or the engine's caller does."""
    seed = options.get("--random", "1")
    kinds = set().union(*(action.keys() for action in actions)) - {"at", "every", "until"}
    devices = [action["device"] for action in actions if "device" in action]
    plain = all(device.keys() <= {"brightness", "torch", "width", "height"} for device in devices)
    known = options.keys() <= {"--until", "--assets", "--random"}
    early = [action for action in actions if "defaults" in action and action["at"] == 0]
    return seed.isdigit() and kinds <= ACTED and plain and known and not early


def expected_of(scenario):
    """At each time, in the order of each thing's own changes."""
    found = {}
    text = scenario.with_name(scenario.stem + ".expected.jsonl").read_text(encoding="utf-8")
    for line in map(json.loads, text.splitlines()):
        for key in COMPARED:
            if key in line:
                found.setdefault(key, []).append([line["t"], line[key]])
    return found


def played(scenario, actions, options):
    found, now = {}, [0.0]

    def heard(what, value):
        if what == "event":
            if value > 1:
                return
            what, value = "callback", ("lightShowStarted", "lightShowStopped")[value]
        if what == "brightness":
            value = round(value, 4)
        if what in COMPARED:
            found.setdefault(what, []).append([now[0], value])

    device = next((action["device"] for action in actions if "device" in action), {})
    assets = options.get("--assets", "").replace("ASSETS", str(ASSETS))
    phone = Phone(LIBRARY, heard, brightness=device.get("brightness", 0.5),
                  seed=int(options.get("--random", "1")), has_torch=int(device.get("torch", True)),
                  width=device.get("width", 390), height=device.get("height", 844),
                  assets=assets.encode(), languages=b"en")
    plan = moments(map(json.dumps, actions))
    end = float(options.get("--until", plan[-1][0] + 10 if plan else 10))
    # In steps of a millisecond, so that what happens has the time of its own turn.
    for at, _, action in [*plan, (end, 0, {})]:
        if at > end:
            break
        while now[0] + 1 < at * 1000:
            now[0] += 1
            phone.run_until(now[0] / 1000)
        now[0] = int(at * 1000 + 1e-3)
        phone.call("phone_run_before", phone.handle, c_int64(round(at * 1e6)))
        phone.act(action)
    now[0] = round(end * 1000)
    phone.run_until(end)
    phone.call("phone_free", phone.handle)
    return found


def main():
    tried, failed = 0, []
    for scenario in sorted(TRACES.glob("*.jsonl")):
        if scenario.name.endswith(".expected.jsonl"):
            continue
        # As the command reads packets, with colons between bytes.
        text = scenario.read_text(encoding="utf-8")
        actions = [json.loads(line) for line in text.splitlines()]
        for action in actions:
            if "packet" in action:
                action["packet"] = action["packet"].replace(":", "")
        options = options_of(scenario)
        if not can_act(actions, options):
            continue
        tried += 1
        expected, found = expected_of(scenario), played(scenario, actions, options)
        if found != expected:
            failed.append(scenario.stem)
            for key in COMPARED:
                if expected.get(key) != found.get(key):
                    print(f"{scenario.stem}: {key}\n  in C++ {expected.get(key)}\n"
                          f"  in C   {found.get(key)}", file=sys.stderr)
    print(f"{tried} recorded shows, {len(failed)} of which differ: {' '.join(failed)}")
    return 1 if failed or tried < FEWEST else 0


if __name__ == "__main__":
    sys.exit(main())
