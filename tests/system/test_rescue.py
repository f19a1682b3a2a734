"""A run that a runtime, a model or a driver brings down leaves the report as far as it came, and one line that says so."""

import re
import sys
from dataclasses import dataclass

import pytest

import lab
import openxr
import terminal
from test_depth import NO_RUNTIME
from test_guided_run import READY, prompt
from test_terminal import on_screen

sys.path.insert(0, str(lab.ROOT / "tests" / "lab"))

import make_models  # noqa: E402

HEADSET = "HEADSET / OPENXR"
HANDS = "HAND TRACKING (bare hand vs controller)"
MODELS = "DEPTH MODEL INFERENCE"
CAPTURE = "SCREEN CAPTURE"
PLACE = "\nThe lines found so far are in vistrel_diag_report.txt; please send that file.\n"
CRASHED = "the program crashed (exception 0x{:08X})"
ABORTED = "the program aborted"
STOPPED = "the user stopped it with Ctrl-C"
ACCESS_VIOLATION, STACK_OVERFLOW = 0xC0000005, 0xC00000FD
# What is done to a function, the exit code and the cause in the closing line.
DEATHS = [
    pytest.param("crash", ACCESS_VIOLATION, CRASHED.format(ACCESS_VIOLATION), id="crash"),
    pytest.param("crash_elsewhere", ACCESS_VIOLATION, CRASHED.format(ACCESS_VIOLATION), id="crash elsewhere"),
    pytest.param("overflow", STACK_OVERFLOW, CRASHED.format(STACK_OVERFLOW), id="overflow"),
    pytest.param("abort", 3, ABORTED, id="abort"),
]
MACHINE = lab.patient("frames-60")
QUICK = ("--quick", "--no-models", "--capture-seconds", "0.5")
GUIDED = QUICK[1:]  # In a terminal it is read from before anything hangs.
VIEW = "view 2016 2240\n"


def closing_line(section, cause):
    return f'!! THIS RUN WAS CUT SHORT in the section "{section}": {cause}. Whatever would follow is missing.'


def steady(report):
    """The report's bytes without the one figure of these runs that the machine underneath changes."""
    return re.sub(rb", \d+\.\d GB free\r", b", <n> GB free\r", report)


@dataclass
class Ground:
    """An install folder, and the report of an ordinary run in it."""

    install: lab.Install
    ordinary: bytes

    def dies(self, *arguments, scenario=MACHINE, **options):
        return lab.run_tool(self.install, *arguments, scenario=scenario, dies=True, **options)

    def stop(self, at, scenario=MACHINE, env=None):
        """A person who presses Ctrl-C when nothing comes after the text `at`. Returns the screen."""
        with terminal.Terminal(self.install, *GUIDED, scenario=scenario, env=env) as person:
            person.answer(on_screen(prompt(READY)), "\r")
            person.answer(at, terminal.CONTROL_C)
            person.wait_for_end()
            return person.screen.text()

    def check_report(self, following, section, cause):
        """The report is the ordinary run's up to the text `following`, to the byte, and then the closing line."""
        ordinary = steady(self.ordinary)
        start = ordinary.index(following.replace("\n", "\r\n").encode())
        report = steady(self.install.report.read_bytes())
        assert report == ordinary[:start] + f"\r\n{closing_line(section, cause)}\r\n".encode()


def ground(folder, prepare=lambda install: {}, arguments=QUICK, **options):
    """`prepare` furnishes the folder and returns the environment."""
    install = lab.Install(folder / "install")
    run = lab.run_tool(install, *arguments, scenario=MACHINE, env=prepare(install), **options)
    return Ground(install, run.report)


@pytest.fixture(scope="module")
def machine(tmp_path_factory):
    return ground(tmp_path_factory.mktemp("machine"))


@pytest.fixture(scope="module")
def model(tmp_path_factory):
    def prepare(install):
        make_models.make_install(install.folder / "vistrel" / "virtual_monitor")
        install.add_library("onnxruntime.dll", lab.BUILD / "tests" / "lab" / "onnx" / "whole" / "onnxruntime.dll")
        return {}

    return ground(tmp_path_factory.mktemp("model"), prepare)


@pytest.fixture(scope="module")
def headset(tmp_path_factory):
    return ground(tmp_path_factory.mktemp("headset"), lambda install: openxr.connect(install, VIEW).env)


def check_death(run, exit_code, section, cause):
    assert run.exit_code == exit_code & 0xFF
    ended = f"vistrel_lab: the program ended with 0x{exit_code:08X}\r\n".encode() if exit_code > 0xFF else b""
    assert run.errors.endswith(ended)
    assert run.console_text.endswith(f"\n{closing_line(section, cause)}{PLACE}")


