"""Whole runs of the finished tool: an install folder, a run of the unmodified exe in it, and its result.

README.md in this folder shows how a test uses this.
"""

import contextlib
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
from dataclasses import dataclass, field

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("VISTREL_BUILD", ROOT / "build" / "windows-x64"))
SCENARIOS = ROOT / "tests" / "lab" / "scenarios"
GENUINE_LIBRARIES = ROOT / ".deps" / "windows"
SHADERS = {
    "trivial": ROOT / "tests" / "system" / "data" / "trivial_warp.hlsl",
    "sample": ROOT / "tests" / "lab" / "install" / "vistrel" / "shaders" / "stereo_warp.hlsl",
}
REPORT_NAME = "vistrel_diag_report.txt"

# How long a program may run before it counts as hanging. Far longer than any takes on a busy machine; this is not a
# performance limit.
HANGING_SECONDS = 900

# Options for runs that need no measurements: no prompts, no models, no capture time.
CHEAP = ("--quick", "--no-models", "--capture-seconds", "0")


def windows_path(path):
    """The path as a Windows program under Wine sees it."""
    path = pathlib.Path(path)
    drive_c = pathlib.Path(os.environ["WINEPREFIX"]) / "drive_c"
    if path.is_relative_to(drive_c):
        return "C:\\" + str(path.relative_to(drive_c)).replace("/", "\\")
    return "Z:" + str(path).replace("/", "\\")


@contextlib.contextmanager
def user_with(local_data):
    """Programs started inside the block use this folder as their user's local application data."""
    before = os.environ["VISTREL_LAB_LOCAL_DATA"]
    os.environ["VISTREL_LAB_LOCAL_DATA"] = windows_path(local_data)
    try:
        yield
    finally:
        os.environ["VISTREL_LAB_LOCAL_DATA"] = before


@contextlib.contextmanager
def new_user():
    """Programs started inside the block belong to a new user for whom the product has never run. Returns the folder
    where the product would keep its settings and its log; it does not exist yet."""
    users = pathlib.Path(os.environ["WINEPREFIX"]) / "drive_c" / "users"
    home = pathlib.Path(tempfile.mkdtemp(prefix="lab-", dir=users))
    local_data = home / "AppData" / "Local"
    local_data.mkdir(parents=True)
    try:
        with user_with(local_data):
            yield local_data / "Vistrel"
    finally:
        shutil.rmtree(home, ignore_errors=True)


@dataclass
class Run:
    """The result of one run."""

    exit_code: int
    console: bytes
    errors: bytes
    report: bytes | None  # the report file; None when there is none
    counts: dict = field(default_factory=dict)  # what the simulated machine counted

    @property
    def console_text(self):
        return self.console.decode("utf-8").replace("\r\n", "\n")

    @property
    def report_text(self):
        """The report with plain line ends. The file itself ends every line in CR LF, and that alone."""
        assert self.report is not None, "no report was written; the console says:\n" + self.console_text
        assert self.report.count(b"\n") == self.report.count(b"\r\n") == self.report.count(b"\r")
        return self.report.decode("utf-8").replace("\r\n", "\n")

    def section(self, title):
        """The lines below the header of a section, as one text, up to the blank line before the next header."""
        lines = self.report_text.split("\n")
        starts = [i for i, line in enumerate(lines) if line == header(title)]
        assert len(starts) == 1, f"{len(starts)} sections {title!r} in:\n{self.report_text}"
        body = lines[starts[0] + 1 :]
        ends = [i for i, line in enumerate(body) if line.startswith("== ")]
        body = body[: ends[0] - 1] if ends else body
        return "\n".join(body).rstrip("\n")

    def has_section(self, title):
        return header(title) in self.report_text.split("\n")


def header(title):
    return f"== {title} " + "=" * (62 - len(title))


class Install:
    """A folder with the tool, and the files that the test adds to it."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.folder.mkdir(parents=True, exist_ok=True)
        self.exe = self.folder / "vistrel_diag.exe"
        shutil.copy(BUILD / "vistrel_diag.exe", self.exe)

    @property
    def windows_folder(self):
        return windows_path(self.folder)

    @property
    def report(self):
        return self.folder / REPORT_NAME

    def write(self, name, content):
        """A file by its path inside the folder, as text (UTF-8, as given) or bytes."""
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content.encode("utf-8") if isinstance(content, str) else content)
        return path

    def add_file(self, source, name):
        """A copy of a file, by its path inside the folder."""
        return self.write(name, pathlib.Path(source).read_bytes())

    def add_library(self, name, source=None):
        """A genuine DLL such as "onnxruntime.dll", or another file under its name."""
        return self.add_file(source or GENUINE_LIBRARIES / name, name)

    def add_shader(self, kind="trivial"):
        """The warp shader: "trivial" costs next to nothing, "sample" is like the product's."""
        return self.add_file(SHADERS[kind], "vistrel/shaders/stereo_warp.hlsl")


