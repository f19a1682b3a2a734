"""A person at a console that behaves like the one of Windows: cases that Wine's console hides."""

import re

import pytest

import console
import lab
import openxr
import programs
import terminal
from test_guided_run import HANDS, PART_TWO, READY

GUIDED = ("--no-models", "--capture-seconds", "0")  # No measurements, only the prompts.
CLOSE = "\r\nPress Enter to close.\r\n"
FOUND = {"input mode": 0x1F7, "output mode": 0x3, "code page": 850, "title": "C:\\vistrel_diag.exe"}
CONTROL_C = "the user stopped it with Ctrl-C"


def sit(install, *steps, scenario=None, dies=False, **options):
    """On the real clock if the run crashes: two threads that end it then wait for each other."""
    flat = [part for step in steps for part in (step if isinstance(step, list) else [step])]
    scenario = scenario or ("device-fails" if dies else lab.patient("device-fails"))
    return console.sit(install, *GUIDED, steps=flat, scenario=scenario, dies=dies, **options)


def check_put_back(sitting):
    assert {what: sitting.left_as(what, found) for what, found in FOUND.items()} == FOUND


def whole_run(*between, part_two="s\r"):
    return [console.answers(READY), *between, console.answers(PART_TWO, part_two), console.answers("Press Enter to close.")]


def test_a_person_who_skips_part_two(install):
    sitting = sit(install, *whole_run())
    assert sitting.run.exit_code == 0
    assert sitting.happened("end")
    report = sitting.run.report_text
    assert lab.header("PART 2 - SKIPPED") in report
    assert sitting.shown.endswith(CLOSE + "\r\n")


@pytest.mark.parametrize("delay", [0, 300, 1500])
def test_control_c_at_the_first_prompt_starts_nothing(install, delay):
    """Windows ends the read at once, as if nothing had been typed, and lets the handlers run later."""
    install.write(lab.REPORT_NAME, "older")
    sitting = sit(
        install, ("sees", READY), "reads", "presses Ctrl-C", settings={"handlers_after": f"{delay} ms"}, dies=True
    )
    assert sitting.run.exit_code == console.ENDED_BY_CTRL_C
    assert install.report.read_bytes() == b"older"
    assert "Vistrel diagnostic report" not in sitting.shown
    check_put_back(sitting)


def test_control_c_in_the_wait_for_the_product_leaves_an_older_report_alone(install, tmp_path):
    """The opening lines are on the console by then; nothing has been found."""
    install.write(lab.REPORT_NAME, "older")
    with programs.asleep(tmp_path, "Vistrel.exe"):
        sitting = sit(
            install, console.answers(READY), ("sees", "Waiting.."), "presses Ctrl-C", dies=True
        )
    assert sitting.run.exit_code == console.ENDED_BY_CTRL_C
    assert install.report.read_bytes() == b"older"
    check_put_back(sitting)


@pytest.mark.parametrize("delay", [0, 300])
def test_control_c_at_a_later_prompt_starts_nothing(install, delay):
    sitting = sit(
        install,
        console.answers(READY),
        ("sees", PART_TWO),
        "reads",
        "presses Ctrl-C",
        settings={"handlers_after": f"{delay} ms"},
        dies=True,
    )
    assert sitting.run.exit_code == console.ENDED_BY_CTRL_C
    assert "Click on the game window now." not in sitting.shown
    assert sitting.run.report_text.endswith(f"{CONTROL_C}. Whatever would follow is missing.\n")
    assert sitting.shown.count(CONTROL_C) == 1
    check_put_back(sitting)


def test_control_c_when_the_report_is_written_changes_nothing(install):
    sitting = sit(
        install,
        *whole_run()[:-1],
        ("sees", "Press Enter to close."),
        "reads",
        "presses Ctrl-C",
        settings={"handlers_after": "300 ms"},
        dies=True,
    )
    assert sitting.run.report.endswith(b"two per-frame copies inside the game process\r\n")
    check_put_back(sitting)


