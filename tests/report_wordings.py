#!/usr/bin/env python3
"""Every wording that the report can print is understood when a report is read.

    tests/report_wordings.py DRIVER

takes each line that the sources can print, fills in its placeholders and asks DRIVER, a program around the reading of
reports, whether it is understood in its section; the same line with one letter changed must not be. So a wording that is
changed in a print alone fails here. The same applies to each text that can replace a placeholder.
"""

import itertools
import pathlib
import subprocess
import sys

from report_lines import CONVERSION, all_lines

# Where a source's lines stand: kind and title as the driver takes them, and lines that come first there.
SECTIONS = {
    "settings_file": ("1", "INJECTED INTO VISTREL'S OWN FOLDER"),
    "rescue_text": ("end", ""),
    "run_texts": ("opening", ""),
    "running_software_section": ("1", "WHAT ELSE WAS RUNNING DURING THIS TEST", "  Vistrel.exe"),
    "machine_section": ("1", "MACHINE"),
    "gpu_section": ("1", "GPUs", "GPU 0           : Name [AMD]", "  VRAM in use   : 1 MB of 2 MB budget (50%)"),
    "display_section": ("1", "DISPLAYS  (this is what the warp resolution comes from)"),
    "gpu_override_section": ("1", "PER-APP GPU OVERRIDES"),
    "injection_section": ("1", "INJECTED INTO VISTREL'S OWN FOLDER"),
    "settings_section": ("1", "VISTREL SETTINGS IN EFFECT"),
    "product_log_section": ("1", "WHAT VISTREL ITSELF LOGGED LAST RUN"),
    "headset_section": ("1", "HEADSET / OPENXR"),
    "benchmark_setup_section": ("1", "BENCHMARK SETUP"),
    "capture_section": ("1", "SCREEN CAPTURE"),
    "warp_section": ("1", "STEREO WARP COST  (both eyes, one headset frame)"),
    "depth_model_section": ("1", "DEPTH MODEL INFERENCE"),
    "hand_tracking_section": ("2", "HAND TRACKING (bare hand vs controller)"),
    "verdict_section": ("1", "VERDICT"),
}

MODEL_TABLE = "MODEL                         median ms        min        max"
LOG_MISSING = "No log at C:\\vistrel_init_log.txt"
CROSS_GPU = "!! NOTE: the headset requires GPU 1 while the primary display is driven by GPU 0."
VERBATIM = ("1", "VISTREL SETTINGS, VERBATIM", "C:\\settings.json")

# Lines that stand elsewhere than the others of their source, or behind certain lines: by how they begin.
PLACES = {
    "Vistrel diagnostic report": ("version", ""),
    "  VRAM in use   :": ("1", "GPUs", "GPU 0           : Name [AMD]"),
    "  !! The file could not": VERBATIM,
    "VRAM %s:": ("2", "WHAT ELSE WAS RUNNING DURING THIS TEST"),
    "  GPU %u %-34s": ("2", "WHAT ELSE WAS RUNNING DURING THIS TEST", "VRAM while the game is running:"),
    "The user skipped the loaded run": ("1", "PART 2 - SKIPPED"),
    "No settings file was found": ("1", "VISTREL SETTINGS, VERBATIM"),
    "%s could not be opened.": ("1", "VISTREL SETTINGS, VERBATIM"),
    '(only the "vistrel_*" keys': VERBATIM,
    "  (no vistrel_* keys": VERBATIM,
    "Frame rate reaching the capture": ("2", "HEADSET / OPENXR"),
    "Screen capture FAILED during part 2": ("2", "HEADSET / OPENXR"),
    "(Vistrel's monitor capture": ("2", "HEADSET / OPENXR", "Screen capture FAILED during part 2: x"),
    "This is the rate Vistrel": ("2", "HEADSET / OPENXR", "Frame rate reaching the capture: 1.0 fps (1 frames in 1.00 s at 1x1)"),
    "This is the single most useful": ("1", "WHAT VISTREL ITSELF LOGGED LAST RUN", LOG_MISSING),
    "  1. In Vistrel": ("1", "WHAT VISTREL ITSELF LOGGED LAST RUN", LOG_MISSING),
    "  2. Press Start": ("1", "WHAT VISTREL ITSELF LOGGED LAST RUN", LOG_MISSING),
    "  3. Run this tool": ("1", "WHAT VISTREL ITSELF LOGGED LAST RUN", LOG_MISSING),
    "!! Every captured frame": ("1", "HEADSET / OPENXR", CROSS_GPU),
    "!! Capturing the game's WINDOW": ("1", "HEADSET / OPENXR", CROSS_GPU),
    "%-28s %10.2f": ("1", "DEPTH MODEL INFERENCE", MODEL_TABLE),
    "%-28s %10s  (%s)": ("1", "DEPTH MODEL INFERENCE", MODEL_TABLE),
    ">>> The depth map cannot keep up": ("1", "VERDICT", "The AI model costs 2.00 ms per inference, and would run about 1 times a second (capped by the FPS limit)."),
}

