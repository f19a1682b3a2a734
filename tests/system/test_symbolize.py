"""A crash's closing line leads to function and line, by the command that support uses."""

import subprocess

import pytest

import lab

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


def test_a_report_without_a_crash_names_none(tmp_path):
    report = tmp_path / "report.txt"
    report.write_text("the program crashed in other.dll (access violation, 0xC0000005 at +0x1A2B)", encoding="utf-8")
    run = symbolized(VICTIM, report)
    assert (run.returncode, run.stdout) == (1, "")
    assert run.stderr == "symbolize: no address inside rescue_victim.exe is named there\n"