def scenario_file(scenario, folder):
    """A scenario by its name, its path, or its text (anything with a line end)."""
    if isinstance(scenario, pathlib.Path):
        return scenario
    if "\n" in scenario:
        path = folder / "scenario.txt"
        path.write_text(scenario, encoding="utf-8")
        return path
    path = SCENARIOS / f"{scenario}.txt"
    assert path.exists(), f"there is no scenario {scenario!r}"
    return path


def scenario_text(name):
    return (SCENARIOS / f"{name}.txt").read_text(encoding="utf-8")


def patient(name):
    """The scenario's text on a clock whose waits take no time, so that a guided run does not either."""
    return "clock scripted\n" + scenario_text(name)


def environment(**more):
    result = dict(os.environ, LC_ALL="C.UTF-8")
    result.update({name: str(value) for name, value in more.items()})
    return result


def run_program(command, stdin=b"", cwd=None, env=None, timeout=HANGING_SECONDS):
    """Runs a command; kills it and everything it started when it takes too long."""
    process = subprocess.Popen(
        [str(part) for part in command],
        stdin=subprocess.PIPE,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        cwd=cwd,
        env=env or environment(),
        start_new_session=True,
    )
    try:
        output, errors = process.communicate(stdin, timeout)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        output, errors = process.communicate()
        raise AssertionError(
            f"not done after {timeout} s; console:\n{output.decode('utf-8', 'replace')}\n"
            f"errors:\n{errors.decode('utf-8', 'replace')}"
        ) from None
    return process.returncode, output, errors


def simulated(scenario, scratch):
    """The command prefix and the environment that run a program on a simulated machine."""
    launcher = BUILD / "tests" / "lab" / "vistrel_lab.exe"
    counts_file = scratch / "counts.txt"
    forget_counts(counts_file)
    front = [launcher, windows_path(scenario_file(scenario, scratch))]
    return front, {"VISTREL_LAB_STATISTICS": windows_path(counts_file)}, counts_file


def files_of_processes(path):
    """The program's own file, and those of the children that it started, in their order."""
    children = path.parent.glob(path.name + ".[0-9]*")
    return [path] + sorted(children, key=lambda child: int(child.suffix[1:]))


def forget_counts(path):
    for file in files_of_processes(path):
        file.unlink(missing_ok=True)


def read_counts(path, errors=b""):
    """The machine's counts, those of the program and of its children added up."""
    assert path.exists(), "the program ended without the machine's counts: " + errors.decode("utf-8", "replace")
    counts = {}
    for file in files_of_processes(path):
        for name, value in (line.split() for line in file.read_text().splitlines()):
            counts[name] = counts.get(name, 0) + int(value)
    return counts


def run_tool(
    install,
    *arguments,
    scenario=None,
    scratch=None,
    stdin=b"",
    env=None,
    cwd=None,
    timeout=HANGING_SECONDS,
    clean=True,
    dies=False,
):
    """Runs the tool, on a simulated machine when a scenario is given, otherwise on Wine's own.

    A run on a simulated machine must release every simulated object, close every handle and follow the rules of desktop
    duplication, unless `clean` is False. With `dies` the run leaves no counts to check. The input ends after `stdin`,
    which means "continue" at every prompt.
    """
    scratch = scratch or install.folder.parent
    front, more, counts_file = [], {}, None
    if scenario is not None:
        front, more, counts_file = simulated(scenario, scratch)
    command = [ROOT / "scripts" / "wine", *front, windows_path(install.exe), *arguments]
    exit_code, console, errors = run_program(
        command, stdin, cwd or install.folder, environment(**more, **(env or {})), timeout
    )
    report = install.report.read_bytes() if install.report.is_file() else None
    run = Run(exit_code, console, errors, report)
    if counts_file is not None and not dies:
        run.counts = read_counts(counts_file, errors)
        if clean:
            assert run.counts["live_objects"] == 0, run.counts
            assert run.counts["violations"] == 0, run.counts
            assert run.counts["open_handles"] == 0, run.counts
    return run
