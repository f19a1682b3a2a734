"""What the depth model costs: the section as the finished tool writes it, with the genuine runtime and with bad ones."""

import re
import sys

import pytest

import lab

sys.path.insert(0, str(lab.ROOT / "tests" / "lab"))

import make_models  # noqa: E402

TITLE = "DEPTH MODEL INFERENCE"
STAND_INS = lab.BUILD / "tests" / "lab" / "onnx"
MODELS = "vistrel/virtual_monitor/"
NAMES = [
    "Square Fast (256)",
    "Square Normal (392)",
    "Square High (518)",
    "Distill Fast (518x294)",
    "Distill Normal (686x392)",
    "Distill High (798x448)",
    "Distill Quality (924x518)",
    "Distill Very Fast (280x280)",
    "Distill Fastest (210x210)",
    "Distill Balanced (322x322)",
    "Distill Potato (182x182)",
    "Video Depth Fast (518x294)",
]
HEADER = "MODEL                         median ms        min        max"
QUICK = ("--quick", "--capture-seconds", "0")
NO_RUNTIME = (
    "onnxruntime.dll is not next to this exe, so inference cannot be timed.\n"
    "Put vistrel_diag.exe in the Vistrel install folder (the one with Vistrel.exe and onnxruntime.dll) and run it again."
)
RESHADE_NOTE = (
    "Depth comes from ReShade on this setup, so no model runs. Timing the configured model anyway, for reference if AI "
    "mode is ever used."
)
RE_RUN_LINE = "Re-run without --no-models to time every preset and see what the cheaper ones would cost here."
INFERENCE = re.compile(r"Inference       : \d+\.\d\d ms median \(\d+\.\d\d min, \d+\.\d\d max\) over 15 runs")
PICKED_GPU = "Measured on     : GPU 0 (NVIDIA GeForce RTX 3070)"  # Of the scenario below.
ONE_GPU = "desktop-pc"


@pytest.fixture
def product(install):
    """An install folder with the twelve sample models."""
    make_models.make_install(install.folder / MODELS)
    return install


@pytest.fixture
def genuine(product):
    """...and the genuine runtime."""
    product.add_library("onnxruntime.dll")
    product.add_library("DirectML.dll")
    return product


@pytest.fixture
def stand_in(product):
    """...and a runtime that makes no inference."""
    product.add_library("onnxruntime.dll", STAND_INS / "whole" / "onnxruntime.dll")
    return product


def configure(install, **settings):
    text = ", ".join(f'"vistrel_{name}": {value}' for name, value in settings.items())
    install.write("settings.json", "{" + text + "}")


def model_path(install, index):
    return install.windows_folder + "\\" + MODELS + make_models.PRESETS[index][0]


def failed(install, error, index=1, gpu=PICKED_GPU):
    """The single-model form when the model of that index could not be timed."""
    return (
        f"{gpu}\n\n"
        f"Model           : {NAMES[index]}\n"
        f"Could not time it: {error}\n"
        f"Path tried      : {model_path(install, index)}"
    )


def check_rows(section, configured):
    """Twelve rows of figures in the product's order, the configured one marked."""
    lines = section.split("\n")
    assert lines[0].startswith("Measured on     : GPU 0 (")
    assert lines[1:3] == ["", HEADER]
    rows = lines[3:]
    assert len(rows) == len(NAMES), section
    for index, (name, row) in enumerate(zip(NAMES, rows)):
        figures = re.fullmatch(re.escape(f"{name:<28}") + r" +(\d+\.\d\d) +(\d+\.\d\d) +(\d+\.\d\d)(   <- YOURS)?", row)
        assert figures, row
        median, shortest, longest = (float(figure) for figure in figures.groups()[:3])
        assert f"{name:<28} {median:10.2f} {shortest:10.2f} {longest:10.2f}{figures[4] or ''}" == row
        assert 0 <= shortest <= median <= longest
        assert bool(figures[4]) == (index == configured), row


def test_every_preset_through_directml(genuine, run_tool):
    configure(genuine, depth_model_quality=3)
    run = run_tool(*QUICK)
    assert run.exit_code == 0
    check_rows(run.section(TITLE), configured=3)


@pytest.mark.parametrize(
    "quality, size",
    [(3, "518x294"), (0, "518x294"), (9, "322x322")],
    ids=["as listed", "declares another size", "dynamic"],
)
def test_the_configured_model_through_directml(genuine, run_tool, quality, size):
    configure(genuine, depth_model_quality=quality)
    lines = run_tool(*lab.CHEAP).section(TITLE).split("\n")
    assert lines[2] == f"Model           : {NAMES[quality]} ({size})"
    assert INFERENCE.fullmatch(lines[3])
    assert lines[4:] == ["", RE_RUN_LINE]


def test_reshade_depth_is_noted_and_the_model_timed(stand_in, run_tool):
    configure(stand_in, depth_mode=1)
    lines = run_tool(*lab.CHEAP, scenario=ONE_GPU).section(TITLE).split("\n")
    assert lines[:4] == [RESHADE_NOTE, PICKED_GPU, "", "Model           : Square Normal (392) (392x392)"]
    assert INFERENCE.fullmatch(lines[4])


