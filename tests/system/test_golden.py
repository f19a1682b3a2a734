"""Whole reports and consoles of whole machines, as reviewed by a person. README.md says how to renew them."""

import pytest

import golden
import lab

STAND_IN_RUNTIME = lab.BUILD / "tests" / "lab" / "onnx" / "whole" / "onnxruntime.dll"
MODELS = lab.BUILD / "models"
MODELS_AT_60_NS = {"VISTREL_ONNX_STAND_IN": "pixel-takes=60"}
MODELS_AT_20_NS = {"VISTREL_ONNX_STAND_IN": "pixel-takes=20"}


@pytest.fixture
def vistrel_install(install):
    """What the product installs beside the tool, with an ONNX Runtime that takes no time of the real GPU."""
    install.add_shader("trivial")
    install.add_library("onnxruntime.dll", STAND_IN_RUNTIME)
    for model in MODELS.iterdir():
        install.add_file(model, f"vistrel/virtual_monitor/{model.name}")
    return install


# The machines whose clock and GPU are scripted: their reports hold the same figures in every run.
@pytest.mark.parametrize("scenario", ["desktop-pc", "hybrid-laptop", "no-monitor"])
def test_machine_with_the_product_installed(vistrel_install, clean_user, run_tool, scenario):
    run = run_tool("--quick", "--refresh", "80", scenario=scenario, env=MODELS_AT_60_NS)
    golden.check(f"{scenario}.txt", run.report_text, vistrel_install)


# The tool by itself in a folder, on machines whose adapters and displays are the subject.
@pytest.mark.parametrize(
    "scenario",
    [
        "two-hardware-gpus",
        "failing-description",
        "software-adapter-only",
        "no-adapter",
        "many-displays",
        "device-fails",
        "factory-fails",
    ],
)
def test_machine_without_the_product(install, clean_user, run_tool, scenario):
    run = run_tool(*lab.CHEAP, scenario=scenario)
    golden.check(f"{scenario}.txt", run.report_text, install)


# Nobody waits for the countdown: the desktop PC's clock is scripted.
@pytest.mark.parametrize(
    "name, answers",
    [("guided-run", b"\n\n\n\n"), ("guided-run-end-of-input", b""), ("guided-run-part-2-skipped", b"s\ns\n")],
)
def test_guided_run(vistrel_install, clean_user, run_tool, name, answers):
    run = run_tool("--no-models", scenario="desktop-pc", stdin=answers, env=MODELS_AT_20_NS)
    golden.check(f"{name}.report.txt", run.report_text, vistrel_install)
    golden.check(f"{name}.console.txt", run.console_text, vistrel_install)
