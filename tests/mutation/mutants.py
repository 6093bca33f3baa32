"""Small changes of C++ sources: where each can be made, and what stands there instead.

The text is cut into tokens, not parsed. That is enough because clang-format lays the sources out: a comparison has a
blank on either side, a template's bracket and a pointer's star have not. What a rule takes for more than it is does not
compile, and a mutant that does not compile is not counted.
"""

import hashlib
import re
from collections import Counter
from dataclasses import dataclass
from pathlib import Path
from typing import Dict, Iterator, List, NamedTuple, Optional, Tuple


class Token(NamedTuple):
    kind: str
    text: str
    start: int
    end: int


class Change(NamedTuple):
    operator: str
    start: int
    end: int
    replacement: str


@dataclass(frozen=True)
class Mutant:
    """One change of one file. The name stays the same while the line it is in stays the same."""

    name: str  # file:hash of the line:operator:occurrence among the same
    file: str  # by path from the root
    line: int
    before: str
    after: str
    mutated: str  # the whole text of the file


TOKEN = re.compile(
    r"""(?P<comment> //[^\n]* | /\*.*?\*/ )
      | (?P<directive> ^[ \t]*\#(?: \\\n | [^\n] )* )
      | (?P<string> "(?: \\. | [^"\\\n] )*" )
      | (?P<character> '(?: \\. | [^'\\\n] )*' )
      | (?P<number> \d (?: [eE][+-] | [\w.'] )* )
      | (?P<word> [A-Za-z_]\w* )
      | (?P<space> \s+ )
      | (?P<sign> <<= | >>= | \.\.\. | :: | -> | \+\+ | -- | << | >> | <= | >= | == | != | && | \|\| | [-+*/%&|^]= | . )
    """,
    re.VERBOSE | re.DOTALL | re.MULTILINE,
)

OPENING = {"(": ")", "[": "]", "{": "}"}
CLOSING = set(OPENING.values())

# What a sign between two blanks becomes.
SIGNS: Dict[str, Tuple[str, List[str]]] = {
    "<": ("compare", ["<=", ">="]),
    "<=": ("compare", ["<", ">"]),
    ">": ("compare", [">=", "<="]),
    ">=": ("compare", [">", "<"]),
    "==": ("compare", ["!="]),
    "!=": ("compare", ["=="]),
    "&&": ("logic", ["||"]),
    "||": ("logic", ["&&"]),
    "+": ("arithmetic", ["-"]),
    "-": ("arithmetic", ["+"]),
    "*": ("arithmetic", ["/"]),
    "/": ("arithmetic", ["*"]),
    "%": ("arithmetic", ["*"]),
    "<<": ("arithmetic", [">>"]),
    ">>": ("arithmetic", ["<<"]),
    "&": ("arithmetic", ["|"]),
    "|": ("arithmetic", ["&"]),
    "+=": ("arithmetic", ["-="]),
    "-=": ("arithmetic", ["+="]),
    "*=": ("arithmetic", ["/="]),
    "^=": ("arithmetic", ["|="]),
}
COMPARISONS = {"<", "<=", ">", ">=", "==", "!="}
BEFORE_CONDITION = {*OPENING, ";", "=", ",", "?", ":", "<<", "return"}

CHARACTERS = {r"'\0'": "' '", r"'\n'": r"'\r'", r"'\r'": r"'\n'", "' '": r"'\t'", r"'\t'": "' '"}
OTHER_CHARACTER = "'#'"

CONTROL = {"if", "for", "while", "switch"}
SCOPES = {"class", "struct", "union", "enum", "namespace"}
BEFORE_BODY = {")", "]", "const", "noexcept", "override", "else", "try", "do"}
LEAVING = {"break", "continue", "throw", "delete"}
NO_STATEMENT = CONTROL | SCOPES | {
    *("auto", "bool", "case", "catch", "char", "const", "constexpr", "default", "do", "double", "else", "explicit"),
    *("extern", "friend", "goto", "int", "long", "operator", "private", "protected", "public", "return", "static"),
    *("template", "try", "typedef", "typename", "using", "virtual", "void", "volatile"),
}
# The mutants of a constant are these already.
RETURNS_DEFAULT = {"{ }", "nullptr", "0", "1", "true", "false", "0.0", "* this"}


