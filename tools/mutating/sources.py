"""The wrong lines that a C++ source could hold: each a change of one place, made by the operators.

The sources are read as tokens, not as C++: what the project's format (clang-format) tells apart is
taken from it, such as a relation, which has spaces on both sides, from a template's bracket, which
has not. A change that is no C++ does not build, which costs a little time and counts for nothing.
Preprocessor lines, and so the bodies of macros, are left as they are.
"""

import re
from typing import NamedTuple

TOKEN = re.compile(
    r"""
    (?P<space>\s+|\\\n)
  | (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<directive>(?<![^\n])[ \t]*\#(?:\\\n|[^\n])*)
  | (?P<text>(?:u8|[uUL])?R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)"|(?:u8|[uUL])?"(?:\\.|[^"\\\n])*")
  | (?P<character>(?:u8|[uUL])?'(?:\\.|[^'\\\n])+')
  | (?P<number>\.?\d(?:[eEpP][+-]|'?[\w.])*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<sign><=>|<<=|>>=|\.\.\.|->\*|::|->|\+\+|--|&&|\|\||[=!<>+\-*/%&|^]=|<<|[^\w\s])
    """,
    re.VERBOSE | re.DOTALL,
)

RELATIONS = {
    "==": ["!="],
    "!=": ["=="],
    "<": ["<=", ">"],
    "<=": ["<", ">="],
    ">": [">=", "<"],
    ">=": [">", "<="],
}
OPEN = {"(": ")", "[": "]", "{": "}"}
CLOSE = {close: open_ for open_, close in OPEN.items()}
SCOPES = {"namespace", "class", "struct", "union", "enum", "extern"}
JUMPS = {"return", "break", "continue", "throw", "goto"}
HEADED = {"if", "for", "while", "switch", "catch"}
# A statement that begins with one of these is no expression.
NO_EXPRESSION = HEADED | SCOPES | {
    "do", "else", "try", "case", "default", "using", "typedef", "template", "static_assert",
    "public", "private", "protected", "friend", "const", "constexpr", "static", "auto", "volatile",
    "inline", "virtual", "explicit", "thread_local", "typename", "mutable", "operator", "void",
    "bool", "char", "short", "int", "long", "float", "double", "signed", "unsigned",
}
NO_CALL = HEADED | {"sizeof", "alignof", "decltype", "noexcept", "return", "alignas", "operator"}
COMMUTATIVE = {"min", "max"}
LOCK = re.compile(
    r"(const\s+)?([\w:]*::)?(\w*Lock|\w*Guard|lock_guard|unique_lock|scoped_lock|shared_lock)"
    r"(<[^;]*>)?\s+\w+\s*[({]"
)


class Token(NamedTuple):
    kind: str
    text: str
    start: int
    end: int


class Change(NamedTuple):
    """One change: `replacement` replaces text[start:end] of the file at `path`."""

    path: str
    operator: str
    start: int
    end: int
    replacement: str
    line: int
    before: str  # the lines that change, joined to one
    after: str

    def keys(self):
        """The entries of the list of equivalents that mean it: itself, or any change of its line."""
        return (self.path, self.before, self.after), (self.path, self.before, None)


class Statement(NamedTuple):
    first: int  # tokens
    last: int  # its semicolon
    block: int  # the token that opens the block


def tokens_of(text):
    """The tokens of a source without white space, comments and directives."""
    tokens = []
    for match in TOKEN.finditer(text):
        if match.lastgroup == "space" or match.lastgroup == "comment":
            continue
        kind = "text" if match.lastgroup == "mark" else match.lastgroup
        if kind != "directive":
            tokens.append(Token(kind, match.group(), match.start(), match.end()))
    return tokens


