#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes a page on the QML types that a host uses, out of what stands beside their properties, methods
and signals. One that has no word beside it is an error.

make_qml_reference.py PAGE          writes the page
make_qml_reference.py --check       only looks whether all is documented
make_qml_reference.py --self-test   looks whether that is found
"""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
VIEW = ROOT / "faces/qt/halvora_view_item.h"
# Views in QML, and where what their aliases stand for has its types.
VIEWS = {
    "HalvoraStatusView": ROOT / "faces/qt/impl/status_panel.h",
    "HalvoraAudienceView": ROOT / "faces/qt/impl/audience_panel.h",
}
QML_TYPES = {"QString": "string", "QStringList": "list<string>", "QColor": "color", "qint64": "int",
             "std::int64_t": "int", "qreal": "real", "double": "real", "QSizeF": "size"}

PROPERTY = re.compile(r"Q_PROPERTY\(\s*([\w:<>]+)\s*\*?\s*(\w+)\s([^)]*)\)")
METHOD = re.compile(r"^  Q_INVOKABLE ([\w:]+) (\w+)\(([^)]*)\)", re.M)
SIGNAL = re.compile(r"^  void (\w+)\(([^)]*)\);$")
QML_LINE = re.compile(r"^    (?:(readonly) )?property (\w+) (\w+)(?:: (.*))?$")
QML_METHOD = re.compile(r"^    function (\w+)\(([^)]*)\): (\w+) \{$")
QML_SIGNAL = re.compile(r"^    signal (\w+)\((.*)\)$")


def qml_type(name):
    return QML_TYPES.get(name, name)


def opening(text):
    """What a file says of itself, below the licence."""
    lines = []
    for line in text.splitlines()[1:]:
        if not line.startswith("//"):
            break
        lines.append(line[2:].strip())
    return " ".join(lines)


def of_cpp(text):
    """Rows of kind, name, type and words: a type in C++, whose documentation begins with `///`."""
    rows, words, in_signals = [], [], False
    lines = text.splitlines()
    for number, line in enumerate(lines):
        stripped = line.strip()
        if stripped.startswith("///"):
            words.append(stripped[3:].strip())
            continue
        statement = " ".join([stripped, *(other.strip() for other in lines[number + 1:number + 3])])
        if stripped.startswith("Q_PROPERTY("):
            kind, name, rest = PROPERTY.search(statement).groups()
            access = "" if " WRITE " in f" {rest} " else ", read only"
            rows.append(("property", name, qml_type(kind) + access, " ".join(words)))
        elif method := METHOD.search(line):
            kind, name, arguments = method.groups()
            rows.append(("method", f"{name}({arguments})", qml_type(kind), " ".join(words)))
        elif stripped in ("signals:", "public:", "private:", "protected:"):
            in_signals = stripped == "signals:"
        elif in_signals and (signal := SIGNAL.match(line)):
            # What says that a property has changed needs no words of its own.
            if not signal[1].endswith("Changed"):
                rows.append(("signal", f"{signal[1]}({signal[2]})", "", " ".join(words)))
        if stripped:
            words = []
    return rows


def of_qml(text, aliased):
    """The same of a type in QML. What stands above a group without an empty line is of all of it."""
    rows, words, is_open = [], [], False
    for line in text.splitlines():
        if line.startswith("    // "):
            words = [*words, line[7:]] if is_open else [line[7:]]
            is_open = True
            continue
        is_open = False
        if not line.strip():
            words = []
        elif found := QML_LINE.match(line):
            readonly, kind, name, value = found.groups()
            if kind == "alias":
                target = value.split(".")[-1]
                kind = aliased.get(target, "QtObject")
            access = ", read only" if readonly else ""
            rows.append(("property", name, qml_type(kind) + access, " ".join(words)))
        elif found := QML_METHOD.match(line):
            rows.append(("method", f"{found[1]}({found[2]})", found[3], " ".join(words)))
        elif found := QML_SIGNAL.match(line):
            rows.append(("signal", f"{found[1]}({found[2]})", "", " ".join(words)))
    return rows


def tables():
    view = VIEW.read_text(encoding="utf-8")
    found = {"HalvoraView": ("The light: what a phone shows of the show, over the item's whole size.",
                             of_cpp(view))}
    for name, panel in VIEWS.items():
        aliased = {one: kind for kind, one, _ in PROPERTY.findall(panel.read_text(encoding="utf-8"))}
        text = (ROOT / f"faces/qt/{name}.qml").read_text(encoding="utf-8")
        found[name] = (opening(text), of_qml(text, aliased))
    return found


def undocumented(rows):
    return [name for _, name, _, words in rows if not words]


def page(found):
    lines = ["# The QML types", "", "`import Halvora` has these types for a host. How "
             "they stand in a window is shown in the page on embedding the kit."]
    for name, (about, rows) in found.items():
        lines += ["", f"## {name}", "", about]
        for kind, title in (("property", "Properties"), ("method", "Methods"), ("signal", "Signals")):
            of_kind = [row for row in rows if row[0] == kind]
            if not of_kind:
                continue
            has_type = kind != "signal"
            lines += ["", f"### {title} of {name}", ""]
            lines += ["| name | type | |", "|---|---|---|"] if has_type else ["| name | |", "|---|---|"]
            lines += [f"| `{one}` |{f' `{type_}` |' if has_type else ''} {words} |"
                      for _, one, type_, words in of_kind]
    return "\n".join(lines) + "\n"


def self_test():
    cpp = """class A {
  /// Whether it is.
  Q_PROPERTY(bool isOne READ isOne NOTIFY isOneChanged)
  Q_PROPERTY(qreal width READ width WRITE
                 setWidth NOTIFY widthChanged)
 public:
  /// Begins.
  Q_INVOKABLE void start();
 signals:
  void ended();
  void isOneChanged();
"""
    qml = """Item {
    // Of both.
    property alias one: panel.one
    property alias two: panel.one

    property bool three: false
    // Does it.
    function act(name: string): void {
"""
    of_both = of_cpp(cpp) + of_qml(qml, {"one": "QString"})
    assert [row[1] for row in of_both] == [
        "isOne", "width", "start()", "ended()", "one", "two", "three", "act(name: string)"], of_both
    assert undocumented(of_both) == ["width", "ended()", "three"], of_both
    assert of_both[0][2] == "bool, read only" and of_both[1][2] == "real", of_both
    assert of_both[4][2] == "string" and of_both[5][3] == "Of both.", of_both
    print("self-test: 3 that have no words found")


def main():
    if sys.argv[1:] == ["--self-test"]:
        self_test()
        return 0
    found = tables()
    missing = [f"{name}.{one}" for name, (_, rows) in found.items() for one in undocumented(rows)]
    for one in missing:
        print(f"{one}: nothing says what it is for", file=sys.stderr)
    for name, (_, rows) in found.items():
        if len(rows) < 5:
            print(f"{name}: only {len(rows)} properties found", file=sys.stderr)
            missing.append(name)
    if not missing and sys.argv[1:] != ["--check"]:
        Path(sys.argv[1]).write_text(page(found), encoding="utf-8")
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main())
