"""Runs with the scripted OpenXR runtime of tests/lab/openxr, through the genuine loader.

    headset = openxr.connect(install, "view 2016 2240\\nluid 00000000:00012C3D\\n")
    run = run_tool(*lab.CHEAP, scenario="hybrid-laptop", env=headset.env)
    assert headset.calls()[-1] == "unloaded"
"""

import pathlib
from dataclasses import dataclass

import lab

FOLDER = lab.BUILD / "tests" / "lab" / "openxr"
SCRIPTS = lab.ROOT / "tests" / "lab" / "openxr"


@dataclass
class Headset:
    env: dict
    log: pathlib.Path

    def calls(self):
        """The calls of the runtime, one per line. Fails when the tool used the runtime incorrectly."""
        lines = self.log.read_text(encoding="utf-8").splitlines() if self.log.exists() else []
        assert not [line for line in lines if line.startswith("WRONG")], "\n".join(lines)
        return lines


def connect(install, script, loader="genuine_loader"):
    """Puts a loader (a folder of the lab's) beside the tool, and connects it to a runtime that follows the script. The
    registry of every prefix contains the environment variable that names the runtime (scripts/lab-session)."""
    install.add_library("openxr_loader.dll", FOLDER / loader / "openxr_loader.dll")
    script_file = install.folder.parent / "openxr_script.txt"
    script_file.write_text(script, encoding="utf-8")
    log = install.folder.parent / "openxr_log.txt"
    return Headset(
        {
            "VISTREL_LAB_OPENXR_MANIFEST": lab.windows_path(FOLDER / "openxr_runtime" / "runtime.json"),
            "VISTREL_LAB_OPENXR": lab.windows_path(script_file),
            "VISTREL_LAB_OPENXR_LOG": lab.windows_path(log),
        },
        log,
    )


def probe_script(name):
    return (SCRIPTS / "probes" / f"{name}.txt").read_text(encoding="utf-8")


def probe_report(name):
    return (SCRIPTS / "probes" / f"{name}.report").read_text(encoding="utf-8")