# The texts for each %s, for lines with several of them.
VALUES = {
    "VRAM %s:": ["while the game is running"],
    "XR_EXT_hand_tracking": ["present"],
    "%s could not be opened.": ["C:\\settings.json"],
    "No log at %s": ["C:\\vistrel_init_log.txt"],
    "!! settings.json found at %s": ["C:\\x", "reason"],
    "!! THIS RUN WAS CUT SHORT": ['in the section "', "GPUs", '"', "the program aborted"],
    "Foreground app  : %s": ["a.exe", "title"],
    "OS              : %s": ["Windows", "19045", "1"],
    "GPU %u           : %s": ["Name", "AMD", " (software)"],
    "  GPU %u %-34s": ["Name                              ", "   <<< OUT OF HEADROOM"],
    "%s%-14s : %dx%d": ["* ", "DISPLAY1      ", "Name"],
    "%s = %s": ["Vistrel.exe", "GpuPreference=2;"],
    "3D enabled      : %s%s": ["yes", "  (picture and depth from the ReShade addon)"],
    "Cinema / OptFlow/ FSR3 :": ["on", "off", "on"],
    "Wait for GPU    : %s%s": ["ON", "   (a few ms of latency a frame; no patches)"],
    "Required GPU    : LUID %s": ["00000000:0000B3C7", "Name"],
    "%-10s %-32s %10s %12s": ["SIZE      ", " " * 32, "    GPU ms", "     VRAM MB"],
    "%-10s %-32s %10.2f": ["1920x1080 ", "1080p"],
    "%-28s %10.2f": ["Square Fast (256)           ", "   <- YOURS"],
    "%-28s %10s  (%s)": ["Square Fast (256)           ", "         -", "reason"],
    "%-28s %10s %10s %10s": ["MODEL" + " " * 23, " median ms", "       min", "       max"],
    "  hand %s : %s": ["L", "none (not tracked)"],
    "  hand %s: tracked=": ["L", "yes", ", saw UNOBSTRUCTED", ", saw CONTROLLER"],
    "  %-9s %-13s %-14s %-14s": ["90 Hz", "41 ms/s", "13%", "4%"],
}

# The same for what those leave out.
MORE_VALUES = {
    "!! THIS RUN WAS CUT SHORT": ["before its first section", "", "", "the program aborted"],
    "Wait for GPU    : %s%s": ["OFF", "   (default; background can show through the picture in patches under heavy GPU load)"],
    "  %-9s %-13s %-14s %-14s": ["REFRESH  ", "warp         ", "AI depth mode ", "ReShade mode  "],
}

# A line whose numbers depend on its text.
FIXED = {"Depth model     : %s (%dx%d)": "Depth model     : Square Fast (256) (256x256)"}

# The text for a single %s: one that its own source can put there, or one of these.
GENERAL = ["Some text", "obs64.exe", "Vistrel.exe", "dxgi.dll", "ReShade.ini", "on", "Square Fast (256)", "00000000:0000B3C7", "aborted"]

# Lines that are nothing but what others wrote.
WHOLLY_FREE = {"%s", "  %s"}

# Lines that can still be read when their words change, as what others wrote: a path, a name, a message, a quoted line. The
# tests of the way there and back prove that they are told apart.
FREE_WHEN_CHANGED = (
    "%s could not be opened.",
    "No log at %s",
    "  Displays      : NONE",
    "Model           : %s (%dx%d)",
    "  (no vistrel_* keys",
    "!! shader compile failed: CreatePixelShader",
    "  !! The file could not",
)

# The text for the %s of a text that contains other texts.
TEXT_VALUES = {"the program crashed%s%s (%s%s0x%08X%s)": [" in ", "name.dll", "exception", " ", " at +0x1A2B"]}

# Texts that are read as whatever stands in their place: a name, a path, a message; a cause that no run has; and a part of
# a text above.
FREE_TEXTS = {" at +0x%zX", "default", "NOT FOUND", "custom model", "-", "(not found)", "unknown"}

# Sources all of whose texts are of that kind, or are for the console alone.
FREE_SOURCES = (
    "platform/",
    "log/",
    "capture/",
    "render/",
    "depth/",
    "settings/product_data",
    "tools/vistrel_diag/worker/",
    "tools/vistrel_diag/report/progress",
    "tools/vistrel_diag/sections/capture/capture_measurement_windows.cpp",
    "tools/vistrel_diag/sections/depth_model/depth_model_section_windows.cpp",
)


def place_of(line):
    for begin, place in PLACES.items():
        if line.text.startswith(begin):
            return place
    return SECTIONS[pathlib.Path(line.source).stem]


