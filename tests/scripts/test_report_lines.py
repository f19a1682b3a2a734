"""What counts as a test of a report line (tests/report_lines.py), in a project of a few lines."""

import pathlib
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1]))

import report_lines  # noqa: E402

LINE = "GPU scheduling  : on"
SOURCE = f'void Print() {{ Report::Line("{LINE}"); }}\n'
SECTION = "tools/vistrel_diag/sections/machine/machine_section"
UNIT_TEST = f"tests/unit/{SECTION}_test.cpp"
SYSTEM_TEST = "tests/system/test_machine.py"


@pytest.fixture
def project(tmp_path, monkeypatch):
    """A project with one line; gives the function that adds a file to it."""
    monkeypatch.setattr(report_lines, "ROOT", tmp_path)

    def write(name, text):
        path = tmp_path / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    write("cmake/components.txt", "tools/vistrel_diag\n")
    write(f"{SECTION}.cpp", SOURCE)
    write("tests/system/CMakeLists.txt", "# vistrel_system_test(NAME)\nvistrel_system_test(machine LOCKS wine_prefix)\n")
    write(SYSTEM_TEST, "")
    return write


def proven_by():
    (line,) = report_lines.all_lines()
    assert line.text == LINE
    return report_lines.tests_of(line, report_lines.expectations())


def in_a_gtest(body, before=""):
    return f"{before}\nTEST(Machine, Prints) {{\n{body}\n}}\n"


@pytest.mark.parametrize(
    "body",
    [
        f'EXPECT_EQ(report.Text(), "{LINE}\\n");',
        f'EXPECT_THAT(report.Text(), HasSubstr("{LINE}\\n"));',
        f'EXPECT_THAT(report.Text(), AllOf(HasSubstr("{LINE}"), Not(HasSubstr("off"))));',
        f'EXPECT_TRUE(Contains(report.Text(), "{LINE}"));',
        f'EXPECT_NE(report.Text().find("{LINE}"), std::string::npos);',
        f'const std::string expected = "{LINE}\\n";\nEXPECT_EQ(report.Text(), expected);',
        f'EXPECT_EQ(report.Text(), R"({LINE}\n)");',
    ],
)
def test_an_assertion_that_the_line_is_there_proves_it(project, body):
    project(UNIT_TEST, in_a_gtest(body))
    assert proven_by() == ["machine_section_test: Machine.Prints"]


@pytest.mark.parametrize(
    "body",
    [
        "",
        f"// EXPECT_EQ(report.Text(), \"{LINE}\");",
        f'EXPECT_THAT(report.Text(), Not(HasSubstr("{LINE}")));',
        f'EXPECT_THAT(report.Text(), testing::Not(testing::HasSubstr("{LINE}")));',
        f'EXPECT_THAT(report.Text(), AllOf(HasSubstr("off"), Not(HasSubstr("{LINE}"))));',
        f'EXPECT_THAT(Lines(), Each(Ne("{LINE}")));',
        f'EXPECT_NE(report.Text(), "{LINE}\\n");',
        f'ASSERT_STRNE(report.Text().c_str(), "{LINE}\\n");',
        f'EXPECT_FALSE(Contains(report.Text(), "{LINE}"));',
        f'EXPECT_TRUE(!Contains(report.Text(), "{LINE}"));',
        f'EXPECT_TRUE(!report.Text().contains("{LINE}"));',
        f'EXPECT_EQ(report.Text().find("{LINE}"), std::string::npos);',
        f'EXPECT_EQ(CountOf(report.Text(), "{LINE}"), 0U);',
        f'const std::string absent = "{LINE}";\nEXPECT_THAT(report.Text(), Not(HasSubstr(absent)));',
        f'Feed("{LINE}");\nEXPECT_EQ(report.Text(), "");',
        f'#if 0\nEXPECT_EQ(report.Text(), "{LINE}");\n#endif',
    ],
)
def test_an_assertion_that_the_line_is_absent_proves_nothing(project, body):
    project(UNIT_TEST, in_a_gtest(body))
    assert proven_by() == []


