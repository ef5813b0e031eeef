#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Fails on an include, or a call, that does not keep to the layers.

check_layers.py [ROOT]       checks the tree
check_layers.py --self-test  plants every kind of fault in a small tree and expects each to be found
"""

import re
import sys
import tempfile
from pathlib import Path

# Folder: what it may include besides itself. A file belongs to the longest folder that matches;
# "platform" is only the headers directly in it. A file name stands for that one header.
ENGINE_FACE = "engine/halvora_view_controller.h"
HOST_ROOMS = ["platform", "light", "usage", "pixelmap", "engine", "seats"]
ADAPTERS = ["standard", "virtual", "json", "image", "linux", "ffmpeg", "qt"]
ALL = [*HOST_ROOMS, "host", *(f"platform/{name}" for name in ADAPTERS)]
MAY_INCLUDE = {
    "platform": [],
    "light": ["platform"],
    "usage": ["platform"],
    "pixelmap": ["platform", "light"],
    "engine": ["platform", "light", "usage", "pixelmap"],
    "seats": ["platform", ENGINE_FACE],
    "host": HOST_ROOMS,
    "platform/standard": ["platform"],
    "platform/json": ["platform"],
    "platform/image": ["platform"],
    "platform/linux": ["platform", "platform/standard"],
    "platform/ffmpeg": ["platform"],
    "platform/virtual": ["platform", "platform/standard"],
    "platform/qt": [
        "platform",
        "platform/standard",
        "platform/json",
        "platform/image",
        "platform/ffmpeg",
        "platform/linux",
        "light",
        "seats",
        "host",
        ENGINE_FACE,
    ],
    "tools": ALL,
    "apps": [*ALL, "tools"],
    "tests": [*ALL, "tools", "apps"],
    "bench": [*ALL, "tools"],
}
CORE = [*HOST_ROOMS, "host"]
STANDARD_ONLY = [*CORE, "platform/standard", "platform/virtual"]

STANDARD_HEADERS = set(
    """
    algorithm any array atomic barrier bit bitset charconv chrono compare complex concepts
    condition_variable coroutine deque exception execution filesystem format forward_list fstream
    functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits
    list locale map memory memory_resource mutex new numbers numeric optional ostream queue random
    ranges ratio regex scoped_allocator semaphore set shared_mutex source_location span sstream
    stack stdexcept stop_token streambuf string string_view strstream syncstream system_error
    thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray
    variant vector version
    cassert cctype cerrno cfenv cfloat cinttypes climits clocale cmath csetjmp csignal cstdarg
    cstddef cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype
    """.split()
)

# What must not be called: a pattern, the folders where it is banned, and why.
CLOCK_READERS = ["platform/standard", "platform/qt", "platform/linux", "platform/ffmpeg", "bench"]
BANNED = [
    (
        re.compile(r"\b(steady|system|high_resolution|utc|tai|gps|file)_clock\b"),
        [folder for folder in MAY_INCLUDE if folder not in CLOCK_READERS],
        "only adapters read a clock",
    ),
    (
        re.compile(r"\bstd::(thread|jthread|async)\b"),
        CORE,
        "background work goes through the serial queues",
    ),
    (
        re.compile(r"\bsleep_(for|until)\b|\bu?sleep\("),
        [*CORE, "platform/virtual", "tools", "tests"],
        "nothing sleeps",
    ),
]

INCLUDE = re.compile(r'^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)')
COMMENT = re.compile(r'//[^\n]*|/\*.*?\*/|("(?:\\.|[^"\\\n])*")', re.DOTALL)
GENERATED = re.compile(r"(^|/)(moc_\w+\.cpp|\w+\.moc)$")


def folder_of(path):
    """The folder of the table that a path from the root belongs to, or None."""
    parts = path.split("/")[:-1]
    if len(parts) > 1 and "/".join(parts[:2]) in MAY_INCLUDE:
        return "/".join(parts[:2])
    if not parts or parts[0] not in MAY_INCLUDE:
        return None
    # A folder inside platform/ that has no row is unknown: it is not part of "platform".
    return None if parts[0] == "platform" and len(parts) > 1 else parts[0]


def without_comments(text):
    def keep(match):
        return match.group(1) or "\n" * match.group(0).count("\n")

    return COMMENT.sub(keep, text)


def complaint_about_quoted(source, folder, target):
    if GENERATED.search(target):
        return None
    target_folder = folder_of(target)
    if target_folder is None:
        return "quoted includes are written from the root, into a known folder"
    if target_folder == folder:
        return None
    if any(allowed in (target_folder, target) for allowed in MAY_INCLUDE[folder]):
        return None
    return f"{folder} may not include {target_folder}"


def complaints(root):
    """Yields (path, line number, text) for every fault below the root."""
    for file in sorted(root.rglob("*")):
        path = file.relative_to(root).as_posix()
        folder = folder_of(path)
        if file.suffix not in (".h", ".cpp"):
            continue
        if folder is None:
            if path.split("/")[0] == "platform":
                yield path, 1, "a folder of platform/ without a row in the table of layers"
            continue
        lines = without_comments(file.read_text(encoding="utf-8")).split("\n")
        for number, line in enumerate(lines, 1):
            if include := INCLUDE.match(line):
                quoted, angled = include.groups()
                if quoted:
                    if text := complaint_about_quoted(path, folder, quoted):
                        yield path, number, f'"{quoted}": {text}'
                elif folder in STANDARD_ONLY and angled not in STANDARD_HEADERS:
                    yield path, number, f"<{angled}>: {folder} uses the standard library only"
                continue
            for pattern, folders, text in BANNED:
                if folder in folders and (call := pattern.search(line)):
                    yield path, number, f"{call.group(0)}: {text}"


def check(root):
    found = list(complaints(root))
    for path, number, text in found:
        print(f"{path}:{number}: {text}", file=sys.stderr)
    return not found


GOOD = {
    "platform/run_loop.h": '#include <vector>\n#include "platform/task.h"\n',
    "platform/standard/queues.cpp": "#include <thread>\nauto t = std::chrono::steady_clock::now();\n",
    "platform/virtual/phone.h": '#include "platform/standard/random.h"\n',
    "platform/json/reader.cpp": "#include <rapidjson/reader.h>\n",
    "platform/qt/face.cpp": '#include <QQuickItem>\n#include "host/views.h"\n#include "face.moc"\n',
    "platform/qt/platform.cpp": '#include "platform/json/reader.h"\n',
    "platform/qt/services.cpp": '#include "platform/linux/services/torch.h"\n',
    "light/layer.cpp": '#include "light/layer.h"\n// #include "engine/scanner.h"\n',
    "engine/halvora_view_controller.h": '#include "pixelmap/assets.h"\n',
    "seats/wizard.cpp": '#include "engine/halvora_view_controller.h"\n',
    "tools/halvora/main.cpp": '#include <CLI/CLI.hpp>\n#include "tools/halvora/trace.h"\n',
    "tests/qt/console_test.cpp": '#include "apps/demo/show_console.h"\n',
    "tests/clock_test.cpp": '#include "platform/standard/system_clock.h"\n',
    "tests/tools/trace_test.cpp": '#include "tools/halvora/trace.h"\n#include "tests/show.h"\n',
}

BAD = {
    "platform/a.h": [
        '#include "light/colour.h"',
        '#include "platform/standard/random.h"',
        '#include "a.h"',
        "#include <QString>",
    ],
    "platform/unknown/a.h": [""],
    "platform/standard/a.cpp": ['#include "engine/scanner.h"', "#include <pthread.h>"],
    "platform/virtual/a.cpp": ['#include "platform/json/reader.h"', "auto t = steady_clock::now();"],
    "platform/json/a.cpp": ['#include "platform/standard/random.h"'],
    "platform/qt/a.cpp": [
        '#include "engine/scanner.h"',
        '#include "pixelmap/assets.h"',
        '#include "platform/virtual/phone.h"',
    ],
    "light/a.cpp": [
        '#include "pixelmap/assets.h"',
        '  #  include "engine/scanner.h"',
        "#include <rapidjson/document.h>",
        "#include <systemd/sd-bus.h>",
        "auto t = std::chrono::system_clock::now();",
        "std::thread worker;",
    ],
    "usage/a.cpp": ['#include "light/colour.h"', "std::this_thread::sleep_for(1s);"],
    "pixelmap/a.h": ['#include "engine/scanner.h"', "#include <libavcodec/avcodec.h>"],
    "engine/a.cpp": ['#include "seats/wizard.h"', '#include "host/views.h"', "#include <CLI/CLI.hpp>"],
    "seats/a.cpp": ['#include "engine/scanner.h"', '#include "light/colour.h"'],
    "host/a.cpp": ['#include "platform/qt/face.h"', "#include <QObject>"],
    "tools/a.cpp": ['#include "apps/demo/show.h"', '#include "tests/show.h"'],
    "tests/a_test.cpp": ['#include "bench/crowd.h"', "sleep(1);"],
    "bench/a.cpp": ['#include "tests/show.h"'],
    "apps/demo/a.cpp": ['#include "tests/show.h"', '#include "../../engine/scanner.h"'],
}


def self_test():
    with tempfile.TemporaryDirectory() as folder:
        root = Path(folder)

        def found_in(path, text):
            file = root / path
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text, encoding="utf-8")
            found = [complaint[2] for complaint in complaints(root)]
            file.unlink()
            return found

        failures = [
            f"{path}: unexpected: {found_in(path, text)}"
            for path, text in GOOD.items()
            if found_in(path, text)
        ]
        failures += [
            f"{path}: not found: {line}"
            for path, lines in BAD.items()
            for line in lines
            if len(found_in(path, f"// first line\n{line}\n")) != 1
        ]
    print("\n".join(failures), file=sys.stderr, end="\n" if failures else "")
    planted = sum(len(lines) for lines in BAD.values())
    if not failures:
        print(f"self-test: {planted} planted faults found")
    return not failures


def main(arguments):
    if arguments == ["--self-test"]:
        return self_test()
    root = Path(arguments[0]) if arguments else Path(__file__).resolve().parent.parent
    return check(root)


if __name__ == "__main__":
    sys.exit(0 if main(sys.argv[1:]) else 1)
