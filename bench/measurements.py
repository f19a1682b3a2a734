"""What bench/table.py measures. A measurement writes its output to the given log and yields rows."""

import math
import os
import pathlib
import re
import resource
import signal
import subprocess
import sys
import tempfile
import time

from pairs import take_pairs
from table import ROOT, Row, parse_rows, row_of

sys.path.insert(0, str(ROOT / "tests" / "system"))
import lab  # noqa: E402

BENCH = lab.BUILD / "bench"
INSTALL = ROOT / "build" / "install"
# The required accuracy of a ratio, and the minimum and maximum of pairs for it.
START_PAIRS = {"precision": 0.05, "least": 11, "most": 45}
LOG_PAIRS = {"precision": 0.03, "least": 7, "most": 15}
RUN_PAIRS = {"precision": 0.03, "least": 9, "most": 31}


def run_bench(name, exe, log, *arguments, cwd=INSTALL):
    """The rows that a bench program prints."""
    code, output, errors = lab.run_program([ROOT / "scripts" / "wine", exe, *arguments], cwd=cwd, timeout=600)
    text = output.decode("utf-8", "replace").replace("\r\n", "\n")
    log.write(f"== {name}\n{text}{errors.decode('utf-8', 'replace')}\n")
    log.flush()
    if code != 0:
        raise SystemExit(f"bench: {name} ended with {code}: {errors.decode('utf-8', 'replace').strip()}")
    return parse_rows(text)


def program(name):
    """A measurement that a bench program makes by itself, in the sample install folder."""
    return lambda log: run_bench(name, BENCH / f"{name}.exe", log)


def depth_model(log):
    """Beside the genuine ONNX Runtime, which the tool loads from its own folder."""
    with tempfile.TemporaryDirectory(prefix="vistrel-bench-") as folder:
        libraries = [lab.GENUINE_LIBRARIES / f"{name}.dll" for name in ("onnxruntime", "DirectML")]
        for source in (BENCH / "model_timing_bench.exe", *libraries):
            os.symlink(source, pathlib.Path(folder) / source.name)
        for size in ("182x182", "518x294", "924x518"):
            model = lab.BUILD / "models" / f"distill_any_depth_small_{size}_fp16.onnx"
            yield from run_bench(f"model {size}", "model_timing_bench.exe", log, lab.windows_path(model),
                                 *size.split("x"), cwd=folder)


def capture_counts(log):
    """Whole runs on desktops that change at a known rate: the report's counts against the images shown."""
    for rate in (60, 144, 240, 1000):
        with tempfile.TemporaryDirectory(prefix="vistrel-bench-") as folder:
            install = lab.Install(pathlib.Path(folder) / "install")
            run = lab.run_tool(
                install, "--quick", "--no-models", "--capture-seconds", "1", scenario=f"frames-{rate}", timeout=300
            )
        told = int(re.search(r"^New frames      : (\d+) in ", run.report_text, re.MULTILINE)[1])
        names = ("frames_shown", "frames_delivered", "frames_merged")
        log.write(f"== capture at {rate} fps: {told} told, " + ", ".join(f"{run.counts[n]} {n}" for n in names) + "\n")
        lost = run.counts["frames_merged"] + run.counts["frames_shown"] - run.counts["frames_delivered"]
        yield Row(f"capture at {rate} fps, images counted", "images the desktop showed", told / run.counts["frames_shown"], 1, 1)
        yield Row(f"capture at {rate} fps, images lost", "images the desktop showed", lost / run.counts["frames_shown"], 0, 0)


def seconds_to_first_line(exe):
    started = time.perf_counter()
    process = subprocess.Popen(
        [ROOT / "scripts" / "wine", exe], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
        cwd=exe.parent, start_new_session=True,
    )
    process.stdout.readline()
    seconds = time.perf_counter() - started
    # The tool is waiting for input now and has no other work.
    os.killpg(process.pid, signal.SIGKILL)
    process.communicate()
    return seconds


def start(log):
    with tempfile.TemporaryDirectory(prefix="vistrel-bench-") as folder:
        tool = lab.Install(folder).exe
        empty = BENCH / "empty_program.exe"
        same_libraries = BENCH / "same_libraries_program.exe"
        best = {tool: math.inf, empty: math.inf, same_libraries: math.inf}

        def pair():
            took = {exe: seconds_to_first_line(exe) for exe in best}
            best.update({exe: min(best[exe], took[exe]) for exe in best})
            return {exe: took[tool] / took[exe] for exe in (empty, same_libraries)}

        middles = take_pairs(pair, **START_PAIRS)
        bytes_of = {exe: exe.stat().st_size for exe in best}
    for exe in best:
        log.write(f"== start: {exe.name} {best[exe]:.3f} s, {bytes_of[exe]} bytes\n")
    for baseline, words, most in (
        (empty, "empty static program", None),
        (same_libraries, "empty program, same libraries", 1.25),
    ):
        yield row_of("start to the first line", words, middles[baseline], None, most)
        yield Row("size of the exe", words, bytes_of[tool] / bytes_of[baseline], None, most and 2.0)


