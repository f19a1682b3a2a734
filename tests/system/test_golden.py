"""Whole reports and consoles of whole machines, as reviewed by a person. README.md says how to renew them."""

import pytest

import console
import golden
import lab
import openxr
import programs
import recording

STAND_IN_RUNTIME = lab.BUILD / "tests" / "lab" / "onnx" / "whole" / "onnxruntime.dll"
MODELS = lab.BUILD / "models"
MODELS_AT_60_NS = {"VISTREL_ONNX_STAND_IN": "pixel-takes=60"}
MODELS_AT_20_NS = {"VISTREL_ONNX_STAND_IN": "pixel-takes=20"}
# The foreground window at that moment, if any.
NO_WINDOW = [(r"^Foreground app  : .*\n", "")]


@pytest.fixture(scope="module", autouse=True)
def no_gpu_preferences():
    with programs.gpu_preferences({}):
        yield


@pytest.fixture
def vistrel_install(install):
    """What the product installs beside the tool, with an ONNX Runtime that takes no time of the real GPU."""
    install.add_shader("trivial")
    install.add_library("onnxruntime.dll", STAND_IN_RUNTIME)
    for model in MODELS.iterdir():
        install.add_file(model, f"vistrel/virtual_monitor/{model.name}")
    return install


def cases(kind):
    """The rows of golden/cases.txt of that kind: name and options."""
    rows = [line.split() for line in (golden.FOLDER / "cases.txt").read_text(encoding="utf-8").splitlines()]
    found = [(row[0], row[2:]) for row in rows if row[:1] != ["#"] and row[1] == kind]
    assert found, f"golden/cases.txt has no {kind!r}"
    return found


# The machines whose clock and GPU are scripted: their reports hold the same figures in every run.
@pytest.mark.parametrize("scenario, options", cases("product"))
def test_machine_with_the_product_installed(vistrel_install, clean_user, run_tool, scenario, options):
    run = run_tool(*options, scenario=scenario, env=MODELS_AT_60_NS)
    golden.check(f"{scenario}.txt", run.report_text, vistrel_install, NO_WINDOW)


# The tool by itself in a folder, on machines whose adapters and displays are the subject.
@pytest.mark.parametrize("scenario, options", cases("alone"))
def test_machine_without_the_product(install, clean_user, run_tool, scenario, options):
    run = run_tool(*options, scenario=scenario)
    golden.check(f"{scenario}.txt", run.report_text, install, NO_WINDOW)


# Machines of which more is special than their adapters and displays.


def test_hybrid_laptop_with_the_headset_on_the_other_gpu(vistrel_install, clean_user, run_tool):
    script = "runtime SteamVR/OpenXR\nversion 2.9.6\nview 2016 2240\nview 2016 2240\nluid 00000000:00012C3D\n"
    headset = openxr.connect(vistrel_install, script)
    run = run_tool("--quick", "--no-models", scenario="hybrid-laptop", env={**MODELS_AT_20_NS, **headset.env})
    golden.check("headset-on-the-other-gpu.txt", run.report_text, vistrel_install, NO_WINDOW)


def test_reshade_user(vistrel_install, clean_user, run_tool):
    """Depth comes from ReShade, which was installed for the product instead of the game."""
    vistrel_install.write("settings.json", '{"vistrel_depth_mode": 1, "vistrel_scale": 1.5, "theme": "dark"}')
    vistrel_install.write("ReShade.ini", "")
    env = programs.add_proxy_dlls(vistrel_install, "opengl32.dll")
    run = run_tool("--quick", "--no-models", scenario="desktop-pc", env={**MODELS_AT_20_NS, **env})
    golden.check("reshade-user.txt", run.report_text, vistrel_install, NO_WINDOW)


def test_product_running(vistrel_install, clean_user, run_tool, tmp_path):
    with programs.asleep(tmp_path, "Vistrel.exe"):
        run = run_tool("--quick", "--no-models", scenario="duplication-taken", env=MODELS_AT_20_NS)
    golden.check("product-running.txt", run.report_text, vistrel_install, NO_WINDOW)


def test_captured_by_another_program(vistrel_install, clean_user, run_tool, tmp_path):
    with programs.asleep(tmp_path, "obs64.exe"):
        run = run_tool("--no-models", scenario="duplication-taken", stdin=b"\n\ns\n", env=MODELS_AT_20_NS)
    golden.check("captured-by-another-program.txt", run.report_text, vistrel_install, NO_WINDOW)


# The countdown takes no time: the desktop PC's clock is scripted.
@pytest.mark.parametrize(
    "name, answers",
    [("guided-run", b"\n\n\n\n"), ("guided-run-end-of-input", b""), ("guided-run-part-2-skipped", b"s\ns\n")],
)
def test_guided_run(vistrel_install, clean_user, run_tool, name, answers):
    run = run_tool("--no-models", scenario="desktop-pc", stdin=answers, env=MODELS_AT_20_NS)
    golden.check(f"{name}.report.txt", run.report_text, vistrel_install, NO_WINDOW)
    golden.check(f"{name}.console.txt", run.console_text, vistrel_install, NO_WINDOW)


def test_recording_of_a_guided_run(vistrel_install, clean_user):
    """docs/console-run.txt has the run as frames, docs/console.svg one of them."""
    script = "runtime SteamVR/OpenXR\nversion 2.9.6\nview 2016 2240\nview 2016 2240\nluid 00000000:0000B3C7\n"
    script += "event 0 ready\nhand left 0 controller\nhand right 0 controller\nhand left 1000 bare\nhand right 1500 bare\n"
    headset = openxr.connect(vistrel_install, script)
    prompts = ["Ready to start part 1?", "Headset on and game running?", "Run the hand-tracking check?", "Press Enter to close."]
    sitting = console.sit(
        vistrel_install,
        steps=[step for prompt in prompts for step in console.answers(prompt)],
        settings={"with_times": "", "title": "C:\\\\Vistrel\\\\vistrel_diag.exe"},
        scenario="desktop-pc",
        env={**MODELS_AT_60_NS, **headset.env},
    )
    assert sitting.run.exit_code == 0
    for entry in sitting.entries:
        if entry.text is not None:
            text = entry.text.replace(vistrel_install.windows_folder, "C:\\Vistrel").replace("\r\n", "\n")
            entry.text = golden.masked(text, masks=NO_WINDOW).replace("\n", "\r\n")
    frames = recording.frames(sitting.entries)
    (shown, *_) = [frame for frame in frames if "Depth model 5 of 12" in frame.title] or frames[-1:]
    golden.check_file(lab.ROOT / "docs" / "console-run.txt", recording.as_text(frames))
    golden.check_file(lab.ROOT / "docs" / "console.svg", recording.as_picture(shown))