@pytest.mark.parametrize("quality", [-1, 12])
def test_custom_quality_has_no_model(stand_in, run_tool, quality):
    configure(stand_in, depth_model_quality=quality)
    run = run_tool(*lab.CHEAP, scenario=ONE_GPU)
    assert run.section(TITLE) == (
        f"{PICKED_GPU}\n\n"
        "Quality is set to Custom but no custom model path is stored - the app would have no model to load here either."
    )
    check_rows(run_tool(*QUICK, scenario=ONE_GPU).section(TITLE), configured=None)


def test_no_gpu_line_without_a_gpu_but_the_empty_line(stand_in, run_tool):
    section = run_tool(*lab.CHEAP, scenario="software-adapter-only").section(TITLE)
    assert section.startswith("\nModel           : Square Normal (392) (392x392)\n")


def test_a_missing_runtime_is_reported(product, run_tool):
    run = run_tool(*QUICK, scenario=ONE_GPU)
    assert run.section(TITLE) == NO_RUNTIME
    assert run.has_section("VERDICT")


def test_a_runtime_that_is_no_dll(product, run_tool):
    product.write("onnxruntime.dll", "not a program")
    run = run_tool(*lab.CHEAP, scenario=ONE_GPU)
    assert run.section(TITLE) == NO_RUNTIME
    assert run.has_section("VERDICT")


@pytest.mark.parametrize(
    "variant, orders, complaint",
    [
        ("without_ordinal_1", "", "{dll} has no OrtGetApiBase at ordinal 1"),
        ("without_ordinal_4", "", "{dll} has no OrtSessionOptionsAppendExecutionProvider_DML at ordinal 4"),
        ("other_ordinal_4", "", "{dll} has no OrtSessionOptionsAppendExecutionProvider_DML at ordinal 4"),
        ("whole", "old", "{dll} is version 1.17.1, which does not offer API version 24"),
        ("whole", "no-base", "OrtGetApiBase of {dll} answers nothing"),
    ],
)
def test_an_unusable_runtime_is_reported(product, run_tool, variant, orders, complaint):
    product.add_library("onnxruntime.dll", STAND_INS / variant / "onnxruntime.dll")
    complaint = "onnxruntime: " + complaint.format(dll=product.windows_folder + "\\onnxruntime.dll")
    environment = {"VISTREL_ONNX_STAND_IN": orders}
    run = run_tool(*lab.CHEAP, scenario=ONE_GPU, env=environment)
    assert run.section(TITLE) == failed(product, complaint)
    rows = run_tool(*QUICK, scenario=ONE_GPU, env=environment).section(TITLE).split("\n")
    assert rows[3:] == [f"{name:<28}          -  ({complaint})" for name in NAMES]


@pytest.mark.parametrize("directml", [None, b"not a program"], ids=["missing", "no DLL"])
def test_directml_that_cannot_be_loaded(product, run_tool, directml):
    product.add_library("onnxruntime.dll")
    if directml:
        product.write("DirectML.dll", directml)
    run = run_tool(*lab.CHEAP, scenario=ONE_GPU)
    assert run.exit_code == 0
    assert run.section(TITLE) == failed(product, "DirectML execution provider could not be attached")


@pytest.mark.parametrize(
    "orders, error",
    [
        ("fail=AppendDirectMl", "DirectML execution provider could not be attached"),
        ("fail=CreateEnv message=words", "onnxruntime: words"),
        ("fail=CreateSession message=words", "onnxruntime: words"),
        ("fail=Run call=1 message=words", "onnxruntime: words"),
        ("fail=Run call=18 message=words", "onnxruntime: words"),
        ("throw=Run call=7 message=words", "words"),
        ("throw=CreateSession message=words", "words"),
    ],
)
def test_a_runtime_that_fails(stand_in, run_tool, orders, error):
    ledger = stand_in.folder / "ledger.txt"
    run = run_tool(*lab.CHEAP, scenario=ONE_GPU, env={"VISTREL_ONNX_STAND_IN": orders + " ledger=ledger.txt"})
    assert run.exit_code == 0
    assert run.section(TITLE) == failed(stand_in, error)
    check_nothing_alive(ledger)


def check_nothing_alive(ledger):
    lines = ledger.read_text().split("\n")
    assert all(re.fullmatch(r"(\w+ made [1-9]\d* alive 0)?", line) for line in lines), lines


def test_twelve_models_leak_nothing(stand_in, run_tool):
    run_tool(*QUICK, scenario=ONE_GPU, env={"VISTREL_ONNX_STAND_IN": "ledger=ledger.txt"})
    ledger = stand_in.folder / "ledger.txt"
    check_nothing_alive(ledger)
    counts = dict(line.split(" made ") for line in ledger.read_text().splitlines())
    assert counts["Session"] == "12 alive 0"
    assert counts["Value"] == f"{12 * 18 * 2} alive 0"


