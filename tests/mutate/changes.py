"""The small changes of a C++ source that a test ought to notice.

`changes_of(text)` yields each of them as a Change; applying one gives a source in which one thing is wrong. The kinds:

    comparison   < becomes <=, == becomes !=
    constant     a number, text, character, truth value or enumerator becomes another
    arithmetic   + becomes -, * becomes /
    branch       a condition is negated, && becomes ||, the two results of ?: are swapped, a jump is left out
    order        two consecutive statements are swapped
    flag         one of several flags is left out, a constant of Windows becomes a similar one
    release      a statement that releases something is left out
    statement    any other call or assignment is left out

The source is read as tokens, not parsed, in the layout that clang-format gives it: a `<` between blanks compares, one
without is a template's. A changed declaration may not compile; such a change tests nothing.
"""

import re
from dataclasses import dataclass

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
    |(?P<directive>^[ \t]*\#(?:\\\n|[^\n])*)
    |(?P<raw>(?:u8|[uUL])?R"(?P<mark>[^()\s\\]*)\(.*?\)(?P=mark)")
    |(?P<text>(?:u8|[uUL])?"(?:\\.|[^"\\\n])*")
    |(?P<character>(?:u8|[uUL])?'(?:\\.|[^'\\\n])+')
    |(?P<number>\.?\d(?:[eEpP][+-]|'?[\w.])*)
    |(?P<name>[A-Za-z_]\w*)
    |(?P<sign><=>|<<=|>>=|\.\.\.|->\*?|::|[-+*/%&|^<>=!]=|&&|\|\||<<|>>|\+\+|--|[^\s\w])
    |(?P<blank>\s+)""",
    re.DOTALL | re.MULTILINE | re.VERBOSE,
)
COMPARISONS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "+=": "-=", "-=": "+=", "*=": "/=", "/=": "*="}
STEPS = {"++": "--", "--": "++"}
JUMPS = {"break", "continue", "return"}
NOT_A_STATEMENT = JUMPS | {
    "case", "class", "const", "constexpr", "default", "delete", "do", "else", "enum", "explicit", "extern", "for", "friend",
    "goto", "if", "inline", "namespace", "new", "operator", "private", "protected", "public", "static", "static_assert",
    "struct", "switch", "template", "throw", "typedef", "union", "using", "virtual", "while",
}  # fmt: skip
RELEASING = re.compile(r"Close|Clear|Delete|Destroy|Free|Forget|Put\w*Back|Release|Remove|Reset|Stop|Unload|Unmap|Unregister|clear$|reset$|close$|release$")
WINDOWS_CONSTANT = re.compile(r"[A-Z][A-Z0-9]*(_[A-Za-z0-9]+)+|TRUE|FALSE|INFINITE")
NUMBER = re.compile(r"(?P<digits>0[xX][0-9A-Fa-f']+|0[bB][01']+|[\d']+)(?P<suffix>[uUlLzZ]*)")
FRACTION = re.compile(r"(?P<digits>[\d']*\.?[\d']*(?:[eE][+-]?\d+)?)(?P<suffix>[fFlL]?)")
CLOSING = {"(": ")", "[": "]", "{": "}"}


@dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int
    end: int


@dataclass(frozen=True)
class Change:
    kind: str
    start: int
    end: int
    new: str

    def applied_to(self, text):
        return text[: self.start] + self.new + text[self.end :]

    def line_number(self, text):
        return text.count("\n", 0, self.start) + 1

    def lines(self, text):
        """The lines it touches, before and after, each as one line of text."""
        begin = text.rfind("\n", 0, self.start) + 1
        end = text.find("\n", self.end)
        end = len(text) if end < 0 else end
        before = text[begin:end]
        after = text[begin : self.start] + self.new + text[self.end : end]
        return " ".join(before.split()), " ".join(after.split())


class Source:
    """A source as tokens, without blanks and comments, and for each the enclosing bracket."""

    def __init__(self, text):
        self.text = text
        self.tokens = []
        for match in TOKEN.finditer(text):
            if match.lastgroup not in ("blank", "comment", "directive"):
                # The name of a raw text's end mark is matched last, inside of it.
                kind = "raw" if match.lastgroup == "mark" else match.lastgroup
                self.tokens.append(Token(kind, match.group(), match.start(), match.end()))
        self.partner, self.inside = self._brackets()

    def _brackets(self):
        partner, inside, open_ones = {}, [], []
        for i, token in enumerate(self.tokens):
            if token.text in CLOSING.values() and open_ones:
                partner[open_ones[-1]] = i
                partner[i] = open_ones.pop()
            inside.append(open_ones[-1] if open_ones else None)
            if token.text in CLOSING:
                open_ones.append(i)
        return partner, inside

    def word(self, i):
        return self.tokens[i].text if 0 <= i < len(self.tokens) else ""

    def kind(self, i):
        return self.tokens[i].kind if 0 <= i < len(self.tokens) else ""

    def between_blanks(self, i):
        token = self.tokens[i]
        return self.text[token.start - 1 : token.start].isspace() and self.text[token.end : token.end + 1].isspace()

    def span(self, first, last):
        """Where the tokens `first` to `last`, both included, begin and end in the text."""
        return self.tokens[first].start, self.tokens[last].end

    def part(self, first, last):
        start, end = self.span(first, last)
        return self.text[start:end]

    def find(self, begin, words, inside):
        """The first token from `begin` on that is one of `words` and is directly inside the bracket `inside`, or None."""
        for i in range(begin, len(self.tokens)):
            if self.inside[i] == inside and self.word(i) in words:
                return i
            if self.partner.get(i) == inside and inside is not None:
                return None
        return None


def changes_of(text):
    """Every change, in the order of the text; each once."""
    source = Source(text)
    skipped = checked_by_the_compiler(source)
    found = {}
    for rule in (comparisons, constants, arithmetic, branches, results, flags, statements):
        for change in rule(source):
            if not any(start <= change.start < end for start, end in skipped):
                found.setdefault((change.start, change.end, change.new), change)
    return sorted(found.values(), key=lambda change: (change.start, change.end, change.new))


def checked_by_the_compiler(source):
    """Where the static assertions are: a change in one either breaks the build or changes nothing."""
    return [
        source.span(i, source.partner[i + 1])
        for i, token in enumerate(source.tokens)
        if token.text == "static_assert" and i + 1 in source.partner
    ]


def replaced(source, kind, i, new):
    return Change(kind, source.tokens[i].start, source.tokens[i].end, new)


def comparisons(source):
    for i, token in enumerate(source.tokens):
        if token.text in COMPARISONS and source.between_blanks(i) and source.word(i - 1) not in ("operator", "template"):
            yield replaced(source, "comparison", i, COMPARISONS[token.text])


def constants(source):
    for i, token in enumerate(source.tokens):
        if token.kind == "number":
            if new := other_number(token.text):
                yield replaced(source, "constant", i, new)
        elif token.kind == "text":
            yield replaced(source, "constant", i, token.text[:-1] + '~"')
        elif token.kind == "character":
            begin = token.text.index("'")
            yield replaced(source, "constant", i, token.text[:begin] + ("'~'" if token.text[begin:] != "'~'" else "'-'"))
        elif token.text in ("true", "false"):
            yield replaced(source, "constant", i, "false" if token.text == "true" else "true")
        elif token.text == "::" and is_enumerator(source, i):
            start, end = source.span(i - 1, i + 1)
            yield Change("constant", start, end, neighbour(source.text[start:end]))


def neighbour(constant):
    return f"static_cast<decltype({constant})>(static_cast<int>({constant}) + 1)"


def other_number(text):
    """The next whole number or one more than the fraction, in the same type; None for what is no number."""
    if whole := NUMBER.fullmatch(text):
        digits = whole["digits"].replace("'", "")
        octal = len(digits) > 1 and digits.isdigit() and digits[0] == "0"
        return str(int(digits, 8 if octal else 0) + 1) + whole["suffix"]
    if fraction := FRACTION.fullmatch(text):
        return repr(float(fraction["digits"].replace("'", "")) + 1.0) + fraction["suffix"]
    return None


def is_enumerator(source, i):
    """Whether the `::` at i joins an enumeration and its enumerator, by their capitals and what follows."""
    before, after = source.word(i - 1), source.word(i + 1)
    typical = before[:1].isupper() and after[:1].isupper() and not WINDOWS_CONSTANT.fullmatch(after)
    return typical and source.word(i + 2) not in ("(", "{", "::", "<", "&", "*") and source.kind(i + 2) != "name"


def arithmetic(source):
    for i, token in enumerate(source.tokens):
        if token.text in ARITHMETIC and source.between_blanks(i):
            yield replaced(source, "arithmetic", i, ARITHMETIC[token.text])
        elif token.text in STEPS:
            yield replaced(source, "arithmetic", i, STEPS[token.text])


def branches(source):
    for i, token in enumerate(source.tokens):
        if token.text in ("if", "while") and source.word(i + 1) == "(":
            first = i + 2
            last = source.partner[i + 1] - 1
            while (divider := source.find(first, {";"}, i + 1)) is not None:
                first = divider + 1
            start, end = source.span(first, last)
            if not is_negated_elsewhere(source, first, last):
                yield Change("branch", start, end, f"!({source.text[start:end]})")
        elif token.text == "for" and source.word(i + 1) == "(":
            first = source.find(i + 2, {";"}, i + 1)
            last = None if first is None else source.find(first + 1, {";"}, i + 1)
            if last is not None and last > first + 1:
                start, end = source.span(first + 1, last - 1)
                yield Change("branch", start, end, "false")
        elif token.text in ("&&", "||") and source.between_blanks(i):
            yield replaced(source, "branch", i, "||" if token.text == "&&" else "&&")
        elif token.text == "!":
            yield replaced(source, "branch", i, "")
        elif token.text in JUMPS and source.word(i + 1) == ";":
            yield replaced(source, "branch", i, "")


def is_negated_elsewhere(source, first, last):
    """Whether another rule makes the opposite of the condition: without its `!`, or with != in place of ==."""
    words = [source.word(i) for i in range(first, last + 1) if source.inside[i] == source.inside[first]]
    return not {"&&", "||"} & set(words) and (words[0] == "!" or bool({"==", "!="} & set(words)))


def results(source):
    """The two results of a conditional expression, one for the other."""
    for i, token in enumerate(source.tokens):
        if token.text != "?":
            continue
        inside = source.inside[i]
        colon, nested = i + 1, 0
        while colon < len(source.tokens) and (source.inside[colon] != inside or source.word(colon) != ":" or nested):
            if source.inside[colon] == inside:
                nested += (source.word(colon) == "?") - (source.word(colon) == ":")
            colon += 1
        end = colon + 1
        while end < len(source.tokens) and not (
            source.inside[end] == inside and source.word(end) in (",", ";") or source.partner.get(end) == inside
        ):
            end += 1
        if end < len(source.tokens) and i + 1 < colon and colon + 1 < end:
            first, second = source.part(i + 1, colon - 1), source.part(colon + 1, end - 1)
            start, stop = source.span(i + 1, end - 1)
            yield Change("branch", start, stop, f"({second}) : ({first})")


def flags(source):
    for i, token in enumerate(source.tokens):
        if token.text == "|" and source.between_blanks(i):
            if source.kind(i - 1) in ("name", "number"):
                yield Change("flag", source.tokens[i - 1].start, source.tokens[i + 1].start, "")
            if source.kind(i + 1) in ("name", "number"):
                yield Change("flag", source.tokens[i - 1].end, source.tokens[i + 1].end, "")
        elif token.kind == "name" and WINDOWS_CONSTANT.fullmatch(token.text) and is_value(source, i):
            yield replaced(source, "flag", i, f"static_cast<decltype({token.text})>({token.text} + 1)")


def is_value(source, i):
    """Whether the name in capitals is used as a value, not as a type or a macro call."""
    after = source.word(i + 1)
    return after not in ("(", "{", "::", "*", "&", ">") and source.kind(i + 1) != "name" and source.word(i - 1) != "::"


def statements(source):
    """The statements that may be left out, and which of them may be swapped with the next one."""
    spans = [span for span in statement_spans(source) if is_whole_statement(source, *span)]
    for first, last in spans:
        if is_left_out_easily(source, first, last):
            called = called_name(source, first, last)
            kind = "release" if called and RELEASING.search(called) else "statement"
            start, end = source.span(first, last)
            yield Change(kind, start, end, ";")
    for (first, middle), (begin, last) in zip(spans, spans[1:]):
        neighbours = middle + 1 == begin and source.inside[first] == source.inside[begin]
        if neighbours and does_something(source, first, middle) and does_something(source, begin, last):
            start, end = source.span(first, last)
            between = source.text[source.tokens[middle].end : source.tokens[begin].start]
            yield Change("order", start, end, source.part(begin, last) + between + source.part(first, middle))


def statement_spans(source):
    """The first and last token of all that ends in `;` in a block, the `;` included."""
    begin = 0
    for i, token in enumerate(source.tokens):
        inside = source.inside[i]
        if inside is not None and source.word(inside) != "{":
            continue
        if token.text == ";":
            yield begin, i
        if token.text in (";", "{", "}") or token.text == ":" and source.word(i - 2) in ("case", "default"):
            begin = i + 1
        elif token.text == ")" and source.word(source.partner.get(i, 0) - 1) in ("if", "for", "while"):
            begin = i + 1
        elif token.text == "else":
            begin = i + 1


def is_whole_statement(source, first, last):
    """Whether it is inside a function, and not a jump, a type declaration or similar."""
    if first >= last or source.word(first) in NOT_A_STATEMENT or source.inside[first] is None:
        return False
    line = source.text.rfind("\n", 0, source.tokens[first].start) + 1
    if source.text[line : source.tokens[first].start].strip() or source.inside[first] != source.inside[last]:
        return False
    return any(source.word(i) in ("(", "=", "+=", "-=", "++", "--") for i in range(first, last))


def does_something(source, first, last):
    """More than declaring a name with a plain value, whose position before its use does not matter."""
    called = any(source.word(i + 1) == "(" and source.kind(i) == "name" and source.word(i) != "sizeof" for i in range(first, last))
    return called or is_left_out_easily(source, first, last)


def top_level(source, first, last):
    return [i for i in range(first, last) if source.inside[i] == source.inside[first]]


def is_left_out_easily(source, first, last):
    """A call or an assignment, and no declaration: no two adjacent names before its `=` or bracket."""
    for i in top_level(source, first, last):
        word, after = source.word(i), source.word(i + 1)
        if word in ("=", "+=", "-=", "*=", "/=", "|=", "&=", "++", "--"):
            return True
        if source.kind(i) == "name" and (source.kind(i + 1) == "name" or after == "<"):
            return False
        if word in ("*", "&", "&&") and source.kind(i - 1) == "name" and i > first:
            return False
    return source.word(last - 1) == ")"


def called_name(source, first, last):
    names = [source.word(i) for i in top_level(source, first, last) if source.word(i + 1) == "(" and source.kind(i) == "name"]
    return names[-1] if names else None
