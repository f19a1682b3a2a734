"""A skipped test is told with its reason, and fails where it should have run (tests/system/skips.py)."""

import pathlib
import subprocess
import sys

SYSTEM = pathlib.Path(__file__).resolve().parents[1] / "system"

TESTS = """
import pytest
import skips

skips.MAY_SKIP = {{"test_allowed": lambda: True, "test_not_here": lambda: False, "test_decorated": lambda: True}}

{body}
"""


def run(folder, body):
    """pytest on these tests. Gives its exit code, what it prints, and what the end of ./test tells."""
    (folder / "test_it.py").write_text(TESTS.format(body=body), encoding="utf-8")
    told = folder / "skipped.txt"
    done = subprocess.run(
        [sys.executable, "-B", "-m", "pytest", "-q", "-p", "no:cacheprovider", "-p", "skips", "test_it.py"],
        cwd=folder,
        env={"PYTHONPATH": str(SYSTEM), "VISTREL_SKIPPED": str(told), "PATH": "/usr/bin:/bin"},
        capture_output=True,
        text=True,
        check=False,
    )
    return done.returncode, done.stdout, told.read_text(encoding="utf-8") if told.exists() else ""


def test_an_allowed_skip_is_listed(tmp_path):
    code, shown, told = run(tmp_path, 'def test_allowed():\n    pytest.skip("no disk")')
    assert (code, told) == (0, "test_it.py::test_allowed: no disk\n")
    assert "1 skipped" in shown


def test_an_allowed_skip_by_decorator_is_listed(tmp_path):
    code, _, told = run(tmp_path, '@pytest.mark.skipif(True, reason="root")\ndef test_decorated():\n    assert False')
    assert (code, told) == (0, "test_it.py::test_decorated: root\n")


def test_each_skipped_parameter_is_listed(tmp_path):
    body = '@pytest.mark.parametrize("n", [1, 2])\ndef test_allowed(n):\n    pytest.skip("no disk")'
    code, _, told = run(tmp_path, body)
    assert (code, told) == (0, "test_it.py::test_allowed[1]: no disk\ntest_it.py::test_allowed[2]: no disk\n")


def test_a_skip_where_the_test_should_run_fails(tmp_path):
    code, shown, told = run(tmp_path, 'def test_not_here():\n    pytest.skip("no disk")')
    assert (code, told) == (1, "")
    assert "test_not_here may not be skipped on this machine (tests/system/skips.py): no disk" in shown


def test_an_unlisted_skip_fails(tmp_path):
    code, shown, told = run(tmp_path, '@pytest.mark.skip(reason="later")\ndef test_other():\n    pass')
    assert (code, told) == (1, "")
    assert "test_other may not be skipped on this machine" in shown


def test_other_results_do_not_change(tmp_path):
    assert run(tmp_path, "def test_allowed():\n    pass")[0] == 0
    assert run(tmp_path, "def test_allowed():\n    assert False")[0] == 1
