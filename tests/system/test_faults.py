"""A few of the faults of tests/faults, one of each kind of call; `tests/faults/run` makes all of them."""

import dataclasses
import re
import sys

import pytest

import lab

sys.path.insert(0, str(lab.ROOT / "tests" / "faults"))

import machine  # noqa: E402
import matrix  # noqa: E402


@pytest.fixture(scope="module")
def healthy(tmp_path_factory):
    """A machine, the report of a run on it in which nothing fails, and that run."""
    with machine.user():
        where = machine.Machine(tmp_path_factory.mktemp("faults") / "machine")
        result = where.run()
        report = matrix.normal(result.report, where.install)
        assert matrix.judge(None, result, report, where).problems == []
        yield where, report, result


def judged(healthy, order, in_runtime=False, process=0):
    where, report, _ = healthy
    fault = matrix.Fault(order[0], "", "", order, in_runtime, process)
    run = where.run(**{"runtime_fault" if in_runtime else "fault": order}, process=process)
    return matrix.judge(fault, run, report, where)


def outcome(healthy, order, in_runtime=False):
    found = judged(healthy, order, in_runtime)
    assert found.problems == []
    return found.changes


@pytest.mark.parametrize(
    "order, line",
    [
        (("GlobalMemoryStatusEx", 1, "once"), "+ RAM             : 0.0 GB total, <free> GB free"),
        (("CreateDXGIFactory1", 1, "once"), "+ !! CreateDXGIFactory1 failed - cannot enumerate GPUs."),
        (("LoadLibraryExW", 1, "once"), "+ !! CreateDXGIFactory1 failed - cannot enumerate GPUs."),
        (("LoadLibraryExW", 2, "once"), "+ !! D3D11CreateDevice failed (0x8007007E). Cannot benchmark."),
        (("ID3D11Device::CreateQuery", 1, "on"), "+ !! GPU timing produced nothing usable at 1920x1200"),
        (("D3DCompile", 1, "on"), "+ !! stereo_warp.hlsl could not be compiled: D3DCompile failed"),
        (("_read", 2, "once"), "+   !! The file could not be read to its end."),
        (("xrGetSystem", 1, "once"), "+ Runtime reports no headset right now - put it on and re-run."),
    ],
)
def test_a_failed_call_is_reported_and_the_run_continues(healthy, order, line):
    assert line in outcome(healthy, order)


def test_a_failed_entry_of_onnx_runtime(healthy):
    changes = outcome(healthy, ("CreateSession", 1), in_runtime=True)
    assert "+ Could not time it: onnxruntime: the runtime's own words" in changes


def test_a_call_of_a_child_fails_only_in_that_child(healthy):
    order = ("xrGetSystem", 1, "once")
    first, last = (judged(healthy, order, process=number) for number in (1, 3))
    assert first.problems == last.problems == []
    assert first.changes and last.changes and first.changes != last.changes
    assert judged(healthy, order, process=2).problems == [matrix.NEVER_FAILED]


def test_every_call_is_recorded_with_its_call_site(healthy):
    calls = healthy[2].calls
    devices = [(process, number) for process, name, number, _ in calls if name == "D3D11CreateDevice"]
    assert devices == [(0, 1), (0, 2), (0, 3)]
    sites = [site for _, name, _, site in calls if name == "CreateToolhelp32Snapshot"]
    assert set(matrix.callers(sorted(set(sites))).values()) == {"TakeProcessSnapshot"}


@pytest.mark.parametrize(
    "order, in_runtime",
    [
        (("D3DCompile", 99999, "once"), False),
        (("NoSuchFunction", 1, "on"), False),
        (("Run", 99999), True),
        (("NoSuchEntry", 1), True),
    ],
)
def test_a_fault_that_never_occurs_proves_nothing(healthy, order, in_runtime):
    assert judged(healthy, order, in_runtime).problems == [matrix.NEVER_FAILED]


MEMORY_FAULT = matrix.Fault("GlobalMemoryStatusEx", "", "call 1", ("GlobalMemoryStatusEx", 1, "once"))
REVIEWED = {str(MEMORY_FAULT): ["+ RAM             : 0.0 GB total, <free> GB free"]}


@pytest.fixture(scope="module")
def without_memory(healthy):
    return healthy[0].run(fault=MEMORY_FAULT.order)


