"""The options in whole runs. The unit tests cover how each value is parsed."""

import pytest

import lab

USUAL_RATES = [72, 90, 120, 144]


def refresh_rates(run):
    lines = run.section("VERDICT").split("\n")
    table = lines[lines.index("  REFRESH   warp          AI depth mode  ReShade mode  ") + 1 :]
    return [int(line.split()[0]) for line in table[: table.index("")]]


@pytest.mark.parametrize(
    "options, rates",
    [
        (["--refresh", "abc", "--refresh"], USUAL_RATES),
        (["--refresh", "100"], [72, 90, 100, 120, 144]),
        (["--refresh", "99999999999999999999"], [72, 90, 120, 144, 2147483647]),
        (["--refresh=100", "--REFRESH", "100", "nonsense", "ünïcødé", ""], USUAL_RATES),
    ],
)
def test_refresh_rates(run_tool, install, options, rates):
    install.add_shader()
    run = run_tool(*lab.CHEAP, *options, scenario=lab.patient("desktop-pc"))
    assert run.exit_code == 0
    assert refresh_rates(run) == rates


@pytest.mark.parametrize("seconds", ["-5", "abc", "nan", "inf"])
def test_zero_seconds_skip_the_capture(run_tool, seconds):
    run = run_tool("--quick", "--no-models", "--capture-seconds", seconds, scenario=lab.patient("desktop-pc"))
    assert run.exit_code == 0
    assert run.section("SCREEN CAPTURE").split("\n")[0] == (
        "Screen capture FAILED: the capture started but never produced a frame"
    )


@pytest.mark.parametrize("options", [["--help"], ["--help", "--quick"], ["--quick", "--refresh", "90", "--help"]])
def test_help_anywhere_prints_only_the_usage(run_tool, options):
    run = run_tool(*options)
    assert run.console_text == (
        "vistrel_diag [--quick] [--no-models] [--refresh HZ] [--capture-seconds N]\n"
        "  No arguments: full guided run. That is the intended use.\n"
    )
    assert (run.exit_code, run.report) == (0, None)


def test_help_after_an_option_is_its_value(run_tool):
    run = run_tool("--refresh", "--help", *lab.CHEAP, scenario=lab.patient("desktop-pc"))
    assert run.has_section("VERDICT")
