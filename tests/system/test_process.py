"""The tool as a process: exit code, console and file, whatever the command line and the folder."""

import os
import pathlib
import shutil

import pytest

import lab
import programs

USAGE = (
    "vistrel_diag [--quick] [--no-models] [--refresh HZ] [--capture-seconds N]\n"
    "  No arguments: full guided run. That is the intended use.\n"
)
ONE_GPU = "two-hardware-gpus"


def test_help_prints_the_usage_and_nothing_else(run_tool):
    run = run_tool("--quick", "--refresh", "90", "--help")
    assert (run.console_text, run.errors, run.exit_code) == (USAGE, b"", 0)
    assert run.report is None


@pytest.mark.parametrize("arguments", [["--worker"], ["--worker", "1", "2"], ["--worker", "1", "2", "x"]], ids=" ".join)
def test_the_option_of_a_worker_is_ignored_without_a_parent(run_tool, arguments):
    plain, typed = (run_tool(*more, *lab.CHEAP, scenario=ONE_GPU) for more in ([], arguments))
    assert typed.exit_code == 0
    # Other tests change what some sections find meanwhile.
    titles = [[line for line in run.report_text.split("\n") if line.startswith("== ")] for run in (plain, typed)]
    assert titles[0] == titles[1] and lab.header("VERDICT") in titles[0]


def test_console_and_file_hold_the_same_lines(run_tool):
    run = run_tool(*lab.CHEAP, scenario=ONE_GPU)
    assert run.exit_code == 0
    lines_of_console = run.console_text.split("\n")
    position = 0
    for line in run.report_text.rstrip("\n").split("\n"):
        position = lines_of_console.index(line, position) + 1


@pytest.fixture
def drive_c_install():
    """An install folder on drive C with a blank and letters beyond ASCII in its name."""
    folder = pathlib.Path(os.environ["WINEPREFIX"]) / "drive_c" / "Ünïcødé folder"
    install = lab.Install(folder)
    yield install
    shutil.rmtree(folder)


def done_message(install):
    return (
        "\n=====================================================\n"
        " Done. Report written to:\n"
        f"   {install.windows_folder}\\{lab.REPORT_NAME}\n"
        "\n"
        " Please send that one file.\n"
        "=====================================================\n"
        "\n"
        "Press Enter to close.\n"
    )


NOT_WRITTEN = "\n!! Could not write the report file. Copy the text above instead.\n\nPress Enter to close.\n"


def test_folder_with_a_non_ascii_name(drive_c_install, tmp_path):
    run = lab.run_tool(drive_c_install, *lab.CHEAP, scenario=ONE_GPU, scratch=tmp_path)
    assert run.exit_code == 0
    assert "Running from: C:\\Ünïcødé folder\n" in run.report_text
    assert run.console_text.endswith(done_message(drive_c_install))


def test_an_older_report_is_replaced(run_tool, install):
    install.write(lab.REPORT_NAME, "an older report\n" * 10000)
    run = run_tool(*lab.CHEAP, scenario=ONE_GPU)
    assert run.report_text.startswith("Vistrel diagnostic report v1.0\n")
    assert "an older report" not in run.report_text
    assert run.console_text.endswith(done_message(install))


def test_a_report_that_another_program_reads_is_still_written(run_tool, install):
    install.write(lab.REPORT_NAME, "an older report\n")
    with programs.held(install.report, "write"):
        run = run_tool(*lab.CHEAP, scenario=ONE_GPU)
    assert run.report_text.startswith("Vistrel diagnostic report v1.0\n")
    assert run.console_text.endswith(done_message(install))


def test_a_report_that_another_program_holds(run_tool, install):
    install.write(lab.REPORT_NAME, "an older report\n")
    with programs.held(install.report, "none"):
        run = run_tool(*lab.CHEAP, scenario=ONE_GPU)
    assert run.exit_code == 0
    assert run.console_text.endswith(NOT_WRITTEN)
    assert install.report.read_bytes() == b"an older report\n"


@pytest.mark.skipif(os.geteuid() == 0, reason="Wine lets root write to every file")
def test_a_report_that_is_read_only(run_tool, install):
    install.write(lab.REPORT_NAME, "an older report\n")
    install.report.chmod(0o444)
    run = run_tool(*lab.CHEAP, scenario=ONE_GPU)
    assert run.exit_code == 0
    assert run.console_text.endswith(NOT_WRITTEN)
    assert install.report.read_bytes() == b"an older report\n"


def test_a_folder_with_the_reports_name(run_tool, install):
    install.report.mkdir()
    run = run_tool(*lab.CHEAP, scenario=ONE_GPU)
    assert run.exit_code == 0
    assert run.console_text.endswith(NOT_WRITTEN)


def test_only_the_report_is_written(run_tool, install):
    before = sorted(path.name for path in install.folder.rglob("*"))
    run_tool(*lab.CHEAP, scenario=ONE_GPU)
    assert sorted(path.name for path in install.folder.rglob("*")) == sorted([*before, lab.REPORT_NAME])