# What the genuine runtime says of a bad model; None where its words depend on the graphics driver.
BROKEN = {
    "empty": "Load model from {path} failed:",
    "truncated": "Load model from {path} failed:Protobuf parsing failed.)",
    "no_protobuf": "Load model from {path} failed:Protobuf parsing failed.)",
    "unknown_operator": "Load model from {path} failed:This is an invalid model. In Node,",
    "bad_graph": "Load model from {path} failed:Invalid model. Node input 'nowhere' is not a graph input, "
    "initializer, or output of a previous node.)",
    "no_outputs": None,
    "no_inputs": "index out of range)",
    "integer_input": "Unexpected input data type. Actual: (tensor(float)) , expected: (tensor(int64)))",
    "two_inputs": None,
    "sequence_input": "input with name: 'x' expected to be of type: 3 but received a tensor)",
    "rank_3": "Invalid rank for input: pixel_values Got: 4 Expected: 3 Please fix either the inputs/outputs or the model.)",
    "zero_dimension": "Got invalid dimensions for input: pixel_values for the following indices\n"
    " index: 2 Got: 294 Expected: 0\n Please fix either the inputs/outputs or the model.)",
    "one_channel": "Got invalid dimensions for input: pixel_values for the following indices\n",
    "absurd_dimension": "Exception during initialization: narrowing_error)",
    "overflowing_dimension": "Exception during initialization: narrowing_error)",
}


def test_bad_models_each_get_their_row(genuine, run_tool, tmp_path):
    """Presets 0 to 11 hold twelve bad models; the others take the places of three more in a second run."""
    make_models.make_broken(tmp_path / "broken")
    names = list(BROKEN)
    # A zero dimension leaves the preset's size to be fed: give it a preset of 518x294.
    first = names[:3] + ["zero_dimension"] + [n for n in names[3:] if n != "zero_dimension"][:8]
    second = [n for n in names if n not in first]
    for variants in (first, second):
        for index, variant in enumerate(variants):
            genuine.add_file(tmp_path / "broken" / (variant + ".onnx"), MODELS + make_models.PRESETS[index][0])
        run = run_tool(*QUICK)
        assert run.exit_code == 0
        section = run.section(TITLE)
        for index, variant in enumerate(variants):
            words = (BROKEN[variant] or "").format(path=model_path(genuine, index))
            assert f"\n{NAMES[index]:<28}          -  (onnxruntime: {words}" in section


def test_missing_and_oversized_models(genuine, run_tool, tmp_path):
    make_models.make_broken(tmp_path / "broken")
    (genuine.folder / MODELS / make_models.PRESETS[5][0]).unlink()
    configure(genuine, depth_model_quality=5)
    assert run_tool(*lab.CHEAP, scenario=ONE_GPU).section(TITLE) == failed(genuine, "model file not found", 5)
    genuine.add_file(tmp_path / "broken" / "huge_dimension.onnx", MODELS + make_models.PRESETS[5][0])
    section = run_tool(*lab.CHEAP, scenario=ONE_GPU).section(TITLE)
    assert section == failed(genuine, "an input of 20000x20000 pixels cannot be timed", 5)


def test_a_runtime_that_refuses_is_queried_once(stand_in, run_tool):
    """Each refusal prints a line on the user's console."""
    run = run_tool(*QUICK, scenario=ONE_GPU, env={"VISTREL_ONNX_STAND_IN": "old"})
    assert run.section(TITLE).count("which does not offer API version 24") == len(NAMES)
    assert run.errors.count(b"API version 24 is refused") == 1


def test_a_runtime_whose_exports_have_no_names(product, run_tool):
    product.add_library("onnxruntime.dll", STAND_INS / "without_names" / "onnxruntime.dll")
    assert INFERENCE.fullmatch(run_tool(*lab.CHEAP, scenario=ONE_GPU).section(TITLE).split("\n")[3])


def test_a_runtime_loaded_by_other_software_is_not_used(stand_in, run_tool, tmp_path):
    other = tmp_path / "elsewhere"
    other.mkdir()
    (other / "onnxruntime.dll").write_bytes((STAND_INS / "without_ordinal_1" / "onnxruntime.dll").read_bytes())
    path = lab.windows_path(other / "onnxruntime.dll").replace("/", "\\")
    scenario = f"loads {path}\n" + lab.scenario_text(ONE_GPU)
    assert INFERENCE.fullmatch(run_tool(*lab.CHEAP, scenario=scenario).section(TITLE).split("\n")[3])


def test_models_below_a_folder_in_the_form_for_long_paths(stand_in, run_tool):
    place = "\\\\?\\" + stand_in.windows_folder.replace("/", "\\")
    scenario = f"program at {place}\\vistrel_diag.exe\n" + lab.scenario_text(ONE_GPU)
    run = run_tool(*lab.CHEAP, scenario=scenario)
    assert f"Running from: {place}\n" in run.report_text
    assert INFERENCE.fullmatch(run.section(TITLE).split("\n")[3])


def test_a_message_with_invalid_utf8(stand_in, run_tool):
    run = run_tool(*lab.CHEAP, scenario=ONE_GPU, env={"VISTREL_ONNX_STAND_IN": "fail=CreateEnv message-bytes=66E96F"})
    assert run.section(TITLE) == failed(stand_in, "onnxruntime: f\N{REPLACEMENT CHARACTER}o")
