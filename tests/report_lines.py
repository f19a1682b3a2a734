#!/usr/bin/env python3
"""Which test proves each line that the report can print.

    tests/report_lines.py          checks that every line has a test
    tests/report_lines.py --list   prints every line with its tests, as a page in Markdown

The lines are read from the tool's sources: the format of every Report::Line and title of every Report::Section, and each
other text there that is written for a reader and can reach one of them through a %s. A test proves a line when the line,
with its placeholders filled in, is part of a text that the test compares with: inside an assertion, in a constant, table
or helper that an assertion uses, or in a golden file. A text in a comment, one that only feeds the code under test, or one
that is asserted not to be there proves nothing, and neither does a test that no build runs.
"""

import argparse
import ast
import pathlib
import re
import sys
from dataclasses import dataclass

from cpp_texts import called, calls_around, enclosing, tokens_of

ROOT = pathlib.Path(__file__).resolve().parents[1]
SHOWN_TESTS = 3
HOLE = "\0"  # Represents a computed part in a test's text.

# Calls whose texts reach the console or the standard error stream alone.
NOT_REPORTED = {"ConsolePrint", "AskContinue", "WaitForEnter", "Show", "ShowSecondsLeft", "Log", "LogInfo", "LogWarning"}
NOT_REPORTED |= {"LogError", "fprintf", "fputs", "static_assert"}
NOT_REPORTED_FILES = {
    "console.cpp": "prompts",
    "report.cpp": "console messages about the file",
    "rescue_windows.cpp": "console messages about the file",
    "product_log_selection.cpp": "what the product's log is searched for; the lines found are quoted as they are",
}

# Guards against what the code around them rules out today, so that no test can get there.
UNREACHABLE = {
    "its process ended without an answer": "the child is this very program, which answers before it is done",
    "screen capture could not be started": "the capture always says why it could not be started",
    "onnxruntime.dll could not be loaded (error %lu)": "the section has looked for the library before",
}

CONVERSION = re.compile(r"%(?:%|[-+ #0]*(?:\d+|\*)?(?:\.(?:\d+|\*))?(?:hh|h|ll|l|z|j|t)?[a-zA-Z])")


# ---- The lines


# What can stand in place of a conversion; golden files mask some with <...>.
MASK_OR_HOLE = r"<[^<>\n]*>|\0"
NUMBER = rf"(?: *[-+]?\d+(?:\.\d+)?| *-?(?:nan|inf)|{MASK_OR_HOLE})"
FILLED = {"%": "%", "d": NUMBER, "u": NUMBER, "f": NUMBER, "X": rf"(?:[0-9A-F]+|{MASK_OR_HOLE})"}


@dataclass(frozen=True)
class ReportLine:
    source: str
    kind: str  # "line", "title" or "text"
    text: str


def is_prose(text):
    """Written for a reader: a blank between words, or more than a name."""
    return bool(re.search(r"[A-Za-z%)\]>]\s+\S|\S\s+[A-Za-z<(]", text))


def lines_of(path):
    tokens = tokens_of(path.read_text(encoding="utf-8"))
    places, known = enclosing(tokens), {}
    found = []
    for index, token in enumerate(tokens):
        if token.kind != "text" or not token.value.strip():
            continue
        calls = calls_around(tokens, places[index], known)
        if any(call.split("::")[-1] in NOT_REPORTED for call in calls) or path.name in NOT_REPORTED_FILES:
            continue
        first = index > 0 and tokens[index - 1].value == "("
        if "Report::Section" in calls:
            kind = "title"
        elif "Report::Line" in calls and first and calls[-1] == "Report::Line":
            kind = "line"
        elif "Report::Line" in calls or is_prose(token.value) or tokens[index - 1].value == "return":
            kind = "text"
        else:
            continue
        if kind == "line" and not CONVERSION.sub("", token.value).strip() and token.value == "%s":
            if tokens[index + 2].kind == "text" and not tokens[index + 2].value:
                continue  # An empty line.
        for part in token.value.split("\n"):
            if part.strip():
                found.append(ReportLine(str(path.relative_to(ROOT)), kind, part))
    return found