def tool_folder(folder):
    """An install folder with a warp that draws quickly, with settings, and without depth models."""
    install = lab.Install(folder)
    install.add_shader("trivial")
    install.add_file(ROOT / "tests" / "lab" / "install" / "settings.json", "settings.json")
    return install


def seconds_of_run(exe, *arguments):
    started = time.perf_counter()
    code, _, errors = lab.run_program([ROOT / "scripts" / "wine", exe, *arguments], cwd=exe.parent, timeout=300)
    if code != 0:
        raise SystemExit(f"bench: {exe.name} ended with {code}: {errors.decode('utf-8', 'replace').strip()}")
    return time.perf_counter() - started


def quick_run(log):
    """The whole run against its unavoidable calls, in wall-clock time: much of either is waiting."""
    with tempfile.TemporaryDirectory(prefix="vistrel-bench-") as folder:
        install = tool_folder(folder)
        bare_exe = install.add_file(BENCH / "bare_run_bench.exe", "bare_run_bench.exe")

        def pair():
            bare, tool = seconds_of_run(bare_exe), seconds_of_run(install.exe, *lab.CHEAP)
            log.write(f"== quick run: {tool:.2f} s, its unavoidable calls {bare:.2f} s\n")
            return {"run": tool / bare}

        middle = take_pairs(pair, **RUN_PAIRS)["run"]
    yield row_of("whole quick run, no models, no capture", "its unavoidable calls alone", middle, None, 1.25)


def sections(log):
    with tempfile.TemporaryDirectory(prefix="vistrel-bench-") as folder:
        install = tool_folder(folder)
        exe = install.add_file(BENCH / "section_cost_bench.exe", "section_cost_bench.exe")
        yield from run_bench("section_cost_bench", exe, log, cwd=install.folder)


def settings(log):
    with tempfile.TemporaryDirectory(prefix="vistrel-bench-") as folder:
        path = lab.windows_path(pathlib.Path(folder) / "settings.json")
        yield from run_bench("settings_bench", BENCH / "settings_bench.exe", log, path)


def markers():
    """The words that make a line of the product's log relevant."""
    source = (ROOT / "tools/vistrel_diag/sections/product_log/product_log_selection.cpp").read_text(encoding="utf-8")
    listed = re.search(r"kMarkers = \{(.*?)\};", source, re.DOTALL)[1]
    words = re.findall(r'"([^"]+)"', listed)
    assert len(words) == 15, words
    return words


LOG_LINES = {
    "no line relevant": ["frame handed to the compositor, queue"],
    "a third relevant": ["frame handed to the compositor, queue"] * 2 + ["DepthEstimator: inference took 21.4 ms"],
    "every line relevant": ["DirectML provider attached, something failed"],
}


def write_log(path, texts, megabytes):
    """A log of these texts in turn; a line is about 60 bytes."""
    lines = (f"21:22:{n // 1000 % 60:02}.{n % 1000:03} [INFO ] {texts[n % len(texts)]} {n}\r\n" for n in range(30000))
    block = "".join(lines).encode()
    with open(path, "wb") as file:
        for _ in range(megabytes * 1024 * 1024 // len(block) + 1):
            file.write(block)


def grep_seconds(words, path):
    """Processor time. Its output is read, because grep stops at the first match if it goes to /dev/null."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(["grep", "-cF", "-f", words, path], env={"LC_ALL": "C"}, stdout=subprocess.PIPE, check=False)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def select_from_log(path):
    command = [ROOT / "scripts" / "wine", BENCH / "product_log_bench.exe", lab.windows_path(path)]
    _, output, _ = lab.run_program(command, timeout=600)
    seconds, memory = re.match(rb"([\d.]+) s, ([\d.]+) MB", output).groups()
    return float(seconds), float(memory)


def product_log(megabytes):
    def measure(log):
        with tempfile.TemporaryDirectory(prefix="vistrel-bench-") as folder:
            words = pathlib.Path(folder) / "words"
            words.write_text("\n".join(markers()) + "\n")
            path = pathlib.Path(folder) / "big.log"
            for kind, texts in LOG_LINES.items():
                write_log(path, texts, megabytes)
                seen = []

                def pair():
                    grep, (tool, memory) = grep_seconds(words, path), select_from_log(path)
                    seen.append(memory)
                    log.write(f"== {megabytes} MB of log, {kind}: {tool:.2f} s, {memory:.1f} MB; grep {grep:.2f} s\n")
                    return {"log": tool / grep}

                middle = take_pairs(pair, **LOG_PAIRS)["log"]
                yield row_of(f"product log, {kind}", "grep -F, same words and file", middle, None, 1)
                yield Row(f"product log, {kind}, memory", "16 MB", max(seen) / 16, None, 1)

    return measure


def all_of_them(megabytes):
    """By name, in the table's order; `megabytes` of product log."""
    return {
        "model": depth_model,
        "warp": program("warp_timing_bench"),
        "capture": capture_counts,
        "getframe": program("capture_bench"),
        "start": start,
        "run": quick_run,
        "sections": sections,
        "settings": settings,
        "log": product_log(megabytes),
        "picture": program("colour_picture_bench"),
    }
