"""The tool as a process: exit code, console and file, whatever the command line and the folder."""

import lab

USAGE = (
    "vistrel_diag [--quick] [--no-models] [--refresh HZ] [--capture-seconds N]\n"
    "  No arguments: full guided run. That is the intended use.\n"
)
ONE_GPU = "two-hardware-gpus"


def test_help_prints_the_usage_and_nothing_else(run_tool):
    run = run_tool("--quick", "--refresh", "90", "--help")
    assert (run.console_text, run.errors, run.exit_code) == (USAGE, b"", 0)
    assert run.report is None


def test_console_and_file_hold_the_same_lines(run_tool):
    run = run_tool(*lab.CHEAP, scenario=ONE_GPU)
    assert run.exit_code == 0
    lines_of_console = run.console_text.split("\n")
    position = 0
    for line in run.report_text.rstrip("\n").split("\n"):
        position = lines_of_console.index(line, position) + 1


def test_unicode_folder(tmp_path):
    install = lab.Install(tmp_path / "Ünïcødé folder")
    run = lab.run_tool(install, *lab.CHEAP, scenario=ONE_GPU)
    assert run.exit_code == 0
    assert f"Running from: {install.windows_folder}\n" in run.report_text
    assert done_message(install) in run.console_text


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


def test_report_file_that_cannot_be_opened(run_tool, install):
    install.report.mkdir()  # A folder of that name refuses every user, administrators too.
    run = lab.run_program(
        [lab.ROOT / "cmake" / "wine", lab.windows_path(install.exe), *lab.CHEAP], cwd=install.folder
    )
    exit_code, console, _ = run
    text = console.decode("utf-8").replace("\r\n", "\n")
    assert exit_code == 0
    assert text.endswith(
        "\n!! Could not write the report file. Copy the text above instead.\n\nPress Enter to close.\n"
    )
