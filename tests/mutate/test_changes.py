"""What is changed in a source, and what is not."""

import pytest

from changes import changes_of


def changed(text, kind):
    """Every version of a function's body that this kind of change makes, without the blanks around it."""
    source = "void Function() {\n" + "".join(f"    {line}\n" for line in text.split("\n")) + "}\n"
    found = [change.applied_to(source) for change in changes_of(source) if change.kind == kind]
    return ["\n".join(line[4:] for line in version.split("\n")[1:-2]) for version in found]


@pytest.mark.parametrize(
    "kind, text, versions",
    [
        ("comparison", "return a < b;", ["return a <= b;"]),
        ("comparison", "return a >= b && c == d;", ["return a > b && c == d;", "return a >= b && c != d;"]),
        ("comparison", "std::vector<int> values;", []),
        ("comparison", "template <typename Value> struct S;", []),
        ("constant", "x = 7U;", ["x = 8U;"]),
        ("constant", "x = 1'000;", ["x = 1001;"]),
        ("constant", "x = 0x0F;", ["x = 16;"]),
        ("constant", "x = 0.5F;", ["x = 1.5F;"]),
        ("constant", "x = 1e-3;", ["x = 1.001;"]),
        ("constant", "x = true;", ["x = false;"]),
        ("constant", "x = 'a';", ["x = '~';"]),
        ("constant", r'Line("a \"b\" %d\n");', [r'Line("a \"b\" %d\n~");']),
        ("constant", "x = Stage::Idle;", ["x = static_cast<decltype(Stage::Idle)>(static_cast<int>(Stage::Idle) + 1);"]),
        ("constant", "Report::Line(x);", []),
        ("constant", 'static_assert(sizeof(x) == 16, "text");', []),
        ("constant", "x = y;  // 7 and \"text\"", []),
        ("arithmetic", "x = a + b * c;", ["x = a - b * c;", "x = a + b / c;"]),
        ("arithmetic", "++x;", ["--x;"]),
        ("arithmetic", "char* text = -x;", []),
        ("branch", "if (a < b) {}", ["if (!(a < b)) {}"]),
        ("branch", "if (!a) {}", ["if (a) {}"]),
        ("branch", "if (a == b) {}", []),  # The comparison's own change is the same.
        ("branch", "if (int x = f(); x > 0) {}", ["if (int x = f(); !(x > 0)) {}"]),
        ("branch", "for (int i = 0; i < n; ++i) {}", ["for (int i = 0; false; ++i) {}"]),
        ("branch", "return a && b;", ["return a || b;"]),
        ("branch", "auto&& x = f();", []),
        ("branch", "return a ? b : c;", ["return a ? (c) : (b);"]),
        ("branch", "f(a ? b : c ? d : e, g);", ["f(a ? (c ? d : e) : (b), g);", "f(a ? b : c ? (e) : (d), g);"]),
        ("branch", "break;", [";"]),
        ("branch", "return;", [";"]),
        ("branch", "return x;", []),
        ("flag", "f(A_READ | A_WRITE);", [
            "f(static_cast<decltype(A_READ)>(A_READ + 1) | A_WRITE);", "f(A_WRITE);", "f(A_READ);",
            "f(A_READ | static_cast<decltype(A_WRITE)>(A_WRITE + 1));"]),
        ("flag", "f(KEY_READ, &key);", ["f(static_cast<decltype(KEY_READ)>(KEY_READ + 1), &key);"]),
        ("flag", "D3D11_QUERY_DESC description = {};", []),
        ("flag", "IID_PPV_ARGS(&x);", []),
        ("release", "CloseHandle(file);", [";"]),
        ("release", "view->Release();", [";"]),
        ("release", "std::string text(Close(x));", []),
        ("statement", "Write(file);", [";"]),
        ("statement", "x.y = f(z);", [";"]),
        ("statement", "int x = f(z);", []),
        ("statement", "return f(z);", []),
        ("statement", "std::vector<int> x(f(z));", []),
        ("order", "f(a);\ng(b);", ["g(b);\nf(a);"]),
        ("order", "f(a);\nint x = g(b);", ["int x = g(b);\nf(a);"]),
        ("order", "int x = 0;\nint y = 1;", []),
        ("order", "if (x) {\n    f(a);\n}\ng(b);", []),
    ],
)  # fmt: skip
def test_each_kind_of_change(kind, text, versions):
    assert changed(text, kind) == versions


def test_comments_and_texts_are_not_changed():
    assert changes_of('#include "a.h"\n#define X 1 + 2\n// a < b\n/* c == 7 */\n') == []


def test_a_raw_string_is_one_token():
    (change,) = changes_of('const char* x = "";\n')
    assert change.applied_to('const char* x = "";\n') == 'const char* x = "~";\n'
    assert changes_of('const char* x = R"(a < b "c" 7)";\n') == []


def test_members_are_not_swapped():
    assert [change for change in changes_of("struct S {\n    int a = f();\n    int b = 0;\n};\n") if change.kind == "order"] == []


def test_a_change_knows_its_line_and_both_versions_of_it():
    source = "int F() {\n    return a +\n           1;\n}\n"
    (number,) = [change for change in changes_of(source) if change.kind == "constant"]
    assert number.line_number(source) == 3
    assert number.lines(source) == ("1;", "2;")


def test_every_change_is_unique():
    source = "void F() {\n    if (!a && b < 3) {\n        Close(x);\n        y = A_B | C_D;\n    }\n}\n"
    versions = [change.applied_to(source) for change in changes_of(source)]
    assert len(versions) == len(set(versions)) > 10
    assert source not in versions
