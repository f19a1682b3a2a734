"""A few of the faults of tests/faults, one of each kind of call; `tests/faults/run` makes all of them."""

import sys

import pytest

import lab

sys.path.insert(0, str(lab.ROOT / "tests" / "faults"))

import machine  # noqa: E402
import matrix  # noqa: E402


@pytest.fixture(scope="module")
def healthy(tmp_path_factory):
    """A machine, and the report of a run on it in which nothing fails."""
    where = machine.Machine(tmp_path_factory.mktemp("faults") / "machine")
    result = where.run()
    report = matrix.normal(result.report, where.install)
    assert matrix.judge(None, result, report, where).problems == []
    return where, report


def outcome(healthy, order, in_runtime=False):
    where, report = healthy
    fault = matrix.Fault(order[0], "", "", order, in_runtime)
    result = where.run(**{"runtime_fault" if in_runtime else "fault": order})
    judged = matrix.judge(fault, result, report, where)
    assert judged.problems == []
    return judged.changes


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
        (("xrGetSystem", 3, "once"), "+ Runtime reports no headset right now - put it on and re-run."),
    ],
)
def test_a_failed_call_gives_its_line_and_the_run_goes_on(healthy, order, line):
    assert line in outcome(healthy, order)


def test_a_failed_entry_of_onnx_runtime(healthy):
    changes = outcome(healthy, ("CreateSession", 1), in_runtime=True)
    assert "+ Could not time it: onnxruntime: the runtime's own words" in changes


def test_every_call_is_noted_with_its_place(healthy):
    calls = healthy[0].run().calls
    assert [number for name, number, _ in calls if name == "D3D11CreateDevice"] == [1, 2, 3]
    sites = [site for name, _, site in calls if name == "CreateToolhelp32Snapshot"]
    assert set(matrix.callers(sorted(set(sites))).values()) == {"TakeProcessSnapshot"}
