"""A crash or hang in a worker affects only its own section: the rest of the report is that of an ordinary run.

A few cases of each kind by default. All kinds at all calls, for a night:

    tests/system/every-death
"""

import os
import re
import sys

import pytest

import lab
import openxr
import terminal
from test_depth import NAMES, NO_RUNTIME
from test_guided_run import READY, prompt
from test_rescue import QUICK, STOPPED, closing_line, steady
from test_terminal import on_screen

sys.path.insert(0, str(lab.ROOT / "tests" / "lab"))

import make_models  # noqa: E402

HEADSET = "HEADSET / OPENXR"
MODELS = "DEPTH MODEL INFERENCE"
MACHINE = lab.patient("frames-60")
VIEW = "view 2016 2240\n"
EVERY_DEATH = "VISTREL_EVERY_DEATH" in os.environ

# What happens in a function, and what the report then says about the worker; %s is the module's name.
DEATHS = {
    "crash": "crashed in %s (access violation, 0xC0000005)",
    "crash_elsewhere": "crashed in %s (access violation, 0xC0000005)",
    "overflow": "crashed in %s (stack overflow, 0xC00000FD)",
    "overflow_of_integer": "crashed in %s (integer overflow, 0xC0000095)",
    "cpp_exception": "crashed in %s (C++ exception, 0xE06D7363)",
    "fail_fast": "crashed (fail-fast, 0xC0000409)",
    "heap_corruption": "crashed (heap corruption, 0xC0000374)",
    "abort": "aborted",
    "ucrt_abort": "aborted",
    "terminate": "ended its process (exit code 42)",
    "hang": "gave no sign of life for %d seconds and was ended",
}


def words(kind, module, seconds):
    text = DEATHS[kind]
    return text % module if "%s" in text else text % seconds if "%d" in text else text


def cases(calls, every_kind_at):
    """Every kind at one call, and the first kind at every call."""
    if EVERY_DEATH:
        return [(kind, call) for call in calls for kind in DEATHS]
    return [(kind, every_kind_at) for kind in DEATHS] + [("crash", call) for call in calls if call != every_kind_at]


def cases_or_one(calls):
    """Every kind at every call in a night, else the first kind at the first call."""
    return cases(calls, calls[0]) if EVERY_DEATH else [("crash", calls[0])]


def without_section(report, title):
    """The report's lines without those of one section."""
    text = steady(report).decode().replace("\r\n", "\n")
    start = text.index(f"\n{lab.header(title)}\n")
    return text[:start] + text[text.index("\n== ", start + 1) :]


# In the order of the calls, with the facts known by then.
RUNTIME = "Runtime         : Scripted Runtime 1.0.0"
EYES = "Eye resolution  : 2016x2240 per eye (runtime recommendation)"
GPU = "Required GPU    : LUID 00000000:0000B3C7 -> GPU 0 (NVIDIA GeForce RTX 3070)"
OPENXR_CALLS = {
    "xrNegotiateLoaderRuntimeInterface": [],
    "xrGetInstanceProcAddr": [],
    "xrEnumerateInstanceExtensionProperties": [],
    "xrCreateInstance": [],
    "xrGetInstanceProperties": [],
    "xrGetSystem": [RUNTIME],
    "xrEnumerateViewConfigurationViews": [RUNTIME],
    "xrGetD3D11GraphicsRequirementsKHR": [RUNTIME, EYES],
    "xrDestroyInstance": [RUNTIME, EYES, GPU],
}
LOADER_CALLS = ("xrCreateInstance", "xrGetInstanceProcAddr")
HEADSET_SCRIPT = VIEW + "luid 00000000:0000B3C7\n"


@pytest.fixture(scope="module")
def headset(tmp_path_factory):
    """An install folder, and ordinary reports: of a runtime that names a GPU, and of one without a headset."""
    install = lab.Install(tmp_path_factory.mktemp("headset") / "install")

    def ordinary(script):
        runtime = openxr.connect(install, script)
        run = lab.run_tool(install, *QUICK, scenario=MACHINE, env=runtime.env)
        assert run.has_section("VERDICT")
        return run.report

    return install, ordinary(HEADSET_SCRIPT), ordinary(HEADSET_SCRIPT + "system 0\n")


@pytest.mark.parametrize("kind, call", cases(OPENXR_CALLS, "xrGetSystem"))
def test_openxr_runtime(headset, kind, call):
    install, awake, asleep = headset
    runtime = openxr.connect(install, f"{HEADSET_SCRIPT}{kind} {call}\n")
    run = lab.run_tool(install, *QUICK, scenario=MACHINE, env=runtime.env)
    assert run.exit_code == 0
    facts = OPENXR_CALLS[call]
    end = words(kind, "scripted_runtime.dll", 60)
    assert run.section(HEADSET).split("\n") == [f"!! The OpenXR query {end}.", *facts]
    ordinary = awake if GPU in facts else asleep
    assert without_section(run.report, HEADSET) == without_section(ordinary, HEADSET)
    assert run.has_section("VERDICT")
    assert runtime.calls()[-1].split(" ")[0] == call


