#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Installs the kit, static and shared, and uses it as strangers do.

check_consumers.py [--all] [--folder build/consumers] [--jobs N] [--list]

Each row of the table is one way in which a host may take the kit: its program prints what the example
prints. Rows that end in "refused" must fail with the sentence that says why. Without --all rows that
compile the kit once more are left out.
"""

import argparse
import os
import re
import shutil
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
EXAMPLE = ROOT / "examples/cmake-consumer"
VERSION = re.search(r'^#define HALVORA_VERSION "(.*)"$',
                    (ROOT / "include/halvora/version.h").read_text(encoding="utf-8"),
                    re.MULTILINE).group(1)
PRINTED = "the show begins\nlight 1.00 0.50 0.00\n"
STRICT = (
    "-Werror -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast "
    "-Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wcast-qual -Wnull-dereference "
    "-Wdouble-promotion -Wformat=2 -Wundef"
).split()
# What clang has beside: all of it, but for what contradicts C++20, what a layout costs, and values
# whose fractions are compared as they were set.
CLANG = (
    "-Werror -Weverything -Wno-c++98-compat -Wno-c++98-compat-pedantic -Wno-padded "
    "-Wno-float-equal -Wno-unsafe-buffer-usage -Wno-weak-vtables -Wno-ctad-maybe-unsupported "
    "-Wno-exit-time-destructors -Wno-global-constructors -Wno-switch-enum -Wno-covered-switch-default"
).split()
LIBCXX = ["-stdlib=libc++"]


class Failure(Exception):
    pass


class Consumers:
    def __init__(self, folder, jobs):
        self.folder, self.jobs = folder, jobs
        self.kits = {}

    def run(self, *command, expect=0, **options):
        done = subprocess.run(
            # Nowhere near the tree, whose headers a compiler would find.
            [str(word) for word in command], capture_output=True, text=True, cwd=self.folder, **options
        )
        if (done.returncode == 0) != (expect == 0):
            raise Failure(f"{' '.join(map(str, command))}\n{done.stdout}{done.stderr}")
        return done.stdout + done.stderr

    def configured(self, source, build, *options):
        launcher = ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []
        self.run("cmake", "-S", source, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=None",
                 *launcher, *options)

    def kit(self, name, *options):
        """Where that build of the kit is installed; made once."""
        if name not in self.kits:
            build, prefix = self.folder / f"kit-{name}", self.folder / f"prefix-{name}"
            self.configured(ROOT, build, f"-DCMAKE_INSTALL_PREFIX={prefix}", "-DHALVORA_UNITY=ON",
                            "-DHALVORA_PRECOMPILE=ON", "-DHALVORA_TESTS=OFF", "-DHALVORA_TOOLS=OFF",
                            *options)
            self.run("cmake", "--build", build, "-j", self.jobs)
            shutil.rmtree(prefix, ignore_errors=True)
            self.run("cmake", "--install", build)
            self.kits[name] = prefix
        return self.kits[name]

    def static(self):
        return self.kit("static", "-DBUILD_SHARED_LIBS=OFF")

    def shared(self):
        return self.kit("shared", "-DBUILD_SHARED_LIBS=ON")

    def clang(self):
        return self.kit("clang", "-DCMAKE_CXX_COMPILER=clang++-16", "-DCMAKE_CXX_FLAGS=-stdlib=libc++")

    def expect_print(self, program, prefix):
        printed = self.run(program, env={**os.environ, "LD_LIBRARY_PATH": str(prefix / "lib")})
        if printed != PRINTED:
            raise Failure(f"{program} printed:\n{printed}")

    def by_cmake(self, name, prefix, *options, flags=()):
        build = self.folder / f"by-{name}"
        shutil.rmtree(build, ignore_errors=True)
        # Warnings within what is installed count too.
        self.configured(EXAMPLE, build, f"-DCMAKE_PREFIX_PATH={prefix}",
                        "-DCMAKE_NO_SYSTEM_FROM_IMPORTED=ON", "-DCMAKE_INSTALL_LIBDIR=lib",
                        f"-DCMAKE_CXX_FLAGS={' '.join(flags)}", *options)
        self.run("cmake", "--build", build, "-j", self.jobs)
        self.expect_print(build / "cmake-consumer", prefix)

    def module(self, prefix, what, *modules):
        path = {**os.environ, "PKG_CONFIG_PATH": str(prefix / "lib/pkgconfig")}
        return self.run("pkg-config", *what, *modules, env=path).split()

    def by_modules(self, name, prefix, flags=()):
        program = self.folder / f"by-{name}"
        words = self.module(prefix, ["--cflags", "--libs"], "halvora-virtual", "halvora-json")
        sources = [EXAMPLE / "main.cpp"]
        self.run("g++", "-std=c++20", *flags, *sources, "-o", program, *words)
        self.expect_print(program, prefix)

    def headers(self, compiler, flags):
        """All that is installed of what needs no Qt, in one source."""
        prefix = self.static()
        include = next((prefix / "include").iterdir())
        names = sorted(path.relative_to(include) for path in include.rglob("*.h"))
        words = self.module(prefix, ["--cflags"], "halvora-linux", "halvora-virtual")
        qt = ("faces/qt/", "adapters/qt/", "adapters/system/")
        text = "".join(f'#include "{name}"\n' for name in map(str, names) if not name.startswith(qt))
        self.run(compiler, "-std=c++20", "-fsyntax-only", *flags, *words, "-x", "c++", "-",
                 input=text)

    def refused(self, sentence, *options):
        build = self.folder / "refused"
        shutil.rmtree(build, ignore_errors=True)
        said = self.run("cmake", "-S", ROOT / "tests/consumers/refused", "-B", build, "-G", "Ninja",
                        f"-DCMAKE_PREFIX_PATH={self.static()}", *options, expect=1)
        said = " ".join(said.split())
        if sentence not in said:
            raise Failure(f"not said: {sentence}\n{said}")

    def refused_build(self, sentence, *options):
        build = self.folder / "refused"
        shutil.rmtree(build, ignore_errors=True)
        said = self.run("cmake", "-S", ROOT, "-B", build, "-G", "Ninja", *options, expect=1)
        if sentence not in " ".join(said.split()):
            raise Failure(f"not said: {sentence}\n{said}")

    def only_public_names(self):
        """The core shows the names of what a host may include, and no others."""
        library = self.shared() / "lib/libhalvora_core.so"
        names = self.run("nm", "-DC", "--defined-only", library).splitlines()
        shown = [line.split(" ", 2)[2] for line in names if " T " in line]
        others = [name for name in shown if not name.startswith("halvora::v")]
        if others or not shown:
            raise Failure(f"the core shows {others or 'nothing'}")

    def moved(self):
        """An installation works where it is moved to."""
        there = self.folder / "prefix-moved"
        shutil.rmtree(there, ignore_errors=True)
        shutil.copytree(self.shared(), there, symlinks=True)
        self.by_modules("modules-moved", there)

    def section(self, section, page="docs/embedding.md"):
        text = (ROOT / page).read_text(encoding="utf-8")
        return text.split(f"\n## {section}", 1)[1].split("\n## ", 1)[0]

    def pasted(self, section, page="docs/embedding.md"):
        """The files of a section of a page, in a folder of their own."""
        text = self.section(section, page)
        folder = self.folder / f"pasted-{section.split(',')[0].lower()}"
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir()
        for name, lines in re.findall(r"^```\w+ (\S+)\n(.*?)^```$", text, re.MULTILINE | re.DOTALL):
            (folder / name).write_text(lines, encoding="utf-8")
        return folder

    def expect_orange(self, program, prefix, before):
        printed = self.run(program, env={**os.environ, "LD_LIBRARY_PATH": str(prefix / "lib")})
        if printed != before + "390 x 844 points of 1.00 0.50 0.00\n":
            raise Failure(f"{program} printed:\n{printed}")

    def pasted_in_cpp(self):
        folder = self.pasted("C++")
        self.configured(folder, folder / "build", f"-DCMAKE_PREFIX_PATH={self.shared()}")
        self.run("cmake", "--build", folder / "build")
        self.expect_orange(folder / "build/my-show", self.shared(), "the show begins\n")

    def pasted_in_c(self):
        folder = self.pasted("C, and all that can call it")
        words = self.module(self.shared(), ["--cflags", "--libs"], "halvora-c")
        self.run("gcc", "-std=c99", "-Wall", "-Wextra", "-Wpedantic", "-Werror", folder / "phone.c",
                 *words, "-o", folder / "phone")
        self.expect_orange(folder / "phone", self.shared(), "torch on\n")
        words = self.module(self.shared(), ["--cflags", "--libs"], "halvora-cmedia")
        self.run("gcc", "-std=c99", "-Wall", "-Wextra", "-Wpedantic", "-Werror", folder / "seat.c",
                 *words, "-o", folder / "seat")
        printed = self.run(folder / "seat", ROOT / "assets/demo", folder,
                           env={**os.environ, "LD_LIBRARY_PATH": str(self.shared() / "lib")})
        if printed != "done\n":
            raise Failure(f"a host with decoders printed:\n{printed}")
        # What a static kit installs is whole in itself.
        self.expect_orange(folder / "phone", self.static(), "torch on\n")

    def pasted_in_qml(self):
        folder, prefix = self.pasted("QML"), self.with_qt()
        self.configured(folder, folder / "build", f"-DCMAKE_PREFIX_PATH={prefix}")
        self.run("cmake", "--build", folder / "build")
        self.expect_window(folder / "build/my-app", prefix)

    def pasted_in_porting(self):
        """The suite says of a right and of a wrong adapter what the page shows."""
        section, page = "How to prove it", "docs/porting.md"
        folder = self.pasted(section, page)
        shown = re.search(r"^```\n(Files: .*?)^```$", self.section(section, page),
                          re.MULTILINE | re.DOTALL).group(1)
        words = self.module(self.static(), ["--cflags", "--libs"], "halvora-conformance",
                            "halvora-standard")
        for name, its, said in (("right", "", ""), ("wrong", WRONG_FILES, shown)):
            (folder / "my_files.h").write_text(MY_FILES % its, encoding="utf-8")
            (folder / f"files-{name}").mkdir()
            self.run("g++", "-std=c++20", "-include", folder / "my_files.h",
                     folder / "promises.cpp", *words, "-o", folder / name)
            found = self.run(folder / name, folder / f"files-{name}", expect=1 if said else 0)
            if found != said:
                raise Failure(f"{name} files, of which it says:\n{found}")

    def sonames(self):
        """A shared library's name has the part of the version that may break."""
        prefix = self.shared()
        libraries = sorted((prefix / "lib").glob(f"libhalvora_*.so.{VERSION}"))
        for library in libraries:
            named = library.name.removesuffix("." + VERSION.split(".")[-1])
            if f"Library soname: [{named}]" not in self.run("readelf", "-d", library):
                raise Failure(f"{library} has another name within")
        if not libraries:
            raise Failure(f"no library of version {VERSION}")

    def refused_module(self, sentence, module):
        path = {**os.environ, "PKG_CONFIG_PATH": str(self.static() / "lib/pkgconfig")}
        said = self.run("pkg-config", "--print-errors", "--exists", module, env=path, expect=1)
        if sentence not in said:
            raise Failure(f"not said: {sentence}\n{said}")

    def with_qt(self):
        return self.kit("qt", "-DBUILD_SHARED_LIBS=ON", "-DHALVORA_QT=ON", "-DHALVORA_QML_AHEAD=OFF")

    def qml_host(self):
        prefix = self.with_qt()
        build = self.folder / "by-qml-host"
        shutil.rmtree(build, ignore_errors=True)
        self.configured(ROOT / "examples/qml-host", build, f"-DCMAKE_PREFIX_PATH={prefix}",
                        "-DHALVORA_FROM=installation")
        self.run("cmake", "--build", build, "-j", self.jobs)
        self.expect_window(build / "qml-host", prefix)

    def public_qml_types(self):
        """What the installed module lets a host name, by its documents and by its registrations."""
        module = self.with_qt() / "lib/qt6/qml/Halvora"
        shown = set(re.findall(r"^(?:singleton )?([A-Z]\w*) \d+\.\d+ \w+\.qml$",
                               (module / "qmldir").read_text(encoding="utf-8"), re.MULTILINE))
        shown |= set(re.findall(r'"Halvora/(\w+) \d+\.\d+"',
                                (module / "halvora_qt.qmltypes").read_text(encoding="utf-8")))
        if shown != QML_TYPES:
            raise Failure(f"the module has {sorted(shown)}")

    def expect_window(self, program, prefix):
        """It says what it could not load, and goes on until it is ended."""
        begun = subprocess.run(
            ["timeout", "5", program], capture_output=True, text=True, cwd=self.folder,
            env={**os.environ, "QT_QPA_PLATFORM": "offscreen", "QT_QUICK_BACKEND": "software",
                 "QML_IMPORT_PATH": str(prefix / "lib/qt6/qml"),
                 "LD_LIBRARY_PATH": str(prefix / "lib")})
        if begun.returncode != 124 or "not installed" in begun.stderr:
            raise Failure(f"{program} ended with {begun.returncode}:\n{begun.stderr}")


