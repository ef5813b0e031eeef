# SPDX-License-Identifier: Apache-2.0
"""Which mutants are tried, what became of them, and what that says of a folder's tests."""

import hashlib
import json
import os
import sys
import time
from pathlib import Path

import operators
import program
from program import HERE, Trouble

EQUIVALENT = HERE / "equivalent.txt"
NOTICED = ("killed", "endless")
# Milliseconds of tests that a mutant gets at most, as they were measured.
LONGEST = 20_000


def equivalents():
    """Key of a mutant, without the number of the spot: the reason why it makes no difference."""
    found = {}
    if not EQUIVALENT.exists():
        return found
    for number, line in enumerate(EQUIVALENT.read_text(encoding="utf-8").splitlines(), 1):
        if not line.strip() or line.startswith("#"):
            continue
        place, sign, reason = line.rpartition(" => ")
        if not sign or not reason.strip():
            raise Trouble(f"{EQUIVALENT.name}:{number}: no reason")
        found[place.strip()] = reason.strip()
    return found


def place_of(mutant):
    """As it stands in the list of equivalents; the spot only where there are several."""
    parts = [mutant.path, mutant.operator, mutant.text, mutant.change]
    return " | ".join(parts + ([f"#{mutant.spot}"] if mutant.spot > 1 else []))


def alone_path():
    return program.WORK / f"halvora_alone-{os.getpid()}"


def folder_of(path):
    return Path(path).parent.as_posix()


class Results:
    """A line a trial; the last one of a mutant counts."""

    def __init__(self):
        self.known = {}
        for file in sorted(program.WORK.glob("*.jsonl")):
            for line in file.read_text(encoding="utf-8").splitlines():
                entry = json.loads(line)
                self.known[entry["mutant"]] = entry

    def add(self, mutant, entry):
        self.known[mutant.key] = entry
        file = program.WORK / (folder_of(mutant.path).replace("/", "-") + ".jsonl")
        with open(file, "a", encoding="utf-8") as out:
            out.write(json.dumps(entry, ensure_ascii=False) + "\n")


