"""How changes are tried: which tests run, what is stored and what is printed."""

import io
import subprocess

import pytest

import mutate
import trial
from trial import KILLED, NOT_BUILT, SURVIVED, UNSEEN

SOURCE = "int Sum(int a, int b) {\n    if (a < b) {\n        return a + b;\n    }\n    return 7;\n}\n"
OTHER_NAME = "tests/unit/lib/sum_test.cpp"

PROJECT = {
    "cmake/components.txt": "lib\n",
    ".gitignore": "build/\n",
    "CMakeLists.txt": (
        "cmake_minimum_required(VERSION 3.25)\nproject(small CXX)\nset(VISTREL_PORTABLE_LIBRARY STATIC CACHE STRING \"\")\n"
        "add_library(small ${VISTREL_PORTABLE_LIBRARY} lib/sum.cpp)\nadd_subdirectory(tests/unit)\n"
    ),
    "lib/sum.cpp": SOURCE,
    "lib/sum.h": "int Sum(int a, int b);\n",
    "lib/disk_windows.cpp": '#include "lib/disk.h"\n',
    "lib/disk.h": "#include <windows.h>\nint Disk();\n",
    "tests/unit/CMakeLists.txt": "add_executable(portable_tests lib/sum_test.cpp)\ntarget_link_libraries(portable_tests small)\n",
    # Replaces GoogleTest and ignores its arguments: only the program's output is read.
    OTHER_NAME: (
        "#include <cstdio>\nint Sum(int a, int b);\n/*\n  TEST(SumTest, Adds) {}\n*/\nint main() {\n"
        "    if (Sum(1, 2) == 3) return 0;\n    std::puts(\"[  FAILED  ] SumTest.Adds (0 ms)\");\n    return 1;\n}\n"
    ),
    "tests/unit/lib/disk_windows_test.cpp": "TEST_F(DiskTest, Spins) {}\nINSTANTIATE(Disk)\n",
    "tests/unit/lib/disk_full_windows_test.cpp": "",
    "tests/unit/user_windows_test.cpp": '#include "lib/disk.h"\n',
    "tests/unit/stranger_windows_test.cpp": "",
}


@pytest.fixture
def project(tmp_path, monkeypatch):
    """A project of one portable source and its test, instead of this one."""
    for name, text in PROJECT.items():
        (tmp_path / name).parent.mkdir(parents=True, exist_ok=True)
        (tmp_path / name).write_text(text, encoding="utf-8")
    subprocess.run(["git", "init", "-q", tmp_path], check=True)
    for module in (trial, mutate):
        monkeypatch.setattr(module, "ROOT", tmp_path)
        monkeypatch.setattr(module, "WORK", tmp_path / "build" / "mutate")
    monkeypatch.setattr(mutate, "SURVIVORS", tmp_path / "build" / "survivors.txt")
    monkeypatch.setattr(mutate, "FIGURES", tmp_path / "build" / "figures.txt")
    monkeypatch.delenv("CMAKE_CXX_COMPILER_LAUNCHER", raising=False)
    return tmp_path


def mutant(old, new):
    (found,) = [each for each in mutate.mutants_of("lib/sum.cpp") if (old, new) == (each.before, each.after)]
    return found


def test_a_changed_program_is_built_and_run(project):
    tree = trial.Tree(1)
    tree.copy_sources()
    tree.check_unchanged("lib/sum.cpp", ["native"])
    verdicts = {
        text: tree.try_out("lib/sum.cpp", SOURCE.replace("a + b", text), ["native"]) for text in ("a - b", "b + a", "a +")
    }
    assert verdicts == {"a - b": (KILLED, "SumTest.Adds"), "b + a": (SURVIVED, ""), "a +": (NOT_BUILT, "portable_tests")}
    assert (project / "lib/sum.cpp").read_text(encoding="utf-8") == SOURCE
    assert (tree.source / "lib/sum.cpp").read_text(encoding="utf-8") == SOURCE


@pytest.mark.parametrize(
    "endless, limits",
    [("for (volatile int i = 0;; i = 1) {}", (1, 600)), ('return std::system("sleep 600");', (600, 0.5))],
    ids=["works", "waits"],
)
def test_a_program_that_hangs_is_killed(project, monkeypatch, endless, limits):
    tree = trial.Tree(1)
    tree.copy_sources()
    tree.check_unchanged("lib/sum.cpp", ["native"])
    monkeypatch.setattr(tree, "limits", dict.fromkeys(tree.limits, limits))
    source = '#include <cstdlib>\n' + SOURCE.replace("return a + b;", endless)
    assert tree.try_out("lib/sum.cpp", source, ["native"]) == (KILLED, trial.ENDLESS)


