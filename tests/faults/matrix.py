"""Makes every call of the tool fail, one at a time, and reports the outcome of each run.

The plan comes from a run in which nothing fails: every place in the tool from which a function that can fail is called,
and there the first, second, middle and last call, each by itself, and the first with all that follow. A run is sound
when the call was seen to fail, the run ends by itself with exit code 0, every object is released, no
rule is violated, and the report is complete, or cannot be written and the console says so. What the report says differently is the
outcome. It must be the reviewed one for this fault in outcomes.txt: those lines belong to the fault, and all others are
those of the ordinary run.
"""

import argparse
import concurrent.futures
import difflib
import pathlib
import queue
import re
import subprocess
import sys
from dataclasses import dataclass, field

import machine
from machine import lab

FOLDER = pathlib.Path(__file__).resolve().parent
WORK = lab.ROOT / "build" / "faults"
OUTCOMES = FOLDER / "outcomes.txt"
IMPORTS = FOLDER / "imports.txt"
IMAGE_BASE = 0x140000000
HEADER = re.compile(r"^== .+ =+$", re.MULTILINE)
# A call whose number depends on how threads happen to run may not come in every run.
MOST_ATTEMPTS = 3
LAST_LINE = "  - the ReShade add-on's two per-frame copies inside the game process\n"

SAME_REPORT = "(the report is the same)"
NEVER_FAILED = "the call was never made to fail"

# Polling until the GPU has finished waits forever by design: a device that never responds cannot be distinguished from a
# busy one.
ENDLESS = {"ID3D11DeviceContext::GetData"}


# What a failed call always causes in the machine: a handle that cannot be closed stays open, a frame that cannot be
# released is still held at the next acquire, and a frame that cannot begin or end is out of order for the runtime.
# A window whose thread is never told to quit stays open until the process ends.
CONSEQUENCES = {
    "DestroyWindow": "open_handles",
    "PostThreadMessageW": "open_handles",
    "RegCloseKey": "open_handles",
    "fclose": "open_handles",
    "IDXGIOutputDuplication::ReleaseFrame": "violations",
    "xrBeginFrame": "WRONG",
    "xrEndFrame": "WRONG",
    # A runtime refuses a session until this has been called; here that call, or the lookup of its function, fails.
    "xrGetD3D11GraphicsRequirementsKHR": "WRONG session before graphics requirements",
    "xrGetInstanceProcAddr": "WRONG session before graphics requirements",
}

# How often these are called depends on how the workers' lines arrive, so only their first call is the same in every run.
VARIABLE = {"WaitForMultipleObjects"}

# Functions that only look something up for their caller, whose name is more useful.
LOOKUPS = {"FindOpenXrFunction", "OpenXrLoader::Find", "operator", "EnumerateOpenXr"}


@dataclass(frozen=True)
class Fault:
    function: str
    caller: str
    which: str  # of the calls from this caller
    order: tuple  # for the machine, or for the stand-in of ONNX Runtime
    in_runtime: bool = False
    process: int = 0  # the program itself, or which of its children

    def __str__(self):
        child = f" of child {self.process}" if self.process else ""
        return f"{self.function}, {self.which}" + (f", in {self.caller}{child}" if self.caller else "")


@dataclass
class Outcome:
    fault: Fault
    problems: list = field(default_factory=list)
    changes: list = field(default_factory=list)


def callers(sites):
    """The tool's own function around each call site, or the C++ runtime's if that makes the call."""
    debug = lab.BUILD / "vistrel_diag.exe.debug"
    addresses = [hex(IMAGE_BASE + site - 1) for site in sites]
    command = ["x86_64-w64-mingw32-addr2line", "-e", debug, "-f", "-C", "-i", "-a", *addresses]
    text = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    names = []
    for piece in text.split("0x")[1:] if text.startswith("0x") else []:
        lines = piece.splitlines()[1:]
        frames = list(zip(lines[0::2], lines[1::2]))
        own = [plain(name) for name, place in frames if name != "??" and not place.startswith(("/usr", "/build"))]
        telling = [name for name in own if name not in LOOKUPS]
        names.append((telling or own or ["the C++ runtime"])[0])
    assert len(names) == len(sites)
    return dict(zip(sites, names))


def plain(name):
    """The function's name alone, without its result, arguments and template arguments."""
    name = name.replace("(anonymous namespace)::", "").replace("[abi:cxx11]", "")
    name = re.sub(r"^.*?\(\*(?=\w)", "", name)
    name = re.split(r"[<(]", name, maxsplit=1)[0]
    return name.split(" ")[-1]


