"""Mutants: small faults that a test should notice, found in one file at a time.

C++ is read as tokens. Its binary operators differ from pointers, references and template brackets by
the blanks that the formatter sets on both sides. Python is read as a syntax tree.
"""

import ast
import hashlib
import re
from dataclasses import dataclass

OPPOSITES = {"<": (">=", "<="), ">": ("<=", ">="), "<=": (">", "<"), ">=": ("<", ">"),
             "==": ("!=",), "!=": ("==",)}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "//": "*", "%": "*", "+=": "-=", "-=": "+=",
              "*=": "/=", "/=": "*=", "&": "|", "|": "&", "^": "|", "&=": "|=", "|=": "&=",
              ">>": "<<"}
LOGIC = {"&&": "||", "||": "&&", "and": "or", "or": "and"}
EXTREMES = {"min": "max", "max": "min", "fmin": "fmax", "fmax": "fmin", "fminf": "fmaxf",
            "fmaxf": "fminf", "min_element": "max_element", "max_element": "min_element",
            "minimum": "maximum", "maximum": "minimum", "nanmin": "nanmax", "nanmax": "nanmin"}


@dataclass(frozen=True)
class Mutant:
    """The characters from start to end of a file, replaced."""

    path: str
    operator: str
    start: int
    end: int
    replacement: str
    line: int
    before: str  # the lines concerned, without layout
    after: str

    @property
    def key(self) -> str:
        """What is changed into what: the same wherever the line moves within its file, or the file."""
        return f"{self.path.rpartition('/')[2]}: {self.before} => {self.after}"

    def rank(self, seed: int) -> float:
        """A number from 0 to 1 that depends on the seed and the key alone."""
        digest = hashlib.sha256(f"{seed} {self.operator} {self.key}".encode()).digest()
        return int.from_bytes(digest[:8], "big") / 2.0**64


def find(path: str, text: str) -> list[Mutant]:
    """All mutants of one file."""
    edits = _python_edits(text) if path.endswith(".py") else _cpp_edits(text)
    return [_mutant(path, text, *edit) for edit in sorted(set(edits))]


def _mutant(path: str, text: str, start: int, end: int, replacement: str, operator: str) -> Mutant:
    first = text.rfind("\n", 0, start) + 1
    last = text.find("\n", end)
    last = len(text) if last < 0 else last
    after = text[first:start] + replacement + text[end:last]
    return Mutant(path, operator, start, end, replacement, text.count("\n", 0, start) + 1,
                  _plain(text[first:last]), _plain(after))


def _plain(lines: str) -> str:
    """Code without its comments and layout."""
    return " ".join(re.sub(r"//[^\n]*|/\*.*?\*/", " ", lines, flags=re.S).split())


def _one_more(number: str) -> str | None:
    """A literal plus one, in the same notation; None for what is no plain number."""
    match = re.fullmatch(r"(\d[\d']*)(\.\d*)?([uUlLfF]*)", number)
    if not match or (match[1] != "0" and match[1][0] == "0"):
        return None
    return f"{int(match[1].replace(chr(39), '')) + 1}{match[2] or ''}{match[3]}"


# --- C++ ---

_TOKEN = re.compile(
    r"""(?P<blank>\s+|//[^\n]*|/\*.*?\*/)
      | (?P<directive>^[ \t]*\#(?:\\\n|[^\n])*)
      | (?P<string>R"\(.*?\)"|"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])+')
      | (?P<number>\.?\d(?:[eEpP][+-]|['\w.])*)
      | (?P<name>\w+)
      | (?P<mark><<=|>>=|<=>|->|::|\+\+|--|&&|\|\||[-+*/%&|^=!<>]=|<<|>>|.)""",
    re.X | re.S | re.M)
_NO_EXPRESSION = {"return", "delete", "using", "case", "default", "static_assert", "typedef", "public",
                  "private", "protected", "friend", "namespace", "goto", "if", "for", "while", "do", "else"}


def _cpp_edits(text: str):
    tokens = [(m.lastgroup, m[0], m.start(), m.end()) for m in _TOKEN.finditer(text)
              if m.lastgroup not in ("blank", "directive")]
    for i, (kind, word, start, end) in enumerate(tokens):
        if kind == "mark" and text[start - 1].isspace() and text[end].isspace():
            yield from _binary(start, end, word)
        elif kind == "number" and not _is_array_size(tokens, i):
            more = _one_more(word)
            if more:
                yield start, end, more, "constant off by one"
        elif kind == "name" and word in EXTREMES and i + 1 < len(tokens) and tokens[i + 1][1] == "(":
            yield start, end, EXTREMES[word], "min for max"
    yield from _dropped_statements(text, tokens)
    yield from _removed_nan_branches(text)


def _binary(start: int, end: int, word: str):
    for opposite in OPPOSITES.get(word, ()):
        yield start, end, opposite, "comparison turned"
    if word in ARITHMETIC:
        yield start, end, ARITHMETIC[word], "operator changed"
    if word in LOGIC:
        yield start, end, LOGIC[word], "and for or"


