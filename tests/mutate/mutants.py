"""Where the program's sources can be changed by one small fault, and how: for tools/mutate.

A mutant is one change of one place in one source. The sources are laid out by clang-format, which is
what finds them without a compiler: an operator of two values has a blank on both sides, a template's
bracket and a reference have not, and a statement ends at the end of a line.
"""

import collections
import dataclasses
import hashlib
import re


@dataclasses.dataclass(frozen=True)
class Mutant:
    """`start` and `end` are offsets in the text of `path` (relative to the project); what stands
    between them becomes `text`. `name` tells it from all others, and stays while its line stays."""

    path: str
    line: int
    kind: str
    start: int
    end: int
    before: str
    text: str
    name: str

    def applied(self, source):
        assert source[self.start:self.end] == self.before, f"{self.path} is another text"
        return source[:self.start] + self.text + source[self.end:]

    def told(self):
        """One line: place, kind and change."""
        return f"{self.path}:{self.line}: {self.kind}: {change(self.before, self.text)}"


def change(before, after):
    before, after = (" ".join(part.split()) for part in (before, after))
    return f"{before} -> {after or 'nothing'}"


COMMENT_OR_TEXT = re.compile(
    r'//[^\n]*|/\*.*?\*/|R"\((?:.*?)\)"|(?:u8)?"(?:\\.|[^"\\\n])*"|(?<![0-9A-Fa-f])\'(?:\\.|[^\'\\\n])+\'',
    re.S)
DIRECTIVE = re.compile(r"^[ \t]*#[^\n]*(?:\\\n[^\n]*)*", re.M)
# What the compiler alone looks at: a change there is no fault of the running program.
COMPILE_TIME = re.compile(r"\bstatic_assert\b[^;]*;|\busing\b[^;]*;|\btemplate\s*<[^{;]*?>\s*(?=\w)", re.S)

COMPARISONS = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">"}
LOGIC = {"&&": "||", "||": "&&"}
ARITHMETIC = {"+": "-", "-": "+", "*": "+", "/": "*", "%": "*", "+=": "-=", "-=": "+="}
OPERATOR = re.compile(r"(?<= )(==|!=|<=|>=|<|>|&&|\|\||\+=|-=|\+|-|\*|/|%)(?=[ \n])")
STEP = re.compile(r"(?<![+\-])(\+\+|--)(?=\w)")
NUMBER = re.compile(r"(?<![\w.'])(\d+)(U?)(?![\w.'])")
TRUTH = re.compile(r"\b(true|false)\b")
CONDITION = re.compile(r"\b(if|while)( constexpr)? \(")
NEGATION = re.compile(r"(?<=[( ])!(?=[\w(])")
# A call or an assignment, not a declaration: nothing but one name stands before "(" or "=".
STATEMENT = re.compile(
    r"(?<=\n)[ \t]+"
    r"(?!(?:return|case|default|else|if|for|while|switch|do|using|break|goto)\b|static_cast<void>)"
    r"((?:throw\b|(?:\+\+|--|\*)?[a-zA-Z_][\w:]*(?:(?:\.|->)\w+|\[[^\]\n]*\]|\(\))*)"
    r"(?:;|(?:\(| [+\-|&]?= | \w)[^;{}]*;))[ \t]*(?=\n)")
DECLARATION = re.compile(r"(?!throw\b)[\w:]+ \w|.*\) = (?:delete|default);")


def blanked(source):
    """The source with comments, texts and directives as blanks, so that offsets stay; and the texts'
    (start, end)."""
    texts = []

    def blank(match):
        if match.group().endswith('"'):
            texts.append(match.span())
        return re.sub(r"[^\n]", " ", match.group())

    code = COMMENT_OR_TEXT.sub(blank, source)
    hidden = [match.span() for part in (DIRECTIVE, COMPILE_TIME) for match in part.finditer(code)]
    for start, end in hidden:
        code = code[:start] + re.sub(r"[^\n]", " ", code[start:end]) + code[end:]
    return code, [text for text in texts if not any(start <= text[0] < end for start, end in hidden)]