def test_enter_typed_ahead_answers_no_prompt(install):
    """While part 1 measures, and while the report is written."""
    sitting = sit(
        install,
        ("types", "x\r\r"),
        console.answers(READY),
        ("sees", "== MACHINE"),
        ("types", "\r\r\r"),
        console.answers(PART_TWO, "s\r"),
        ("sees", "== VERDICT"),
        ("types", "\r\r"),
        console.answers("Press Enter to close."),
    )
    assert sitting.run.exit_code == 0
    assert lab.header("PART 2 - SKIPPED") in sitting.run.report_text
    assert [count for count in sitting.of("flush") if count] == [3, 3, 2]


def test_quick_edit_is_off_while_the_run_lasts(install):
    sitting = sit(install, "clicks", ("sees", "This measures"), "clicks", *whole_run(("sees", "== MACHINE"), "clicks"))
    assert not sitting.happened("frozen")
    check_put_back(sitting)


def test_the_modes_of_another_program_are_restored(install):
    """A console that reads single keys, without quick-edit and with another code page."""
    found = {"input mode": 0x99, "output mode": 0x7, "code page": 437, "title": "mine"}
    settings = {name.replace(" ", "_"): value for name, value in found.items()}
    sitting = sit(install, *whole_run(), settings=settings)
    assert sitting.run.exit_code == 0
    assert {what: sitting.left_as(what, value) for what, value in found.items()} == found
    assert lab.header("PART 2 - SKIPPED") in sitting.run.report_text


@pytest.mark.parametrize("end", ["crash", "abort", "overflow"])
def test_a_crash_restores_the_console(install, end):
    scenario = f"{end} D3D11CreateDevice\n" + lab.scenario_text("desktop-pc")
    sitting = sit(install, console.answers(READY), "clicks", scenario=scenario, dies=True)
    assert sitting.happened("write") and "THIS RUN WAS CUT SHORT" in sitting.shown
    assert sitting.shown.endswith("please send that file.\r\n\r\nPress Enter to close.\r\n")
    assert not sitting.happened("frozen")
    check_put_back(sitting)


def test_a_crash_does_not_wait_on_a_shared_console(install):
    """Started at a prompt, whose window stays."""
    scenario = "crash D3D11CreateDevice\n" + lab.scenario_text("desktop-pc")
    sitting = sit(install, console.answers(READY), scenario=scenario, settings={"processes": 2}, dies=True)
    assert "THIS RUN WAS CUT SHORT" in sitting.shown
    assert "Press Enter to close." not in sitting.shown


def test_closing_the_window_restores_the_console(install):
    sitting = sit(install, console.answers(READY), ("sees", "== MACHINE"), "closes", ("sees", PART_TWO), "reads", dies=True)
    assert "the console window was closed" in sitting.run.report_text
    check_put_back(sitting)


def test_lines_end_in_carriage_return_and_line_feed(install):
    """A terminal that another program left without the automatic return would step down like stairs."""
    sitting = sit(install, *whole_run())
    assert sitting.shown.count("\n") == sitting.shown.count("\r\n") > 100
    assert "\r\r\n" not in sitting.shown


HINT = "(Press Enter to end the watch.)"
HANDS_RUNTIME = "event 0 ready\nhand left 0 controller\nhand left 10 bare\nevent 300 exiting\n"
WATCH_HANDS = [console.answers(READY), console.answers(PART_TWO), console.answers(HANDS)]
WATCHING = "Watching the hands, 12 s left"
SEQUENCE = re.compile("\x1b\\]9;4;([0-9]);([0-9]+)\x1b\\\\")


