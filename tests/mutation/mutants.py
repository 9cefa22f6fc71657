# SPDX-License-Identifier: MIT
"""What can be changed in a C++ source, and which of the changes are tried.

The sources are formatted by clang-format, so a blank on both sides tells a binary operator from a
template's bracket, a reference, a pointer or a sign.
"""

import dataclasses
import hashlib
import random
import re

BINARY = {
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
    "==": ["!="], "!=": ["=="],
    "&&": ["||"], "||": ["&&"],
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"],
    "&": ["|"], "|": ["&"], "^": ["|"], "<<": [">>"], ">>": ["<<"],
    "+=": ["-="], "-=": ["+="], "*=": ["/="], "/=": ["*="],
    "&=": ["|="], "|=": ["&="], "^=": ["|="], "<<=": [">>="], ">>=": ["<<="],
}
WORDS = {
    "true": "false", "false": "true",
    "std::min": "std::max", "std::max": "std::min",
    "std::min_element": "std::max_element", "std::max_element": "std::min_element",
    "std::lower_bound": "std::upper_bound", "std::upper_bound": "std::lower_bound",
    "std::all_of": "std::any_of", "std::any_of": "std::all_of",
}

TOKEN = re.compile(
    r"""(?P<number>(?<![\w.])(?:0[xX][0-9a-fA-F']+(?:\.[0-9a-fA-F]*)?(?:[pP][+-]?\d+)?
                               |\d[\d']*(?:\.\d*)?(?:[eE][+-]?\d+)?)[uUlLfF]*(?![\w.]))
      | (?P<binary>(?<=\s)(?:<<=|>>=|<=|>=|==|!=|&&|\|\||\+=|-=|\*=|/=|&=|\|=|\^=|<<|>>
                               |[-+*/%&|^<>])(?=\s))
      | (?P<step>\+\+|--)
      | (?P<negation>!(?=[\w(]))
      | (?P<word>(?:std::)?\b(?:true|false|min|max|min_element|max_element|lower_bound|upper_bound
                               |all_of|any_of)\b)
      | (?P<condition>\b(?:if|while)\s\()""",
    re.VERBOSE,
)
COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.DOTALL)
# Not code of its own: comments, texts, preprocessor lines, checks that the compiler makes.
BLANKED = re.compile(
    r"""//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|(?<![0-9a-fA-F])'(?:\\.|[^'\\\n])'
      |^[ \t]*\#(?:\\\n|[^\n])*|\bstatic_assert\([^;]*;""",
    re.VERBOSE | re.MULTILINE | re.DOTALL,
)


@dataclasses.dataclass(frozen=True)
class Mutant:
    """One change of one file: the text at `offset` becomes `new`."""

    path: str
    offset: int
    old: str
    new: str
    line: int
    number: int  # among the file's changes
    code: str  # fingerprint of what it applies to

    @property
    def key(self):
        """The same for as long as nothing but comments and layout changes in the file."""
        return f"{self.path}@{self.code}:{self.number}:{self.new}"

    def apply(self, text):
        assert text[self.offset:].startswith(self.old)
        return text[:self.offset] + self.new + text[self.offset + len(self.old):]

    def lines(self, text):
        """The changed lines, before and after, each as one text without surrounding blanks."""
        begin = text.rfind("\n", 0, self.offset) + 1
        end = text.find("\n", self.offset + len(self.old))
        before = text[begin:end if end >= 0 else len(text)]
        after = before[:self.offset - begin] + self.new + before[self.offset - begin +
                                                                 len(self.old):]
        return tuple(" ".join(side.split()) for side in (before, after))


def fingerprint(text):
    """Of a source without its comments and layout."""
    code = " ".join(COMMENT.sub(" ", text).split())
    return hashlib.sha256(code.encode()).hexdigest()[:12]


def blank(text):
    """`text` with spaces in place of what isn't changed; places and lines stay."""
    return BLANKED.sub(lambda found: re.sub(r"[^\n]", " ", found.group()), text)


def closing(code, opening):
    """The place of the bracket that closes the one at `opening`, or -1."""
    depth = 0
    for place in range(opening, len(code)):
        depth += {"(": 1, ")": -1}.get(code[place], 0)
        if depth == 0:
            return place
    return -1


def _replacements(found, code, text):
    """(offset, old, new) of each change of one token."""
    kind, token, at = found.lastgroup, found.group(), found.start()
    if kind == "binary":
        yield from ((at, token, new) for new in BINARY[token])
    elif kind == "step":
        yield at, token, "--" if token == "++" else "++"
    elif kind == "negation":
        yield at, token, ""
    elif kind == "word" and token in WORDS:
        yield at, token, WORDS[token]
    elif kind == "number":
        if re.fullmatch(r"0[uUlL]*", token):
            yield at, token, token.replace("0", "1")
        elif re.fullmatch(r"1[uUlL]*", token):
            yield at, token, token.replace("1", "0")
            yield at, token, token.replace("1", "2")
        else:
            yield at, token, f"({token} + 1)"
            yield at, token, f"({token} - 1)"
    elif kind == "condition":
        opening = found.end() - 1
        end = closing(code, opening)
        inside = code[opening + 1:end]
        # An `if` with an initialiser or a declaration has no condition that ! could precede.
        if end > 0 and ";" not in inside and not re.search(r"[^=!<>]=[^=]", inside):
            old = text[opening:end + 1]
            yield opening, old, f"(!{old})"


def candidates(path, text):
    """Every change of a source, in the file's order."""
    code, print_ = blank(text), fingerprint(text)
    changes = [change for found in TOKEN.finditer(code)
               for change in _replacements(found, code, text)]
    return [Mutant(path, offset, old, new, text.count("\n", 0, offset) + 1, number, print_)
            for number, (offset, old, new) in enumerate(changes)]


def drawn(path, text, seed):
    """The changes of a source in the order in which they are tried: one for each place first."""
    draw = random.Random(f"{seed} {path}")
    places = {}
    for mutant in candidates(path, text):
        places.setdefault((mutant.offset, mutant.old), []).append(mutant)
    rounds = []
    for mutants in places.values():
        draw.shuffle(mutants)
        for number, mutant in enumerate(mutants):
            rounds.append((number, draw.random(), mutant))
    return [mutant for _, _, mutant in sorted(rounds, key=lambda each: each[:2])]


def shares(sizes, count):
    """How many of `count` mutants each file gets: one at least, the rest as its size has it."""
    sizes = {path: size for path, size in sizes.items() if size > 0}
    rest = max(count - len(sizes), 0)
    total = sum(sizes.values())
    exact = {path: rest * size / total for path, size in sizes.items()}
    result = {path: min(1 + int(exact[path]), sizes[path]) for path in sizes}
    by_remainder = sorted(sizes, key=lambda path: (int(exact[path]) - exact[path], path))
    for path in by_remainder:
        if sum(result.values()) >= count:
            break
        if result[path] < sizes[path]:
            result[path] += 1
    return result
