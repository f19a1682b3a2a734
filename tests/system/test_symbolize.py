"""A crash's closing line leads to function and line, by the command that support uses."""

import re
import subprocess

import pytest

import lab

NM = "x86_64-w64-mingw32-nm"
OBJDUMP = "x86_64-w64-mingw32-objdump"
SYMBOLS = lab.BUILD / "vistrel_diag.exe.debug"
VICTIM = lab.BUILD / "tests" / "unit" / "rescue_victim.exe"
SYMBOLIZE = lab.ROOT / "scripts" / "symbolize"


def symbolized(*arguments):
    return subprocess.run([SYMBOLIZE, *arguments], capture_output=True, text=True)


@pytest.fixture
def crashed(tmp_path):
    """The report of a program that has crashed with an access violation in its own code."""
    environment = lab.environment(VISTREL_RESCUE_VICTIM_FOLDER=lab.windows_path(tmp_path))
    command = [lab.ROOT / "scripts" / "wine", lab.windows_path(VICTIM), "access-violation"]
    lab.run_program(command, cwd=tmp_path, env=environment)
    return tmp_path / lab.REPORT_NAME


def test_a_crash_is_found_in_the_source(crashed):
    run = symbolized(VICTIM, crashed)
    lines = run.stdout.splitlines()
    assert run.returncode == 0, run.stderr
    assert lines[0].startswith("rescue_victim.exe+0x")
    assert "AccessNothing" in lines[1]
    assert lines[2].strip().startswith("tests/lab/fatal_failure.cpp:")


def offset_of(function):
    """Of the tool's function, from the beginning of its image."""
    headers = subprocess.run([OBJDUMP, "-p", SYMBOLS], check=True, capture_output=True, text=True).stdout
    names = subprocess.run([NM, SYMBOLS], check=True, capture_output=True, text=True).stdout
    base = int(re.search(r"^ImageBase\s+([0-9a-f]+)", headers, re.MULTILINE)[1], 16)
    return int(re.search(rf"^([0-9a-f]+) T {function}$", names, re.MULTILINE)[1], 16) - base


def test_the_closing_line_of_the_tool_is_resolved_by_its_own_symbols(tmp_path):
    """By the file of the symbols archive, whose name is not the module's."""
    offset = offset_of("wmain")
    report = tmp_path / "report.txt"
    report.write_text(
        '!! THIS RUN WAS CUT SHORT in the section "GPUs": the program crashed in vistrel_diag.exe '
        f"(access violation, 0xC0000005 at +0x{offset:X}). Whatever would follow is missing.\r\n",
        encoding="utf-8",
    )
    run = symbolized(SYMBOLS, report)
    assert run.returncode == 0, run.stderr
    lines = run.stdout.splitlines()
    assert lines[:2] == [f"vistrel_diag.exe+0x{offset:X}", "  wmain"]
    assert lines[2].strip().startswith("tools/vistrel_diag/main_windows.cpp:")
    assert symbolized(SYMBOLS, f"0x{offset:x}").stdout == run.stdout


def test_a_report_without_a_crash_names_none(tmp_path):
    report = tmp_path / "report.txt"
    report.write_text("the program crashed in other.dll (access violation, 0xC0000005 at +0x1A2B)", encoding="utf-8")
    run = symbolized(VICTIM, report)
    assert (run.returncode, run.stdout) == (1, "")
    assert run.stderr == "symbolize: no address inside rescue_victim.exe is named there\n"