@pytest.mark.parametrize("kind, call", cases_or_one(LOADER_CALLS))
def test_openxr_loader(headset, kind, call):
    """The loader is a foreign library too."""
    install, _, asleep = headset
    loader = openxr.connect(install, f"{HEADSET_SCRIPT}{kind} {call}\n", "stand_in_loader")
    run = lab.run_tool(install, *QUICK, scenario=MACHINE, env=loader.env)
    assert run.exit_code == 0
    assert run.section(HEADSET) == f"!! The OpenXR query {words(kind, 'openxr_loader.dll', 60)}."
    assert without_section(run.report, HEADSET) == without_section(asleep, HEADSET)


def test_both_queries_of_a_guided_run(headset):
    """Part 2 repeats the query in another process."""
    install, _, _ = headset

    def guided(order):
        runtime = openxr.connect(install, HEADSET_SCRIPT + order)
        runtime.log.unlink(missing_ok=True)
        run = lab.run_tool(install, *QUICK[1:], scenario=MACHINE, env=runtime.env, stdin=b"\n\ns\n")
        return runtime, "\n".join(report_lines(run.report))

    _, asleep = guided("system 0\n")
    runtime, died = guided("crash xrGetSystem\n")
    assert runtime.calls().count("xrGetSystem") == 2
    line = "!! The OpenXR query crashed in scripted_runtime.dll (access violation, 0xC0000005)."
    no_headset = "A runtime is installed but reports no headset right now. Eye resolution and required GPU unavailable."
    assert died.count(line) == 2
    assert died.replace(f"{line}\n{RUNTIME}\n", f"{RUNTIME}\n{no_headset}\n") == asleep


def test_ctrl_c_ends_both_processes_during_the_query(headset):
    install, _, _ = headset
    runtime = openxr.connect(install, f"{HEADSET_SCRIPT}hang xrGetSystem\n")
    scenario = MACHINE.replace("clock scripted\n", "")  # On the real clock, so that the hang takes time.
    with terminal.Terminal(install, *QUICK[1:], scenario=scenario, env=runtime.env) as person:
        person.answer(on_screen(prompt(READY)), "\r")
        person.answer("Run this tool again - the log will be quoted here.\n", terminal.CONTROL_C)
        person.wait_for_end()
        screen = person.screen.text()
    assert closing_line(HEADSET, STOPPED) in screen
    assert "The OpenXR query" not in screen


def test_the_query_runs_in_the_tool_when_no_child_can_be_started(headset):
    """Then the query runs in the process itself, and the report is the ordinary one."""
    install, awake, _ = headset
    runtime = openxr.connect(install, HEADSET_SCRIPT)
    for function in (
        "CreateFileMappingW",
        "MapViewOfFile",
        "CreatePipe",
        "CreateEventW",
        "CreateJobObjectW",
        "SetInformationJobObject",
        "UpdateProcThreadAttribute",
        "CreateProcessW",
    ):
        env = {**runtime.env, "VISTREL_LAB_FAULT": f"{function} 1 on"}
        run = lab.run_tool(install, *QUICK, scenario=MACHINE, env=env)
        assert steady(run.report) == steady(awake), function
        assert not lab.files_of_processes(install.folder.parent / "counts.txt")[1:], function


MODEL = 6  # The preset that crashes. A new process does not repeat the calls before it.
# The calls of ONNX Runtime for one model, in this order, and how often each is made.
TABLE_CALLS = {
    "CreateEnv": 1,
    "SetLanguageProjection": 1,
    "CreateSessionOptions": 1,
    "SetSessionGraphOptimizationLevel": 1,
    "AddSessionConfigEntry": 1,
    "DisableMemPattern": 1,
    "SetSessionExecutionMode": 1,
    "AppendDirectMl": 1,
    "CreateSession": 1,
    "GetAllocatorWithDefaultOptions": 1,
    "SessionGetInputName": 1,
    "SessionGetOutputName": 1,
    "SessionGetInputTypeInfo": 1,
    "CastTypeInfoToTensorInfo": 1,
    "GetDimensionsCount": 1,
    "GetDimensions": 1,
    "ReleaseTypeInfo": 1,
    "CreateCpuMemoryInfo": 1,
    "CreateTensorWithDataAsOrtValue": 18,
    "Run": 18,
    "ReleaseValue": 36,
    "ReleaseMemoryInfo": 1,
    "AllocatorFree": 2,
    "ReleaseSession": 1,
    "ReleaseSessionOptions": 1,
    "ReleaseEnv": 1,
}
FEW_TABLE_CALLS = ("CreateEnv", "CreateSession", "Run", "ReleaseSession")
# Called with the status of a call that failed.
ERROR_CALLS = ("GetErrorMessage", "ReleaseStatus")
# Asked once in every process.
ENTRY_POINTS = ("OrtGetApiBase", "GetApi")


