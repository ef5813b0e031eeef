# SPDX-License-Identifier: Apache-2.0
"""A table as programs that measure print it."""


def print_table(lines, rules, is_markdown):
    """The first line is the head. In Markdown `rules` is the row below it, which aligns columns;
    elsewhere columns are as wide as their widest cell."""
    if is_markdown:
        for line in [lines[0], rules, *lines[1:]]:
            print("| " + " | ".join(line) + " |")
        return
    widths = [max(map(len, column)) for column in zip(*lines)]
    for line in lines:
        print("  ".join(cell.ljust(width) for cell, width in zip(line, widths)).rstrip())
