"""Every machine of tests/lab/scenarios with a whole installation and a scripted headset, once as a quick run and once
as a guided run: the run ends normally and writes its whole report.

VISTREL_BUILD may name a build that traps on undefined behaviour; its runs would end differently if there is any.
"""

import pytest

import lab
import openxr

SCENARIOS = sorted(path.stem for path in lab.SCENARIOS.glob("*.txt"))
HEADSET = "runtime SteamVR/OpenXR\nversion 2.9.6\nview 2016 2240\nview 2016 2240\n"
# Runs on a real clock are as short as possible; on a scripted one it does not matter.
SHORT = ("--no-models", "--capture-seconds", "0.5")


@pytest.fixture
def headset(install, clean_user):
    """What the product installs, a user who has settings and a log, and a headset."""
    install.add_shader("trivial")
    install.add_library("onnxruntime.dll", lab.BUILD / "tests" / "lab" / "onnx" / "whole" / "onnxruntime.dll")
    for model in (lab.BUILD / "models").iterdir():
        install.add_file(model, f"vistrel/virtual_monitor/{model.name}")
    install.write("settings.json", '{"vistrel_scale": 1.5, "vistrel_ai_resolution": 700, "theme": "dark"}')
    clean_user.mkdir(parents=True, exist_ok=True)
    for log in (lab.ROOT / "tests" / "lab" / "user_data").iterdir():
        (clean_user / log.name).write_bytes(log.read_bytes())
    return openxr.connect(install, HEADSET)


def came_to_its_end(run):
    text = run.report_text
    return run.exit_code == 0 and "CUT SHORT" not in text and lab.header("VERDICT") in text.split("\n")


@pytest.mark.parametrize("scenario", SCENARIOS)
def test_quick(scenario, headset, run_tool):
    env = {**headset.env, "VISTREL_ONNX_STAND_IN": "pixel-takes=1"}
    run = run_tool("--quick", "--capture-seconds", "0.5", scenario=scenario, env=env)
    assert came_to_its_end(run), (run.exit_code, run.console_text)
    headset.calls()


@pytest.mark.parametrize("scenario", SCENARIOS)
def test_guided(scenario, headset, run_tool):
    run = run_tool(*SHORT, scenario=lab.patient(scenario), stdin=b"\n\n\n\n", env=headset.env)
    assert came_to_its_end(run), (run.exit_code, run.console_text)
    headset.calls()