def check_stopped(screen, section):
    assert f"\n{closing_line(section, STOPPED)}{PLACE}" in screen
    assert "in code page" not in screen


@pytest.mark.parametrize("kind, exit_code, cause", DEATHS)
def test_openxr_runtime(headset, kind, exit_code, cause):
    runtime = openxr.connect(headset.install, f"{VIEW}{kind} xrGetSystem\n")
    check_death(headset.dies(*QUICK, env=runtime.env), exit_code, HEADSET, cause)
    headset.check_report(f"\n{lab.header(HEADSET)}\n", HEADSET, cause)
    assert runtime.calls()[-1] == "xrGetSystem"


def test_openxr_runtime_that_hangs(headset):
    runtime = openxr.connect(headset.install, f"{VIEW}hang xrGetSystem\n")
    check_stopped(headset.stop("Run this tool again - the log will be quoted here.\n", env=runtime.env), HEADSET)
    headset.check_report(f"\n{lab.header(HEADSET)}\n", HEADSET, STOPPED)


def test_openxr_session(tmp_path):
    """In part 2, while the hands are watched."""
    script = openxr.probe_script("controller_to_bare")
    answers = {"arguments": GUIDED, "stdin": b"\n\n\n\n"}
    probed = ground(tmp_path, lambda install: openxr.connect(install, script).env, **answers)
    runtime = openxr.connect(probed.install, script + "crash xrWaitFrame\n")
    cause = CRASHED.format(ACCESS_VIOLATION)
    check_death(probed.dies(*GUIDED, env=runtime.env, stdin=answers["stdin"]), ACCESS_VIOLATION, HANDS, cause)
    probed.check_report("  hand L : CONTROLLER (held)", HANDS, cause)


@pytest.mark.parametrize("kind, exit_code, cause", DEATHS)
def test_model(model, kind, exit_code, cause):
    run = model.dies(*QUICK, env={"VISTREL_ONNX_STAND_IN": f"{kind}=Run call=3"})
    check_death(run, exit_code, MODELS, cause)
    model.check_report("Model           : ", MODELS, cause)


def test_model_that_hangs(model):
    screen = model.stop(f"\n{lab.header(MODELS)}\n", env={"VISTREL_ONNX_STAND_IN": "hang=Run call=3"})
    check_stopped(screen, MODELS)
    model.check_report("Model           : ", MODELS, STOPPED)


def test_model_library_that_crashes_while_it_is_loaded(model):
    """Windows makes of an exception in there that the library cannot be loaded."""
    run = lab.run_tool(model.install, *QUICK, scenario=MACHINE, env={"VISTREL_ONNX_STAND_IN": "crash=DllMain"})
    assert run.exit_code == 0
    assert run.section(MODELS) == NO_RUNTIME


@pytest.mark.parametrize(
    "function, section, following",
    [
        ("CreateDXGIFactory1", "GPUs", "GPU 0           : "),
        ("QueryVideoMemoryInfo", "GPUs", "GPU 0           : "),
        ("D3D11CreateDevice", "BENCHMARK SETUP", f"\n{lab.header(CAPTURE)}\n"),
        ("DuplicateOutput", CAPTURE, "Duplicated      : "),
        ("AcquireNextFrame at call 20", CAPTURE, "Duplicated      : "),
        ("CopyResource at call 7", CAPTURE, "Duplicated      : "),
    ],
)
def test_driver(machine, function, section, following):
    cause = CRASHED.format(ACCESS_VIOLATION)
    check_death(machine.dies(*QUICK, scenario=f"crash {function}\n{MACHINE}"), ACCESS_VIOLATION, section, cause)
    machine.check_report(following, section, cause)


def test_driver_that_hangs(machine):
    screen = machine.stop(f"\n{lab.header(CAPTURE)}\n", scenario=f"hang AcquireNextFrame at call 20\n{MACHINE}")
    check_stopped(screen, CAPTURE)
    machine.check_report("Duplicated      : ", CAPTURE, STOPPED)


@pytest.mark.parametrize("kind, cause", [("crash", CRASHED.format(ACCESS_VIOLATION)), ("abort", ABORTED)])
def test_crash_in_front_of_a_person_puts_the_consoles_code_page_back(machine, kind, cause):
    """The launcher on the same console says when it does not."""
    scenario = f"{kind} AcquireNextFrame\n{MACHINE}"
    with terminal.Terminal(machine.install, *QUICK, scenario=scenario) as person:
        person.wait_for_end()
        screen = person.screen.text()
    assert f"\n{closing_line(CAPTURE, cause)}{PLACE}" in screen
    assert "in code page" not in screen