def test_nothing_is_tried_when_the_tests_fail_without_a_change(project):
    (project / "lib/sum.cpp").write_text(SOURCE.replace("a + b", "a - b"), encoding="utf-8")
    tree = trial.Tree(1)
    tree.copy_sources()
    with pytest.raises(trial.TheTestsFail, match="SumTest.Adds"):
        tree.check_unchanged("lib/sum.cpp", ["native"])


def test_code_without_tests_survives(project):
    tree = trial.Tree(1)
    tree.copy_sources()
    assert tree.try_out("lib/disk_windows.cpp", "", ["native"]) == (UNSEEN, "")


def test_the_copy_is_updated_from_the_tree(project):
    tree = trial.Tree(1)
    tree.copy_sources()
    (project / "lib/sum.cpp").write_text("int x;\n", encoding="utf-8")
    (project / "lib/disk.h").unlink()
    tree.copy_sources()
    assert (tree.source / "lib/sum.cpp").read_text(encoding="utf-8") == "int x;\n"
    assert not (tree.source / "lib/disk.h").exists()


def test_the_tests_of_a_source(project):
    assert trial.tests_of("lib/sum.cpp", windows=False) == ["tests/unit/lib/sum_test.cpp"]
    disk = [f"tests/unit/{name}_windows_test.cpp" for name in ("lib/disk_full", "lib/disk", "user")]
    assert trial.tests_of("lib/disk_windows.cpp", windows=True) == disk
    assert trial.test_filter(disk) == "DiskTest.*:*/DiskTest.*:DiskTest/*:*/DiskTest/*"


def test_a_source_without_tests_is_tested_by_those_of_its_folder(project):
    (project / "lib/tape_windows.cpp").write_text("", encoding="utf-8")
    beside = [f"tests/unit/lib/{name}_windows_test.cpp" for name in ("disk_full", "disk")]
    assert trial.tests_of("lib/tape_windows.cpp", windows=True) == beside


def test_portable_sources_come_first(project):
    assert trial.product_sources() == ["lib/sum.cpp", "lib/sum.h", "lib/disk_windows.cpp", "lib/disk.h"]
    assert mutate.chosen_sources(["lib/sum.h", "./lib/sum.cpp"]) == ["lib/sum.cpp", "lib/sum.h"]
    with pytest.raises(SystemExit, match="no source of the product: li"):
        mutate.chosen_sources(["li"])


def options(*arguments):
    return mutate.parse_options(["lib/sum.cpp", *arguments])


class ScriptedTree:
    """Returns the entry of `verdicts` for a change's new text; all other changes are killed."""

    verdicts = {}
    tried = []

    def __init__(self, number, system_tests):
        pass

    def copy_sources(self):
        pass

    def check_unchanged(self, path, stages):
        pass

    def try_out(self, path, text, stages):
        ScriptedTree.tried.append(text)
        return ScriptedTree.verdicts.get(text, (KILLED, "SumTest.Adds"))


@pytest.fixture
def scripted(project, monkeypatch):
    monkeypatch.setattr(ScriptedTree, "tried", [])
    survivor = mutant("if (a < b) {", "if (a <= b) {")
    monkeypatch.setattr(ScriptedTree, "verdicts", {survivor.change.applied_to(SOURCE): (SURVIVED, "")})
    return project


def run(results, *arguments):
    """A run over the changes that are not known yet; how many it tried."""
    before = len(ScriptedTree.tried)
    chosen = options(*arguments)
    mutants = mutate.mutants_of("lib/sum.cpp")
    wanted = [each for each in mutants if results.verdict(each) is None or chosen.again and mutate.is_left(results.verdict(each))]
    mutate.Run(chosen, results, io.StringIO()).try_all({"lib/sum.cpp": wanted} if wanted else {}, ScriptedTree)
    return len(ScriptedTree.tried) - before


def test_known_results_are_not_tried_again(scripted):
    file = scripted / "results.jsonl"
    count = len(mutate.mutants_of("lib/sum.cpp"))
    assert run(mutate.Results(file)) == count > 3
    assert run(mutate.Results(file)) == 0
    assert run(mutate.Results(file), "--again") == 1  # The survivor.
    (scripted / "lib/sum.cpp").write_text(SOURCE + "\n", encoding="utf-8")
    assert run(mutate.Results(file)) == count


def test_a_run_stops_at_its_limit_and_continues_later(scripted):
    file = scripted / "results.jsonl"
    assert run(mutate.Results(file), "--minutes", "1e-9") == 0
    assert run(mutate.Results(file)) == len(mutate.mutants_of("lib/sum.cpp"))


