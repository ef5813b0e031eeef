# SPDX-License-Identifier: Apache-2.0
"""Keeps a program from changing any file outside a few folders, and where the kernel is new enough
from sending signals to any process but its own; by the kernel itself (Landlock).

A fault planted in what removes files may remove those of the developer, and has done so.
"""

import ctypes
import os
import struct

CREATE, ADD, RESTRICT = 444, 445, 446  # the same on every processor
NO_NEW_PRIVILEGES = 38
# To write, to remove, to make anything, to rename across folders, to cut short; not to read or run.
CHANGES = 1 << 1 | sum(1 << bit for bit in range(4, 15))
LEAST_VERSION = 3
OWN_SIGNALS = 1 << 1
SIGNALS_VERSION = 6

libc = ctypes.CDLL(None, use_errno=True)


def call(number, *arguments):
    result = libc.syscall(ctypes.c_long(number), *arguments)
    if result < 0:
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))
    return result


def version():
    """0 where the kernel has none."""
    try:
        return call(CREATE, None, ctypes.c_size_t(0), ctypes.c_uint32(1))
    except OSError:
        return 0


def is_possible():
    return version() >= LEAST_VERSION


def enter(folders):
    """This process and all that it starts change files in these folders alone, and in /dev and /proc."""
    rules = struct.pack("Q", CHANGES)
    if version() >= SIGNALS_VERSION:
        rules = struct.pack("QQQ", CHANGES, 0, OWN_SIGNALS)
    ruleset = call(CREATE, rules, ctypes.c_size_t(len(rules)), ctypes.c_uint32(0))
    for folder in (*folders, "/dev", "/proc"):
        place = os.open(folder, os.O_PATH | os.O_CLOEXEC)
        rule = struct.pack("=Qi", CHANGES, place)
        call(ADD, ctypes.c_int(ruleset), ctypes.c_int(1), rule, ctypes.c_uint32(0))
        os.close(place)
    if libc.prctl(NO_NEW_PRIVILEGES, 1, 0, 0, 0) != 0:
        raise OSError("no new privileges")
    call(RESTRICT, ctypes.c_int(ruleset), ctypes.c_uint32(0))
    os.close(ruleset)