class Source:
    """One source and its possible changes."""

    def __init__(self, path, text):
        self.path = path
        self.text = text
        self.tokens = tokens_of(text)
        self.partner = self._partners()
        self.statements = self._statements()
        self._changes = {}

    def changes(self):
        """Every possible change, in the order of their places."""
        if not self._changes:
            self._relations_and_logic()
            self._conditions()
            self._constants()
            self._texts()
            self._statements_dropped_and_swapped()
            self._arguments()
            self._locks()
        return sorted(self._changes.values(), key=lambda change: (change.start, change.replacement))

    def _add(self, operator, start, end, replacement):
        if self.text[start:end] == replacement:
            return
        first = self.text.rfind("\n", 0, start) + 1
        last = self.text.find("\n", end)
        last = len(self.text) if last < 0 else last
        before = " ".join(self.text[first:last].split())
        after = " ".join((self.text[first:start] + replacement + self.text[end:last]).split())
        line = self.text.count("\n", 0, start) + 1
        change = Change(self.path, operator, start, end, replacement, line, before, after)
        self._changes.setdefault((start, end, replacement), change)

    # What the tokens are.

    def _sign(self, i, *texts):
        return 0 <= i < len(self.tokens) and self.tokens[i].kind == "sign" and \
            self.tokens[i].text in texts

    def _name(self, i, *texts):
        return 0 <= i < len(self.tokens) and self.tokens[i].kind == "name" and \
            (not texts or self.tokens[i].text in texts)

    def _partners(self):
        """Maps the index of each bracket to that of its counterpart."""
        partner, opened = {}, []
        for i, token in enumerate(self.tokens):
            if token.kind != "sign":
                continue
            if token.text in OPEN:
                opened.append(i)
            elif token.text in CLOSE and opened:
                partner[opened[-1]] = i
                partner[i] = opened.pop()
        return partner

    def _spaced(self, i):
        """Whether white space is on both sides: a binary operator, not a bracket or a reference."""
        token = self.tokens[i]
        return self.text[token.start - 1 : token.start].isspace() and \
            self.text[token.end : token.end + 1].isspace()

    def _is_block(self, i):
        """Whether the brace at token `i` opens a block of statements."""
        before = i - 1
        while self._name(before, "const", "noexcept", "override", "final", "mutable"):
            before -= 1
        if self._name(before, "else", "do", "try"):
            return True
        if self._sign(before, ")", "]", ";", "{", "}", ":"):
            return not self._sign(before, "]") or before == i - 1
        k = before  # a name: of a scope, of a lambda's result type, or of an initialised variable
        while k >= 0 and not self._sign(k, ";", "{", "}", "(", "=", ","):
            if self._sign(k, "->") and self._sign(k - 1, ")"):
                return True
            k -= 1
        return False

    def _is_scope(self, i):
        k = i - 1
        while k >= 0 and not self._sign(k, ";", "{", "}", ")"):
            if self._name(k, *SCOPES):
                return True
            k -= 1
        return False

    def _statements(self):
        """The statements in blocks that end in a semicolon."""
        statements = []
        for i in range(len(self.tokens)):
            if self._sign(i, "{") and i in self.partner and not self._is_scope(i) \
                    and self._is_block(i):
                self._statements_of_block(i, statements)
        return sorted(statements)

    def _statements_of_block(self, block, statements):
        end = self.partner[block]
        first = i = block + 1
        while i < end:
            if self._sign(i, ";"):
                if i > first:
                    statements.append(Statement(first, i, block))
                first = i = i + 1
            elif i == first and self._name(i, *HEADED):
                i += 1 + self._name(i + 1, "constexpr")
                first = i = self.partner.get(i, i) + 1
            elif i == first and self._name(i, "else", "do", "try"):
                first = i = i + 1
            elif i == first and self._name(i, "case", "default"):
                while i < end and not self._sign(i, ":"):
                    i += 1
                first = i = i + 1
            elif self._sign(i, "{") and i == first:
                first = i = self.partner[i] + 1
            else:
                i = self.partner.get(i, i) + 1 if self._sign(i, *OPEN) else i + 1

    def _is_expression(self, statement):
        i = statement.first
        if self._name(i, *JUMPS) or self._sign(i, "*", "++", "--", "("):
            return True
        if not self._name(i) or self._name(i, *NO_EXPRESSION):
            return False
        while self._sign(i + 1, "::"):  # to the last name of a::b::c
            i += 2
        i += 1
        return i <= statement.last and not self._name(i) and \
            not (self._sign(i, "<", "&", "*", "&&") and not self._spaced(i))

    def _span(self, first, last):
        return self.tokens[first].start, self.tokens[last].end

    def _text(self, first, last):
        start, end = self._span(first, last)
        return self.text[start:end]

    # The operators.

    def _relations_and_logic(self):
        for i, token in enumerate(self.tokens):
            if token.kind != "sign" or self._name(i - 1, "operator", "template"):
                continue
            if token.text in RELATIONS and self._spaced(i):
                for other in RELATIONS[token.text]:
                    self._add("relation", token.start, token.end, other)
            elif token.text in ("&&", "||") and self._spaced(i):
                self._add("logic", token.start, token.end, "||" if token.text == "&&" else "&&")

    def _conditions(self):
        for i, token in enumerate(self.tokens):
            if self._name(i, "if", "while"):
                open_ = i + 1 + self._name(i + 1, "constexpr")
                if open_ in self.partner:
                    self._negate(self._after_semicolon(open_), self.partner[open_] - 1)
            elif token.text == "for" and i + 1 in self.partner:
                parts = [k for k in range(i + 2, self.partner[i + 1])
                         if self._sign(k, ";") and self._depth(i + 1, k) == 0]
                if len(parts) == 2:
                    self._negate(parts[0] + 1, parts[1] - 1)
            elif self._sign(i, "?"):
                first = i
                while first > 0 and not self._name(first - 1, "return") and not self._sign(
                        first - 1, "=", "+=", "(", "[", "{", "}", ",", ";", "?", ":", "<<"):
                    first = self.partner.get(first - 1, first - 1)
                self._negate(first, i - 1)

    def _after_semicolon(self, open_):
        first = open_ + 1
        for k in range(open_ + 1, self.partner[open_]):
            if self._sign(k, ";") and self._depth(open_, k) == 0:
                first = k + 1
        return first

    def _depth(self, open_, i):
        """How many brackets are open at token `i` after the one at `open_`."""
        depth, k = 0, open_ + 1
        while k < i:
            if self._sign(k, *OPEN) and k in self.partner:
                if self.partner[k] >= i:
                    depth += 1
                    k += 1
                else:
                    k = self.partner[k] + 1
            else:
                k += 1
        return depth

    def _negate(self, first, last):
        if first > last:
            return
        outer, k = [], first
        while k <= last:
            outer.append(self.tokens[k].text)
            k = self.partner.get(k, k) + 1 if self._sign(k, *OPEN) else k + 1
        if outer.count("==") + outer.count("!=") == 1 and not {"&&", "||"} & set(outer):
            return  # swapping the relation has the same effect
        start, end = self._span(first, last)
        self._add("condition", start, end, "!(" + self.text[start:end] + ")")

    def _constants(self):
        for i, token in enumerate(self.tokens):
            if token.text in ("true", "false"):
                self._add("constant", token.start, token.end,
                          "false" if token.text == "true" else "true")
            elif token.kind == "number":
                if token.text == "0" and self._sign(i - 1, "=") and \
                        (self._sign(i - 2, ")") or self._name(i - 2, "const", "noexcept")):
                    continue  # a pure virtual function
                self._add("constant", token.start, token.end, next_number(token.text))
            elif token.kind == "character":
                quote = token.text.index("'")
                other = "y" if token.text[quote + 1] == "x" else "x"
                self._add("constant", token.start, token.end, token.text[:quote] + f"'{other}'")

    def _texts(self):
        for i, token in enumerate(self.tokens):
            if token.kind == "text" and not self._name(i - 1, "extern"):
                for start, end, replacement in changed_texts(token.text):
                    self._add("text", token.start + start, token.start + end, replacement)

    def _statements_dropped_and_swapped(self):
        previous = None
        for statement in self.statements:
            if not self._is_expression(statement):
                previous = None
                continue
            start, end = self._span(statement.first, statement.last)
            if not self._ends_function(statement):
                self._add("statement dropped", start, end, "{}")
            jump = self._name(statement.first, *JUMPS)
            if previous and not jump and previous.block == statement.block and \
                    previous.last + 1 == statement.first and \
                    self._depend(previous, statement):
                first = self.tokens[previous.first].start
                one = self._text(previous.first, previous.last)
                other = self.text[start:end]
                between = self.text[self.tokens[previous.last].end : start]
                self._add("statements swapped", first, end, other + between + one)
            previous = None if jump else statement

    def _ends_function(self, statement):
        """Whether it is a function's last return; without it the source does not build."""
        close = self.partner[statement.block]
        if not self._name(statement.first, "return") or statement.last + 1 != close:
            return False
        before = statement.block - 1
        if self._name(before, "else", "do", "try"):
            return False
        return not (self._sign(before, ")") and self._name(self.partner[before] - 1, *HEADED)) and \
            self._sign(statement.first - 1, ";", "{", "}")

    def _depend(self, one, other):
        """False for two assignments neither of which uses the variable that the other sets."""
        sets = []
        for statement in (one, other):
            k = statement.first
            while k < statement.last and not self._sign(k, "="):
                k = self.partner.get(k, k) + 1 if self._sign(k, *OPEN) else k + 1
            if k == statement.last:
                return True
            sets.append((self._text(statement.first, k - 1), self._text(k + 1, statement.last)))
        (left, value), (other_left, other_value) = sets
        return left == other_left or left in other_value or other_left in value

    def _arguments(self):
        for open_, close in self.partner.items():
            called = self._name(open_ - 1) or self._sign(open_ - 1, ">")
            if not self._sign(open_, "(") or not called or self._name(
                    open_ - 1, *NO_CALL, *COMMUTATIVE):
                continue
            arguments = self._parts(open_, close)
            if any(first > last or self._declares(first, last) for first, last in arguments):
                continue
            for one, other in zip(arguments, arguments[1:]):
                start, middle = self._span(*one)
                again, end = self._span(*other)
                macro = self.tokens[open_ - 1].text.isupper()
                if self._alike(one, other, macro):
                    self._add("arguments swapped", start, end, self.text[again:end]
                              + self.text[middle:again] + self.text[start:middle])

    def _alike(self, one, other, macro):
        """Whether two arguments may have the same type: not a text and a number, nor if one is a
        lambda. A literal that a macro joins to its own text is no argument."""
        kinds = {self._kind(*one), self._kind(*other)}
        return not ("lambda" in kinds or {"text", "number"} <= kinds or (macro and "text" in kinds)
                    or self._text(*one) == self._text(*other))

    def _kind(self, first, last):
        if self._sign(first, "["):
            return "lambda"
        return self.tokens[first].kind if first == last else "other"

    def _parts(self, open_, close):
        """The first and last token of each part between two brackets, separated by commas."""
        parts, first, k, angles = [], open_ + 1, open_ + 1, 0
        while k < close:
            if self._sign(k, *OPEN):
                k = self.partner[k]
            elif self._sign(k, "<") and not self._spaced(k):
                angles += 1
            elif self._sign(k, ">") and angles:
                angles -= 1
            elif self._sign(k, ",") and not angles:
                parts.append((first, k - 1))
                first = k + 1
            k += 1
        return parts + [(first, close - 1)]

    def _declares(self, first, last):
        """Whether it is a parameter: a type, or a type and a name."""
        if self._name(first, *NO_EXPRESSION):
            return True
        if self._sign(last, "&", "*", "&&", "..."):
            return True
        return self._name(last) and last > first and (
            self._name(last - 1) or
            (self._sign(last - 1, "&", "*", ">", "&&", "...") and not self._spaced(last - 1)
             and last - 1 > first))

    def _locks(self):
        for statement in self.statements:
            text = self._text(statement.first, statement.last)
            if LOCK.match(text):
                start, end = self._span(statement.first, statement.last)
                self._add("lock shortened", start, end, "{ " + text + " }")


