"""Which tests may be skipped, and on which machines.

A test that is skipped where it should run fails. Allowed skips are listed with their reasons at the end of ./test:
VISTREL_SKIPPED names the file that collects them.
"""

import os
import pathlib

import pytest

CAP_SYS_ADMIN = 21  # Linux's number of the capability to mount.


def may_mount():
    status = pathlib.Path("/proc/self/status").read_text(encoding="ascii")
    (rights,) = (line.split()[1] for line in status.splitlines() if line.startswith("CapEff:"))
    return bool(int(rights, 16) >> CAP_SYS_ADMIN & 1)


# Test function -> whether it may be skipped here.
MAY_SKIP = {
    "test_a_report_that_is_read_only": lambda: os.geteuid() == 0,
    **dict.fromkeys(
        (
            "test_read_only_folder",
            "test_crash_in_a_read_only_folder",
            "test_full_disk",
            "test_crash_on_a_full_disk",
        ),
        lambda: not may_mount(),
    ),
}


def reason_of(report):
    if isinstance(report.longrepr, tuple):
        return report.longrepr[2].removeprefix("Skipped: ")
    return str(report.longrepr)


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    report = (yield).get_result()
    if not report.skipped:
        return
    reason = reason_of(report)
    if not MAY_SKIP.get(item.originalname or item.name, lambda: False)():
        report.outcome = "failed"
        report.longrepr = f"{item.nodeid} may not be skipped on this machine (tests/system/skips.py): {reason}"
    elif os.environ.get("VISTREL_SKIPPED"):
        with open(os.environ["VISTREL_SKIPPED"], "a", encoding="utf-8") as file:
            file.write(f"{item.nodeid}: {reason}\n")
