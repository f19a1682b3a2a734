"""A run that a runtime, a model or a driver crashes leaves the report so far, and one line that says so."""

import re
from dataclasses import dataclass

import pytest

import lab
import openxr
import terminal
from test_guided_run import READY, prompt
from test_terminal import on_screen
from test_warp import LONG_WAIT

HANDS = "HAND TRACKING (bare hand vs controller)"
CAPTURE = "SCREEN CAPTURE"
WARP = "STEREO WARP COST  (both eyes, one headset frame)"
PLACE = "\nThe lines found so far are in vistrel_diag_report.txt; please send that file.\n"
# The module in which the lab crashes, and Windows' name for the crash.
CRASHED = "the program crashed in {} ({}, 0x{:08X})"
MACHINE_MODULE, RUNTIME_MODULE = "vistrel_lab_machine.dll", "scripted_runtime.dll"
CRASHED_IN_DRIVER = CRASHED.format(MACHINE_MODULE, "access violation", 0xC0000005)
ABORTED = "the program aborted"
STOPPED = "the user stopped it with Ctrl-C"
ACCESS_VIOLATION = 0xC0000005
MACHINE = lab.patient("frames-60")
QUICK = ("--quick", "--no-models", "--capture-seconds", "0.5")
GUIDED = QUICK[1:]  # In a terminal it is read from before anything hangs.


def closing_line(section, cause):
    return f'!! THIS RUN WAS CUT SHORT in the section "{section}": {cause}. Whatever would follow is missing.'


def without_place(text):
    """The text without the place in the module that crashed, which is another one in every build. It is in the closing
    line once, and never 0."""
    pattern, closed = (rb" at \+0x[1-9A-F][0-9A-F]*\)", b")") if isinstance(text, bytes) else (r" at \+0x[1-9A-F][0-9A-F]*\)", ")")
    return re.sub(pattern, closed, text)


def steady(report):
    """The report's bytes without the figures of these runs that the machine underneath or the build changes."""
    return without_place(re.sub(rb", \d+\.\d GB free\r", b", <n> GB free\r", report))


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
    """`prepare` fills the folder and returns the environment."""
    install = lab.Install(folder / "install")
    run = lab.run_tool(install, *arguments, scenario=MACHINE, env=prepare(install), **options)
    return Ground(install, run.report)


@pytest.fixture(scope="module")
def machine(tmp_path_factory):
    return ground(tmp_path_factory.mktemp("machine"))


def check_death(run, exit_code, section, cause):
    assert run.exit_code == exit_code & 0xFF
    ended = f"vistrel_lab: the program ended with 0x{exit_code:08X}\r\n".encode() if exit_code > 0xFF else b""
    assert run.errors.endswith(ended)
    assert without_place(run.console_text).endswith(f"\n{closing_line(section, cause)}{PLACE}")


def check_stopped(screen, section):
    assert f"\n{closing_line(section, STOPPED)}{PLACE}" in screen
    assert "in code page" not in screen


def test_openxr_session(tmp_path):
    """In part 2, while the hands are watched."""
    script = openxr.probe_script("controller_to_bare")
    answers = {"arguments": GUIDED, "stdin": b"\n\n\n\n"}
    probed = ground(tmp_path, lambda install: openxr.connect(install, script).env, **answers)
    runtime = openxr.connect(probed.install, script + "crash xrWaitFrame\n")
    cause = CRASHED.format(RUNTIME_MODULE, "access violation", ACCESS_VIOLATION)
    check_death(probed.dies(*GUIDED, env=runtime.env, stdin=answers["stdin"]), ACCESS_VIOLATION, HANDS, cause)
    probed.check_report("  hand L : CONTROLLER (held)", HANDS, cause)


