# SPDX-License-Identifier: Apache-2.0
"""The program of tests with every mutant of every source in it, and what each test reaches."""

import functools
import hashlib
import json
import os
import pickle
import re
import resource
import shlex
import shutil
import signal
import subprocess
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import confinement
import operators

ROOT = Path(__file__).resolve().parent.parent.parent
HERE = Path(__file__).resolve().parent
WORK = ROOT / "build/mutate"
BUILD = WORK / "tests"
PROGRAM = WORK / "halvora_mutants"
REACHED = WORK / "reached.tsv"
OPTIONS = [
    "-DHALVORA_QT=OFF", "-DHALVORA_BENCH=OFF", "-DHALVORA_WERROR=OFF", "-DHALVORA_PRECOMPILE=ON",
    "-DCMAKE_CXX_FLAGS_DEBUG=-O0 -g0", "-DCMAKE_VERIFY_INTERFACE_HEADER_SETS=OFF",
]  # fmt: skip
# Of folders: the core, the adapters, the venue's tools.
FOLDERS = ("text/", "light/", "usage/", "pixelmap/", "engine/", "seats/", "host/", "adapters/",
           "venue/", "apps/halvora/")
ELSEWHERE = ("adapters/qt/", "adapters/qtbluetooth/", "adapters/system/", "apps/halvora/main.cpp")
# Of one folder alone, and the folders of its tests: see `stay_beside`.
BESIDE = None
TESTS = ()
MOST_SOURCES = 512  # as runtime.cpp has room for
MOST_MEMORY = 6 << 30
MOST_FILE = 256 << 20


class Trouble(Exception):
    """Something other than a test that does not notice."""


def digest(*parts):
    return hashlib.sha256("\0".join(parts).encode()).hexdigest()[:20]


def digest_of(path):
    return hashlib.sha256(Path(path).read_bytes()).hexdigest()[:20]


def call(command, **more):
    return subprocess.run(command, capture_output=True, text=True, cwd=BUILD, **more)


def stay_beside(folder, more=()):
    """From now on this folder alone, by the tests beside it and those of more folders, and the build
    that is in use anyway."""
    global WORK, BUILD, PROGRAM, REACHED, BESIDE, TESTS
    BESIDE = folder
    TESTS = (folder, *more)
    BUILD = ROOT / "build/dev"
    WORK = ROOT / "build/mutate/beside" / folder.replace("/", "-")
    PROGRAM = WORK / "halvora_mutants"
    REACHED = WORK / "reached.tsv"
    link_command.cache_clear()


def build_tests():
    if BESIDE and not (BUILD / "build.ninja").exists():
        raise Trouble("build/dev is not configured")
    if not (BUILD / "build.ninja").exists():
        done = subprocess.run(["cmake", "--preset", "dev", "-B", str(BUILD), *OPTIONS], cwd=ROOT)
        if done.returncode:
            raise Trouble("the tests cannot be configured")
    done = call(["cmake", "--build", str(BUILD), "--target", "halvora_tests"])
    if done.returncode:
        raise Trouble(done.stdout[-4000:])


def compile_commands():
    """By the source's path from the root: the command without its output and its source."""
    found = {}
    for entry in json.loads((BUILD / "compile_commands.json").read_text(encoding="utf-8")):
        file = Path(entry["directory"], entry["file"]).resolve()
        if not file.is_relative_to(ROOT) or file.is_relative_to(BUILD):
            continue
        path = file.relative_to(ROOT).as_posix()
        if BESIDE and Path(path).parent.as_posix() != BESIDE:
            continue
        if path.startswith(FOLDERS) and not path.startswith(ELSEWHERE):
            words = shlex.split(entry["command"])
            at = words.index("-o")
            words = [word for word in words[:at] if "ccache" not in word]
            found[path] = words
    return found