def reads_reports(path):
    """Its texts are those that a report is searched for; none of them is printed into one."""
    return "vistrel_report" in path.parts or (path.stem.endswith("_reading") and path.stem != "openxr_reading")


def components():
    names = (ROOT / "cmake" / "components.txt").read_text(encoding="utf-8").split()
    return [name for name in names if name != "tools/vistrel_report"]  # It reads reports and prints none.


def all_lines():
    lines = []
    for component in components():
        for path in sorted([*(ROOT / component).rglob("*.h"), *(ROOT / component).rglob("*.cpp")]):
            if reads_reports(path):
                continue
            lines += [line for line in lines_of(path) if line not in lines]
    return lines


# ---- What the tests compare with


@dataclass(frozen=True)
class Expectation:
    test: str  # how the page names it
    stem: str  # the file's name without "test"
    text: str


ASSERTION = re.compile(r"(?:EXPECT|ASSERT)_\w+|INSTANTIATE_TEST_SUITE_P|StrEq|HasSubstr|ElementsAre|Values|StartsWith|EndsWith")
COMMON = {"std", "string", "const", "auto", "vector", "return", "for", "if", "constexpr", "char", "static", "inline", "struct"}


# What turns the assertion around a text into one that the text is not there.
NEGATIONS = re.compile(r"Not|Ne|StrNe|StrCaseNe|(?:EXPECT|ASSERT)_(?:FALSE|STRNE|STRCASENE)")
NOTHING = {"0", "0U", "0u", "npos", "std::string::npos", "std::string_view::npos", "nullptr", "false", ""}
DISABLED = "DISABLED_"  # A test of this name is run by no build.
LEFT_OUT = re.compile(r"^[ \t]*#[ \t]*if 0\b.*?^[ \t]*#[ \t]*(?:else|endif)", re.MULTILINE | re.DOTALL)


def compares_with_nothing(tokens, places, opening):
    """Whether one of the arguments of the call that opens here is no more than a zero, an empty text or the like."""
    depth = len(places[opening]) + 1
    argument, arguments = "", []
    for index in range(opening + 1, len(tokens)):
        if len(places[index]) < depth:
            break
        if tokens[index].value == "," and tokens[index].kind == "sign" and len(places[index]) == depth:
            arguments.append(argument)
            argument = ""
        elif tokens[index].kind == "text":
            argument += f'"{tokens[index].value}"' if tokens[index].value else ""
        elif index + 1 == len(tokens) or len(places[index + 1]) >= depth or tokens[index].value != ")":
            argument += tokens[index].value
    return any(one in NOTHING for one in [*arguments, argument])


def start_of_call(tokens, opening):
    """Where what is called by the parenthesis that opens here begins: at "report" in report.Text().contains("""
    start, depth = opening, 0
    while start > 0:
        before = tokens[start - 1]
        depth += {")": 1, "(": -1}.get(before.value if before.kind == "sign" else "", 0)
        if depth < 0 or (depth == 0 and before.kind != "name" and before.value not in ("::", ".", "(")):
            break
        start -= 1
    return start


def is_negated(tokens, places, index, known):
    """Whether a text here is asserted to be absent or different."""
    for sign, opening in places[index]:
        if sign != "(":
            continue
        call = known[opening].split("::")[-1]
        if NEGATIONS.fullmatch(call):
            return True
        if re.fullmatch("(?:EXPECT|ASSERT)_(?:EQ|NE)", call):
            if compares_with_nothing(tokens, places, opening) == call.endswith("EQ"):
                return True
        if tokens[start_of_call(tokens, opening) - 1].value == "!":
            return True
    return False


def statement_start(tokens, index, places):
    """The first token of the statement around: behind the last ';' or brace of a block at no deeper level."""
    depth = len(places[index])
    while index > 0:
        before = tokens[index - 1]
        if before.value == ";" and len(places[index - 1]) <= depth:
            break
        if before.value in ("{", "}") and len(places[index - 1]) <= depth:
            opening = index - 1
            if (before.value == "}" and tokens[index].value not in (",", ")", ";", "}")) or (opening > 0 and tokens[opening - 1].value in (")", "const", "override")):
                break
        depth = min(depth, len(places[index - 1]))
        index -= 1
    return index


