# SPDX-License-Identifier: Apache-2.0
"""Finds the places of a C++ source where a fault can be planted, and plants it.

It reads tokens, not C++: the tree's formatter sets binary operators apart from templates, references
and signs by their spaces. What is taken for a place and is none does not compile, and is left out.
"""

import bisect
import re
from dataclasses import dataclass, field

TOKEN = re.compile(
    r"""(?P<name>[A-Za-z_]\w*)
      | (?P<number>0[xX][0-9a-fA-F']+[uUlLzZ]*
          | (?:\d[\d']*\.?[\d']*|\.\d+)(?:[eE][+-]?\d+)?[uUlLfFzZ]*)
      | (?P<sign><=>|<<=|>>=|->\*|\.\.\.|::|->|\+\+|--|<<|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|.)""",
    re.X,
)
# Comments, then what stands between quotes; a digit's separator is no quote.
HIDDEN = re.compile(
    r'//[^\n]*|/\*.*?\*/|R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)"|"(?:\\.|[^"\\\n])*"'
    r"|(?<![0-9a-fA-F])'(?:\\.|[^'\\\n])+'|^[ \t]*#[^\n]*(?:\\\n[^\n]*)*",
    re.S | re.M,
)
INFIX = {
    "<": ("<=", "less", "lessEqual", "<", ">"),
    "<=": ("<", "lessEqual", "less", "<", ">"),
    ">": (">=", "greater", "greaterEqual", "<", ">"),
    ">=": (">", "greaterEqual", "greater", "<", ">"),
    "==": ("!=", "equal", "unequal", "==", "=="),
    "!=": ("==", "unequal", "equal", "==", "=="),
    "+": ("-", "add", "subtract", "+", "+"),
    "-": ("+", "subtract", "add", "+", "+"),
    "*": ("/", "times", "over", "*", "*"),
    "/": ("*", "over", "times", "*", "*"),
}
OPENING, CLOSING = "([{", ")]}"
NO_STATEMENT = set(
    """return if for while switch do else case default delete throw using const auto static constexpr
    goto try catch namespace struct class enum template typedef break continue static_assert new
    sizeof extern inline public private protected friend co_await co_return co_yield union""".split()
)
# Nothing that a test could see depends on them.
UNSEEN = re.compile(r"(?:\.|->|\b)(reserve|shrink_to_fit)\b|^static_cast<void>")
SYMMETRIC = {"min", "max", "swap", "minmax", "equal"}
STEP = 4096  # more than the mutants of any file


@dataclass
class Mutant:
    path: str
    line: int
    operator: str
    text: str  # the line as it stands, without its margins
    change: str
    spot: int  # of equal changes of equal lines, the how manieth
    single: list  # (begin, end, text) for a source of its own
    wrap: list = field(default_factory=list)  # (begin, end, before, after, replacement or None)
    number: int = 0
    is_fixed: bool = False  # the compiler computes it: no choice at run time

    @property
    def key(self):
        return " | ".join((self.path, self.operator, self.text, self.change, str(self.spot)))


class Source:
    def __init__(self, path, text):
        self.path, self.text = path, text
        self.code = HIDDEN.sub(blanked, text)
        self.tokens = []
        for match in TOKEN.finditer(self.code):
            if not match.group().isspace():
                self.tokens.append((match.start(), match.end(), match.group(), match.lastgroup))
        self.partner = partners(self.tokens)
        self.starts = [0] + [match.end() for match in re.finditer("\n", text)]
        self.mutants = []
        self.seen = {}
        self.items = top_items(self.code)

    def word(self, at):
        return self.tokens[at][2] if 0 <= at < len(self.tokens) else ""

    def is_apart(self, at):
        """Spaces on both sides, as the formatter puts them around binary operators."""
        begin, end = self.tokens[at][:2]
        return self.code[begin - 1].isspace() and self.code[end : end + 1].isspace()

    def item_of(self, offset):
        found = None
        for item in self.items:
            if item[0] > offset:
                break
            found = item
        return found

    def add(self, offset, operator, change, single, wrap=()):
        line = self.code.count("\n", 0, offset) + 1
        begin = self.starts[line - 1]
        text = self.text[begin:].split("\n", 1)[0].strip()
        same = (operator, text, change)
        self.seen[same] = self.seen.get(same, 0) + 1
        mutant = Mutant(
            self.path, line, operator, text, change, self.seen[same], list(single), list(wrap)
        )
        mutant.is_fixed = not wrap or self.is_fixed(offset)
        self.mutants.append(mutant)

    def is_fixed(self, offset):
        """In the value of a constexpr variable."""
        item = self.item_of(offset)
        if item is not None and "constexpr" in item[2] and ")" not in item[2].split("=")[0]:
            return True
        at = bisect.bisect_left(self.tokens, (offset,)) - 1
        while at >= 0:
            word = self.word(at)
            if word in CLOSING:
                at = self.partner.get(at, 0)
            elif word == ";" or (word == "{" and self.word(at - 1) in (")", "const", "else", "do")):
                return False
            elif word == "constexpr" and self.word(at - 1) != "if":
                return True
            at -= 1
        return False


