#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Finds values of public enumerations that nothing is said of: neither at the value nor, by its
name, at its enumeration. Reads what Doxygen has made of the headers.

check_reference.py XML_FOLDER
check_reference.py --self-test
"""

import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path


def words_of(element):
    found = (element.find(kind) for kind in ("briefdescription", "detaileddescription"))
    return " ".join("".join(one.itertext()) for one in found if one is not None).strip()


def names_in(element):
    """What stands between backticks in its words."""
    return {"".join(code.itertext()) for code in element.iter("computeroutput")}


def unsaid(root):
    """Values without a word, and how many there are in all."""
    missing, count = [], 0
    for enumeration in root.iter("memberdef"):
        if enumeration.get("kind") != "enum":
            continue
        named = names_in(enumeration)
        for value in enumeration.iter("enumvalue"):
            count += 1
            name = value.findtext("name")
            if not words_of(value) and name not in named:
                missing.append(f"{enumeration.findtext('qualifiedname')}::{name}")
    return missing, count


def self_test():
    text = """<doxygen><memberdef kind="enum"><qualifiedname>Kind</qualifiedname>
<briefdescription><para>Is <computeroutput>first</computeroutput>.</para></briefdescription>
<enumvalue><name>first</name><briefdescription/></enumvalue>
<enumvalue><name>second</name><briefdescription><para>Is.</para></briefdescription></enumvalue>
<enumvalue><name>third</name><briefdescription> </briefdescription></enumvalue>
</memberdef></doxygen>"""
    found = unsaid(ElementTree.fromstring(text))
    assert found == (["Kind::third"], 3), found
    print("self-test: 1 of 3 values found that nothing is said of")


def main():
    if sys.argv[1:] == ["--self-test"]:
        self_test()
        return 0
    missing, count = set(), 0
    for path in sorted(Path(sys.argv[1]).glob("*.xml")):
        # A namespace's and its file's pages both have them.
        values = unsaid(ElementTree.parse(path).getroot())
        missing.update(values[0])
        count += values[1]
    for name in sorted(missing):
        print(f"{name}: nothing says what it stands for", file=sys.stderr)
    if not count:
        print(f"{sys.argv[1]}: no enumeration found", file=sys.stderr)
    return 1 if missing or not count else 0


if __name__ == "__main__":
    sys.exit(main())
