"""Puts many mutants into one source at once, each asleep until its number is called: for tools/mutate.

A function that holds mutants gets a copy of its body for each; in front of the blocks of the body
itself stands a note which of them would have been reached. Texts and numbers outside of functions are
chosen when the program starts. What can be neither is told as "single": it has to be compiled alone.
"""

import bisect
import collections
import dataclasses
import re

import mutants as faults

INCLUDE = '#include "tests/mutate/Mutants.h"\n'
SCOPE = re.compile(r"\s*(?:(?:inline\s+)?namespace\b|extern\b|(?:struct|class|union)\b)")
# What stands in front of the bracket that opens a block of statements.
BLOCK = re.compile(r"(?:\)|\]|\b(?:else|do|try|const|noexcept|override|mutable)|->\s[\w:<>*&,\s]+)\s$")
TEXTS = r'(?:u8)?"(?:\\.|[^"\\\n])*"'


@dataclasses.dataclass(frozen=True)
class Function:
    """`opening` and `closing`: the offsets of its body's brackets."""

    opening: int
    closing: int
    is_constant: bool


@dataclasses.dataclass
class Woven:
    """`copies`: number -> first and last line of its body's copy; `chosen`: number -> line of a text or
    number outside of functions; `single`: the numbers that are not in it."""

    text: str = ""
    copies: dict = dataclasses.field(default_factory=dict)
    chosen: dict = dataclasses.field(default_factory=dict)
    single: set = dataclasses.field(default_factory=set)


def without_brackets(text):
    while True:
        less = re.sub(r"\([^()]*\)", "", text)
        if less == text:
            return text
        text = less


def is_function(head, before):
    """Is the bracket behind `head`, which begins at the last statement's end, that of a body?"""
    flat = re.sub(r"operator\s*[^\s\w(]+", "operator", without_brackets(head))
    return ("(" in head and before in " \n" and "=" not in flat
            and not re.match(r"\s*(?:catch|enum)\b", head))


def functions(code):
    """The functions of a source whose comments and texts are blanks."""
    found, depth, begin, at = [], 0, 0, 0
    while at < len(code):
        sign = code[at]
        depth += {"(": 1, ")": -1}.get(sign, 0)
        if sign == "{":
            head = code[begin:at]
            if depth == 0 and SCOPE.match(head) and "(" not in head:
                begin = at + 1
            else:
                closing = faults.closing(code, at) or len(code) - 1
                if depth == 0 and is_function(head, code[at - 1]):
                    constant = re.search(r"\b(?:constexpr|consteval)\b", head) is not None
                    found.append(Function(at, closing, constant))
                    begin = closing + 1
                at = closing
        elif sign in ";}" and depth == 0:
            begin = at + 1
        at += 1
    return found


def is_block(code, opening):
    head = code[max(0, opening - 200):opening]
    if not BLOCK.search(head):
        return False
    if not head.rstrip().endswith(")"):
        return True
    depth, at = 0, len(head.rstrip()) - 1
    while at >= 0:
        depth += {")": 1, "(": -1}.get(head[at], 0)
        if depth == 0:
            break
        at -= 1
    # Nothing runs between the bracket of a switch and its first case.
    return not re.search(r"\bswitch\s$", head[:max(at, 0)])


def block_of(code, function, offset):
    """The offset behind the bracket of the innermost block of statements that holds `offset`."""
    blocks = []
    for at in range(function.opening, offset):
        if code[at] == "{":
            blocks.append(at if at == function.opening or is_block(code, at) else None)
        elif code[at] == "}" and blocks:
            blocks.pop()
    return next(at for at in reversed(blocks) if at is not None) + 1


def chosen_edit(source, code, mutant, number):
    """(start, end, text) that chooses between the text or number and the mutant's when the program
    starts; None for other faults. Texts side by side are one."""
    start, end = mutant.start, mutant.end
    if mutant.kind == "text":
        tail = re.match(rf"(?:\s+{TEXTS})+", source[end:])
        head = re.search(rf"(?:{TEXTS}\s+)+$", source[:start])
        start -= len(head.group()) if head else 0
        end += tail.end() if tail else 0
    elif mutant.kind != "constant":
        return None
    before = source[start:end]
    after = source[start:mutant.start] + mutant.text + source[mutant.end:end]
    return start, end, f"(mutants::acting() == {number}U ? {after} : {before})"


def no_constant(code, offset):
    """The edit that makes the declaration which holds `offset` one that is made at run time."""
    head = re.search(r"(?:^|[;{}])[^;{}]*?\b((?:inline )?constexpr )[^;{}(]*?[={][^;]*$", code[:offset])
    if head and ";" not in code[head.end(1):offset]:
        return head.start(1), head.end(1), "static "
    return None


def woven(source, numbered, reached, single=(), left_out=()):
    """`numbered`: {number: mutant} of this source. `reached`: the number that each of its functions
    notes. `single`: those which are known to need compiling alone; `left_out`: known not to compile."""
    code, _ = faults.blanked(source)
    result = Woven(single=set(single) - set(left_out))
    bodies = functions(code)
    starts = [function.opening for function in bodies]
    by_function, edits = collections.defaultdict(list), {}
    for number, mutant in numbered.items():
        if number in result.single or number in left_out:
            continue
        at = bisect.bisect(starts, mutant.start) - 1
        inside = bodies[at] if at >= 0 and mutant.start < bodies[at].closing else None
        if inside is None:
            edit = chosen_edit(source, code, mutant, number)
            if edit is None or any(one[0] < edit[1] and edit[0] < one[1] for one in edits):
                result.single.add(number)
                continue
            edits[edit[:2]] = (edit[2], number)
            constant = no_constant(code, mutant.start)
            if constant:
                edits[constant[:2]] = (constant[2], None)
        elif inside.is_constant:
            result.single.add(number)
        else:
            by_function[inside].append((number, mutant))
    for function in bodies:
        if not function.is_constant:
            weave_function(source, code, function, by_function[function], reached, edits)
    write(source, edits, result)
    return result


def weave_function(source, code, function, held, reached, edits):
    pieces, notes = [], collections.defaultdict(list)
    notes[function.opening + 1].append(reached)
    for number, mutant in held:
        body = mutant.applied(source)[function.opening:function.closing + 1 + len(mutant.text)
                                      - (mutant.end - mutant.start)]
        pieces.append((f"if (mutants::isActing({number}U)) ", number, body))
        notes[block_of(code, function, mutant.start)].append(number)
    for place, numbers in notes.items():
        told = "".join(f" mutants::reached({number}U);" for number in numbers)
        edits[(place, place)] = (told, None)
    if pieces:
        place = function.opening + 1
        edits[(place, place)] = (pieces, edits[(place, place)][0])
        edits[(function.closing, function.closing)] = ("}", None)


def write(source, edits, result):
    out, line, last = [INCLUDE], 2, 0

    def put(text):
        nonlocal line
        out.append(text)
        line += text.count("\n")

    for (start, end), (text, more) in sorted(edits.items()):
        put(source[last:start])
        last = end
        if isinstance(text, list):
            put("\n")
            for condition, number, body in text:
                first = line
                put(condition + body)
                result.copies[number] = (first, line)
                put("\nelse ")
            put("{" + more)
        else:
            if more is not None:
                result.chosen[more] = (line, line + text.count("\n"))
            put(text)
    put(source[last:])
    result.text = "".join(out)
