"""A name finds its tests, and just those (scripts/select-tests), in a project of two programs and two files of pytest."""

import pathlib
import subprocess

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]

CMAKE = """
cmake_minimum_required(VERSION 3.25)
project(sample LANGUAGES CXX)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
enable_testing()
add_executable(portable_tests verdict_section_test.cpp gpu_section_test.cpp)
add_executable(gpu_section_windows_test gpu_section_windows_test.cpp)
add_test(NAME native.portable_tests COMMAND portable_tests --brief)
add_test(NAME windows.gpu_section_windows_test COMMAND gpu_section_windows_test)
add_test(NAME system.settings COMMAND sh -c "echo ran $*" pytest -q ${CMAKE_SOURCE_DIR}/test_settings.py)
add_test(NAME system.terminal COMMAND sh -c "echo ran $*" pytest -q ${CMAKE_SOURCE_DIR}/test_terminal.py)
set_tests_properties(system.settings PROPERTIES ENVIRONMENT "A=b;C=d e" RESOURCE_LOCK "one;two" RUN_SERIAL ON
                                                FAIL_REGULAR_EXPRESSION "\\\\[  SKIPPED \\\\]")
"""
# Stands in for gtest: prints how it was called.
MAIN = "#include <cstdio>\n#define TEST(a, b) void a##b()\n#define TEST_F TEST\n#define TEST_P TEST\n"
FILES = {
    "CMakeLists.txt": CMAKE,
    "verdict_section_test.cpp": MAIN
    + """TEST(Verdict, OfAFullRun) {}
TEST(Verdict, WithoutAModel) {}
TEST_F(VerdictTable, HasRows) {}
// TEST(Verdict, Commented) {}
int main(int count, char** words) { for (int i = 0; i < count; ++i) std::puts(words[i]); }
""",
    "gpu_section_test.cpp": MAIN + "TEST(PrintGpus, None) {}\nTEST_P(Vendor, IsNamed) {}\nTEST(Vendor2, DISABLED_Alone) {}\n",
    "gpu_section_windows_test.cpp": MAIN + "TEST_F(GpuProbe, Finds) {}\nint main() {}\n",
    "test_settings.py": "def helper():\n    pass\ndef test_a_locked_file():\n    pass\ndef test_others():\n    pass\n",
    "test_terminal.py": "def test_others_too():\n    pass\n",
}


@pytest.fixture(scope="module")
def project(tmp_path_factory):
    folder = tmp_path_factory.mktemp("project")
    for name, content in FILES.items():
        (folder / name).write_text(content, encoding="utf-8")
    subprocess.run(["cmake", "-S", folder, "-B", folder / "build", "-G", "Ninja"], check=True, capture_output=True)
    subprocess.run(["cmake", "--build", folder / "build"], check=True, capture_output=True)
    return folder


def select(project, name):
    done = subprocess.run(
        [ROOT / "scripts" / "select-tests", name, project / "selected", project / "build"],
        capture_output=True,
        text=True,
        check=False,
    )
    return done.returncode, done.stdout, done.stderr


def run_selected(project):
    """The output of every test that was selected, as ctest runs it."""
    done = subprocess.run(
        ["ctest", "--test-dir", project / "selected", "-V"], check=True, capture_output=True, text=True
    )
    return done.stdout


def test_selects_a_suite(project):
    assert select(project, "Verdict") == (0, "  native.portable_tests: 3 of 5 tests\n", "")
    output = run_selected(project)
    assert "--brief\n1: --gtest_filter=Verdict.*:VerdictTable.*\n" in output
    assert "100% tests passed, 0 tests failed out of 1" in output


def test_selects_one_test_of_a_suite(project):
    assert select(project, "Verdict.OfAFull") == (0, "  native.portable_tests: 1 of 5 tests\n", "")
    assert "--gtest_filter=Verdict.OfAFullRun\n" in run_selected(project)


def test_selects_a_file_and_the_program_of_the_same_name(project):
    assert select(project, "gpu_section") == (
        0,
        "  native.portable_tests: 2 of 5 tests\n  windows.gpu_section_windows_test: whole\n",
        "",
    )
    assert "--gtest_filter=PrintGpus.*:*/Vendor.*\n" in run_selected(project)


def test_selects_a_parameterised_test_as_gtest_prints_it(project):
    for name in ("All/Vendor.IsNamed/3", "Vendor.IsNamed/3", "Vendor.IsNamed"):
        assert select(project, name) == (0, "  native.portable_tests: 1 of 5 tests\n", "")


def test_selects_one_test_of_pytest(project):
    assert select(project, "test_a_locked") == (0, "  system.settings: 1 of 2 tests\n", "")
    assert f"ran -q {project}/test_settings.py::test_a_locked_file\n" in run_selected(project)


def test_selects_tests_in_several_files_of_pytest(project):
    assert select(project, "others") == (
        0,
        "  system.settings: 1 of 2 tests\n  system.terminal: 1 of 1 tests\n",
        "",
    )


def test_selects_a_whole_test_of_ctest(project):
    assert select(project, r"system\.settings$") == (0, "  system.settings: whole\n", "")
    assert f"ran -q {project}/test_settings.py\n" in run_selected(project)


def test_properties_are_kept(project):
    select(project, "test_a_locked")
    made = (project / "selected" / "CTestTestfile.cmake").read_text(encoding="utf-8")
    assert "ENVIRONMENT [[A=b;C=d e]]" in made
    assert "RESOURCE_LOCK [[one;two]]" in made
    assert "RUN_SERIAL [[TRUE]]" in made
    assert "FAIL_REGULAR_EXPRESSION [=[\\[  SKIPPED \\]]=]" in made
    assert "100% tests passed" in run_selected(project)


def test_selects_everything(project):
    assert select(project, ".")[1].count("\n") == 4


@pytest.mark.parametrize("name", ["NoSuchTest", "Commented", "DISABLED_Alone", "helper", "^verdict$"])
def test_selecting_nothing_is_an_error(project, name):
    assert select(project, name) == (
        1,
        "",
        f"select-tests: no test has {name!r} in its name, nor has a file of tests\n",
    )


def test_an_invalid_regular_expression_is_an_error(project):
    code, _, said = select(project, "(")
    assert code == 1
    assert said == "select-tests: '(' is no regular expression: missing ), unterminated subpattern at position 0\n"