@pytest.fixture(scope="module")
def models(tmp_path_factory):
    """An install folder with all models, and the report of an ordinary run of theirs."""
    install = lab.Install(tmp_path_factory.mktemp("models") / "install")
    make_models.make_install(install.folder / "vistrel" / "virtual_monitor")
    install.add_library("onnxruntime.dll", lab.BUILD / "tests" / "lab" / "onnx" / "whole" / "onnxruntime.dll")
    run = run_models(install, "")
    assert run.has_section("VERDICT")
    return install, run.report


def report_lines(report):
    return steady(report).decode().replace("\r\n", "\n").split("\n")


def with_dead_model(ordinary, end):
    lines = report_lines(ordinary)
    (row,) = (i for i, line in enumerate(lines) if line.startswith(f"{NAMES[MODEL]:<28} "))
    lines[row] = f"{NAMES[MODEL]:<28}          -  ({end})"
    return lines


REFUSAL = r"\(onnxruntime: OrtGetApiBase of .* answers nothing\)"
ALL_MODELS = ("--quick", "--capture-seconds", "0.5")


def run_models(install, orders, arguments=ALL_MODELS):
    env = {"VISTREL_ONNX_STAND_IN": "pixel-takes=60 " + orders}
    return lab.run_tool(install, *arguments, scenario=MACHINE, env=env)


def expect_dead_model(models, kind, entry, more=""):
    """The row of the model whose first call of `entry` ends its process reports it; all else is as in an ordinary run."""
    install, ordinary = models
    run = run_models(install, f"{kind}={entry} call={MODEL * TABLE_CALLS[entry] + 1} {more}")
    assert run.exit_code == 0
    end = words(kind, "onnxruntime.dll", 120)
    assert report_lines(run.report) == with_dead_model(ordinary, end)


@pytest.mark.parametrize("kind, entry", cases(TABLE_CALLS if EVERY_DEATH else FEW_TABLE_CALLS, "Run"))
def test_model(models, kind, entry):
    """The model's row reports it, and the next one is timed in a new process."""
    expect_dead_model(models, kind, entry)


@pytest.mark.parametrize("kind, entry", cases_or_one(ERROR_CALLS))
def test_model_that_fails(models, kind, entry):
    """The same while the reason of a failed inference is read or freed."""
    expect_dead_model(models, kind, "Run", f"in-error={entry}")


@pytest.mark.parametrize("kind, entry", cases_or_one(ENTRY_POINTS))
def test_entry_point(models, kind, entry):
    """Every model's process ends; else the report is that of a runtime whose entry point answers nothing."""
    install, _ = models
    refused = report_lines(run_models(install, "no-base").report)
    end = words(kind, "onnxruntime.dll", 120)
    run = run_models(install, f"{kind}={entry}")
    assert run.exit_code == 0
    refusals = [line for line in refused if re.search(REFUSAL, line)]
    assert len(refusals) == len(NAMES)
    assert report_lines(run.report) == [re.sub(REFUSAL, f"({end})", line) for line in refused]


@pytest.mark.parametrize("kind", DEATHS if EVERY_DEATH else ["crash", "hang"])
def test_configured_model(models, kind):
    """Else the report is that of a model which the runtime refuses."""
    install, _ = models
    refused = report_lines(run_models(install, "fail=Run call=3 message=refused", QUICK).report)
    run = run_models(install, f"{kind}=Run call=3", QUICK)
    assert run.exit_code == 0
    end = words(kind, "onnxruntime.dll", 120)
    failure = "Could not time it: "
    assert f"{failure}onnxruntime: refused" in refused
    assert f"Model           : {NAMES[1]}" in refused
    expected = [f"{failure}{end}" if line.startswith(failure) else line for line in refused]
    assert report_lines(run.report) == expected


def test_model_library_that_crashes_while_it_is_loaded(models):
    """Windows turns an exception in DllMain into a failed load, but no other kind of crash."""
    install, _ = models
    crashed = run_models(install, "crash=DllMain")
    assert crashed.section(MODELS) == NO_RUNTIME
    assert crashed.has_section("VERDICT")
    for kind, end in DEATHS.items():
        if "crashed in" in end or not (EVERY_DEATH or kind == "terminate"):
            continue
        run = run_models(install, f"{kind}=DllMain")
        assert run.section(MODELS) == f"!! Loading onnxruntime.dll {words(kind, 'onnxruntime.dll', 120)}."
        assert without_section(run.report, MODELS) == without_section(crashed.report, MODELS)


def test_no_child_can_be_started_for_a_later_model(models):
    """Then the rest is timed in the process itself."""
    install, ordinary = models
    env = {
        "VISTREL_ONNX_STAND_IN": f"pixel-takes=60 crash=Run call={MODEL * 18 + 1}",
        "VISTREL_LAB_FAULT": "CreateProcessW 3 on",  # The headset's and the first of the models can be started.
    }
    run = lab.run_tool(install, *ALL_MODELS, scenario=MACHINE, env=env)
    end = words("crash", "onnxruntime.dll", 120)
    assert report_lines(run.report) == with_dead_model(ordinary, end)
