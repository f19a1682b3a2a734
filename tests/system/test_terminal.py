"""The guided run in a terminal, as a person drives it, and Ctrl-C in the middle of it.

Wine's console shows no blanks at the end of a line. One run waits for every second of the countdown; in the
others, on a simulated machine, it takes no time.
"""

import itertools
import re

import pytest

import lab
import terminal
from test_guided_run import BANNER, HANDS, HANDS_SECTION, INSTRUCTIONS, PART_TWO, READY, closing, prompt, without

# No measurements, only the prompts.
GUIDED = ("--no-models", "--capture-seconds", "0")
START = prompt(READY)
HEADSET = prompt(PART_TWO)
HAND_CHECK = prompt(HANDS)
CLOSE = "\nPress Enter to close.\n"


def on_screen(text):
    return "\n".join(line.rstrip() for line in text.split("\n"))


CUT_SHORT = (
    '!! THIS RUN WAS CUT SHORT in the section "DEPTH MODEL INFERENCE": the user stopped it with Ctrl-C. '
    "Whatever would follow is missing."
)


def check_screen(person, install, answers, *pieces):
    """What stands on the screen without the console's own texts and the answers typed at its prompts is the report. What
    the capture says on the standard error stream stands there too."""
    pieces = [BANNER, START.rstrip(" ") + answers[0] + "\n", *pieces, closing(install)]
    report = install.report.read_bytes().decode("utf-8").replace("\r\n", "\n")
    screen = re.sub(r"^\[ScreenCaptureDxgi\] .*\n", "", person.screen.text(), flags=re.MULTILINE)
    assert without(screen, *pieces).rstrip("\n") == on_screen(report).rstrip("\n")
    return report


def seconds_shown(person):
    """What the countdown showed, however late it was read."""
    shown = [re.fullmatch(r"  starting in ([ 1]\d) s \.\.\.", line) for line in person.screen.shown]
    return [int(number) for number, _ in itertools.groupby(match[1] for match in shown if match)]


def test_a_person_at_a_terminal(install):
    """On Wine's own machine, with every second of the countdown."""
    with terminal.Terminal(install, *GUIDED) as person:
        person.answer(on_screen(START), "s please\r")
        person.answer(on_screen(HEADSET), "\r")
        person.wait_for("Click on the game window now.\n")
        person.wait_for("measuring now.")
        assert seconds_shown(person) == list(range(15, 0, -1))
        person.answer(on_screen(HAND_CHECK), "S\r")
        person.answer(CLOSE, "\r")
        assert person.wait_for_end() == 0
        report = check_screen(
            person,
            install,
            [" s please"],
            INSTRUCTIONS,
            HEADSET.rstrip(" ") + "\n",
            "\nClick on the game window now.\n  measuring now.\n",
            HAND_CHECK.rstrip(" ") + " S\n",
        )
    assert lab.header("PART 2 - HEADSET ON, GAME RUNNING") in report and lab.header(HANDS_SECTION) not in report


@pytest.mark.parametrize("answer", ["s", "S", "skip", "s please"])
def test_a_person_who_skips(install, answer):
    with terminal.Terminal(install, *GUIDED, scenario=lab.patient("device-fails")) as person:
        person.answer(on_screen(START), "\r")
        person.answer(on_screen(HEADSET), answer + "\r")
        person.answer(CLOSE, "\r")
        assert person.wait_for_end() == 0
        report = check_screen(person, install, [""], INSTRUCTIONS, HEADSET.rstrip(" ") + " " + answer + "\n")
    assert lab.header("PART 2 - SKIPPED") in report


@pytest.mark.parametrize("answer", [" s", "x" * 70 + "s", "yes"])
def test_a_person_who_continues(install, answer):
    with terminal.Terminal(install, *GUIDED, scenario=lab.patient("device-fails")) as person:
        person.answer(on_screen(START), answer + "\r")
        person.answer(on_screen(HEADSET), answer + "\r")
        person.answer(CLOSE, "\r")
        assert person.wait_for_end() == 0
    assert lab.header("PART 2 - HEADSET ON, GAME RUNNING") in install.report.read_bytes().decode("utf-8")


def test_control_z_ends_the_input_and_the_run_continues(install):
    with terminal.Terminal(install, *GUIDED, scenario=lab.patient("device-fails")) as person:
        person.answer(on_screen(START), "\x1a\r")
        person.answer(on_screen(HEADSET), "\x1a\r")
        person.answer(CLOSE, "\x1a\r")
        assert person.wait_for_end() == 0
    assert lab.header("PART 2 - HEADSET ON, GAME RUNNING") in install.report.read_bytes().decode("utf-8")


def test_names_are_shown_in_their_own_letters(install):
    with terminal.Terminal(install, *GUIDED, "--quick", scenario=lab.patient("odd-names")) as person:
        person.wait_for("GPU 0           : Видеокарта ")
        person.wait_for("  Displays      : \\\\.\\DISPLAY_é\n")
        person.answer(CLOSE, "\r")
        assert person.wait_for_end() == 0


def test_control_c_before_the_first_line_leaves_an_older_report_alone(install):
    install.write(lab.REPORT_NAME, "older")
    with terminal.Terminal(install, *GUIDED) as person:
        person.answer(on_screen(START), terminal.CONTROL_C)
        person.wait_for_end()
    assert install.report.read_bytes() == b"older"


def check_cut_short(person, install):
    """Everything up to the line that says so is the report; then it ends."""
    report = install.report.read_bytes().decode("utf-8").replace("\r\n", "\n")
    assert report.startswith("Vistrel diagnostic report v1.0\n")
    assert report.endswith("\n\n" + CUT_SHORT + "\n")
    assert not re.search(r"== (VERDICT|PART 2)", report)
    screen = person.screen.text()
    assert "\n" + CUT_SHORT + "\nThe lines found so far are in vistrel_diag_report.txt; please send that file." in screen
    shown_lines, position = screen.split("\n"), 0
    for line in on_screen(report).rstrip("\n").split("\n"):
        position = shown_lines.index(line, position) + 1


def test_control_c_at_a_prompt(install):
    with terminal.Terminal(install, *GUIDED) as person:
        person.answer(on_screen(START), "\r")
        person.answer(on_screen(HEADSET), terminal.CONTROL_C)
        person.wait_for_end()
        check_cut_short(person, install)


def test_control_c_in_the_countdown(install):
    with terminal.Terminal(install, *GUIDED) as person:
        person.answer(on_screen(START), "\r")
        person.answer(on_screen(HEADSET), "\r")
        person.answer("starting in ", terminal.CONTROL_C)
        person.wait_for_end()
        check_cut_short(person, install)


def test_control_c_when_the_report_is_written_changes_nothing(install):
    with terminal.Terminal(install, *GUIDED, "--quick") as person:
        person.answer(CLOSE, terminal.CONTROL_C)
        person.wait_for_end()
    assert install.report.read_bytes().endswith(b"two per-frame copies inside the game process\r\n")
