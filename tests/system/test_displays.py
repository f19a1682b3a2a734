"""The DISPLAYS section: the monitors of the desktop, joined with the GPUs that drive them."""

import pytest

import lab

TITLE = "DISPLAYS  (this is what the warp resolution comes from)"
NOTE = (
    "(* = primary. Vistrel captures the primary display unless told otherwise, and warps at exactly that pixel count.)"
)


def displays(run_tool, scenario):
    run = run_tool(*lab.CHEAP, scenario=scenario)
    assert run.exit_code == 0
    return run.section(TITLE).split("\n")


@pytest.mark.parametrize(
    "scenario, lines",
    [
        (
            "secondary-is-primary",
            [
                "  \\\\.\\DISPLAY1   : 1280x1024 @ 60 Hz  -> driven by GPU 0 (NVIDIA GeForce RTX 3070)",
                "* \\\\.\\DISPLAY2   : 2560x1440 @ 165 Hz  -> driven by GPU 0 (NVIDIA GeForce RTX 3070)",
            ],
        ),
        (
            "two-hardware-gpus",
            [
                "* \\\\.\\DISPLAY1   : 2560x1440 @ 144 Hz  -> driven by GPU 0 (NVIDIA GeForce RTX 4080)",
                "  \\\\.\\DISPLAY2   : 1920x1080 @ 60 Hz  -> driven by GPU 1 (AMD Radeon RX 6600)",
            ],
        ),
        (
            # One rotated; one whose output has no description, so no GPU claims it; one whose mode cannot be read.
            "many-displays",
            [
                "* \\\\.\\DISPLAY1   : 3840x2160 @ 60 Hz  -> driven by GPU 0 (NVIDIA RTX A4000)",
                "  \\\\.\\DISPLAY2   : 1080x1920 @ 60 Hz  -> driven by GPU 0 (NVIDIA RTX A4000)",
                "  \\\\.\\DISPLAY3   : 1280x1024 @ 75 Hz  -> driven by GPU 0 (NVIDIA RTX A4000)",
                "  \\\\.\\DISPLAY4   : 1920x1080 @ 60 Hz  -> driven by GPU -1 (UNKNOWN)",
                "  \\\\.\\DISPLAY5   : 5120x1440 @ 240 Hz  -> driven by GPU 1 (Intel(R) UHD Graphics 770)",
            ],
        ),
        (
            "mirror-and-detached",
            ["* \\\\.\\DISPLAY1   : 1920x1080 @ 60 Hz  -> driven by GPU 0 (NVIDIA GeForce RTX 3070)"],
        ),
        # The first adapter is not listed: no GPU owns its display, and the next GPU counts as position 0.
        (
            "failing-description",
            [
                "* \\\\.\\DISPLAY1   : 1920x1080 @ 60 Hz  -> driven by GPU -1 (UNKNOWN)",
                "  \\\\.\\DISPLAY2   : 1920x1080 @ 60 Hz  -> driven by GPU 0 (NVIDIA GeForce RTX 3070)",
            ],
        ),
        ("displays-without-adapter", ["* \\\\.\\DISPLAY257 : 1600x900 @ 32 Hz  -> driven by GPU -1 (UNKNOWN)"]),
        ("no-monitor", []),
        ("no-adapter", []),
    ],
)
def test_displays(run_tool, scenario, lines):
    assert displays(run_tool, scenario) == [*lines, "", NOTE]


def test_the_last_gpu_that_claims_a_display_wins(run_tool):
    scenario = (
        "# Both adapters claim one display\n"
        "adapter First\n  output \\\\.\\DISPLAY1\n    primary\n"
        "adapter Second\n  output \\\\.\\DISPLAY1\n    detached\n"
    )
    assert displays(run_tool, scenario) == [
        "* \\\\.\\DISPLAY1   : 1920x1080 @ 60 Hz  -> driven by GPU 1 (Second)",
        "",
        NOTE,
    ]


def test_displays_without_dxgi(run_tool):
    scenario = (
        "# No adapter can be reached\nfactory fails 0x887A0004\n"
        "adapter Unreachable\n  output \\\\.\\DISPLAY1\n    primary\n"
    )
    assert displays(run_tool, scenario) == [
        "* \\\\.\\DISPLAY1   : 1920x1080 @ 60 Hz  -> driven by GPU -1 (UNKNOWN)",
        "",
        NOTE,
    ]