# What docs/porting.md leaves to its reader: files that keep their promises, and some that do not.
MY_FILES = """#include <adapters/standard/standard_files.h>
class MyFiles : public halvora::StandardFiles {%s};
"""
WRONG_FILES = """
 public:
  bool replace(const std::string& path, std::string_view bytes) override {
    std::string whole = StandardFiles::read(path, 1U << 20).value_or("");
    if (whole.size() < bytes.size()) whole.resize(bytes.size());
    whole.replace(0, bytes.size(), bytes);
    return StandardFiles::replace(path, whole);
  }
  std::optional<std::string> read(const std::string& path, std::size_t limit) const override {
    std::optional<std::string> bytes = StandardFiles::read(path, 1U << 30);
    if (bytes && bytes->size() > limit) bytes->resize(limit);
    return bytes;
  }
"""
QML_TYPES = {"HalvoraView", "HalvoraStatusView", "HalvoraAudienceView"}
INSTALLED = "-DHALVORA_FROM=installation"
# Name, whether it is for a day, and what it does.
ROWS = [
    ("find_package, static, every warning", True,
     lambda it: it.by_cmake("static", it.static(), INSTALLED, flags=STRICT)),
    ("find_package, shared", True, lambda it: it.by_cmake("shared", it.shared(), INSTALLED)),
    ("find_package, unity build", True,
     lambda it: it.by_cmake("unity", it.shared(), INSTALLED, "-DCMAKE_UNITY_BUILD=ON")),
    ("pkg-config, static", True, lambda it: it.by_modules("modules-static", it.static())),
    ("pkg-config, shared", True, lambda it: it.by_modules("modules-shared", it.shared())),
    ("pkg-config, after a move", True, lambda it: it.moved()),
    ("-fno-exceptions", True,
     lambda it: it.by_modules("no-exceptions", it.shared(), ["-fno-exceptions"])),
    ("-fno-rtti", True, lambda it: it.by_modules("no-rtti", it.shared(), ["-fno-rtti"])),
    ("headers, gcc, every warning", True, lambda it: it.headers("g++", STRICT)),
    ("headers, clang and libc++, every warning", True,
     lambda it: it.headers("clang++-16", LIBCXX + CLANG)),
    ("docs/embedding.md, C++, as pasted", True, lambda it: it.pasted_in_cpp()),
    ("docs/embedding.md, C, as pasted", True, lambda it: it.pasted_in_c()),
    ("docs/porting.md, the suite, as pasted", True, lambda it: it.pasted_in_porting()),
    ("the core shows public names only", True, lambda it: it.only_public_names()),
    ("shared libraries are named by version", True, lambda it: it.sonames()),
    ("a component that is not there: refused", True,
     lambda it: it.refused("was installed without a component Nonesuch; it has Core,",
                           "-DWANTED=0.1;REQUIRED;COMPONENTS;Nonesuch")),
    ("another version: refused", True,
     lambda it: it.refused(f"HalvoraConfig.cmake, version: {VERSION}", "-DWANTED=99;REQUIRED")),
    ("another version, pkg-config: refused", True,
     lambda it: it.refused_module(f"'halvora-core' has version '{VERSION}', required version is",
                                  "halvora-core >= 99")),
    ("shared libraries with the tools: refused", True,
     lambda it: it.refused_build("HALVORA_TOOLS needs the inside of the kit",
                                 "-DBUILD_SHARED_LIBS=ON", "-DHALVORA_TOOLS=ON")),
    ("a library that is not there: refused", True,
     lambda it: it.refused_build("HALVORA_YAML needs what is not found here (Debian: libyaml-dev)",
                                 "-DHALVORA_YAML=ON", "-DPKG_CONFIG_EXECUTABLE=false")),
    ("add_subdirectory", False,
     lambda it: it.by_cmake("folder", it.static(), "-DHALVORA_UNITY=ON")),
    ("FetchContent from a local repository", False,
     lambda it: it.by_cmake("fetch", it.static(), "-DHALVORA_FROM=fetch", "-DHALVORA_UNITY=ON",
                            f"-DHALVORA_REPOSITORY=file://{ROOT}")),
    ("find_package, clang and libc++", False,
     lambda it: it.by_cmake("clang", it.clang(), INSTALLED, "-DCMAKE_CXX_COMPILER=clang++-16",
                            flags=LIBCXX)),
    ("the QML module shows three types", False, lambda it: it.public_qml_types()),
    ("docs/embedding.md, QML, as pasted", False, lambda it: it.pasted_in_qml()),
    ("a host in QML, find_package", False, lambda it: it.qml_host()),
]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--all", action="store_true")
    parser.add_argument("--folder", type=Path, default=ROOT / "build/consumers")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--only", default="", help="rows with this in their name")
    parser.add_argument("--list", action="store_true", help="says which rows there are, and no more")
    arguments = parser.parse_args()
    if arguments.list:
        print("\n".join(name + ("" if is_daily else " (--all)") for name, is_daily, _ in ROWS))
        return 0
    arguments.folder.mkdir(parents=True, exist_ok=True)
    consumers = Consumers(arguments.folder.resolve(), arguments.jobs)
    failed = 0
    chosen = [row for row in ROWS if (row[1] or arguments.all or arguments.only)
              and arguments.only in row[0]]
    for name, _, check in chosen:
        begun = time.monotonic()
        try:
            check(consumers)
            verdict = "ok"
        except Failure as failure:
            failed += 1
            verdict = f"FAILED\n{failure}"
        print(f"{name:44} {time.monotonic() - begun:6.1f} s  {verdict}", flush=True)
    print(f"note: {len(chosen)} ways to take the kit, {failed} failed")
    return 1 if failed or not chosen else 0


if __name__ == "__main__":
    sys.exit(main())