class Campaign:
    def __init__(self, arguments):
        self.arguments = arguments
        just_look = arguments.summary or arguments.list_survivors
        self.sources = program.prepare(
            say, must_build=not (just_look or arguments.no_build), jobs=arguments.jobs
        )
        self.tests = program.Tests()
        for name in self.tests.failing:
            say(f"fails without any mutant, and is left out: {name}")
        self.results = Results()
        self.equivalents = equivalents()
        self.kills = {}
        self.reach_of_file = {}
        for entry in self.results.known.values():
            self.count_kill(entry["mutant"].split(" | ")[0], entry.get("killer"))

    def count_kill(self, path, test):
        if test:
            counts = self.kills.setdefault(path, {})
            counts[test] = counts.get(test, 0) + 1

    def wanted(self):
        """By folder, in the order of the sample: the mutants that count."""
        folders = {}
        for path, source in self.sources.items():
            folder = folder_of(path)
            if self.arguments.folder and folder not in self.arguments.folder:
                continue
            if self.arguments.file and path not in self.arguments.file:
                continue
            for mutant in source.mutants:
                if source.how[mutant.number] != "void":
                    folders.setdefault(folder, []).append(mutant)
        for mutants in folders.values():
            mutants.sort(key=lambda m: hashlib.sha256((self.arguments.seed + m.key).encode()).digest())
        return dict(sorted(folders.items()))

    def reaching(self, mutant):
        """The tests that can notice, the likeliest and quickest first."""
        source = self.sources[mutant.path]
        tests = self.tests.of_mutant
        found = tests.get(mutant.number, [])
        if source.how[mutant.number] == "alone" or is_of_the_file(source, mutant):
            if mutant.path not in self.reach_of_file:
                everything = {t for m in source.mutants for t in tests.get(m.number, ())}
                self.reach_of_file[mutant.path] = everything
            found = self.reach_of_file[mutant.path]
        kills = self.kills.get(mutant.path, {})
        stem = Path(mutant.path).stem
        folder = "tests/" + folder_of(mutant.path) + "/"
        last = self.results.known.get(mutant.key, {}).get("killer")

        def likely(test):
            is_named_so = stem in Path(self.tests.file[test]).stem
            is_near = self.tests.file[test].startswith(folder)
            cost = self.tests.milliseconds[test]
            usual = -kills.get(test, 0) / (cost + 50)
            return (test != last, usual, not is_named_so, not is_near, cost, test)

        # One that many slow tests reach is given up after the likeliest of them.
        chosen, left = [], LONGEST
        for test in sorted(found, key=likely):
            left -= self.tests.milliseconds[test]
            if chosen and left < 0:
                break
            chosen.append(test)
        return chosen

    def witness(self, tests):
        return program.digest(*sorted({self.tests.digest(test) for test in tests}))

    def verdict(self, mutant):
        """What is known and still true, or None."""
        entry = self.results.known.get(mutant.key)
        source = self.sources[mutant.path]
        if entry and entry["source"] == source.digest:
            if entry["status"] == "stillborn":
                return "stillborn"
            if entry["status"] in NOTICED:
                # Without a name, before any test began.
                killer = entry["killer"]
                now = self.tests.digest(killer) if killer else self.witness(self.reaching(mutant))
                if entry["witness"] == now:
                    return entry["status"]
            elif entry["witness"] == self.witness(self.reaching(mutant)):
                return "survived"
        if not self.reaching(mutant):
            return "unreached"
        return None

    def tried(self, mutants):
        """Of a folder's mutants, by verdict; as many as the sample asks for."""
        found = {"killed": [], "endless": [], "survived": [], "unreached": [], "equivalent": []}
        most = len(mutants) if self.arguments.all else self.arguments.sample
        verdicts = []
        for mutant in mutants:
            if len(verdicts) == most:
                break
            verdict = self.verdict(mutant)
            if verdict not in NOTICED and place_of(mutant) in self.equivalents:
                found["equivalent"].append(mutant)
            elif verdict != "stillborn":
                verdicts.append((verdict, mutant))
        # What no test reaches is known at once: of a campaign cut short it would be too many.
        while verdicts and verdicts[-1][0] in (None, "unreached"):
            verdicts.pop()
        for verdict, mutant in verdicts:
            if verdict is not None:
                found[verdict].append(mutant)
        return found

    def try_all(self):
        """Goes through the folders side by side, so that a campaign cut short is a smaller sample."""
        until = time.monotonic() + 60 * self.arguments.minutes if self.arguments.minutes else None
        queues = {folder: list(mutants) for folder, mutants in self.wanted().items()}
        counts = dict.fromkeys(queues, 0)
        most = sys.maxsize if self.arguments.all else self.arguments.sample
        while queues:
            for folder in list(queues):
                if not queues[folder] or counts[folder] >= most:
                    del queues[folder]
                    continue
                if until and time.monotonic() > until:
                    return
                mutant = queues[folder].pop(0)
                if place_of(mutant) in self.equivalents:
                    continue
                verdict = self.verdict(mutant)
                if self.arguments.survivors:
                    last = self.results.known.get(mutant.key, {}).get("status")
                    if last != "survived":
                        continue
                if verdict is None:
                    verdict = self.try_one(mutant)
                counts[folder] += verdict != "stillborn"

    def try_one(self, mutant):
        source = self.sources[mutant.path]
        begun = time.monotonic()
        entry = {"mutant": mutant.key, "source": source.digest, "line": mutant.line}
        tests = self.reaching(mutant)
        test_program = program.PROGRAM
        if source.how[mutant.number] == "alone":
            test_program = self.alone(source, mutant)
        if test_program is None:
            entry["status"] = "stillborn"
        else:
            status, killer = self.run_tests(test_program, mutant, list(tests))
            entry |= {"status": status, "killer": killer}
            if killer not in self.tests.file:
                killer = entry["killer"] = None
            entry["witness"] = self.tests.digest(killer) if killer else self.witness(tests)
            self.count_kill(mutant.path, killer)
        entry["seconds"] = round(time.monotonic() - begun, 2)
        self.results.add(mutant, entry)
        if entry["status"] not in NOTICED:
            say(f"{entry['status']}: {mutant.path}:{mutant.line}: {mutant.operator}: {mutant.change}")
        return entry["status"]

    def run_tests(self, test_program, mutant, tests):
        """A few first: most mutants end there."""
        most = 5
        while tests:
            batch, cost = [], 0
            while tests and len(batch) < most:
                batch.append(tests.pop(0))
                cost += self.tests.milliseconds[batch[-1]]
            status, killer = program.notice(test_program, mutant.number, batch, cost)
            if status != "survived":
                return status, killer
            most = len(tests)
        return "survived", None

    def alone(self, source, mutant):
        """A program whose one source was compiled with this mutant and no other."""
        alone = alone_path()
        output = alone.with_suffix(".o")
        text = operators.edited(source.text, mutant.single)
        if source.compiled(text, output) is not None:
            return None
        objects = [other.object for other in self.sources.values() if other is not source]
        program.link([*objects, output, program.runtime()], alone)
        return alone

    def rows(self):
        """A line of the table for each folder: its name and its numbers."""
        for folder, mutants in self.wanted().items():
            found = self.tried(mutants)
            noticed = len(found["killed"]) + len(found["endless"])
            lived = len(found["survived"]) + len(found["unreached"])
            yield folder, [len(mutants), noticed + lived, noticed, lived, len(found["equivalent"])]

    def list_survivors(self):
        count = 0
        for mutants in self.wanted().values():
            found = self.tried(mutants)
            for mutant in sorted(found["survived"] + found["unreached"],
                                 key=lambda m: (m.path, m.line)):  # fmt: skip
                how = " (not reached)" if mutant in found["unreached"] else ""
                print(f"{mutant.path}:{mutant.line}{how}\n    {place_of(mutant)}")
                count += 1
        print(f"{count} survivors")


