#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Fails on an include, a call or a name that does not keep to the layers.

check_layers.py [ROOT]       checks the tree
check_layers.py --self-test  plants every kind of fault in a small tree and expects each to be found
"""

import re
import sys
import tempfile
from pathlib import Path

from checker import run_checker, told

# Room: what it may include besides itself. A file belongs to the longest room that matches; one in a
# wing without a room of its own is a fault. The last word of a path may be a header: that one only.
FACE = "include/halvora"
CORE = ["needs", "text", "light", "usage", "pixelmap", "engine", "seats", "host"]
ADAPTERS = [
    f"adapters/{name}"
    for name in ("standard", "json", "image", "ffmpeg", "nettle", "linux", "virtual", "qtbluetooth", "qt",
                 "system")
]
FACES = ["faces/qt", "faces/qt/impl", "bindings/c", "bindings/media"]
VENUE = [f"venue/{name}" for name in ("base", "show", "plan", "crowd", "air", "live")]
APPS = ["apps/halvora", "apps/console"]
BELOW_VENUE = [FACE, *CORE, *ADAPTERS]
BELOW_APPS = [*BELOW_VENUE, *FACES, *VENUE]
MAY_INCLUDE = {
    FACE: [],
    "needs": [FACE],
    "text": [FACE],
    "light": [FACE, "text"],
    "usage": [FACE, "text"],
    "pixelmap": [FACE, "text", "light"],
    "engine": [FACE, "text", "light", "usage", "pixelmap"],
    "seats": [FACE, "text"],
    "host": [FACE],
    "faces/qt": [FACE],
    "faces/qt/impl": [FACE, "faces/qt"],
    "bindings/c": [FACE, "adapters/standard", "adapters/json"],
    "bindings/media": [FACE, "bindings/c", "adapters/image", "adapters/ffmpeg"],
    "conformance": [FACE],
    "adapters/standard": [FACE, "text"],
    "adapters/json": [FACE, "text"],
    "adapters/image": [FACE],
    "adapters/ffmpeg": [FACE, "adapters/standard"],
    "adapters/nettle": [FACE],
    "adapters/linux": [FACE, "adapters/standard"],
    "adapters/virtual": [FACE, "adapters/standard"],
    "adapters/qtbluetooth": [FACE, "adapters/standard"],
    "adapters/qt": [FACE, "faces/qt", "adapters/standard"],
    "adapters/system": [FACE, "faces/qt", *(f"adapters/{name}" for name in
                        ("json", "image", "ffmpeg", "nettle", "linux", "qt"))],
    "venue/base": BELOW_VENUE,
    "venue/show": [*BELOW_VENUE, "venue/base"],
    "venue/plan": [*BELOW_VENUE, "venue/base", "venue/show"],
    "venue/crowd": [*BELOW_VENUE, "venue/base", "venue/show", "venue/plan"],
    "venue/air": [*BELOW_VENUE, "venue/base", "venue/show"],
    "venue/live": [*BELOW_VENUE, "venue/base", "venue/show", "venue/air"],
    "apps/halvora": BELOW_APPS,
    "apps/console": BELOW_APPS,
    "tests": [*BELOW_APPS, *APPS, "conformance"],
    "bench": [*BELOW_APPS, "apps/halvora"],
}
# Headers that a table of rooms is too coarse for, and who may include each.
SEAMS = {"engine/inside.h": ["engine", "tests"]}
WINGS = {room.split("/")[0] for room in MAY_INCLUDE if "/" in room}
STANDARD_ONLY = [FACE, *CORE, "adapters/standard", "adapters/virtual"]

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
CLOCK_READERS = [*(f"adapters/{name}" for name in ("standard", "qt", "linux", "ffmpeg")), "bench"]
BANNED = [
    (
        re.compile(r"\b(steady|system|high_resolution|utc|tai|gps|file)_clock\b"),
        [folder for folder in MAY_INCLUDE if folder not in CLOCK_READERS],
        "only adapters read a clock",
    ),
    (
        re.compile(r"\bstd::(thread|jthread|async)\b"),
        [FACE, *CORE],
        "background work goes through the serial queues",
    ),
    (
        re.compile(r"\bsleep_(for|until)\b|\bu?sleep\("),
        [FACE, *CORE, "adapters/virtual", *VENUE, *APPS, "tests"],
        "nothing sleeps",
    ),
]

# Headers of systems: a pattern, the folders that may include them, and why no other does. What a
# crew runs goes by POSIX, which other systems have too; what only Linux has stays in its adapter.
ON_THIS_MACHINE = ["tests", "bench"]
SYSTEM_HEADERS = [
    (
        re.compile(r"linux/|asm/|sys/(epoll|eventfd|fanotify|inotify|mount|prctl|random|sendfile|"
                   r"signalfd|timerfd|xattr)\.h$"),
        ["adapters/linux", *ON_THIS_MACHINE],
        "what only Linux has stays in its adapter",
    ),
    (
        re.compile(r"(unistd|fcntl|poll|termios|pthread|signal|dirent|sched|syslog)\.h$|"
                   r"(sys|netinet|net|arpa)/"),
        ["adapters/linux", "adapters/ffmpeg", *VENUE, *APPS, *ON_THIS_MACHINE],
        "neither a face nor a portable adapter calls the system",
    ),
]

# The namespace of what a host may include carries the major version.
OPENS_VERSION = re.compile(r"^inline namespace HALVORA_PUBLIC v\d+ {$", re.MULTILINE)

INCLUDE = re.compile(r'^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)')
COMMENT = re.compile(r'//[^\n]*|/\*.*?\*/|("(?:\\.|[^"\\\n])*")', re.DOTALL)
DEFINES = re.compile(r"^(?:class|struct|enum(?: class)?) (\w+)[^;{]*{", re.MULTILINE)
GENERATED = re.compile(r"(^|/)(moc_\w+\.cpp|\w+\.moc)$")


def folder_of(path):
    """The room of the table that a path from the root belongs to, or None."""
    parts = path.split("/")[:-1]
    for count in range(len(parts), 0, -1):
        if (room := "/".join(parts[:count])) in MAY_INCLUDE:
            return room
    return None


def target_of(include):
    """The path from the root that a quoted include means."""
    return f"include/{include}" if include.startswith("halvora/") else include


def without_comments(text):
    def keep(match):
        return match.group(1) or "\n" * match.group(0).count("\n")

    return COMMENT.sub(keep, text)


def complaint_about_quoted(source, folder, target):
    if GENERATED.search(target):
        return None
    if target.startswith("include/"):
        return "the public face is included as halvora/…"
    target = target_of(target)
    target_folder = folder_of(target)
    if target_folder is None:
        return "quoted includes are written from the root, into a known room"
    if folder not in SEAMS.get(target, [folder]):
        return f"a seam for {' and '.join(SEAMS[target])} alone: the public face is for all others"
    if target_folder == folder:
        return None
    if any(allowed in (target_folder, target) for allowed in MAY_INCLUDE[folder]):
        return None
    return f"{folder} may not include {target_folder}"


def complaints(root):
    """Yields (path, line number, text) for every fault below the root."""
    homes = {}
    for file in sorted(root.rglob("*")):
        path = file.relative_to(root).as_posix()
        folder = folder_of(path)
        if file.suffix not in (".h", ".cpp"):
            continue
        if folder is None:
            if path.split("/")[0] in WINGS:
                yield path, 1, "a file of a wing, in no room of the table"
            continue
        text = without_comments(file.read_text(encoding="utf-8"))
        if folder == FACE and "namespace halvora" in text and not OPENS_VERSION.search(text):
            yield path, 1, "its names are not in the namespace of the major version (version.h)"
        if file.suffix == ".h" and folder in BELOW_APPS + APPS:
            for name in DEFINES.findall(text):
                if (home := homes.setdefault(name, path)) != path:
                    yield path, 1, f"{name} is {home}'s: a program with both would have one of them"
        lines = text.split("\n")
        for number, line in enumerate(lines, 1):
            if include := INCLUDE.match(line):
                quoted, angled = include.groups()
                if quoted:
                    if text := complaint_about_quoted(path, folder, quoted):
                        yield path, number, f'"{quoted}": {text}'
                elif folder in STANDARD_ONLY and angled not in STANDARD_HEADERS:
                    yield path, number, f"<{angled}>: {folder} uses the standard library only"
                else:
                    for pattern, folders, text in SYSTEM_HEADERS:
                        if pattern.match(angled) and folder not in folders:
                            yield path, number, f"<{angled}>: {text}"
                            break
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
    "include/halvora/platform/run_loop.h": '#include <vector>\n#include "halvora/platform/task.h"\n',
    "include/halvora/engine.h": '#include "halvora/platform/platform.h"\n'
    "namespace halvora {\nclass Inside;\ninline namespace HALVORA_PUBLIC v0 {\n}\n}\n",
    "adapters/standard/queues.cpp": "#include <thread>\nauto t = std::chrono::steady_clock::now();\n",
    "adapters/virtual/phone.h": '#include "adapters/standard/random.h"\n',
    "adapters/json/reader.cpp": "#include <rapidjson/reader.h>\n",
    "adapters/qt/player.cpp": '#include <QMediaPlayer>\n#include "faces/qt/clip.h"\n',
    "adapters/system/phone.cpp": '#include "adapters/linux/services/torch.h"\n',
    "faces/qt/face.cpp": '#include <QQuickItem>\n#include "halvora/host.h"\n#include "face.moc"\n',
    "faces/qt/impl/panel.cpp": '#include "faces/qt/host.h"\n#include "halvora/panel.h"\n',
    "light/layer.cpp": '#include "light/layer.h"\n// #include "engine/scanner.h"\n',
    "engine/show_engine.h": '#include "pixelmap/assets.h"\n',
    "seats/wizard.cpp": '#include "halvora/engine.h"\n',
    "venue/show/trace.cpp": '#include "venue/base/line.h"\n#include "engine/scanner.h"\n',
    "venue/crowd/run.cpp": '#include "venue/plan/venue.h"\n',
    "apps/halvora/main.cpp": '#include <CLI/CLI.hpp>\n#include "venue/show/trace.h"\n',
    "tests/apps/console/console_test.cpp": '#include "apps/console/show_console.h"\n',
    "engine/face.cpp": '#include "engine/inside.h"\n',
    "tests/inside_test.cpp": '#include "engine/inside.h"\n',
    "tests/clock_test.cpp": '#include "adapters/standard/system_clock.h"\n',
    "tests/venue/trace_test.cpp": '#include "venue/show/trace.h"\n#include "tests/show.h"\n',
}

BAD = {
    "include/halvora/engine.h": [
        '#include "light/colour.h"',
        '#include "engine/scanner.h"',
        '#include "include/halvora/light.h"',
        "#include <QString>",
        "std::thread worker;",
        "namespace halvora {",
    ],
    "include/halvora/platform/a.h": ['#include "adapters/standard/random.h"', '#include "a.h"'],
    "adapters/unknown/a.h": [""],
    "adapters/a.h": [""],
    "venue/a.h": [""],
    "faces/a.h": [""],
    "adapters/standard/a.cpp": ['#include "engine/scanner.h"', "#include <pthread.h>"],
    "adapters/virtual/a.cpp": ['#include "adapters/json/reader.h"', "auto t = steady_clock::now();"],
    "adapters/json/a.cpp": ['#include "adapters/standard/random.h"', '#include "light/colour.h"'],
    "adapters/qt/a.cpp": [
        '#include "engine/scanner.h"',
        '#include "adapters/system/phone.h"',
        '#include "adapters/linux/files.h"',
        '#include "adapters/ffmpeg/videos.h"',
    ],
    "adapters/linux/a.cpp": ['#include "adapters/qt/loop.h"'],
    "adapters/image/a.cpp": ["#include <unistd.h>"],
    "bindings/c/a.cpp": ['#include "engine/scanner.h"', '#include "faces/qt/face.h"'],
    "bindings/media/a.cpp": ['#include "light/light.h"', '#include "adapters/json/reader.h"'],
    "conformance/a.cpp": ['#include "adapters/standard/queues.h"', '#include "text/numbers.h"'],
    "faces/qt/a.cpp": [
        '#include "engine/scanner.h"',
        '#include "pixelmap/assets.h"',
        '#include "adapters/virtual/phone.h"',
        '#include "adapters/qt/phone.h"',
        '#include "faces/qt/impl/panel.h"',
        '#include "venue/show/scenario.h"',
        "#include <sys/socket.h>",
    ],
    "faces/qt/impl/a.cpp": ['#include "seats/wizard.h"', '#include "adapters/qt/phone.h"'],
    "needs/a.cpp": ['#include "text/numbers.h"', "#include <unistd.h>"],
    "text/a.cpp": ['#include "light/colour.h"'],
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
    "host/a.cpp": ['#include "faces/qt/face.h"', '#include "venue/show/trace.h"', "#include <QObject>"],
    "venue/base/a.cpp": [
        '#include "venue/show/scenario.h"',
        '#include "faces/qt/face.h"',
        "#include <sys/inotify.h>",
    ],
    "venue/show/a.cpp": ['#include "venue/crowd/crowd.h"', '#include "apps/halvora/command.h"'],
    "venue/air/a.cpp": ['#include "venue/crowd/crowd.h"', '#include "faces/qt/face.h"'],
    "apps/halvora/a.cpp": ['#include "apps/console/show.h"', '#include "tests/show.h"'],
    "tests/a_test.cpp": ['#include "bench/crowd.h"', "sleep(1);"],
    "bench/a.cpp": ['#include "tests/show.h"', '#include "engine/inside.h"'],
    "venue/crowd/a.cpp": ['#include "engine/inside.h"'],
    "apps/console/a.cpp": ['#include "engine/inside.h"', '#include "tests/show.h"', '#include "../../engine/scanner.h"'],
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
        (root / "venue/show").mkdir(parents=True, exist_ok=True)
        (root / "venue/show/player.h").write_text("class Player final {};\nclass Other;\n")
        for name, count in (("Player", 1), ("Other", 0), ("Players", 0)):
            if len(found_in("venue/live/twin.h", f"struct {name} {{}};\n")) != count:
                failures.append(f"{name} in two headers: {count} complaints expected")
    return told(failures, sum(len(lines) for lines in BAD.values()))


if __name__ == "__main__":
    run_checker(check, self_test)