def block_names(tokens, places):
    """The name of the function or test whose body a token is in, by the index of the opening brace."""
    names = {}
    for index, token in enumerate(tokens):
        if token.value != "{" or token.kind != "sign" or index == 0:
            continue
        back = index - 1
        while back > 0 and tokens[back].value in ("const", "override", "noexcept"):
            back -= 1
        if tokens[back].value != ")":
            continue
        opening = [o for sign, o in places[back - 1] if sign == "("] if tokens[back - 1].value != "(" else [back - 1]
        if not opening:
            continue
        name = called(tokens, opening[-1])
        if name in ("TEST", "TEST_F", "TEST_P"):
            parts = [t.value for t in tokens[opening[-1] + 1 : back] if t.kind == "name"]
            name = ".".join(parts)
        elif name in ("if", "for", "while", "switch", ""):
            continue
        names[index] = name
    return names


def unit_expectations(path):
    source = LEFT_OUT.sub("", path.read_text(encoding="utf-8"))
    tokens = tokens_of(source)
    places, known = enclosing(tokens), {}
    names = block_names(tokens, places)
    stem = path.stem.removesuffix("_test")
    asserted = set()
    in_assertion, negated = [], []
    for index in range(len(tokens)):
        calls = calls_around(tokens, places[index], known)
        in_assertion.append(any(ASSERTION.fullmatch(call.split("::")[-1]) for call in calls))
        negated.append(in_assertion[-1] and is_negated(tokens, places, index, known))
        if in_assertion[-1] and not negated[-1] and tokens[index].kind == "name":
            asserted.add(tokens[index].value)
    for match in re.finditer(r"for \(([^;()]*?) : (\w+)\)", source):
        if asserted & set(re.findall(r"\w+", match[1])) - COMMON:
            asserted.add(match[2])  # The table whose rows the assertion reads.
    asserted -= COMMON
    found = []
    for index, token in enumerate(tokens):
        if token.kind != "text":
            continue
        blocks = [names[o] for sign, o in places[index] if sign == "{" and o in names]
        calls = calls_around(tokens, places[index], known)
        if any(call in ("Report::Line", "Report::Section") for call in calls) or negated[index]:
            continue
        if any(DISABLED in name for name in blocks):
            continue
        if not in_assertion[index]:
            start = statement_start(tokens, index, places)
            declared = {t.value for t in tokens[start:index] if t.kind == "name"}
            functions = {name for name in blocks if "." not in name}
            if not (declared | functions) & asserted:
                continue
        test = next((name for name in blocks if "." in name), None)
        text = token.value
        # "a" + computed + "b" is one text with a hole in it.
        if index + 1 < len(tokens) and tokens[index + 1].value == "+":
            text += HOLE
        if index > 0 and tokens[index - 1].value == "+":
            text = HOLE + text
        found.append(Expectation(f"{path.stem}: {test}" if test else path.stem, stem, text))
    # Joined as they follow each other: what "+" puts together.
    joined, pending = [], None
    for expectation in found:
        if pending and pending.text.endswith(HOLE) and expectation.text.startswith(HOLE) and pending.test == expectation.test:
            pending = Expectation(pending.test, stem, pending.text + expectation.text[1:])
        else:
            if pending:
                joined.append(pending)
            pending = expectation
    if pending:
        joined.append(pending)
    return found + joined


def python_text(node):
    """The text of an expression as far as it is written there, with holes for the rest; None when it is no text."""
    if isinstance(node, ast.Constant):
        return node.value if isinstance(node.value, str) else None
    if isinstance(node, ast.JoinedStr):
        return "".join(v.value if isinstance(v, ast.Constant) else HOLE for v in node.values)
    if isinstance(node, ast.BinOp) and isinstance(node.op, ast.Add):
        left, right = python_text(node.left), python_text(node.right)
        if left is not None or right is not None:
            return (HOLE if left is None else left) + (HOLE if right is None else right)
    return None


