#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What attackers take from the crowd of the demo venue: every kind against every policy, as a table.

attack_table.py [--tool FILE] [--phones N] [--loss SHARE]

Runs the command once for each cell, with the example show attacked in its middle, and prints lines
of Markdown: how many of the phones were lost at any time, how long a phone was lost on average, and
how long after the attack's beginning the last of them was back. A phone is lost that shows something
else than the true show did within the last second.
"""

import argparse
import json
import re
import secrets
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
DEMO = ROOT / "assets" / "demo"
# In the middle of a look that stands for some seconds, then others.
AT = 30
UNTIL = 75


def run(tool, arguments):
    done = subprocess.run([tool, *arguments], capture_output=True, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"{' '.join(arguments)}: {done.stderr.strip()}")
    return done.stdout


def kinds(tool):
    """Those that the help lists, with what they do."""
    text = run(tool, ["crowd", "--help"])
    return re.findall(r"^  ([a-z-]+): (.+)$", text.split("Attackers:")[1], re.MULTILINE)


def policies(key):
    return {
        "exact": ["--policy", "exact"],
        "guarded": ["--policy", "guarded"],
        "signed": ["--policy", "guarded", "--show-key", key, "--authentication", "require"],
    }


def scenario_for(kind, folder):
    """The example show; where only a venue-wide transmitter can be attacked, sent by one."""
    show = DEMO / "example-show.jsonl"
    if kind != "silencer":
        return str(show)
    copy = Path(folder) / "venue-wide.jsonl"
    copy.write_text(re.sub(r'("packet": "[0-9A-F]{50})[0-9A-F]{2}"', r'\1FF"', show.read_text()))
    return str(copy)


def cell(tool, kind, policy, options, folder):
    report = json.loads(
        run(tool, [
            "crowd", "--no-progress", "--assets", str(DEMO), "--venue", "7",
            "--scenario", scenario_for(kind, folder), "--out", f"{folder}/sheet.png",
            "--size", "320x240", "--fps", "10", "--until", str(UNTIL), "--rogue", f"{kind}@{AT}",
            "--phones", options.phones, "--loss", options.loss, *policy,
        ])
    )  # fmt: skip
    rogues = report["rogues"]
    back = rogues["allBackAfter"]
    if rogues["phonesLost"] == 0:
        return "0"
    after = "never back" if back is None else f"back after {back / 1000:.1f} s"
    return f"{rogues['phonesLost']} ({rogues['meanSeconds']:.1f} s each, {after})"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--tool", default=str(ROOT / "build" / "release" / "bin" / "halvora"))
    parser.add_argument("--phones", default="200")
    parser.add_argument("--loss", default="0.1")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        key = Path(folder) / "show.key"
        key.touch(mode=0o600)
        key.write_text(secrets.token_hex(16))
        columns = policies(str(key))
        print("| attack | | " + " | ".join(columns) + " |")
        print("|---|---|" + "---|" * len(columns))
        for kind, does in kinds(options.tool):
            cells = [cell(options.tool, kind, policy, options, folder)
                     for policy in columns.values()]  # fmt: skip
            print(f"| {kind} | {does} | " + " | ".join(cells) + " |", flush=True)


if __name__ == "__main__":
    main()