def blanked(match):
    text = match.group()
    if text[0] in "\"'" and len(text) > 2:
        return text[0] + "_" * (len(text) - 2) + text[-1] if "\n" not in text else "_" * len(text)
    if text.startswith('R"'):
        return re.sub(r"[^\n]", "_", text)
    return re.sub(r"[^\n]", " ", text)


def partners(tokens):
    found, open_ones = {}, []
    for at, token in enumerate(tokens):
        if token[2] in OPENING:
            open_ones.append(at)
        elif token[2] in CLOSING and open_ones:
            other = open_ones.pop()
            found[at], found[other] = other, at
    return found


def top_items(code):
    """(begin, line, head) of what begins in the first column."""
    items, offset = [], 0
    for line, text in enumerate(code.split("\n"), 1):
        if text and (text[0].isalpha() or text[0] in "[_"):
            rest = code[offset:]
            head = re.match(r"[^{;]*", rest).group()
            items.append((offset, line, head))
        offset += len(text) + 1
    return items


def operand_begin(source, at, stops):
    """Where the left operand of the operator at this token begins."""
    at -= 1
    while at >= 0:
        word = source.word(at)
        if word in CLOSING:
            at = source.partner.get(at, 0)
        elif word in OPENING or word in stops:
            break
        at -= 1
    return source.tokens[at + 1][0]


def operand_end(source, at, stops):
    at += 1
    while at < len(source.tokens):
        word = source.word(at)
        if word in OPENING:
            at = source.partner.get(at, len(source.tokens))
        elif word in CLOSING or word in stops:
            break
        at += 1
    return source.tokens[at - 1][1]


ASSIGNS = {"=", "+=", "-=", "*=", "/=", "%=", "|=", "&=", "^=", "<<=", ">>="}
BELOW_OR = {";", ",", "?", ":", "return", "throw", "co_return"} | ASSIGNS


def binary(source, at):
    begin, end, word, _ = source.tokens[at]
    if word in INFIX and source.is_apart(at) and source.word(at - 1) not in (",", "("):
        other, is_op, mutated, left, right = INFIX[word]
        kind = "boundary" if word in ("<", "<=", ">", ">=") else "arithmetic"
        kind = "equality" if word in ("==", "!=") else kind
        infix = (
            f"{left} ::halvora_mutants::Infix<@, ::halvora_mutants::Op::{is_op}, "
            f"::halvora_mutants::Op::{mutated}>{{}} {right}"
        )
        wrap = [(begin, end, "", "", infix)]
        source.add(begin, kind, f"{word} → {other}", [(begin, end, other)], wrap)
    elif word in ("&&", "||") and source.is_apart(at):
        other = "||" if word == "&&" else "&&"
        stops = BELOW_OR | {"||"} if word == "&&" else BELOW_OR
        first = operand_begin(source, at, stops)
        last = operand_end(source, at, stops | {word})
        # a || b is !(!a && !b): each operand is evaluated once, or not at all, as it should be.
        flip = "::halvora_mutants::flipped<@>("
        wrap = [
            (first, last, flip, ")", None),
            (first, source.tokens[at - 1][1], flip, ")", None),
            (source.tokens[at + 1][0], last, flip, ")", None),
        ]
        source.add(begin, "logic", f"{word} → {other}", [(begin, end, other)], wrap)
    elif word in ("+=", "-="):
        other = "-=" if word == "+=" else "+="
        last = operand_end(source, at, {";", ","})
        wrap = [(source.tokens[at + 1][0], last, "::halvora_mutants::negated<@>(", ")", None)]
        source.add(begin, "arithmetic", f"{word} → {other}", [(begin, end, other)], wrap)


