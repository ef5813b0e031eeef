#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Prints a bill of materials of the committed tree, in SPDX 2.3's tag-value format: every file with
its checksum and licence, and the libraries that components are linked with.

make_sbom.py [--check]   with --check only says whether each file's licence is known
"""

import hashlib
import re
import subprocess
import sys
from datetime import datetime, timezone
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
IDENTIFIER = re.compile(r"SPDX-License-Identifier: ([\w.-]+)")
# Name, licence as Debian builds it, Debian's package of which the version is asked.
LIBRARIES = [
    ("libjpeg-turbo", "IJG AND BSD-3-Clause AND Zlib", "libturbojpeg0-dev"),
    ("libpng", "libpng-2.0", "libpng-dev"),
    ("FFmpeg", "GPL-2.0-or-later", "libavcodec-dev"),
    ("libsystemd", "LGPL-2.1-or-later", "libsystemd-dev"),
    ("libyaml", "MIT", "libyaml-dev"),
    ("liblo", "LGPL-2.1-or-later", "liblo-dev"),
    ("libola", "LGPL-2.1-or-later", "libola-dev"),
    ("nettle", "LGPL-3.0-or-later OR GPL-2.0-or-later", "nettle-dev"),
    ("Qt", "LGPL-3.0-only", "qt6-base-dev"),
    ("RapidJSON", "MIT", "rapidjson-dev"),
    ("CLI11", "BSD-3-Clause", "libcli11-dev"),
]


def output_of(*command):
    run = subprocess.run(command, capture_output=True, text=True, cwd=ROOT)
    return run.stdout if run.returncode == 0 else ""


def default_licence():
    """Of files that cannot say it themselves."""
    found = re.search(r"^License: (\S+)$", (ROOT / ".reuse/dep5").read_text("utf-8"), re.MULTILINE)
    return found.group(1) if found else None


def licence_of(data, default):
    found = IDENTIFIER.search(data[:400].decode("utf-8", "replace"))
    return found.group(1) if found else default


def main():
    names = [name for name in output_of("git", "ls-files", "-z").split("\0") if name]
    version = re.search(r'HALVORA_VERSION "(.*)"',
                        (ROOT / "include/halvora/version.h").read_text("utf-8")).group(1)
    default = default_licence()
    files = []
    for number, name in enumerate(sorted(names)):
        data = (ROOT / name).read_bytes()
        files.append((number, name, hashlib.sha1(data).hexdigest(), licence_of(data, default)))
    unknown = [name for _, name, _, licence in files if licence != "Apache-2.0"]
    if sys.argv[1:] == ["--check"]:
        print(f"{len(files)} files, {len(unknown)} of another or no licence: {' '.join(unknown)}")
        return 1 if unknown or not files else 0
    # As SPDX reckons what a package holds.
    code = hashlib.sha1("".join(sorted(sha for _, _, sha, _ in files)).encode()).hexdigest()
    now = datetime.now(timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")
    lines = ["SPDXVersion: SPDX-2.3", "DataLicense: CC0-1.0", "SPDXID: SPDXRef-DOCUMENT",
             f"DocumentName: HalvoraSDK-{version}",
             f"DocumentNamespace: https://halvora.example/spdx/{version}-{code}",
             "Creator: Tool: make_sbom.py", f"Created: {now}", "",
             "PackageName: HalvoraSDK", "SPDXID: SPDXRef-HalvoraSDK", f"PackageVersion: {version}",
             "PackageDownloadLocation: NOASSERTION", "FilesAnalyzed: true",
             f"PackageVerificationCode: {code}", "PackageLicenseConcluded: Apache-2.0",
             "PackageLicenseInfoFromFiles: Apache-2.0", "PackageLicenseDeclared: Apache-2.0",
             "PackageCopyrightText: 2026 The authors of HalvoraSDK",
             "Relationship: SPDXRef-DOCUMENT DESCRIBES SPDXRef-HalvoraSDK"]
    for name, licence, package in LIBRARIES:
        found = output_of("dpkg-query", "-W", "-f=${Version}", package)
        identifier = "SPDXRef-" + re.sub(r"[^\w.-]", "-", name)
        lines += ["", f"PackageName: {name}", f"SPDXID: {identifier}",
                  f"PackageVersion: {found or 'NOASSERTION'}",
                  "PackageDownloadLocation: NOASSERTION", "FilesAnalyzed: false",
                  f"PackageLicenseConcluded: {licence}", f"PackageLicenseDeclared: {licence}",
                  "PackageCopyrightText: NOASSERTION",
                  f"Relationship: SPDXRef-HalvoraSDK DEPENDS_ON {identifier}"]
    for number, name, sha, licence in files:
        lines += ["", f"FileName: ./{name}", f"SPDXID: SPDXRef-File-{number}",
                  f"FileChecksum: SHA1: {sha}", f"LicenseConcluded: {licence}",
                  f"LicenseInfoInFile: {licence}",
                  "FileCopyrightText: 2026 The authors of HalvoraSDK"]
    print("\n".join(lines))
    return 0


if __name__ == "__main__":
    sys.exit(main())