class Source:
    """The tokens of a text, with the brackets that match."""

    def __init__(self, text: str) -> None:
        self.text = text
        found = (Token(m.lastgroup or "", m.group(), m.start(), m.end()) for m in TOKEN.finditer(text))
        self.tokens = [token for token in found if token.kind not in ("comment", "directive", "space")]
        self.partner = self._match_brackets()
        self.asserted = self._find_asserted()

    def _match_brackets(self) -> Dict[int, int]:
        partner: Dict[int, int] = {}
        open_ones: List[int] = []
        for index, token in enumerate(self.tokens):
            if token.kind != "sign":
                continue
            if token.text in OPENING:
                open_ones.append(index)
            elif token.text in CLOSING and open_ones:
                opening = open_ones.pop()
                partner[opening] = index
                partner[index] = opening
        return partner

    def _find_asserted(self) -> set:
        """Indexes of what stands in assertions: a mistake there is the assertion's, not the library's."""
        asserted: set = set()
        for index, token in enumerate(self.tokens):
            if token.text in ("assert", "static_assert"):
                asserted.update(range(index, self.partner.get(index + 1, index) + 1))
        return asserted

    def word(self, index: int) -> str:
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def has_blanks_around(self, index: int) -> bool:
        token = self.tokens[index]
        return self.text[token.start - 1].isspace() and self.text[token.end : token.end + 1].isspace()

    def has_blank_before(self, index: int) -> bool:
        return self.text[self.tokens[index].start - 1].isspace()

    def span(self, first: int, last: int) -> Tuple[int, int]:
        return self.tokens[first].start, self.tokens[last].end

    def end_of_statement(self, first: int) -> Optional[int]:
        """Index of the semicolon that ends the statement, None when a bracket closes before."""
        index = first
        while index < len(self.tokens):
            text = self.word(index)
            if text == ";":
                return index
            if text in CLOSING:
                return None
            index = self.partner.get(index, index) + 1
        return None

    def controls(self, index: int) -> str:
        """The if, for, while or switch whose parentheses end right before the token; empty when there is none."""
        opening = self.partner.get(index - 1, 0)
        return self.word(opening - 1) if opening < index - 1 and self.word(opening - 1) in CONTROL else ""

    def code_starts(self) -> Iterator[int]:
        """Indexes of the tokens with which a statement in a function's body begins."""
        kinds: List[str] = []  # of the open brackets: "code", or "other" for classes, namespaces, values and the like
        begin = 0  # of what stands before a brace
        for index in range(len(self.tokens)):
            starts = self.word(index - 1) in ("{", "}", ";", "else", "do") or self.controls(index) != ""
            if starts and kinds and kinds[-1] == "code":
                yield index
            text = self.word(index)
            if text in OPENING:
                kinds.append(self._kind_of_brace(begin, index) if text == "{" else "other")
            elif text in CLOSING and kinds:
                kinds.pop()
            if text in ("{", "}", ";"):
                begin = index + 1

    def _kind_of_brace(self, begin: int, brace: int) -> str:
        if self.word(begin) == "template":
            begin = self._after_angles(begin + 1)
        if any(self.word(index) in SCOPES for index in range(begin, brace)):
            return "other"
        return "code" if self.word(brace - 1) in BEFORE_BODY else "other"

    def _after_angles(self, index: int) -> int:
        """The index after a template's brackets, of which the first stands at index."""
        depth = 0
        while index < len(self.tokens):
            depth += {"<": 1, ">": -1, ">>": -2}.get(self.word(index), 0)
            index += 1
            if depth <= 0:
                break
        return index

    def has_comparison(self, first: int, last: int) -> bool:
        """Whether one of the tokens compares, apart from what stands in brackets."""
        index = first
        while index < last:
            if self.word(index) in COMPARISONS and self.has_blanks_around(index):
                return True
            index = max(self.partner.get(index, index), index) + 1
        return False

    def begin_of_condition(self, question: int) -> int:
        """The index of the first token of the condition before a question mark."""
        index = question
        while index > 0 and self.word(index - 1) not in BEFORE_CONDITION:
            index = min(self.partner.get(index - 1, index - 1), index - 1)
        return index

    def is_expression(self, first: int) -> bool:
        """Whether the statement is no declaration."""
        token = self.tokens[first]
        if token.kind == "sign":
            return token.text in ("*", "++", "--", "(")
        if token.kind != "word" or token.text in NO_STATEMENT:
            return False
        index = first + 1
        while self.word(index) == "::":
            index += 2
        if self.word(index) == "<" and not self.has_blank_before(index):
            index = self._after_angles(index)
        if self.tokens[index].kind == "word":
            return False  # a type and a name
        return self.word(index) not in ("*", "&", "&&") or self.has_blank_before(index)


# ---- Rules: each yields the changes of one kind.


def signs(source: Source) -> Iterator[Change]:
    for index, token in enumerate(source.tokens):
        if token.kind != "sign" or source.word(index - 1) == "operator":
            continue
        if token.text in SIGNS and source.has_blanks_around(index):
            operator, others = SIGNS[token.text]
            for other in others:
                yield Change(operator, token.start, token.end, other)
            if token.text in ("+", "-") and source.word(index + 1) == "1":
                yield Change("off-by-one", token.start, source.tokens[index + 1].end, "+ 0")
        elif token.text == "!":
            yield Change("logic", token.start, token.end, "")
        elif token.text in ("++", "--"):
            yield Change("arithmetic", token.start, token.end, "--" if token.text == "++" else "++")