def literal(source, at):
    begin, end, word, kind = source.tokens[at]
    if kind != "number" or source.code[begin - 1] == "<" or source.code[end : end + 1] == ">":
        return
    if source.word(at - 1) == "case":
        return
    single = [(begin, end, f"({word} + 1)")]
    wrap = [(begin, end, "::halvora_mutants::number<@>(", ")", None)]
    source.add(begin, "constant", f"{word} → {word} + 1", single, wrap)


def condition(source, at):
    word = source.word(at)
    if word == "?" and source.is_apart(at):
        first = operand_begin(source, at, BELOW_OR)
        last = source.tokens[at - 1][1]
    elif word in ("if", "while") and source.word(at + 1) == "(":
        close = source.partner.get(at + 1)
        if close is None or source.word(at + 1 - 2) == "constexpr":
            return
        inner = range(at + 2, close)
        depth, begin, assigned = 0, at + 2, None
        for inside in inner:
            sign = source.word(inside)
            depth += (sign in OPENING) - (sign in CLOSING)
            if depth == 0 and sign == ";":
                begin, assigned = inside + 1, None
            elif depth == 0 and sign == "=":
                assigned = inside
        last = source.tokens[close - 1][1]
        if assigned is not None:
            name = source.word(assigned - 1)
            if name == "]" or word == "while":
                return
            text = f"; ::halvora_mutants::flipped<@>({name})"
            offset = source.tokens[begin][0]
            source.add(offset, "condition", "negated", [(last, last, f"; !{name}")],
                       [(last, last, text, "", None)])
            return
        first = source.tokens[begin][0]
        words = {source.word(inside) for inside in range(begin, close)}
        if words & {"==", "!="} and not words & {"&&", "||"}:
            return  # another operator's
    else:
        return
    source.add(first, "condition", "negated", [(first, first, "!("), (last, last, ")")],
               [(first, last, "::halvora_mutants::flipped<@>(", ")", None)])


def begins_statement(source, at):
    before = source.word(at - 1)
    if before in (";", "{", "}", "else"):
        return True
    if before == ":":
        label = at - 2
        while source.word(label) == "::" or source.tokens[label][3] == "name":
            if source.word(label) in ("case", "default"):
                return True
            label -= 1
        return False
    if before == ")":
        open_at = source.partner.get(at - 1, 0)
        control = source.word(open_at - 1)
        if control == "constexpr":
            control = source.word(open_at - 2)
        return control in ("if", "for", "while", "switch")
    return False


def statement(source, at):
    word = source.word(at)
    begin = source.tokens[at][0]
    if not begins_statement(source, at):
        return
    skip = "if (::halvora_mutants::on<@>()) {} else "
    if word in ("return", "break", "continue") and source.word(at + 1) == ";":
        end = source.tokens[at + 1][1]
        source.add(begin, "statement", f"no {word}", [(begin, end, ";")], [(begin, end, skip, "", None)])
        return
    if word in NO_STATEMENT or not (source.tokens[at][3] == "name" or word in ("*", "++", "--")):
        return
    here = at
    if word in ("*", "++", "--"):
        here += 1
    is_call = word in ("++", "--")
    after_name = False
    while here < len(source.tokens):
        token = source.tokens[here]
        sign = token[2]
        if token[3] == "name" and sign not in NO_STATEMENT:
            if after_name:
                return  # two names beside each other: a declaration
            after_name = True
        elif sign in (".", "->", "::"):
            after_name = False
        elif sign == "<" and not source.is_apart(here):
            while here < len(source.tokens) and source.word(here) != ">":
                if source.word(here) in (";", "{", ">>"):
                    return
                here += 1
            after_name = True
        elif sign in ("(", "["):
            here = source.partner.get(here, len(source.tokens))
            is_call = is_call or sign == "("
            after_name = True
        elif sign in ASSIGNS:
            here = operand_index(source, here)
            is_call = True
            break
        elif sign in ("++", "--"):
            is_call = True
        else:
            break
        here += 1
    if not is_call or source.word(here) != ";":
        return
    end = source.tokens[here][1]
    if UNSEEN.search(source.code[begin:end]):
        return
    source.add(begin, "statement", "left out", [(begin, end, ";")], [(begin, end, skip, "", None)])