def plan(baseline):
    """Every fault of the matrix, in the order of functions."""
    by_site = {}
    for process, function, number, site in baseline.calls:
        by_site.setdefault((process, function, site), []).append(number)
    names = callers(sorted({site for _, _, site in by_site}))
    faults, seen = [], {}
    for (process, function, site), numbers in by_site.items():
        place = seen[process, function, names[site]] = seen.get((process, function, names[site]), 0) + 1
        caller = names[site] + (f" ({place})" if place > 1 else "")
        picked = {"last call": numbers[-1], "middle call": numbers[len(numbers) // 2]}
        picked |= {"call 2": numbers[min(1, len(numbers) - 1)], "call 1": numbers[0]}
        if function in VARIABLE:
            picked = {"call 1": numbers[0]}
        unique = {number: which for which, number in picked.items()}
        faults += [
            Fault(function, caller, which, (function, n, "once"), process=process) for n, which in sorted(unique.items())
        ]
        if function not in ENDLESS:
            faults.append(Fault(function, caller, "call 1 and all after it", (function, numbers[0], "on"), process=process))
    for entry, count in baseline.runtime_calls.items():
        faults += [Fault(entry, "", f"call {n}", (entry, n), True) for n in sorted({1, 2, count}) if n <= count]
    return faults


def normal(report, install):
    report = report.replace("\r\n", "\n").replace(install.windows_folder, "<folder>")
    report = re.sub(r"(RAM +: [\d.]+ GB total, )[\d.]+", r"\1<free>", report)
    report = re.sub(r"^(CPU +: .*\()\d+( logical\))$", r"\1<n>\2", report, flags=re.MULTILINE)
    return re.sub(r"^Foreground app  : .*\n", "", report, flags=re.MULTILINE)


def defects(result):
    """What no run may leave behind or do, whatever failed."""
    counts = [f"{name} {result.counts.get(name, 0)}" for name in ("live_objects", "violations", "open_handles")]
    return [count for count in counts if not count.endswith(" 0")] + result.wrong


def struck(fault, result):
    """Whether the call was made to fail, as the machine or the stand-in of the runtime noted it."""
    if fault.in_runtime:
        return tuple(fault.order) in result.runtime_failed
    return (fault.process, *fault.order[:2]) in result.failed


def judge(fault, result, baseline_report, where, reviewed=None):
    """`reviewed`: the outcomes that a person has read, by fault; without them any outcome passes."""
    outcome = Outcome(fault)
    problems = outcome.problems
    if fault and not struck(fault, result):
        problems.append(NEVER_FAILED)
    if result.exit_code != 0:
        problems.append(f"exit code {result.exit_code}")
    if not result.counts:
        problems.append("the process did not come to its end")
    consequence = CONSEQUENCES.get(fault.function) if fault else None
    problems += [text for text in defects(result) if consequence is None or not text.startswith(consequence)]
    report = normal(result.report or "", where.install)
    if report.endswith(LAST_LINE):
        if re.search("(?<!\r)\n", result.report):
            problems.append("a bare line feed in the report")
        problems += strange_headers(baseline_report, report)
        outcome.changes = changes(baseline_report.split("\n"), report.split("\n"))
    else:
        outcome.changes = ["(no report)" if result.report is None else "(the report is not whole)"]
        said = [line for line in result.console.split("\n") if line.startswith("!! Could not write")]
        outcome.changes += said
        if not said and consequence != "the report is not whole":
            problems.append("the report is not whole, and the console does not say so")
    if fault is None and outcome.changes:
        problems.append("the report is not that of the ordinary run")
    if fault and reviewed is not None:
        problems += unreviewed(outcome, reviewed)
    return outcome


def strange_headers(ordinary, report):
    """The sections keep their titles and their order, whatever else a fault does to them."""
    ordinary, found = HEADER.findall(ordinary), HEADER.findall(report)
    strange = [header for header in found if header not in ordinary]
    if not strange and found != [header for header in ordinary if header in found]:
        strange = ["the sections are out of order"]
    return [f"no section of the ordinary run: {header}" for header in strange]


def unreviewed(outcome, reviewed):
    expected = reviewed.get(str(outcome.fault))
    if expected is None:
        return ["nobody has reviewed this fault's outcome"]
    if expected == outcome.changes:
        return []
    wrong = [line for line in outcome.changes if line not in expected] or ["lines that belong to it are missing"]
    return [f"the report differs in lines that do not belong to the fault: {wrong[0]}"]


def reviewed_outcomes(text):
    """The changes of each fault, from a table in the form of outcomes.txt."""
    outcomes = {}
    for block in text.split("\n\n"):
        lines = block.split("\n")
        found = [line[4:] for line in lines if line.startswith("    ")]
        for line in lines:
            if line and not line.startswith("    "):
                outcomes[line] = [] if found == [SAME_REPORT] else found
    return outcomes


def changes(before, after):
    """The new lines, and the first of those that are gone where more are gone than came."""
    text = []
    for kind, begin, end, new_begin, new_end in difflib.SequenceMatcher(None, before, after, False).get_opcodes():
        if kind == "equal":
            continue
        gone = [line for line in before[begin:end] if line]
        text += [f"+ {line}" for line in after[new_begin:new_end] if line]
        if len(gone) > new_end - new_begin:
            text.append(f"- {gone[0]}" + (f"  (and {len(gone) - 1} more)" if len(gone) > 1 else ""))
    return text


def attempt(fault, baseline_report, machines, reviewed):
    where = machines.get()
    try:
        for _ in range(MOST_ATTEMPTS):
            order = {"runtime_fault" if fault.in_runtime else "fault": fault.order}
            outcome = judge(fault, where.run(**order, process=fault.process), baseline_report, where, reviewed)
            if NEVER_FAILED not in outcome.problems:
                break
        return outcome
    except machine.TookTooLong:
        return Outcome(fault, ["not done after %d s" % machine.LONGEST_RUN_SECONDS])
    finally:
        machines.put(where)


def table(outcomes):
    """Faults with the same outcome are grouped."""
    groups = {}
    for outcome in outcomes:
        groups.setdefault(tuple(outcome.changes), []).append(str(outcome.fault))
    text = ""
    for changes, faults in sorted(groups.items(), key=lambda group: group[1][0]):
        text += "\n".join(faults) + "\n"
        text += "".join(f"    {line}\n" for line in changes or [SAME_REPORT]) + "\n"
    return text


def imported_functions(exe):
    command = ["x86_64-w64-mingw32-objdump", "-p", exe]
    text = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    return set(re.findall(r"^\t[0-9a-f]+\t +\d+ +(\w+)$", text, re.MULTILINE))


def exempt_imports(text):
    """The functions that are not made to fail: a reason in each paragraph's first line, the names below, indented."""
    exempt = {}
    for paragraph in re.split(r"\n\s*\n", re.sub(r"^#.*\n", "", text, flags=re.MULTILINE).strip()):
        reason, *names = paragraph.split("\n")
        assert reason and not reason[0].isspace() and names, paragraph
        exempt |= {name: reason for line in names for name in line.split()}
    return exempt


def imports_left_out(exe, made_to_fail):
    """What is wrong with the list of exempt functions, as lines for a person; `made_to_fail`: of the ordinary run."""
    imported, exempt = imported_functions(exe), exempt_imports(IMPORTS.read_text(encoding="utf-8"))
    wrong = [(imported - made_to_fail - set(exempt), "is imported, is not made to fail, and has no reason for that")]
    wrong += [(set(exempt) & made_to_fail, "is made to fail although imports.txt says that it is not")]
    wrong += [(set(exempt) - imported, "is in imports.txt and not imported")]
    return [f"{name} {what}" for names, what in wrong for name in sorted(names)]


def parse_options():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--only", default="", help="faults whose text holds this")
    parser.add_argument("--list", action="store_true", help="only tell the plan")
    parser.add_argument("--update", action="store_true", help="write outcomes.txt anew")
    return parser.parse_args()


def main():
    options = parse_options()
    with machine.user():
        return run_matrix(options)


def run_matrix(options):
    first = machine.Machine(WORK / "machine-0")
    baseline = first.run()
    baseline_report = normal(baseline.report, first.install)
    nothing = judge(None, baseline, baseline_report, first)
    assert not nothing.problems, nothing.problems
    left_out = imports_left_out(first.install.exe, {name for _, name, _, _ in baseline.calls})
    if left_out:
        print("\n".join(left_out))
        return 1
    faults = [fault for fault in plan(baseline) if options.only in str(fault)]
    if options.list:
        print("\n".join(str(fault) for fault in faults))
        return 0
    machines = queue.Queue()
    machines.put(first)
    for number in range(1, options.jobs):
        machines.put(machine.Machine(WORK / f"machine-{number}"))
    reviewed = None if options.update else reviewed_outcomes(OUTCOMES.read_text(encoding="utf-8"))
    outcomes = []
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for outcome in pool.map(lambda fault: attempt(fault, baseline_report, machines, reviewed), faults):
            outcomes.append(outcome)
            print("FAILED" if outcome.problems else "sound ", outcome.fault, *outcome.problems, sep="  ", flush=True)
    return conclude(options, faults, outcomes)


def summary(faults, failed):
    leaks = [outcome for outcome in failed if any(text.startswith(("live_", "open_")) for text in outcome.problems)]
    figures = {
        "call sites failed": len({(fault.function, fault.caller) for fault in faults}),
        "functions that they call": len({fault.function for fault in faults}),
        "runs with a failed call": len(faults),
        "of these not sound": len(failed),
        "of these with objects leaked": len(leaks),
    }
    return "".join(f"{name:<34} {value}\n" for name, value in figures.items())


def conclude(options, faults, outcomes):
    found = table(outcomes)
    (WORK / "outcomes.txt").write_text(found, encoding="utf-8")
    failed = [outcome for outcome in outcomes if outcome.problems]
    figures = summary(faults, failed)
    print("\n" + figures, end="")
    if not options.only:
        (WORK / "figures.txt").write_text(figures, encoding="utf-8")
    if options.update:
        OUTCOMES.write_text(found, encoding="utf-8")
    elif not options.only and OUTCOMES.exists() and found != OUTCOMES.read_text(encoding="utf-8"):
        print(f"The outcomes differ from those reviewed: diff {OUTCOMES} {WORK}/outcomes.txt")
        return 1
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