def constants(source: Source) -> Iterator[Change]:
    for index, token in enumerate(source.tokens):
        is_pure_virtual = source.word(index - 1) == "=" and source.word(index - 2) in (")", "const", "noexcept")
        is_off_by_one = token.text == "1" and source.word(index - 1) in ("+", "-")
        for other in other_constants(token):
            if not is_pure_virtual and not (is_off_by_one and other == "0"):
                yield Change("constant", token.start, token.end, other)


def other_constants(token: Token) -> List[str]:
    if token.kind == "character":
        return [CHARACTERS.get(token.text, OTHER_CHARACTER)]
    if token.kind == "word" and token.text in ("true", "false"):
        return ["false" if token.text == "true" else "true"]
    if token.kind != "number":
        return []
    if "." in token.text:
        return [token.text + " + 1"]
    match = re.fullmatch(r"(0[xX][0-9a-fA-F]+|\d+)([uUlL]*)", token.text.replace("'", ""))
    if match is None:
        return []
    value, suffix = int(match.group(1), 0), match.group(2)
    others = [value + 1] if value == 0 else [value + 1, value - 1]
    return [f"{other}{suffix}" for other in others]


def conditions(source: Source) -> Iterator[Change]:
    for index, token in enumerate(source.tokens):
        if token.text == "?":
            first = source.begin_of_condition(index)
            if not source.has_comparison(first, index):  # a comparison is turned round anyway
                start, end = source.span(first, index - 1)
                yield Change("condition", start, end, f"!({source.text[start:end]})")
        if token.text not in ("if", "while") or source.word(index + 1) != "(":
            continue
        closing = source.partner[index + 1]
        start, end = source.tokens[index + 1].end, source.tokens[closing].start
        if source.word(index + 2) != "!" and not source.has_comparison(index + 2, closing):
            yield Change("condition", start, end, f"!({source.text[start:end]})")
        yield Change("condition", start, end, "false")
        if token.text == "if":
            yield Change("condition", start, end, "true")


def statements(source: Source) -> Iterator[Change]:
    for first in source.code_starts():
        last = source.end_of_statement(first)
        if last is None or last == first:
            continue
        start, end = source.span(first, last)
        text = source.word(first)
        if text == "return" and last > first + 1:
            value = " ".join(source.word(index) for index in range(first + 1, last))
            if value not in RETURNS_DEFAULT:
                yield Change("return", start, end, "return {};")
        elif text in LEAVING or text == "return" or source.is_expression(first):
            # The only statement after an if is dropped by a condition that is false.
            if source.controls(first) != "if" or source.word(last + 1) == "else":
                yield Change("drop", start, end, ";")


def messages(source: Source) -> Iterator[Change]:
    texts = [token for token in source.tokens if token.kind == "string"]
    for token, following in zip(texts, texts[1:] + texts[:1]):
        yield Change("message", token.start, token.end, change_word(token.text))
        if following.text != token.text and conversions(following.text) == conversions(token.text):
            yield Change("message", token.start, token.end, following.text)


def change_word(literal: str) -> str:
    """The literal with the last letter of its middle word changed; an empty one with a letter."""
    words = list(re.finditer(r"(?<![%\\])\b[A-Za-z]+\b", literal))
    if not words:
        return '"x"' if literal == '""' else '""'
    at = words[len(words) // 2].end() - 1
    return literal[:at] + ("y" if literal[at] == "x" else "x") + literal[at + 1 :]


def conversions(literal: str) -> List[str]:
    return re.findall(r"%[-.*\d]*l?[a-z]", literal)


RULES = (signs, constants, conditions, statements, messages)


# ---- All mutants of a file.


def find_mutants(root: Path, file: str) -> List[Mutant]:
    source = Source((root / file).read_text(encoding="ascii"))
    asserted = {source.tokens[index].start for index in source.asserted}
    changes = {change for rule in RULES for change in rule(source) if change.start not in asserted}
    counts: Counter = Counter()
    return [make_mutant(file, source.text, change, counts) for change in sorted(changes, key=order_in_text)]


def order_in_text(change: Change) -> Tuple[int, int, str, str]:
    return change.start, change.end, change.operator, change.replacement


def make_mutant(file: str, text: str, change: Change, counts: Counter) -> Mutant:
    begin = text.rfind("\n", 0, change.start) + 1
    end = text.find("\n", change.end)
    before = text[begin:end]
    mutated = text[: change.start] + change.replacement + text[change.end :]
    after = mutated[begin : end + len(mutated) - len(text)]
    first_line = text[begin : text.find("\n", begin)].strip()
    stem = f"{file}:{hashlib.sha1(first_line.encode()).hexdigest()[:8]}:{change.operator}"
    counts[stem] += 1
    line = text.count("\n", 0, change.start) + 1
    return Mutant(f"{stem}:{counts[stem]}", file, line, one_line(before), one_line(after), mutated)


def one_line(text: str) -> str:
    return " ".join(text.split())