def problems_of(healthy, result, reviewed, spoil=None):
    where, report, _ = healthy
    if spoil:
        assert result.report.count(spoil[0]) == 1
        result = dataclasses.replace(result, report=result.report.replace(*spoil))
    return matrix.judge(MEMORY_FAULT, result, report, where, reviewed).problems


def test_a_report_with_the_reviewed_outcome_is_sound(healthy, without_memory):
    assert problems_of(healthy, without_memory, REVIEWED) == []


@pytest.mark.parametrize("reviewed", [None, REVIEWED])  # Nor before anybody has reviewed anything.
def test_a_report_with_another_title_is_not_sound(healthy, without_memory, reviewed):
    problems = problems_of(healthy, without_memory, reviewed, ("== GPUs =", "== XXXX ="))
    assert problems[0].startswith("no section of the ordinary run: == XXXX")


def test_a_report_with_another_line_is_not_sound(healthy, without_memory):
    spoil = ("Duplicated      : 1920x1200", "Duplicated      : 1920x1080")
    (problem,) = problems_of(healthy, without_memory, REVIEWED, spoil)
    assert problem.startswith("the report differs in lines that do not belong to the fault: + Duplicated ")


def test_a_report_without_the_faults_own_line_is_not_sound(healthy, without_memory):
    spoil = ("0.0 GB total", "16.0 GB total")
    (problem,) = problems_of(healthy, without_memory, REVIEWED, spoil)
    assert problem.startswith("the report differs in lines that do not belong to the fault: + RAM ")


def test_an_unreviewed_outcome_is_not_sound(healthy, without_memory):
    assert problems_of(healthy, without_memory, {}) == ["nobody has reviewed this fault's outcome"]


def test_the_table_of_outcomes_is_read_as_it_is_written():
    faults = [matrix.Fault(name, "Caller", "call 1", (name, 1, "once")) for name in ("A", "B", "C")]
    outcomes = [matrix.Outcome(faults[0]), matrix.Outcome(faults[1], [], ["+ one", "- two"]), matrix.Outcome(faults[2])]
    assert matrix.reviewed_outcomes(matrix.table(outcomes)) == {str(each.fault): each.changes for each in outcomes}


def test_every_import_is_made_to_fail_or_has_a_reason(healthy):
    where, _, ordinary = healthy
    assert matrix.imports_left_out(where.install.exe, {name for _, name, _, _ in ordinary.calls}) == []


def test_an_unlisted_import_is_reported(healthy):
    where, _, ordinary = healthy
    failing = {name for _, name, _, _ in ordinary.calls}
    assert matrix.imports_left_out(where.install.exe, failing - {"GlobalMemoryStatusEx"}) == [
        "GlobalMemoryStatusEx is imported, is not made to fail, and has no reason for that"
    ]
    assert matrix.imports_left_out(where.install.exe, failing | {"malloc"}) == [
        "malloc is made to fail although imports.txt says that it is not"
    ]


# Created, but never released one by one.
NO_HANDLE = {
    "CreateDirectoryA": "makes a folder",
    "CreateDirectoryW": "makes a folder",
    "CreateEventA": "the compiler's runtime keeps it for its threads",
    "CreateSemaphoreA": "the compiler's runtime keeps it for its threads",
    "DuplicateHandle": "the compiler's runtime keeps it for its threads",
    "_beginthreadex": "the compiler's runtime keeps it for its threads",
    "AddVectoredExceptionHandler": "no handle: RemoveVectoredExceptionHandler takes it back",
    "LoadLibraryExW": "libraries stay until the process ends",
    "LoadLibraryW": "libraries stay until the process ends",
    "NtCreateFile": "only a run that is cut short calls it",
    "RegisterClassW": "no handle: a class goes with its process",
}
MAKES_HANDLES = re.compile(r"Create|Open|Duplicate|Register|FindFirst|MapView|Load|Accept|fopen|fdopen|begin|^Add|^socket$")


def test_every_handle_that_the_tool_can_open_is_counted(healthy):
    account = (lab.ROOT / "tests" / "lab" / "machine" / "handle_account.cpp").read_text(encoding="utf-8")
    known = set(re.findall(r'\{"(\w+)", ', account))
    makers = {name for name in matrix.imported_functions(healthy[0].install.exe) if MAKES_HANDLES.search(name)}
    assert makers - known - set(NO_HANDLE) == set()
