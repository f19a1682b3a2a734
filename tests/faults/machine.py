"""One machine on which the tool does everything it can, and a run of the tool on it in which one call fails."""

import pathlib
import shutil
import sys
from dataclasses import dataclass

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "system"))

import lab  # noqa: E402
import openxr  # noqa: E402
import programs  # noqa: E402

STAND_IN_RUNTIME = lab.BUILD / "tests" / "lab" / "onnx" / "whole" / "onnxruntime.dll"
MODELS = lab.BUILD / "models"
LONGEST_RUN_SECONDS = 60

# Both hands put their controllers down; the headset is connected to the discrete GPU.
HEADSET = "runtime SteamVR/OpenXR\nversion 2.9.6\nview 2016 2240\nview 2016 2240\nluid 00000000:00012C3D\n"


class TookTooLong(Exception):
    pass


@dataclass
class Result:
    """The result of a run."""

    exit_code: int
    console: str
    report: str | None
    counts: dict  # empty if the process did not end normally
    calls: list  # (process, function, number, site) in the order of functions; process 0 is the program itself
    failed: set  # (process, function, number) of those that were made to fail
    runtime_calls: dict  # of ONNX Runtime's table, by entry
    runtime_failed: set  # (entry, number) of those that were made to fail
    wrong: list  # errors and leaks in the scripted runtimes


def both_gpus_scripted(name):
    """The scenario with a speed for its first GPU too: a fault may make the tool measure on that one."""
    text = lab.scenario_text(name)
    assert text.count("memory 540 MB of 7480 MB\n") == 1
    return text.replace("memory 540 MB of 7480 MB\n", "memory 540 MB of 7480 MB\n  draws 300 megapixels per second\n")


def user():
    """The user of all these machines inside the block: one with GPU preferences for the product."""
    return programs.gpu_preferences({"C:\\Program Files\\Vistrel\\vistrel.exe": "GpuPreference=2;"})


class Machine:
    """A separate install folder for each, so that several can run at once."""

    def __init__(self, folder):
        shutil.rmtree(folder, ignore_errors=True)
        self.folder = folder
        self.install = lab.Install(folder / "install")
        self.install.add_shader("trivial")
        self.install.add_library("onnxruntime.dll", STAND_IN_RUNTIME)
        self.install.write("settings.json", '{"vistrel_scale": 2, "theme": "dark"}')
        self.install.write("ReShade.ini", "")
        for model in MODELS.iterdir():
            self.install.add_file(model, f"vistrel/virtual_monitor/{model.name}")
        self.headset = openxr.connect(self.install, HEADSET + openxr.probe_script("controller_to_bare"))
        self.scenario = lab.scenario_file(both_gpus_scripted("hybrid-laptop"), folder)

    def run(self, fault=None, runtime_fault=None, process=0):
        """`fault`: (function, number, "once" or "on"), in the program or the child of it that has this number;
        `runtime_fault`: (entry of ONNX Runtime's table, number), in whatever process loads it."""
        files = {name: self.folder / f"{name}.txt" for name in ("calls", "counts", "ledger", "runtime_calls", "openxr_log")}
        for file in (*files.values(), self.install.report):
            lab.forget_counts(file)
        orders = "pixel-takes=60 ledger={} calls={}".format(
            lab.windows_path(files["ledger"]), lab.windows_path(files["runtime_calls"])
        )
        if runtime_fault:
            orders += " fail={} call={}".format(*runtime_fault)
        env = {
            **self.headset.env,
            "VISTREL_LAB_STATISTICS": lab.windows_path(files["counts"]),
            "VISTREL_LAB_CALLS": lab.windows_path(files["calls"]),
            "VISTREL_LAB_FAULT": "{} {} {}".format(*fault) if fault else "",
            "VISTREL_LAB_FAULT_PROCESS": process or "",
            "VISTREL_ONNX_STAND_IN": orders,
        }
        launcher = lab.BUILD / "tests" / "lab" / "vistrel_lab.exe"
        command = [lab.ROOT / "scripts" / "wine", launcher, lab.windows_path(self.scenario)]
        command += [lab.windows_path(self.install.exe), "--no-models", "--capture-seconds", "0.2"]
        try:
            exit_code, console, _ = lab.run_program(
                command, b"\n" * 4, self.install.folder, lab.environment(**env), LONGEST_RUN_SECONDS
            )
        except AssertionError as error:
            raise TookTooLong(str(error)) from None
        return self.result(exit_code, console, files)

    def result(self, exit_code, console, files):
        report, calls = self.install.report, read_calls(files["calls"])
        return Result(
            exit_code,
            console.decode("utf-8", "replace").replace("\r\n", "\n"),
            report.read_bytes().decode("utf-8") if report.is_file() else None,
            lab.read_counts(files["counts"]) if files["counts"].exists() else {},
            [call[:-1] for call in calls],
            {call[:3] for call in calls if call[-1] == "failed"},
            {entry: int(count) for entry, what, count in split(files["runtime_calls"]) if what == "called"},
            {(entry, int(number)) for entry, what, number in split(files["runtime_calls"]) if what == "failed"},
            [line for line in lines_of(files["ledger"]) if not line.endswith(" alive 0")]
            + [line for line in lines_of(files["openxr_log"]) if line.startswith("WRONG")],
        )


def lines_of(path):
    return path.read_text(encoding="utf-8").splitlines() if path.exists() else []


def split(path):
    return [line.split() for line in lines_of(path)]


def read_calls(path):
    """(process, function, number, site, what), of the program and of its children."""
    return [
        (int(file.name.removeprefix(path.name).removeprefix(".") or 0), name, int(number), int(site, 16), what)
        for file in lab.files_of_processes(path)
        for name, number, site, what in split(file)
    ]