def is_of_the_file(source, mutant):
    """In what is made before any test begins."""
    text = operators.top_items(source.text)
    head = ""
    for _, line, found in text:
        if line > mutant.line:
            break
        head = found
    return "(" not in head and not head.startswith(("struct", "class", "namespace", "enum"))


def print_table(rows, least):
    """Whether each folder has the share that is wanted."""
    is_good, total = True, [0] * 5
    print("| folder | places | tried | noticed | survived | equivalent | score |")
    print("|---|---:|---:|---:|---:|---:|---:|")
    for folder, row in rows:
        total = [one + other for one, other in zip(total, row)]
        print_row(folder, row)
        is_good = is_good and row[1] > 0 and 100 * row[2] >= least * row[1]
    if total[0] == 0:
        raise Trouble("no places in what was asked for")
    print_row("all", total)
    return is_good


def print_row(name, row):
    tried, noticed = row[1], row[2]
    score = f"{100 * noticed / tried:.0f} %" if tried else "-"
    print(f"| `{name}` | " + " | ".join(f"{number:,}" for number in row[:5]) + f" | {score} |")


def say(text):
    print(text, file=sys.stderr, flush=True)


def carry_out(arguments):
    """Tries, or lists, what is asked for; gives the rows of the table."""
    campaign = Campaign(arguments)
    if arguments.list_survivors:
        campaign.list_survivors()
        return []
    if not arguments.summary:
        try:
            campaign.try_all()
        finally:
            for left in (alone_path(), *map(alone_path().with_suffix, (".o", ".d"))):
                left.unlink(missing_ok=True)
    return list(campaign.rows())


def run(arguments):
    rows = []
    if arguments.beside:
        if not arguments.folder:
            raise Trouble("--beside needs a --folder")
        for folder in arguments.folder:
            program.stay_beside(folder, arguments.more)
            rows += carry_out(arguments)
    else:
        rows = carry_out(arguments)
    return 0 if arguments.list_survivors or print_table(rows, arguments.least) else 1