def is_nothing(node):
    if isinstance(node, ast.Constant):
        return node.value in (0, False, None, "", b"")
    if isinstance(node, ast.UnaryOp) and isinstance(node.op, ast.USub):
        return isinstance(node.operand, ast.Constant) and node.operand.value == 1
    return isinstance(node, (ast.List, ast.Tuple)) and not node.elts


def proves_nothing(node):
    """A condition that its texts are not there, or one of several."""
    if isinstance(node, ast.UnaryOp):
        return isinstance(node.op, ast.Not)
    if isinstance(node, ast.BoolOp):
        return isinstance(node.op, ast.Or)
    if isinstance(node, ast.Compare):
        against_nothing = any(is_nothing(side) for side in (node.left, *node.comparators))
        negations = (ast.NotIn, ast.Eq, ast.Is) if against_nothing else (ast.NotIn, ast.NotEq, ast.IsNot)
        return any(isinstance(op, negations) for op in node.ops)
    return False


def parts_that_prove(node):
    """The node and what is below it, without conditions that prove nothing."""
    if proves_nothing(node):
        return
    yield node
    for child in ast.iter_child_nodes(node):
        yield from parts_that_prove(child)


def texts_in(node):
    if proves_nothing(node):
        return
    text = python_text(node)
    if text is not None:
        yield text
        return
    for child in ast.iter_child_nodes(node):
        yield from texts_in(child)


def names_in(node):
    return {n.id for n in parts_that_prove(node) if isinstance(n, ast.Name)}


def is_skipped(function):
    return any(ast.unparse(decorator).startswith("pytest.mark.skip(") for decorator in function.decorator_list)


def system_expectations(path):
    tree = ast.parse(path.read_text(encoding="utf-8"))
    if tree.body and isinstance(tree.body[0], ast.Expr) and isinstance(tree.body[0].value, ast.Constant):
        tree.body.pop(0)
    asserts = [node for node in ast.walk(tree) if isinstance(node, ast.Assert)]
    asserted = set().union(*(names_in(node.test) for node in asserts)) if asserts else set()
    constants = {}
    for node in ast.walk(tree):
        if isinstance(node, ast.Assign):
            for target in node.targets:
                for name in names_in(target):
                    constants.setdefault(name, []).append(node.value)
    for _ in range(3):  # What an asserted name is made of is asserted too.
        for name in list(asserted):
            for value in constants.get(name, []):
                asserted |= names_in(value)
    stem = path.stem.removeprefix("test_")
    found = []

    def add(test, node):
        found.extend(Expectation(test, stem, text) for text in texts_in(node))

    for function in [None] + [n for n in tree.body if isinstance(n, ast.FunctionDef)]:
        test = f"{path.stem}: {function.name}" if function and function.name.startswith("test_") else path.stem
        if function is None:
            nodes = [n for n in tree.body if isinstance(n, ast.Assign)]
        else:
            if is_skipped(function):
                continue
            nodes = list(ast.walk(function))
            if not function.name.startswith("test_") and function.name in asserted:
                for node in nodes:
                    if isinstance(node, ast.Return) and node.value:
                        add(test, node.value)
            for decorator in function.decorator_list:
                add(test, decorator)
        for node in nodes:
            if isinstance(node, ast.Assert):
                add(test, node.test)
            elif isinstance(node, ast.Assign) and asserted & set().union(*(names_in(t) for t in node.targets)):
                add(test, node.value)
    return found


def golden_expectations(tests):
    """The golden files that one of the tests names."""
    found = []
    named = {word for path in tests for word in re.findall(r"[\w.-]+", path.read_text(encoding="utf-8"))}
    for path in sorted((ROOT / "tests" / "system" / "golden").glob("*.txt")):
        if {path.name, path.stem, path.name.split(".")[0]} & named:
            found.append(Expectation(f"golden/{path.name}", path.stem, path.read_text(encoding="utf-8")))
    for path in sorted((ROOT / "tests" / "lab" / "openxr").glob("*/*.report")):
        if path.stem in named:
            text = path.read_text(encoding="utf-8")
            found.append(Expectation(f"openxr/{path.parent.name}/{path.name}", path.stem, text))
    return found