def _is_array_size(tokens, i: int) -> bool:
    """The number in `type name[8]`: a longer array changes no result."""
    return (3 <= i < len(tokens) - 1 and tokens[i - 1][1] == "[" and tokens[i + 1][1] == "]" and
            tokens[i - 2][0] == "name" and (tokens[i - 3][0] == "name" or tokens[i - 3][1] in "*>"))


def _dropped_statements(text: str, tokens):
    """Expression statements, throw, break and continue, from one ; or brace to the next ;."""
    first = depth = 0
    for i, (_, word, _, end) in enumerate(tokens):
        depth += (word == "(") - (word == ")")
        if depth == 0 and word in ";{}":
            if word == ";" and first < i and _is_expression(tokens[first:i]):
                yield tokens[first][2], end, ";", "statement dropped"
            first = i + 1


def _is_expression(statement) -> bool:
    if statement[0][1] in ("throw", "break", "continue", "++", "--", "*"):
        return True
    if statement[0][0] != "name" or statement[0][1] in _NO_EXPRESSION:
        return False
    i = 1
    while i + 1 < len(statement) and statement[i][1] == "::":
        i += 2
    return i < len(statement) and statement[i][0] == "mark" and statement[i][1] not in "<*&:&&"


def _removed_nan_branches(text: str):
    code = re.sub(r"//[^\n]*|/\*.*?\*/", lambda m: " " * len(m[0]), text, flags=re.S)
    for match in re.finditer(r"\b(?:std::)?is(nan|finite)\(", code):
        end = _closing(code, match.end())
        yield match.start(), end, "false" if match[1] == "nan" else "true", "NaN branch removed"
    for match in re.finditer(r"!\(([\w.\[\]>-]+) (<|>|<=|>=) ([\w.\[\]>-]+)\)", code):
        turned = f"({match[1]} {OPPOSITES[match[2]][0]} {match[3]})"
        yield match.start(), match.end(), turned, "NaN branch removed"
    for match in re.finditer(r"(?<![\w.>])([\w.]+) (!=|==) \1\b(?![\w.\[(])", code):
        yield match.start(), match.end(), "false" if match[2] == "!=" else "true", "NaN branch removed"


def _closing(code: str, position: int) -> int:
    """The place after the parenthesis that was opened before position."""
    depth = 1
    while depth:
        depth += {"(": 1, ")": -1}.get(code[position], 0)
        position += 1
    return position


# --- Python ---


def _python_edits(text: str):
    source = text.encode()
    starts = [0]
    for line in source.splitlines(keepends=True):
        starts.append(starts[-1] + len(line))

    def offset(line: int, column: int) -> int:
        return len(source[:starts[line - 1] + column].decode())

    def begin(node) -> int:
        return offset(node.lineno, node.col_offset)

    def finish(node) -> int:
        return offset(node.end_lineno, node.end_col_offset)

    def between(left, right, table, operator: str):
        gap = text[finish(left):begin(right)]
        mark = re.search(r"[^\s()\\]+", re.sub(r"#[^\n]*", lambda m: " " * len(m[0]), gap))
        if mark and mark[0] in table:
            place = finish(left) + mark.start()
            opposites = table[mark[0]]
            for opposite in (opposites,) if isinstance(opposites, str) else opposites:
                yield place, place + len(mark[0]), opposite, operator

    for node in _evaluated(ast.parse(text)):
        if isinstance(node, ast.Compare):
            for left, right in zip([node.left, *node.comparators], node.comparators):
                yield from between(left, right, OPPOSITES, "comparison turned")
        elif isinstance(node, ast.BinOp):
            yield from between(node.left, node.right, ARITHMETIC, "operator changed")
        elif isinstance(node, ast.BoolOp):
            for left, right in zip(node.values, node.values[1:]):
                yield from between(left, right, LOGIC, "and for or")
        elif isinstance(node, ast.Constant) and type(node.value) in (int, float):
            more = _one_more(text[begin(node):finish(node)])
            if more:
                yield begin(node), finish(node), more, "constant off by one"
        elif isinstance(node, ast.Call):
            name = text[begin(node):finish(node.func)].rpartition(".")[2]
            if name in EXTREMES:
                yield finish(node.func) - len(name), finish(node.func), EXTREMES[name], "min for max"
            if name in ("isnan", "isfinite"):
                constant = " & False)" if name == "isnan" else " | True)"
                call = text[begin(node):finish(node)]
                yield begin(node), finish(node), f"({call}{constant}", "NaN branch removed"
        elif _is_droppable(node):
            yield begin(node), finish(node), "pass", "statement dropped"


def _evaluated(node):
    """Every node that is run: annotations are not, nor are blocks for type checkers."""
    yield node
    for name, value in ast.iter_fields(node):
        if name in ("annotation", "returns"):
            continue
        for child in value if isinstance(value, list) else [value]:
            if isinstance(child, ast.AST):
                yield from _evaluated(child)


def _is_droppable(node) -> bool:
    if isinstance(node, ast.Expr):
        return isinstance(node.value, (ast.Call, ast.Yield))
    if isinstance(node, ast.Assign):
        return isinstance(node.targets[0], (ast.Attribute, ast.Subscript))
    return isinstance(node, (ast.AugAssign, ast.Raise, ast.Continue, ast.Break))
