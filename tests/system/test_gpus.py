"""The GPUs section, the benchmark GPU and the VRAM lines on machines of every kind."""

import pytest

import lab


def gpus(run):
    return run.section("GPUs")


def run_quick(run_tool, scenario):
    run = run_tool(*lab.CHEAP, scenario=scenario)
    assert run.exit_code == 0
    return run


def test_two_hardware_gpus(run_tool):
    run = run_quick(run_tool, "two-hardware-gpus")
    assert gpus(run) == (
        "GPU 0           : NVIDIA GeForce RTX 4080 [NVIDIA]\n"
        "  VRAM          : 16048 MB dedicated, 32600 MB shared system\n"
        "  LUID          : 00000000:0000D1A5\n"
        "  Displays      : \\\\.\\DISPLAY1\n"
        "  VRAM in use   : 1204 MB of 15280 MB budget (8%)\n"
        "GPU 1           : AMD Radeon RX 6600 [AMD]\n"
        "  VRAM          : 8176 MB dedicated, 32600 MB shared system\n"
        "  LUID          : 00000000:0000E277\n"
        "  Displays      : \\\\.\\DISPLAY2\n"
        "  VRAM in use   : 310 MB of 7408 MB budget (4%)\n"
        "GPU 2           : Microsoft Basic Render Driver [Microsoft] (software)\n"
        "  VRAM          : 0 MB dedicated, 32600 MB shared system\n"
        "  LUID          : 00000000:0000F002\n"
        "  Displays      : NONE attached to this GPU\n"
        "  VRAM in use   : 0 MB of 0 MB budget (0%)\n"
        "\n"
        "NOTE: more than one hardware GPU is present. Which one drives the monitor decides whether capture is a local "
        "copy or a bus transfer."
    )


def test_no_adapter(run_tool):
    run = run_quick(run_tool, "no-adapter")
    assert gpus(run) == ""
    assert run.section("BENCHMARK SETUP").split("\n")[0] == "Benchmark GPU   : GPU -1 (default)"
    assert "!! D3D11CreateDevice failed (0x887A0004). Cannot benchmark." in run.report_text.split("\n")


def test_software_adapter_only(run_tool):
    run = run_quick(run_tool, "software-adapter-only")
    assert "(software)\n" in gpus(run) and "NOTE:" not in gpus(run)
    # Not a hardware GPU, so none is chosen; Windows' default device is on it all the same.
    assert run.section("BENCHMARK SETUP").split("\n")[0] == "Benchmark GPU   : GPU -1 (default)"
    assert "Cannot benchmark" not in run.report_text


def test_adapter_without_description_keeps_its_number(run_tool):
    run = run_quick(run_tool, "failing-description")
    lines = gpus(run).split("\n")
    assert [line for line in lines if line.startswith("GPU ")] == [
        "GPU 1           : NVIDIA GeForce RTX 3070 [NVIDIA]",
        "GPU 2           : AMD Radeon RX 6600 [AMD]",
    ]
    # The index of the larger GPU, 2, lies beyond the list: its name is looked up by position.
    assert run.section("BENCHMARK SETUP").split("\n")[0] == "Benchmark GPU   : GPU 2 (default)"


@pytest.mark.parametrize("scenario", ["without-adapter3", "memory-query-fails"])
def test_memory_in_use_is_omitted(run_tool, scenario):
    assert "VRAM in use" not in gpus(run_quick(run_tool, scenario))


@pytest.mark.parametrize(
    "scenario, expected",
    [
        ("budget-zero", ["  VRAM in use   : 500 MB of 0 MB budget (0%)"]),
        ("exactly-90-percent", ["  VRAM in use   : 6300 MB of 7000 MB budget (90%)"]),
        ("over-90-percent", ["  VRAM in use   : 6307 MB of 7000 MB budget (90%)"]),
        ("reservation", ["  VRAM in use   : 903 MB of 7250 MB budget (12%)", "  VRAM reserved : 512 MB"]),
    ],
)
def test_memory_lines(run_tool, scenario, expected):
    lines = gpus(run_quick(run_tool, scenario)).split("\n")
    assert [line for line in lines if line.startswith(("  VRAM in", "  VRAM res"))] == expected


def test_factory_failure(run_tool):
    run = run_quick(run_tool, "factory-fails")
    assert gpus(run) == "!! CreateDXGIFactory1 failed - cannot enumerate GPUs."


def test_device_failure(run_tool):
    run = run_quick(run_tool, "device-fails")
    assert run.section("BENCHMARK SETUP").split("\n")[-1] == (
        "!! D3D11CreateDevice failed (0x887A0005). Cannot benchmark."
    )
    assert not run.has_section("SCREEN CAPTURE")
    assert not run.has_section("STEREO WARP COST  (both eyes, one headset frame)")


def test_a_failing_enumeration_ends_the_list(run_tool):
    run = run_quick(run_tool, "enumeration-fails")
    assert [line for line in gpus(run).split("\n") if line.startswith("GPU ")] == [
        "GPU 0           : NVIDIA GeForce RTX 3070 [NVIDIA]"
    ]
    assert "  Displays      : \\\\.\\DISPLAY1\n" in gpus(run)


def test_names_from_outside_are_printed_as_they_are(run_tool):
    lines = gpus(run_quick(run_tool, "odd-names")).split("\n")
    assert lines[0] == "GPU 0           : Видеокарта 高性能 100%s %n [?]"
    assert lines[2] == "  LUID          : FFFFFFFF:FFFFFFFE"
    assert lines[3] == "  Displays      : \\\\.\\DISPLAY_é"
    assert lines[5] == "GPU 1           :  [AMD]"
    assert lines[7] == "  LUID          : 80000000:00000001"