def test_survivors_are_listed(scripted):
    results = mutate.Results(scripted / "results.jsonl")
    run(results)
    mutants, out = mutate.mutants_of("lib/sum.cpp"), io.StringIO()
    (left,) = mutate.report(mutants, results, set(), out)
    expected = "lib/sum.cpp:2  comparison\n- if (a < b) {\n+ if (a <= b) {\n"
    assert str(left) == expected == mutate.SURVIVORS.read_text(encoding="utf-8")
    assert f"survived: {expected}" in out.getvalue()
    figures = (scripted / "build" / "figures.txt").read_text(encoding="utf-8")
    assert f"{'changes, killed':<34} {len(mutants) - 1}\n{'changes, survived':<34} 1\n" in figures
    assert out.getvalue().startswith(figures)
    assert mutate.report(mutants, results, {left.key}, io.StringIO()) == []


def test_a_sample_holds_every_kind_before_a_second_of_one(project):
    (project / "lib/sum.cpp").write_text(SOURCE.replace("return 7", "return 1 + 2 + 3"), encoding="utf-8")
    mutants = mutate.mutants_of("lib/sum.cpp")
    kinds = {each.change.kind for each in mutants}
    sample = mutate.sampled(mutants, len(kinds))
    assert {each.change.kind for each in sample} == kinds and len(sample) == len(kinds) < len(mutants)
    assert mutate.sampled(mutants, len(mutants)) == mutants


def test_a_sample_stays_when_other_lines_change(project):
    before = mutate.sampled(mutate.mutants_of("lib/sum.cpp"), 2)
    (project / "lib/sum.cpp").write_text("\n\n" + SOURCE, encoding="utf-8")
    after = mutate.sampled(mutate.mutants_of("lib/sum.cpp"), 2)
    assert [(each.before, each.after) for each in before] == [(each.before, each.after) for each in after]
    assert [each.line + 2 for each in before] == [each.line for each in after]


def test_the_unchanged_program_is_tested_once(project):
    tree = trial.Tree(1)
    tree.copy_sources()
    tree.check_unchanged("lib/sum.cpp", ["native"])
    (tree.source / OTHER_NAME).write_text("int main() { return 1; }\n", encoding="utf-8")
    tree.check_unchanged("lib/sum.cpp", ["native"])
    tree.limits.clear()
    with pytest.raises(trial.TheTestsFail):
        tree.check_unchanged("lib/sum.cpp", ["native"])


ENTRY = "lib/sum.cpp\n- if (a < b) {\n+ if (a <= b) {\nequal numbers never come\n"


def test_a_judged_change_is_skipped(project):
    equivalents = mutate.Equivalents("# a comment\n\n" + ENTRY)
    judged = mutate.judged_equivalent(mutate.mutants_of("lib/sum.cpp"), equivalents)
    assert judged == {mutant("if (a < b) {", "if (a <= b) {").key}
    assert equivalents.vanished({"lib/sum.cpp"}) == []


def test_three_dots_match_any_text(project):
    equivalents = mutate.Equivalents("lib/sum.cpp\n- return ...;\n+ ...\nwhatever it returns\n")
    judged = mutate.judged_equivalent(mutate.mutants_of("lib/sum.cpp"), equivalents)
    assert {each.before for each in mutate.mutants_of("lib/sum.cpp") if each.key in judged} == {"return a + b;", "return 7;"}


def test_a_number_selects_one_of_several_equal_lines(project):
    (project / "lib/sum.cpp").write_text("int F() {\n    f(1);\n    if (x) {\n        f(1);\n    }\n}\n", encoding="utf-8")
    equivalents = mutate.Equivalents("lib/sum.cpp (2)\n- f(1);\n+ f(2);\nthe reason\n")
    mutants = mutate.mutants_of("lib/sum.cpp")
    judged = mutate.judged_equivalent(mutants, equivalents)
    assert [each.line for each in mutants if each.key in judged] == [4]


def test_a_judged_change_that_no_longer_exists_is_reported(project):
    equivalents = mutate.Equivalents(ENTRY.replace("a < b", "a < c"))
    assert mutate.judged_equivalent(mutate.mutants_of("lib/sum.cpp"), equivalents) == set()
    assert len(equivalents.vanished({"lib/sum.cpp"})) == 1
    assert equivalents.vanished({"lib/other.cpp"}) == []


def test_a_judgement_without_a_reason_is_rejected():
    with pytest.raises(SystemExit, match="entry 1"):
        mutate.Equivalents("lib/sum.cpp\n- a\n+ b\n")