def operand_index(source, at):
    at += 1
    while at < len(source.tokens) and source.word(at) != ";" and source.word(at) not in CLOSING:
        at = source.partner.get(at, at) + 1 if source.word(at) in OPENING else at + 1
    return at


def verdict(source, at):
    """return of a function that says yes or no."""
    if source.word(at) != "return" or source.word(at + 1) in (";", "{"):
        return
    first = source.tokens[at + 1][0]
    item = source.item_of(first)
    stop = operand_index(source, at)
    if item is None or source.word(stop) != ";":
        return
    words = {source.word(inside) for inside in range(at + 1, stop)}
    head = item[2].split("(")[0]
    is_bool = re.search(r"\bbool\b", head) or words & {"true", "false"}
    if not is_bool or words & {"==", "!=", "<", ">", "<=", ">="}:
        return
    last = source.tokens[stop - 1][1]
    source.add(first, "return", "negated", [(first, first, "!("), (last, last, ")")],
               [(first, last, "::halvora_mutants::returned<@>(", ")", None)])


def arguments(source, at):
    if source.word(at) != "(" or source.tokens[at - 1][3] != "name":
        return
    if source.word(at - 1) in SYMMETRIC | NO_STATEMENT:
        return
    close = source.partner.get(at)
    if close is None:
        return
    found, here = [], at + 1
    begin = here
    while here <= close:
        if here == close or source.word(here) == ",":
            found.append((begin, here))
            begin = here + 1
        elif source.word(here) in OPENING:
            here = source.partner.get(here, close)
        here += 1
    for one, other in zip(found, found[1:]):
        if not all(is_simple(source, *part) for part in (one, other)):
            continue
        spans = [(source.tokens[b][0], source.tokens[e - 1][1]) for b, e in (one, other)]
        texts = [source.text[b:e] for b, e in spans]
        if texts[0] == texts[1]:
            continue
        wrap = [
            (*spans[0], f"::halvora_mutants::swapped<@>({texts[1]}, ", ")", None),
            (*spans[1], f"::halvora_mutants::swapped<@>({texts[0]}, ", ")", None),
        ]
        single = [(*spans[0], texts[1]), (*spans[1], texts[0])]
        source.add(spans[0][0], "arguments", f"{texts[0]} ↔ {texts[1]}", single, wrap)


def is_simple(source, begin, end):
    """A name, or a member of one."""
    wanted = True
    for at in range(begin, end):
        token = source.tokens[at]
        is_name = token[3] == "name" and token[2] not in ("this", "true", "false", "nullptr")
        if is_name != wanted or not (is_name or token[2] in (".", "->")):
            return False
        wanted = not wanted
    return end > begin and not wanted


def find(path, text):
    """All mutants of a source."""
    source = Source(path, text)
    blocked = [
        (match.start(), source.code.find(";", match.end()))
        for match in re.finditer(r"\bstatic_assert\b|\breserve\b", source.code)
    ]
    for at, token in enumerate(source.tokens):
        if any(begin <= token[0] <= end for begin, end in blocked):
            continue
        for look in (binary, literal, condition, statement, verdict, arguments):
            look(source, at)
    source.mutants.sort(key=lambda mutant: (mutant.line, mutant.key))
    return source.mutants


def edited(text, edits):
    for begin, end, new in sorted(edits, reverse=True):
        text = text[:begin] + new + text[end:]
    return text


def prepared(text, mutants):
    """The source with all of these mutants beside the code as it is."""
    events = []  # (offset, closing before opening, inner or outer first, order, text)
    replaced = {}
    for mutant in mutants:
        for order, (begin, end, before, after, infix) in enumerate(mutant.wrap):
            number = str(mutant.number)
            rank = (mutant.number, order)
            if infix is not None:
                replaced[begin] = (end, infix.replace("@", number))
                continue
            opening = before.replace("@", number)
            if begin == end:
                events.append((begin, 1, 0, rank, opening))
                continue
            events.append((begin, 2, -end, rank, opening))
            if after:
                events.append((end, 0, -begin, (-rank[0], -rank[1]), after))
    out, at = [], 0
    for offset, _, _, _, new in sorted(events + [(o, 3, 0, (), None) for o in replaced]):
        out.append(text[at:offset])
        at = offset
        if new is None:
            at, new = replaced[offset]
        out.append(new)
    return "".join(out) + text[at:]