def unit_tests():
    """As tests/unit/CMakeLists.txt finds them, but for those of what reads a report: their texts are not printed."""
    paths = sorted((ROOT / "tests" / "unit").rglob("*_test.cpp"))
    return [path for path in paths if not reads_reports(path.with_name(path.name.replace("_test.cpp", ".cpp")))]


def system_tests():
    """Those that tests/system/CMakeLists.txt registers."""
    lists = (ROOT / "tests" / "system" / "CMakeLists.txt").read_text(encoding="utf-8")
    names = re.findall(r"^[ \t]*vistrel_system_test\((\w+)", lists, re.MULTILINE)
    return [ROOT / "tests" / "system" / f"test_{name}.py" for name in sorted(names)]


def expectations():
    found = []
    for path in unit_tests():
        found += unit_expectations(path)
    found += golden_expectations([*unit_tests(), *system_tests()])
    for path in system_tests():
        found += system_expectations(path)
    return found


# ---- Both together


def pattern_of(line):
    """What the line looks like once its placeholders are filled in."""
    if line.kind == "title":
        return re.compile(rf"(?:^|== ){re.escape(line.text)}(?:$| =+$|\0)", re.MULTILINE)
    parts, position = [], 0
    for match in CONVERSION.finditer(line.text):
        parts.append(re.escape(line.text[position : match.start()]))
        parts.append(FILLED.get(match[0][-1], r"[^\n]*?"))
        position = match.end()
    parts.append(re.escape(line.text[position:]))
    body = "".join(parts)
    if line.kind == "line":
        return re.compile(rf"^{body}$", re.MULTILINE)
    # No part of a longer word; a text that is put together with others may stand anywhere.
    before = r"(?<![A-Za-z])" if line.text[0].isalpha() else ""
    after = r"(?![A-Za-z])" if line.text[-1].isalpha() else ""
    return re.compile(before + body + after)


def is_weak(line):
    """Hardly more than placeholders: such a line is proved by its own section's tests alone."""
    return len(re.findall(r"[A-Za-z]", CONVERSION.sub("", line.text))) < 8


def tests_of(line, all_expectations):
    pattern = pattern_of(line)
    stem = pathlib.Path(line.source).stem
    family = re.sub(r"_(section|probe|report|query|timing|messages|reading|selection|text|measurement)$", "", stem)
    weak = is_weak(line)
    tests = []
    for expectation in all_expectations:
        if expectation.test in tests or (weak and not expectation.stem.startswith(family)):
            continue
        if pattern.search(expectation.text):
            tests.append(expectation.test)
        if len(tests) == SHOWN_TESTS:
            break
    return tests


def shown(text):
    visible = text.replace("|", "\\|")
    return f"`` {visible} ``" if "`" in visible else f"`{visible}`"


def page(proved):
    out = [
        "# The lines of the report and their tests",
        "",
        "Every line that the report can print, as it stands in the sources, and tests that compare it whole. Titles are those",
        "of sections; texts are what stands in place of a `%s`. At most three tests are named a line.",
    ]
    source = None
    for line, tests in proved:
        if line.source != source:
            source = line.source
            out += ["", f"## {source}", "", "| Printed | Tests |", "|---|---|"]
        prefix = {"title": "title ", "text": "text ", "line": ""}[line.kind]
        names = ", ".join(f"`{test}`" for test in tests[:SHOWN_TESTS])
        names = names or f"none can be: {UNREACHABLE.get(line.text, '')}"
        out.append(f"| {prefix}{shown(line.text)} | {names} |")
    return "\n".join(out) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--list", action="store_true", help="print every line with its tests")
    arguments = parser.parse_args()
    all_expectations = expectations()
    proved = [(line, tests_of(line, all_expectations)) for line in all_lines()]
    if arguments.list:
        print(page(proved), end="")
        return 0
    missing = [line for line, tests in proved if not tests and line.text not in UNREACHABLE]
    for line in missing:
        print(f"{line.source}: no test compares this {line.kind}: {line.text!r}")
    print(f"{len(proved)} lines, {len(missing)} without a test")
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main())
