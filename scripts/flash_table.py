#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The most flashes in any second of every screen mode, torch mode and speed, as a table for docs/safety.md.

flash_table.py HALVORA ASSETS   the `halvora` program, and the folder that holds HVAssets with the
                                palettes and gobos; Markdown on standard output

Each look is sent once, to a phone at full brightness, for half a minute and with three different
chances; the worst of them counts. General and red flashes are told apart by a stroke.
"""

import json
import subprocess
import sys
import tempfile
from pathlib import Path

SPEEDS = (255, 192, 128, 64, 0)
SEEDS = ("1", "2", "3")
# Saturated red, the colour that flashes worst; the modes of a palette have their own.
RED = ["--red", "255", "--green", "0", "--blue", "0"]
TITLES = {
    1: "steady", 2: "steady, after a pause", 3: "flash bulb", 4: "shimmer", 5: "strobe", 6: "random strobe",
    7: "toggle", 8: "toggle", 9: "packets a second", 10: "gobo fade", 11: "gobo pulse", 12: "gobo random pulse",
    13: "white sparkle", 14: "white pulse", 15: "palette flash bulb", 16: "colour pulse", 17: "crossfade",
    18: "random crossfade", 19: "palette, random", 20: "palette, in turn", 21: "pixel map",
}
# Of red, green and amber, so that every step between them counts; and a ring of light.
PALETTE = ["--paletteId", "41"]
GOBO = ["--gobo", "1"]
WITH_PALETTE = (3, 4, 5, 6, 13, 14, 15, 16, 17, 18, 19, 20)
WITH_GOBO = (1, 10, 11, 12)
TORCH = {1: "on", 2: "off, after a pause", 3: "on, after a pause", 4: "flash bulb", 5: "strobe",
         6: "random strobe", 7: "toggle", 8: "toggle", 9: "pixel map"}


def figures(halvora, assets, folder, name, fields, policy):
    packet = subprocess.run([halvora, "packet", "encode", "--applicationId", "1", "--sequence", "1", *fields],
                            check=True, capture_output=True, text=True).stdout.strip()
    show = Path(folder) / f"{name}.jsonl"
    show.write_text('{"at": 0, "start": true}\n{"at": 1.5, "packet": "%s"}\n' % packet, encoding="utf-8")
    worst = [0, 0]
    for seed in SEEDS:
        done = subprocess.run([halvora, "safety", str(show), "--assets", assets, "--until", "30", "--seed", seed,
                               "--flash", policy], capture_output=True, text=True)
        if done.returncode > 1 or not done.stdout:
            sys.exit(f"{name}: {done.stderr}")
        phone = json.loads(done.stdout)["phone"]
        worst = [max(worst[0], phone["general"]), max(worst[1], phone["red"])]
    return f"{worst[0]}/{worst[1]}"


def rows(halvora, assets, folder):
    looks = [(f"{mode} {title}", ["--mode", str(mode), "--master", "255", *RED], "--speed")
             for mode, title in TITLES.items()]
    looks += [(f"torch {mode} {title}", ["--mode", "1", "--master", "255", "--ledMode", str(mode)], "--ledSpeed")
              for mode, title in TORCH.items()]
    looks += [(f"{mode} {TITLES[mode]}, palette", ["--mode", str(mode), "--master", "255", *PALETTE], "--speed")
              for mode in WITH_PALETTE]
    looks += [(f"{mode} {TITLES[mode]}, gobo", ["--mode", str(mode), "--master", "255", *RED, *GOBO], "--speed")
              for mode in WITH_GOBO]
    for title, fields, speed_field in looks:
        cells = [figures(halvora, assets, folder, title.replace(" ", "-").replace(",", ""),
                         [*fields, speed_field, str(speed)], policy)
                 for policy in ("exact", "limited") for speed in SPEEDS]
        yield f"| {title} | " + " | ".join(cells) + " |"


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    heads = [f"{policy} {speed}" for policy in ("exact", "limited") for speed in SPEEDS]
    print("| mode, at speed | " + " | ".join(heads) + " |")
    print("|---|" + "---|" * len(heads))
    with tempfile.TemporaryDirectory() as folder:
        for row in rows(sys.argv[1], str(Path(sys.argv[2]).resolve()), folder):
            print(row)


if __name__ == "__main__":
    main()
