"""Reads C++ far enough to find its texts: tokens, and what encloses each of them."""

import re
from dataclasses import dataclass

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
      | (?P<directive>^[ \t]*\#[^\n]*(?:\\\n[^\n]*)*)
      | (?P<raw>(?:u8|u|U|L)?R"(?P<mark>[^()\\ ]{0,16})\((?P<body>.*?)\)(?P=mark)")
      | (?P<text>(?P<kind>u8|u|U|L)?"(?P<inner>(?:[^"\\\n]|\\.)*)")
      | (?P<character>'(?:[^'\\\n]|\\.)+')
      | (?P<name>[A-Za-z_]\w*)
      | (?P<number>\d[\w.']*)
      | (?P<sign>::|[^\s\w])""",
    re.VERBOSE | re.DOTALL | re.MULTILINE,
)
ESCAPES = {"n": "\n", "t": "\t", "r": "\r", '"': '"', "'": "'", "\\": "\\", "a": "\a", "b": "\b", "?": "?", "0": "\0"}


@dataclass
class Token:
    kind: str  # "text", "name" or "sign"
    value: str
    line: int


def unescaped(inner):
    def one(match):
        code = match[1]
        if code[0] == "x":
            return chr(int(code[1:], 16))
        if code[0] in "uU":
            return chr(int(code[1:], 16))
        return ESCAPES.get(code, code)

    return re.sub(r"\\(x[0-9A-Fa-f]+|u[0-9A-Fa-f]{4}|U[0-9A-Fa-f]{8}|.)", one, inner, flags=re.DOTALL)


def tokens_of(source):
    """The tokens of C++ source, with adjacent texts made one as the compiler does. Wide texts are left out: they are
    for Windows."""
    result, glued = [], False
    for match in TOKEN.finditer(source):
        if match["comment"] or match["directive"]:
            continue
        line = source.count("\n", 0, match.start()) + 1
        if match["raw"] or match["text"] is not None:
            if (match["kind"] or match["raw"] or "")[:1] in ("L", "U") or (match["kind"] or "") == "u":
                glued = False
                result.append(Token("sign", "wide", line))
                continue
            if match["raw"] and "SV_Position" in match["body"]:
                glued = False  # A shader's source.
                continue
            text = match["body"] if match["raw"] else unescaped(match["inner"])
            if glued:
                result[-1].value += text
            else:
                result.append(Token("text", text, line))
            glued = True
            continue
        glued = False
        result.append(Token("name" if match["name"] else "sign", match[0], line))
    return result


def enclosing(tokens):
    """For every token the calls and blocks around it: a list of (opening sign, index of the opening token)."""
    stack, result = [], []
    for index, token in enumerate(tokens):
        if token.kind == "sign" and token.value in (")", "]", "}") and stack:
            stack.pop()
        result.append(list(stack))
        if token.kind == "sign" and token.value in ("(", "[", "{"):
            stack.append((token.value, index))
    return result


def calls_around(tokens, place, known):
    """What is called by the parentheses of a place, from the outermost; `known` keeps the answers."""
    for sign, opening in place:
        if sign == "(" and opening not in known:
            known[opening] = called(tokens, opening)
    return [known[opening] for sign, opening in place if sign == "("]


def called(tokens, opening):
    """What is called by the parenthesis at this index: "Report::Line", "ConsolePrint"."""
    parts = []
    index = opening - 1
    while index >= 0 and (tokens[index].kind == "name" or tokens[index].value == "::"):
        if parts and tokens[index].kind == "name" and parts[0] != "::":
            break
        parts.insert(0, tokens[index].value)
        index -= 1
    return "".join(parts)