class Prepared:
    """A source with all its mutants."""

    def __init__(self, path, command, base):
        self.path, self.command = path, command
        self.text = (ROOT / path).read_text(encoding="utf-8")
        self.digest = digest(self.text)
        self.kept = WORK / "prepared" / (path + ".json")
        self.object = WORK / "prepared" / (path + ".o")
        self.mutants = self.found()
        if len(self.mutants) >= operators.STEP:
            raise Trouble(f"{path} has too many places")
        for at, mutant in enumerate(self.mutants):
            mutant.number = base + at + 1
        self.how, self.passes = {}, 0

    def found(self):
        """The mutants, as they were found before where neither the source nor the finder changed."""
        file = WORK / "found" / (self.path + ".pickle")
        key = digest(self.text, digest_of(operators.__file__))
        if file.exists():
            known, mutants = pickle.loads(file.read_bytes())
            if known == key:
                return mutants
        mutants = operators.find(self.path, self.text)
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_bytes(pickle.dumps((key, mutants)))
        return mutants

    def compile(self):
        everything = [m for m in self.mutants if not m.is_fixed]
        header = (HERE / "mutants.h").read_text(encoding="utf-8").split()
        key = digest(operators.prepared(self.text, everything), *header)
        if self.kept.exists() and self.object.exists():
            kept = json.loads(self.kept.read_text(encoding="utf-8"))
            if kept["key"] == key and kept.get("headers") == self.headers():
                self.how = {int(number): how for number, how in kept["how"].items()}
                return False
        self.how = {m.number: "alone" if m.is_fixed else "chosen" for m in self.mutants}
        self.kept.parent.mkdir(parents=True, exist_ok=True)
        for self.passes in range(12):
            chosen = [m for m in self.mutants if self.how[m.number] == "chosen"]
            text = operators.prepared(self.text, chosen)
            errors = self.compiled(text, self.object, f'#include "{HERE / "mutants.h"}"\n')
            if errors is None:
                self.leave_out_impossible()
                break
            self.leave_out(errors, chosen)
        else:
            raise Trouble(f"{self.path} cannot be prepared:\n{errors[-3000:]}")
        kept = {"key": key, "how": self.how, "headers": self.headers()}
        self.kept.write_text(json.dumps(kept), encoding="utf-8")
        return True

    def headers(self):
        """What the headers of this tree are that it was compiled with; None where nobody knows."""
        names = self.object.with_suffix(".d")
        if not names.exists():
            return None
        words = names.read_text(encoding="utf-8").replace("\\\n", " ").split()
        paths = sorted({str((BUILD / word).resolve()) for word in words if word.endswith(".h")})
        return digest(*(f"{path} {digest_of(path)}" for path in paths if Path(path).exists()))

    def leave_out_impossible(self):
        """What the types of a place do not allow has left a sign in the object file."""
        symbols = call(["nm", str(self.object)], check=True).stdout
        for number in re.findall(r"8cannotBeILi(\d+)E", symbols):
            self.how[int(number)] = "void"

    def compiled(self, text, output, first=""):
        """None, or what the compiler says."""
        file = WORK / "prepared" / self.path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(f'{first}#line 1 "{file}"\n{text}', encoding="utf-8")
        folder = str((ROOT / self.path).parent)
        command = [*self.command, "-w", "-fmax-errors=0", "-ftemplate-backtrace-limit=0",
                   "-Wno-narrowing", f"-iquote{folder}"]  # fmt: skip
        names = str(output.with_suffix(".d"))
        done = call([*command, "-MMD", "-MF", names, "-o", str(output), "-c", str(file)])
        return None if done.returncode == 0 else done.stdout + done.stderr

    def leave_out(self, errors, chosen):
        """What the compiler wants to know is compiled on its own, one by one."""
        before = dict(self.how)
        groups = re.split(r"\n(?=\S+: In (?:instantiation|member|function|substitution|static|lambda))",
                          errors)
        lines = set()
        for group in groups:
            if "error:" in group:
                lines |= {
                    int(number)
                    for number in re.findall(
                        rf"{re.escape(self.path)}:(\d+):\d+:\s+(?:error|required from)", group
                    )
                }
        ends = {m.number: m.line + max(self.text.count("\n", w[0], w[1]) for w in m.wrap)
                for m in chosen}  # fmt: skip
        for at in lines:
            there = [m for m in chosen if m.line == at] or [
                m for m in chosen if m.line <= at <= ends[m.number]
            ]
            for mutant in there:
                self.how[mutant.number] = (
                    "void" if mutant.operator in ("arguments", "return") else "alone"
                )
        if self.how == before:
            raise Trouble(f"{self.path} cannot be prepared:\n{errors[-3000:]}")


def base_numbers(paths):
    """Where a source's numbers begin; a source keeps its own as others come and go."""
    kept = WORK / "numbers.json"
    known = json.loads(kept.read_text(encoding="utf-8")) if kept.exists() else {}
    for path in sorted(paths):
        known.setdefault(path, len(known))
    if max(known.values()) >= MOST_SOURCES:
        raise Trouble("too many sources; remove build/mutate")
    kept.write_text(json.dumps(known), encoding="utf-8")
    return {path: known[path] * operators.STEP for path in paths}


@functools.cache
def link_command():
    """As it was when the campaign began: the tests may be built anew beside it."""
    listing = call(["ninja", "-t", "commands", "halvora_tests"], check=True).stdout
    return listing.strip().splitlines()[-1]