@pytest.mark.parametrize(
    "function, section, following",
    [
        ("CreateDXGIFactory1", "GPUs", "GPU 0           : "),
        ("QueryVideoMemoryInfo", "GPUs", "  VRAM in use   : "),
        ("D3D11CreateDevice", "BENCHMARK SETUP", f"\n{lab.header(CAPTURE)}\n"),
        ("DuplicateOutput", CAPTURE, "Duplicated      : "),
        ("AcquireNextFrame at call 20", CAPTURE, "Duplicated      : "),
        ("CopyResource at call 7", CAPTURE, "Duplicated      : "),
    ],
)
def test_driver(machine, function, section, following):
    cause = CRASHED_IN_DRIVER
    check_death(machine.dies(*QUICK, scenario=f"crash {function}\n{MACHINE}"), ACCESS_VIOLATION, section, cause)
    machine.check_report(following, section, cause)


@pytest.mark.parametrize(
    "kind, exception, exit_code",
    [
        ("crash_elsewhere", "access violation", 0xC0000005),
        ("overflow", "stack overflow", 0xC00000FD),
        ("cpp_exception", "C++ exception", 0xE06D7363),
        ("overflow_of_integer", "integer overflow", 0xC0000095),
    ],
)
def test_every_exception_of_a_driver_ends_in_the_rescue(machine, kind, exception, exit_code):
    """On the main thread the C runtime's own frame would retry the instruction of the last one forever."""
    cause = CRASHED.format(MACHINE_MODULE, exception, exit_code)
    check_death(machine.dies(*QUICK, scenario=f"{kind} AcquireNextFrame\n{MACHINE}"), exit_code, CAPTURE, cause)
    machine.check_report("Duplicated      : ", CAPTURE, cause)


@pytest.mark.parametrize("kind", ["abort", "ucrt_abort"])
def test_abort_in_a_driver(machine, kind):
    """Of mingw's runtime and of that of Windows, which has handlers of its own."""
    run = machine.dies(*QUICK, scenario=f"{kind} AcquireNextFrame\n{MACHINE}")
    assert run.exit_code == 3
    assert run.console_text.endswith(f"\n{closing_line(CAPTURE, ABORTED)}{PLACE}")
    machine.check_report("Duplicated      : ", CAPTURE, ABORTED)


def test_a_driver_that_crashes_on_gpu_1_leaves_the_lines_of_gpu_0(tmp_path):
    install = lab.Install(tmp_path / "install")
    scenario = lab.patient("two-hardware-gpus")
    ordinary = lab.run_tool(install, *QUICK, scenario=scenario)
    ground_of_two = Ground(install, ordinary.report)
    ground_of_two.dies(*QUICK, scenario=f"crash QueryVideoMemoryInfo at call 2\n{scenario}")
    report = steady(install.report.read_bytes()).decode()
    assert report.count("  VRAM in use   : ") == 1
    start = report.index("\r\n\r\n!! THIS RUN WAS CUT SHORT")
    assert report[:start].split("\r\n")[-4].startswith("GPU 1           : ")
    assert steady(ordinary.report).decode().startswith(report[:start])


def test_driver_that_hangs(machine):
    screen = machine.stop(f"\n{lab.header(CAPTURE)}\n", scenario=f"hang AcquireNextFrame at call 20\n{MACHINE}")
    check_stopped(screen, CAPTURE)
    machine.check_report("Duplicated      : ", CAPTURE, STOPPED)


@pytest.mark.parametrize("kind, cause", [("crash", CRASHED_IN_DRIVER), ("abort", ABORTED)])
def test_crash_at_a_terminal_restores_the_code_page(machine, kind, cause):
    """The launcher on the same console says when it does not."""
    scenario = f"{kind} AcquireNextFrame\n{MACHINE}"
    with terminal.Terminal(machine.install, *QUICK, scenario=scenario) as person:
        person.wait_for_end()
        screen = person.screen.text()
    assert f"\n{closing_line(CAPTURE, cause)}{PLACE}" in without_place(screen)
    assert "in code page" not in screen


def test_a_gpu_that_never_responds(tmp_path):
    """After twenty seconds the console says that Ctrl-C keeps the report, and it does."""
    install = lab.Install(tmp_path / "install")
    install.add_shader("trivial")
    person = Ground(install, b"")
    screen = person.stop(on_screen(LONG_WAIT), scenario=MACHINE.replace("  draws", "  stamps never\n  draws", 1))
    check_stopped(screen, WARP)
    assert closing_line(WARP, STOPPED) in install.report.read_text(encoding="utf-8")
