"""Runs vistrel_report. VISTREL_REPORT is the command of the program under test."""

import os
import pathlib
import shlex
import subprocess

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
RULES = ROOT / "tests" / "report" / "rules"


def run(*arguments, stdin=b"", status=0, cwd=RULES):
    """What the program writes; `status` is what it must end with."""
    command = [*shlex.split(os.environ["VISTREL_REPORT"]), *map(str, arguments)]
    done = subprocess.run(command, input=stdin, capture_output=True, cwd=cwd, timeout=120)
    assert done.returncode == status, (command, done.returncode, done.stdout, done.stderr)
    return done.stdout.decode("utf-8"), done.stderr.decode("utf-8")


@pytest.fixture(name="report")
def report_fixture():
    return run
