#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""How delayed proof stands loss in the crowd of the demo venue, as two tables.

delayed_proof_table.py [--tool FILE] [--phones N]

Plays the example show for 75 s, its keys disclosed in place of repeats, to phones that are opened
at any time of the first 40 s, and prints lines of Markdown: how long after its first look a phone
is proven, for how much of the time it then is, and when looks arrive with and without keys; then
what becomes of a forger's looks that come between with made-up tags from second 30 on.
"""

import argparse
import json
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
DEMO = ROOT / "assets" / "demo"
LOSSES = [0, 0.1, 0.3, 0.5]


def report(options, folder, loss, *more):
    arguments = [
        options.tool, "crowd", "--no-progress", "--assets", DEMO, "--venue", "7", "--scenario",
        DEMO / "example-show.jsonl", "--out", f"{folder}/sheet.png", "--size", "320x240",
        "--fps", "10", "--until", "75", "--phones", options.phones, "--late", "1,40",
        "--loss", loss, *more,
    ]  # fmt: skip
    done = subprocess.run([str(word) for word in arguments], capture_output=True, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"{' '.join(map(str, arguments))}: {done.stderr.strip()}")
    return json.loads(done.stdout)


def seconds(milliseconds):
    return "never" if milliseconds is None else f"{milliseconds / 1000:.1f} s"


def print_proof(options, folder):
    print("| loss | proven after, half of the phones | 95 % | 99 % | never | share of the time since "
          "| looks on 95 % of the phones after, with keys | without |")  # fmt: skip
    print("|" + "---|" * 8)
    for loss in LOSSES:
        plain = report(options, folder, loss)["looks"]
        whole = report(options, folder, loss, "--delayed-proof")
        proof, looks = whole["proof"], whole["looks"]
        if proof["forged"] != 0:
            sys.exit(f"{proof['forged']} true packets were taken for forged ones")
        delay = proof["delay"]
        cells = [
            f"{loss:.0%}", *(seconds(delay[share]) for share in ("50", "95", "99")),
            f"{delay['never']} of {proof['phones']}", f"{proof['shareSinceFirst']:.1%}",
            *(f"{one['shownBy95']['median']} ms" for one in (looks, plain)),
        ]  # fmt: skip
        print("| " + " | ".join(cells) + " |", flush=True)


def print_forgers(options, folder):
    print("\n| attack | policy | loss | strangers' looks | of that with full light | at most at a "
          "stretch | taken for proven | true looks with full light |")  # fmt: skip
    print("|" + "---|" * 8)
    for kind in ("far-stream", "bad-tags"):
        for policy in ("exact", "guarded"):
            for loss in LOSSES:
                proof = report(options, folder, loss, "--delayed-proof", "--policy", policy,
                               "--rogue", f"{kind}@30")["proof"]  # fmt: skip
                cells = [
                    kind, policy, f"{loss:.0%}", f"{proof['strangeSeconds']:.1f} s each",
                    f"{proof['strangeFullSeconds']:.1f} s each",
                    f"{proof['longestStrangeFull']:.1f} s", str(proof["strangeProven"]),
                    f"{proof['shareSinceFirst']:.1%}",
                ]  # fmt: skip
                print("| " + " | ".join(cells) + " |", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--tool", default=str(ROOT / "build" / "release" / "bin" / "halvora"))
    parser.add_argument("--phones", default="200")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        print_proof(options, folder)
        print_forgers(options, folder)


if __name__ == "__main__":
    main()