def filled(text, values):
    """The line with numbers for its placeholders and `values` for those of texts."""
    text = FIXED.get(text, text)
    values = iter(values)

    def value(match):
        kind = match[0][-1]
        if kind == "%":
            return "%"
        if kind == "s":
            return next(values)
        if kind == "X":
            return "0000ABCD"
        return match[0] % 7 if kind == "f" else "7"

    return CONVERSION.sub(value, text)


def changed(text):
    """The text with its last letter changed."""
    for i in range(len(text) - 1, -1, -1):
        if text[i].isalpha():
            return text[:i] + ("q" if text[i] != "q" else "k") + text[i + 1 :]
    return text


def changed_wording(text):
    """The format with the last letter of what is no placeholder changed."""
    parts = CONVERSION.split(text)
    conversions = CONVERSION.findall(text)
    for i in range(len(parts) - 1, -1, -1):
        if changed(parts[i]) != parts[i]:
            parts[i] = changed(parts[i])
            break
    return "".join(itertools.chain(*itertools.zip_longest(parts, conversions, fillvalue="")))


class Reader:
    """Asks the driver about many lines at once."""

    def __init__(self, driver):
        self.command = driver

    def ask(self, cases):
        text = "".join("\x1f".join(case) + "\n" for case in cases)
        run = subprocess.run(self.command, input=text.encode(), capture_output=True, check=True)
        answers = run.stdout.decode().split()
        assert len(answers) == len(cases), run.stderr.decode()
        return [answer == "1" for answer in answers]


def fillings(line, texts):
    """What may stand in place of its %s, in the order in which to try it."""
    count = sum(match.endswith("s") for match in CONVERSION.findall(line.text))
    for begin, values in VALUES.items():
        if line.text.startswith(begin) and len(values) == count:
            return [values]
    return [[value] * count for value in [*texts, *GENERAL]] if count else [[]]


def main():
    reader = Reader(sys.argv[1:])
    lines = [line for line in all_lines() if not line.source.startswith(FREE_SOURCES)]
    texts = {}
    for line in lines:
        if line.kind == "text":
            texts.setdefault(line.source, []).append(filled(line.text, ["Some text"] * 9))
    failures = []

    titles = [line for line in lines if line.kind == "title"]
    known = reader.ask([("title", line.text) for line in titles])
    failures += [f"{line.source}: no heading that is known: {line.text!r}" for line, answer in zip(titles, known) if not answer]

    printed = [line for line in lines if line.kind == "line" or line.text.startswith("!! THIS RUN") or line.text == "  %-9s %-13s %-14s %-14s" or line.text.startswith("The user skipped")]
    printed = [line for line in printed if line.text not in WHOLLY_FREE]
    found = {}
    for line in printed:
        place = place_of(line)
        options = fillings(line, texts.get(line.source, []))
        answers = reader.ask([(*place, filled(line.text, values)) for values in options])
        understood = [values for values, answer in zip(options, answers) if answer]
        if not understood:
            failures.append(f"{line.source}: not understood: {line.text!r}")
            continue
        if line.text in FIXED:
            continue
        found.setdefault(line, []).append(understood[0])
        found[line] += [values for begin, values in MORE_VALUES.items() if line.text.startswith(begin)]
        wording = changed_wording(line.text)
        if wording != line.text and not line.text.startswith(FREE_WHEN_CHANGED) and reader.ask([(*place, filled(wording, understood[0]))])[0]:
            failures.append(f"{line.source}: understood although changed: {filled(wording, understood[0])!r}")

    checked = 0
    for text in lines:
        if text.kind != "text" or text in printed or text.text in FREE_TEXTS:
            continue
        value = filled(text.text, TEXT_VALUES.get(text.text, ["Some text"] * 9))
        cases = [(("title", value), ("title", changed(value)))]
        if pathlib.Path(text.source).stem in SECTIONS:
            place = SECTIONS[pathlib.Path(text.source).stem]
            cases.append(((*place, value), (*place, changed(value))))
        for line, fills in found.items():
            if line.source != text.source and not text.text.startswith("while the game"):
                continue
            for values, i in ((values, i) for values in fills for i in range(len(values))):
                for padded in (value, value.ljust(len(values[i])), value.rjust(len(values[i]))):
                    right, wrong = ([*values[:i], shown, *values[i + 1 :]] for shown in (padded, changed(padded)))
                    cases.append(tuple((*place_of(line), filled(line.text, one)) for one in (right, wrong)))
        answers = reader.ask([case for pair in cases for case in pair])
        checked += 1
        has_letters = changed(value) != value
        if not any(right and not (wrong and has_letters) for right, wrong in zip(answers[::2], answers[1::2])):
            failures.append(f"{text.source}: this text is not understood: {text.text!r}")

    for failure in failures:
        print(failure)
    print(f"{len(titles)} titles, {len(printed)} lines and {checked} texts, {len(failures)} not understood or not told apart")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
