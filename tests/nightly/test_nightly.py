"""The nightly command and its workflow: the same steps, all of them run, each reported."""

import pathlib
import re
import shutil
import subprocess

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]


def listed():
    """(step, command) in order."""
    output = subprocess.run([ROOT / "scripts" / "nightly", "--list"], check=True, capture_output=True, text=True).stdout
    return [tuple(line.split(maxsplit=1)) for line in output.splitlines()]


STEPS = list(dict.fromkeys(step for step, _ in listed()))


@pytest.fixture
def tree(tmp_path):
    """The command in a tree whose other commands only note that they ran."""
    programs = {command.split()[0] for _, command in listed()} | {"scripts/setup"}
    for program in programs:
        path = tmp_path / program
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(f'#!/bin/sh\necho "{program} $*" >>"{tmp_path}/ran"\n[ ! -e "{tmp_path}/breaks" ] || '
                        f'! grep -qx "{program}" "{tmp_path}/breaks"\n', encoding="utf-8")  # fmt: skip
        path.chmod(0o755)
    for name in ("nightly", "steps"):
        shutil.copy(ROOT / "scripts" / name, tmp_path / "scripts" / name)
    return tmp_path


def night(tree, *arguments):
    return subprocess.run([tree / "scripts" / "nightly", *arguments], capture_output=True, text=True)


def ran(tree):
    return [line.strip() for line in (tree / "ran").read_text(encoding="utf-8").splitlines()]


def results(run):
    return [tuple(line.split()[:2]) for line in run.stdout.splitlines()[1:]]


def test_every_step_runs_in_order(tree):
    run = night(tree)
    assert run.returncode == 0
    assert ran(tree) == ["scripts/setup", *(command for _, command in listed())]
    assert results(run) == [(step, "ok") for step in STEPS]
    assert (tree / "build" / "logs" / "nightly.txt").read_text(encoding="utf-8") == run.stdout


def test_each_step_prints_its_time(tree):
    for line in night(tree).stdout.splitlines()[1:]:
        assert re.fullmatch(r"\w+ +ok +\d+\.\d +\d+\.\d", line)


def test_a_failed_step_does_not_stop_the_others(tree):
    (tree / "breaks").write_text("tests/faults/run\n", encoding="utf-8")
    run = night(tree)
    assert run.returncode == 1
    assert results(run) == [(step, "FAILED" if step == "faults" else "ok") for step in STEPS]
    assert "faults failed; the end of build/logs/nightly-faults.log" in run.stderr


def test_the_first_failed_command_ends_its_step(tree):
    (tree / "breaks").write_text("packaging/package\n", encoding="utf-8")
    run = night(tree, "reproducible")
    assert results(run) == [("reproducible", "FAILED")]
    assert ran(tree) == ["scripts/setup", "packaging/package"]


def test_single_steps_can_be_run(tree):
    assert results(night(tree, "fuzz", "test")) == [("fuzz", "ok"), ("test", "ok")]
    assert night(tree, "fuz").returncode == 2


def test_every_check_of_a_figure_is_included():
    guards = {"test", "tidy", "package", "reproducible", "bundle", "deaths", "faults", "fuzz", "sanitize", "coverage"}
    assert guards | {"bench", "mutations"} <= set(STEPS)


def test_every_command_exists():
    for _, command in listed():
        program = ROOT / command.split()[0]
        assert program.exists() and program.stat().st_mode & 0o100, program


def test_the_workflow_has_the_same_steps():
    text = (ROOT / ".github" / "workflows" / "nightly.yml").read_text(encoding="utf-8")
    (matrix,) = re.findall(r"^ +step: \[(.*)\]$", text, re.MULTILINE)
    assert matrix.split(", ") == STEPS
    assert "scripts/nightly ${{ matrix.step }}" in text