def link(objects, output):
    words = shlex.split(link_command())
    words = [word for word in words if word not in (":", "&&") and "ccache" not in word]
    words[words.index("-o") + 1] = str(output)
    done = call([words[0], *(str(name) for name in objects), *words[1:]])
    if done.returncode:
        raise Trouble(done.stderr[-4000:])


def runtime():
    output = WORK / "runtime.o"
    source = HERE / "runtime.cpp"
    stamp = WORK / "runtime.stamp"
    if not (stamp.exists() and stamp.read_text() == digest_of(source)):
        gtest = "/usr/src/googletest/googletest/include"
        done = call(["g++", "-std=c++20", "-O1", "-isystem", gtest, "-c", str(source), "-o",
                     str(output)])  # fmt: skip
        if done.returncode:
            raise Trouble(done.stderr)
        stamp.write_text(digest_of(source))
    return output


def prepare(say, must_build=True, jobs=2):
    """Builds what changed, and gives the prepared sources by path."""
    if not confinement.is_possible():
        raise Trouble("this kernel has no Landlock, and a planted fault may remove your files")
    WORK.mkdir(parents=True, exist_ok=True)
    if must_build:
        say("building the tests")
        build_tests()
    commands = compile_commands()
    bases = base_numbers(commands)
    sources = {path: Prepared(path, words, bases[path]) for path, words in commands.items()}
    changed = 0
    with ThreadPoolExecutor(jobs) as pool:
        for source, is_new in zip(sources.values(), pool.map(Prepared.compile, sources.values())):
            changed += is_new
            if is_new:
                say(f"prepared {source.path}")
    if must_build or changed or not PROGRAM.exists():
        renew(list(sources.values()), say)
    return sources


def renew(sources, say):
    """Links, and lets the tests that are new say what they reach."""
    kept = WORK / "program.json"
    known = json.loads(kept.read_text(encoding="utf-8")) if kept.exists() else {}
    now = {source.path: digest(source.kept.read_text()) for source in sources}
    now |= {"runtime": digest_of(HERE / "runtime.cpp")}
    program = digest(json.dumps(now), digest_of(BUILD / "bin/halvora_tests"), *TESTS)
    if known.get("program") == program and PROGRAM.exists():
        return
    say("linking")
    link([source.object for source in sources] + [runtime()], PROGRAM)
    files = files_of_tests()
    digests = {file: digest_of(file) for file in set(files.values())}
    before, bases = known.get("files", {}), base_numbers([source.path for source in sources])
    changed = {bases[path] // operators.STEP for path in bases
               if known.get("sources", {}).get(path) != now[path]}  # fmt: skip
    lines = {}
    for line in REACHED.read_text(encoding="utf-8").splitlines() if REACHED.exists() else ():
        name, _, _, _, numbers = line.split("\t")
        if not changed & {int(number) // operators.STEP for number in numbers.split()}:
            lines[name] = line
    new = [n for n, file in files.items() if n not in lines or digests[file] != before.get(file)]
    say(f"one run of {len(new)} of {len(files)} tests, to see what each of them reaches")
    for line in trace(new):
        lines[line.split("\t", 1)[0]] = line
    REACHED.write_text("".join(lines[name] + "\n" for name in files if name in lines), "utf-8")
    kept.write_text(json.dumps({"program": program, "sources": now, "files": digests}), "utf-8")


def files_of_tests():
    with Scratch() as scratch:
        listing = scratch / "tests.json"
        subprocess.run([str(PROGRAM), "--gtest_list_tests", f"--gtest_output=json:{listing}"],
                       check=True, stdout=subprocess.DEVNULL, cwd=scratch)  # fmt: skip
        suites = json.loads(listing.read_text(encoding="utf-8"))["testsuites"]
    files = {f"{suite['name']}.{test['name']}": source_of(test["file"])
             for suite in suites for test in suite["testsuite"]
             if "DISABLED_" not in suite["name"] + test["name"]}  # fmt: skip
    return {name: str(file) for name, file in files.items() if is_beside(file)}


def source_of(file):
    """A cache of compilers may have made the object for another copy of this tree."""
    path = (BUILD / file).resolve()
    if path.is_relative_to(ROOT):
        return path
    return ROOT / "tests" / path.as_posix().rpartition("/tests/")[2]


def is_beside(file):
    return BESIDE is None or any(file.is_relative_to(ROOT / "tests" / name) for name in TESTS)


def trace(names):
    """A line a test: name, file, whether it fails without any mutant, milliseconds, what it reaches."""
    with Scratch() as scratch:
        lines, flags = scratch / "reached", scratch / "flags"
        lines.touch()
        flags.write_text("--gtest_filter=" + ":".join(names) + "\n")
        (scratch / "in").mkdir()
        if names:
            subprocess.run([str(PROGRAM), f"--gtest_flagfile={flags}"], cwd=scratch / "in",
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                           start_new_session=True, preexec_fn=confined(scratch),
                           env=environment(scratch / "in") | {"HALVORA_REACHED": str(lines)})  # fmt: skip
        return lines.read_text(encoding="utf-8").splitlines()


def environment(scratch):
    return os.environ | {"TMPDIR": str(scratch), "HOME": str(scratch), "LC_ALL": "C.UTF-8"}


class Scratch:
    def __init__(self):
        self.folder = WORK / f"scratch-{os.getpid()}"

    def __enter__(self):
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir(parents=True)
        return self.folder

    def __exit__(self, *_):
        shutil.rmtree(self.folder, ignore_errors=True)


class Tests:
    """What each test is called, where it is, how long it takes, and who reaches a mutant."""

    def __init__(self):
        self.file, self.milliseconds, self.of_mutant, self.failing = {}, {}, {}, []
        self.first = None
        for line in REACHED.read_text(encoding="utf-8").splitlines():
            name, file, failed, milliseconds, numbers = line.split("\t")
            if failed == "1":
                self.failing.append(name)
                continue
            self.first = self.first or name
            self.file[name] = os.path.relpath(BUILD / file, ROOT)
            self.milliseconds[name] = int(milliseconds)
            for number in numbers.split():
                self.of_mutant.setdefault(int(number), []).append(name)
        known = json.loads((WORK / "program.json").read_text(encoding="utf-8"))
        self.digests = known["files"]

    def digest(self, name):
        """Of the test's file, as it was compiled."""
        return self.digests.get(str(ROOT / self.file.get(name, "")), "gone")


def confined(scratch):
    """What a fault does to files it does in there; clips that were made for tests may be made."""
    clips = ROOT / "build/clips"
    clips.mkdir(parents=True, exist_ok=True)
    return functools.partial(confinement.enter, (scratch, clips))


def limits(seconds, scratch):
    confine = confined(scratch)

    def apply():
        resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds + 2))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        resource.setrlimit(resource.RLIMIT_AS, (MOST_MEMORY, MOST_MEMORY))
        resource.setrlimit(resource.RLIMIT_FSIZE, (MOST_FILE, MOST_FILE))
        confine()

    return apply