def closing(code, opening):
    """The offset of the bracket, "(" or "{", that closes the one at `opening`; None where none does."""
    pair, depth = {"(": "()", "{": "{}"}[code[opening]], 0
    for at in range(opening, len(code)):
        depth += (code[at] == pair[0]) - (code[at] == pair[1])
        if depth == 0:
            return at
    return None


def changes(source):
    """(kind, start, end, text) of each change that can be made, in no order."""
    code, texts = blanked(source)
    for match in OPERATOR.finditer(code):
        sign = match.group(1)
        for kind, table in (("comparison", COMPARISONS), ("logic", LOGIC), ("arithmetic", ARITHMETIC)):
            if sign in table and not joins_texts(source, match, sign):
                yield kind, match.start(1), match.end(1), table[sign]
    for match in STEP.finditer(code):
        yield "arithmetic", match.start(1), match.end(1), "--" if match.group(1) == "++" else "++"
    for match in NUMBER.finditer(code):
        yield "constant", match.start(), match.end(), str(int(match.group(1)) + 1) + match.group(2)
    for match in TRUTH.finditer(code):
        yield "constant", match.start(1), match.end(1), "false" if match.group(1) == "true" else "true"
    yield from changed_conditions(code, source)
    for match in STATEMENT.finditer(code):
        begins = code[:match.start()].rstrip()[-1:] in tuple(";{}:")
        if begins and not DECLARATION.match(match.group(1)):
            yield "statement", match.start(1), match.end(1), ""
    for start, end in texts:
        if source[start] == '"' and not source[:start].endswith(("R", "operator")):
            yield "text", start, end, source[start:end - 1] + '#"'


def joins_texts(source, match, sign):
    """A "+" beside a text joins texts: no other operator does, so that nothing would compile."""
    around = source[:match.start(1)].rstrip()[-1:] + source[match.end(1):].lstrip()[:1]
    return sign in "+" and '"' in around


def is_changed_elsewhere(condition):
    """A single comparison or negation is turned round by its own sign; what declares or holds a lambda
    cannot be put in brackets."""
    single = "&&" not in condition and "||" not in condition
    return (single and (condition.startswith("!") or " == " in condition or " != " in condition)
            or " = " in condition or "{" in condition or "}" in condition)


def changed_conditions(code, source):
    for match in CONDITION.finditer(code):
        opening = match.end() - 1
        end = closing(code, opening)
        inside = code[opening + 1:end] if end else ";"
        start = opening + 1
        if ";" in inside:  # if (const auto found = find(); found)
            start += inside.rindex(";") + 2
        condition = source[start:end] if end else ""
        if condition.strip() and not is_changed_elsewhere(code[start:end]):
            yield "condition", start, end, f"!({condition})"
    for match in NEGATION.finditer(code):
        yield "condition", match.start(), match.end(), ""


def mutants_of(path, source):
    """All mutants of a source, by place. `path`: relative to the project, as it is told."""
    found = {(start, end, text): kind for kind, start, end, text in changes(source)}
    lines, same, mutants = source.splitlines(), collections.Counter(), []
    for (start, end, text), kind in sorted(found.items(), key=lambda item: item[0]):
        line = source.count("\n", 0, start) + 1
        name = f"{path}: {kind}: {change(source[start:end], text)} | {lines[line - 1].strip()}"
        same[name] += 1
        if same[name] > 1:
            name += f" | {same[name]}"
        mutants.append(Mutant(path, line, kind, start, end, source[start:end], text, name))
    return mutants


def drawn_number(seed, name):
    """From 0 up to 1, by chance; the same for the same seed and name."""
    return int.from_bytes(hashlib.sha256(f"{seed} {name}".encode()).digest()[:8], "big") / 2**64


def sample(by_unit, seed):
    """All mutants of {unit: mutants}, in the order in which the seed draws them, spread over the units:
    who has more places gives more, by the root of their number. A mutant keeps its place in the order
    as far as others do not come or go."""
    order = []
    for unit, mutants in by_unit.items():
        shuffled = sorted(mutants, key=lambda mutant: drawn_number(seed, mutant.name))
        order += [((at + drawn_number(seed, unit)) / len(mutants) ** 0.5, unit, mutant)
                  for at, mutant in enumerate(shuffled)]
    return [mutant for _, _, mutant in sorted(order, key=lambda entry: entry[:2])]
