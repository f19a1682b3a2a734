"""The simulated machine itself, as a program sees it through its imports."""

import lab

PROBE = lab.BUILD / "tests" / "lab" / "machine_probe.exe"


def probe(tmp_path, scenario, *arguments):
    front, more, counts_file = lab.simulated(scenario, tmp_path)
    exit_code, output, errors = lab.run_program(
        [lab.ROOT / "scripts" / "wine", *front, lab.windows_path(PROBE), *arguments], env=lab.environment(**more)
    )
    counts = lab.read_counts(counts_file) if counts_file.exists() else None
    return exit_code, output.decode("utf-8").replace("\r\n", "\n"), errors.decode("utf-8"), counts


def test_the_program_sees_only_the_scenario(tmp_path):
    exit_code, output, _, counts = probe(tmp_path, "failing-description", "a b", "c\\", 'q"x')
    assert output == (
        "argument a b\n"
        "argument c\\\n"
        'argument q"x\n'
        "factory 0x00000000\n"
        "adapter 0 0x887A0005 \n"
        "  memory 0 of 0\n"
        "  output \\\\.\\DISPLAY1 1920x1080\n"
        "  device 0x00000000\n"
        "adapter 1 0x00000000 NVIDIA GeForce RTX 3070\n"
        "  memory 946864128 of 7602176000\n"
        "  output \\\\.\\DISPLAY2 1920x1080\n"
        "  device 0x00000000\n"
        "  device of NVIDIA GeForce RTX 3070\n"
        "adapter 2 0x00000000 AMD Radeon RX 6600\n"
        "  memory 325058560 of 7767851008\n"
        "  device 0x00000000\n"
        "  device of AMD Radeon RX 6600\n"
        "display \\\\.\\DISPLAY1 flags 5 1920x1080@60\n"
        "display \\\\.\\DISPLAY2 flags 1 1920x1080@60\n"
        "cursor 1 showing 1 at 100,100 with a shape\n"
    )
    assert exit_code == 7  # the program's own
    assert counts["live_objects"] == 0
    assert [counts[f"devices_made_on_{i}"] for i in range(4)] == [1, 1, 1, 0]


def test_leaked_objects_are_counted(tmp_path):
    _, _, _, counts = probe(tmp_path, "two-hardware-gpus", "--leak")
    assert counts["live_factories"] == 1
    assert counts["live_adapters"] == 1
    assert counts["live_devices"] == 1
    assert counts["live_objects"] == 3


def test_an_invalid_scenario_runs_nothing(tmp_path):
    exit_code, output, errors, counts = probe(tmp_path, "# wrong\nadaptor X\n")
    assert (exit_code, output, counts) == (125, "", None)
    assert errors.endswith("scenario.txt, line 2: 'adaptor' is not understood here\r\n")


def test_every_scenario_is_valid_and_described(tmp_path):
    for path in sorted(lab.SCENARIOS.glob("*.txt")):
        text = path.read_text(encoding="utf-8")
        assert text.startswith("# "), path
        assert f"`{path.stem}`" in (lab.SCENARIOS.parent / "README.md").read_text(encoding="utf-8"), path
        exit_code, _, errors, _ = probe(tmp_path, path)
        assert exit_code == 7, (path, errors)
