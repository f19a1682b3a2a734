"""What else runs: the wait before part 1, the section of both parts, the foreground application."""

import re
import subprocess

import pytest

import lab
import programs

TITLE = "WHAT ELSE WAS RUNNING DURING THIS TEST"
NOTHING = "Nothing notable - no Vistrel, no SteamVR, no capture software."
WARNING = (
    "\n"
    "!! Vistrel IS RUNNING. That changes how to read everything below:\n"
    "!!   - screen capture will fail, because Vistrel already holds it\n"
    "!!   - the warp and inference timings are inflated by competing with it for the GPU\n"
    "!! For clean timings, close Vistrel and run this again."
)
WAITING = "\n  Vistrel is running. It holds the screen capture, so please close it now.\n  Waiting"
CLOSED = "\n  Closed, thank you. Continuing.\n"
STILL_RUNNING = "\n  Still running - carrying on anyway; the report will say so.\n"
SKIP_PART_TWO = b"\ns\n"
GUIDED = ("--no-models", "--capture-seconds", "0")
SCENARIO = "desktop-pc"


def section(run):
    """The section; Wine's desktop may be in front while no program's window is, and is left out."""
    return run.section(TITLE).replace('\nForeground app  : explorer.exe  ""', "")


def test_nothing_notable(run_tool):
    run = run_tool(*lab.CHEAP, scenario=SCENARIO)
    assert section(run) == NOTHING
    assert "Waiting" not in run.console_text


def test_the_same_program_twice_and_in_capitals(tmp_path, run_tool):
    with (
        programs.asleep(tmp_path, "obs64.exe"),
        programs.asleep(tmp_path, "VRSERVER.EXE"),
        programs.asleep(tmp_path, "obs64.exe"),
        programs.asleep(tmp_path, "Ünïcødé.exe"),
    ):
        run = run_tool(*lab.CHEAP, scenario=SCENARIO)
    assert sorted(section(run).split("\n")) == ["  VRSERVER.EXE", "  obs64.exe", "  obs64.exe"]


@pytest.mark.parametrize("name", ["Vistrel.exe", "ambulo.EXE"])
def test_quick_warns_without_waiting(tmp_path, run_tool, name):
    with programs.asleep(tmp_path, name):
        run = run_tool(*lab.CHEAP, scenario=SCENARIO)
    assert section(run) == f"  {name}\n{WARNING}"
    assert "Waiting" not in run.console_text


def test_foreground_application(tmp_path, run_tool):
    with programs.in_foreground(tmp_path, "ゲーム.exe", 'ゲームの時間 "100%s"'):
        run = run_tool(*lab.CHEAP, scenario=SCENARIO)
    assert section(run) == f'{NOTHING}\nForeground app  : ゲーム.exe  "ゲームの時間 "100%s""'


def test_foreground_application_with_a_long_title(tmp_path, run_tool):
    with programs.in_foreground(tmp_path, "long.exe", "長" * 600):
        run = run_tool(*lab.CHEAP, scenario=SCENARIO)
    assert section(run) == f'{NOTHING}\nForeground app  : long.exe  "{"長" * 511}"'


def test_foreground_application_without_a_title(tmp_path, run_tool):
    with programs.in_foreground(tmp_path, "untitled.exe", ""):
        run = run_tool(*lab.CHEAP, scenario=SCENARIO)
    assert section(run) == f'{NOTHING}\nForeground app  : untitled.exe  ""'


def test_guided_run_waits_for_nothing_when_nothing_runs(run_tool):
    run = run_tool(*GUIDED, scenario=SCENARIO, stdin=SKIP_PART_TWO)
    assert "Waiting" not in run.console_text
    assert section(run) == NOTHING


def test_guided_run_continues_when_the_product_has_closed(tmp_path, install):
    command = [str(lab.ROOT / "scripts" / "wine"), lab.windows_path(install.exe), *GUIDED]
    with programs.asleep(tmp_path, "Vistrel.exe") as product:
        tool = subprocess.Popen(
            command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, cwd=install.folder, env=lab.environment()
        )
        tool.stdin.write(SKIP_PART_TWO)
        tool.stdin.close()
        console = b""
        while not console.endswith(b"  Waiting..."):
            byte = tool.stdout.read(1)
            assert byte, console
            console += byte
        product.terminate()
        console += tool.stdout.read()
        assert tool.wait() == 0
    text = console.decode("utf-8").replace("\r\n", "\n")
    # A fourth dot appears if the product needs longer than the rest of its second to end.
    assert re.search(re.escape(WAITING) + r"\.{3,4}" + re.escape(CLOSED), text), text
    report = lab.Run(0, console, b"", install.report.read_bytes())
    assert section(report) == NOTHING
    assert "Waiting" not in report.report_text


def test_guided_run_continues_after_sixty_dots(tmp_path, run_tool):
    with programs.asleep(tmp_path, "Ambulo.exe"):
        run = run_tool(*GUIDED, scenario=SCENARIO, stdin=SKIP_PART_TWO)
    assert WAITING + "." * 60 + STILL_RUNNING in run.console_text
    assert section(run) == f"  Ambulo.exe\n{WARNING}"
    assert "Waiting" not in run.report_text