def test_a_constant_counts_by_the_assertion_that_it_is_in(project):
    constant = f'constexpr const char* kLine = "{LINE}\\n";'
    project(UNIT_TEST, in_a_gtest("EXPECT_EQ(report.Text(), kLine);", constant))
    assert proven_by() == ["machine_section_test"]
    project(UNIT_TEST, in_a_gtest("EXPECT_NE(report.Text(), kLine);", constant))
    assert proven_by() == []


def test_a_test_that_is_disabled_proves_nothing(project):
    project(UNIT_TEST, f'TEST(Machine, DISABLED_Prints) {{ EXPECT_EQ(report.Text(), "{LINE}"); }}\n')
    assert proven_by() == []


@pytest.mark.parametrize(
    "name",
    [
        f"tests/unit/{SECTION}_tests.cpp",
        f"tests/unit/{SECTION}_test.cc",
        f"tests/{SECTION}_test.cpp",
        f"tests/unit/{SECTION.replace('_section', '_reading')}_test.cpp",
    ],
)
def test_a_file_that_no_build_knows_or_that_prints_nothing_proves_nothing(project, name):
    project(name, in_a_gtest(f'EXPECT_EQ(report.Text(), "{LINE}");'))
    assert proven_by() == []


@pytest.mark.parametrize(
    "body",
    [
        f'assert run.section("MACHINE") == "{LINE}"',
        f'assert "{LINE}" in run.report_text',
        f'assert run.exit_code == 0 and "{LINE}\\n" in run.report_text and "off" not in run.report_text',
        f'expected = "{LINE}"\n    assert run.section("MACHINE") == expected',
        f'assert run.report_text.find("{LINE}") != -1',
    ],
)
def test_an_assertion_of_pytest_proves_it(project, body):
    project(SYSTEM_TEST, f"def test_it(run):\n    {body}\n")
    assert proven_by() == ["test_machine: test_it"]


@pytest.mark.parametrize(
    "body",
    [
        f'assert "{LINE}" not in run.report_text',
        f'assert not "{LINE}" in run.report_text',
        f'assert run.section("MACHINE") != "{LINE}"',
        f'assert run.exit_code == 0 and "{LINE}" not in run.report_text',
        f'assert "{LINE}" in run.report_text or "off" in run.report_text',
        f'assert run.report_text.count("{LINE}") == 0',
        f'assert run.report_text.find("{LINE}") == -1',
        f'assert [line for line in run.lines if "{LINE}" in line] == []',
        f'assert [line for line in run.lines if line != "{LINE}"] == run.lines',
        f'absent = "{LINE}"\n    assert absent not in run.report_text',
        f'assert run.exit_code == 0, "{LINE}"',
        f'run.feed("{LINE}")',
    ],
)
def test_an_assertion_of_pytest_that_the_line_is_absent_proves_nothing(project, body):
    project(SYSTEM_TEST, f"def test_it(run):\n    {body}\n")
    assert proven_by() == []


def test_a_file_of_pytest_that_is_not_registered_proves_nothing(project):
    project("tests/system/test_others.py", f'def test_it(run):\n    assert "{LINE}" in run.report_text\n')
    project("tests/system/test_machine.py", "")
    assert proven_by() == []


def test_a_skipped_test_proves_nothing(project):
    body = f'@pytest.mark.skip(reason="later")\ndef test_it(run):\n    assert "{LINE}" in run.report_text\n'
    project(SYSTEM_TEST, body)
    assert proven_by() == []


def test_a_golden_file_counts_when_a_registered_test_names_it(project):
    project("tests/system/golden/desktop-pc.txt", f"== MACHINE ===\n{LINE}\n")
    project(SYSTEM_TEST, "")
    assert proven_by() == []
    project("tests/system/test_others.py", 'golden.check("desktop-pc.txt", text)')
    assert proven_by() == []
    project(SYSTEM_TEST, '@pytest.mark.parametrize("scenario", ["desktop-pc"])\ndef test_it(scenario):\n    pass\n')
    assert proven_by() == ["golden/desktop-pc.txt"]