def next_number(text):
    """The literal with the next number in the same notation."""
    match = re.fullmatch(r"(0[xX][\da-fA-F']+|0[bB][01']+|[\d'.]+(?:[eE][+-]?\d+)?)(\w*)", text)
    digits, suffix = match.groups()
    digits = digits.replace("'", "")
    if re.search(r"[.eE]", digits) and not digits.lower().startswith("0x"):
        return repr(float(digits) + 1) + suffix
    if digits.lower().startswith("0x"):
        return hex(int(digits, 16) + 1) + suffix
    if digits.lower().startswith("0b"):
        return bin(int(digits, 2) + 1) + suffix
    octal = digits.startswith("0") and digits.isdigit() and len(digits) > 1
    return "0%o" % (int(digits, 8) + 1) + suffix if octal else str(int(digits) + 1) + suffix


def changed_texts(literal):
    """The changed texts of a literal: one letter in the middle of each part between slashes."""
    begin, end = literal.index('"') + 1, literal.rindex('"')
    if begin == end:
        return [(begin, end, "x")]
    # Not the letters of printf conversions and escape sequences.
    plain = re.sub(r"%[-+ #0]*[\d*]*(?:\.[\d*]+)?[hlzjtL]*[a-zA-Z]|\\(?:x[\da-fA-F]+|[0-7]+|.)",
                   lambda match: "\0" * len(match.group()), literal[begin:end])
    changes = []
    for piece in re.finditer(r"[^/]+", plain):
        words = list(re.finditer(r"[A-Za-z0-9]+", piece.group()))
        if words:
            word = max(words, key=lambda match: len(match.group()))
            at = begin + piece.start() + (word.start() + word.end()) // 2
            changes.append((at, at + 1, "y" if literal[at] == "x" else "x"))
    return changes or [(end, end, "x")]