def seconds_of_children():
    """Of a processor, of all that have ended."""
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def notice(program, number, names, milliseconds):
    """Who of these tests notices the mutant: ("killed" | "endless" | "survived", test)."""
    seconds = 4 + milliseconds * 5 // 1000
    used = seconds_of_children()
    with Scratch() as scratch:
        flags = scratch / "flags"
        flags.write_text("--gtest_filter=" + ":".join(names) + "\n--gtest_fail_fast\n")
        (scratch / "in").mkdir()
        with open(scratch / "output", "w+b") as output:
            process = subprocess.Popen(
                [str(program), f"--gtest_flagfile={flags}"], stdout=output, stderr=output,
                stdin=subprocess.DEVNULL, cwd=scratch / "in", start_new_session=True,
                preexec_fn=limits(seconds, scratch),
                env=environment(scratch / "in") | {"HALVORA_MUTANT": str(number)})  # fmt: skip
            try:
                # On a machine that is busy with other things too.
                status = process.wait(timeout=30 + 6 * seconds)
            except subprocess.TimeoutExpired:
                status = None
            finally:
                try:
                    os.killpg(process.pid, signal.SIGKILL)
                except ProcessLookupError:
                    pass
                process.wait()
            output.seek(0)
            said = output.read(1 << 24).decode("utf-8", "replace")
    if status == 0:
        ran = re.search(r"\[==========\] (\d+) tests? from .* ran", said)
        if not ran or int(ran[1]) != len(names):
            raise Trouble(f"mutant {number}: {len(names)} tests were wanted:\n{said[-2000:]}")
        return "survived", None
    if status == -signal.SIGKILL and seconds_of_children() - used < seconds:
        raise Trouble(f"mutant {number}: somebody else has killed its tests; begin again")
    failed = re.findall(r"^\[  FAILED  \] ([\w/]+\.[\w/]+)", said, re.M)
    begun = re.findall(r"^\[ RUN      \] ([\w/]+\.[\w/]+)", said, re.M)
    is_endless = status is None or -status in (signal.SIGXCPU, signal.SIGKILL)
    who = failed[0] if failed else begun[-1] if begun else None
    return "endless" if is_endless else "killed", who