def sequences(sitting):
    """Those that the taskbar's progress was shown by. Every one was written while the console obeyed sequences, and
    nothing else begins with an escape."""
    found, mode = [], FOUND["output mode"]
    for entry in sitting.entries:
        if entry.what == "output mode":
            mode = entry.number
        if entry.what == "write" and "\x1b" in entry.text:
            match = SEQUENCE.fullmatch(entry.text)
            assert match, entry.text
            assert mode & 0x4, "the console shows the sequence's characters"
            found.append((int(match[1]), int(match[2])))
    return found


def on_screen(sitting):
    screen = terminal.Screen()
    screen.feed(sitting.shown)
    return screen.text()


def watch_hands(install, *then, runtime=HANDS_RUNTIME, **options):
    headset = openxr.connect(install, runtime)
    scenario = lab.patient("desktop-pc")
    return sit(install, *WATCH_HANDS, *then, scenario=scenario, env=headset.env, **options)


def test_progress_is_shown_until_the_next_line(install):
    sitting = watch_hands(install, ("sees", HINT), ("sees", WATCHING), ("types", "\r"), console.answers("Press Enter to close."))
    assert f"Vistrel diagnostic - {WATCHING}" in sitting.of("title")
    assert sitting.of("title")[0] == "Vistrel diagnostic"
    assert f"  {WATCHING} ...\r" in sitting.of("write")
    assert WATCHING not in on_screen(sitting)
    assert "\n  hand L : CONTROLLER (held)\n" in on_screen(sitting)
    assert (1, 0) in sequences(sitting)
    assert sequences(sitting)[-1] == (0, 0)
    assert WATCHING not in sitting.run.report_text
    check_put_back(sitting)


def test_a_console_without_escape_sequences_gets_none(install):
    steps = [("sees", WATCHING), ("types", "\r"), console.answers("Press Enter to close.")]
    sitting = watch_hands(install, *steps, settings={"without_virtual_terminal": ""})
    assert sitting.run.exit_code == 0
    assert sequences(sitting) == []
    assert f"Vistrel diagnostic - {WATCHING}" in sitting.of("title")
    check_put_back(sitting)


@pytest.mark.parametrize("columns", [20, 1])
def test_progress_does_not_wrap(install, columns):
    steps = [("sees", "hand L : "), ("types", "\r"), console.answers("Press Enter to close.")]
    sitting = watch_hands(install, *steps, settings={"columns": columns})
    assert (f"  {WATCHING} ..."[: columns - 1] + "\r" in sitting.of("write")) == (columns > 1)
    assert f"  {WATCHING} ...\r" not in sitting.of("write")


def test_a_crash_takes_the_progress_off_the_taskbar(install):
    sitting = watch_hands(install, runtime="event 0 ready\ncrash xrWaitFrame\n", dies=True)
    assert "THIS RUN WAS CUT SHORT" in sitting.shown
    assert sequences(sitting)[-2:] == [(1, 0), (0, 0)]
    check_put_back(sitting)


def test_only_enter_ends_the_hand_tracking_watch(install):
    """Without that it would last until the runtime ends the session."""
    headset = openxr.connect(install, HANDS_RUNTIME)
    sitting = sit(
        install,
        *WATCH_HANDS[:-1],
        [("sees", HANDS), "reads", ("types", "\rx\r")],  # The second Enter comes too early for the watch.
        ("sees", HINT),
        ("types", "x"),
        ("sees", "hand L : UNOBSTRUCTED"),
        ("types", "x\r"),
        console.answers("Press Enter to close."),
        scenario=lab.patient("desktop-pc"),
        env=headset.env,
    )
    assert sitting.run.exit_code == 0
    (frames,) = [call for call in headset.calls() if call.startswith("frames waited for: ")]
    assert 10 < int(frames.split(": ")[1]) < 300
    assert headset.calls()[-2:] == ["xrDestroyInstance", "unloaded"]
    report = sitting.run.report_text
    assert HINT not in report
    assert "should flip.\n\n  hand L : CONTROLLER (held)\n" in report
    assert "  hand L: tracked=yes, saw UNOBSTRUCTED, saw CONTROLLER\n" in report
