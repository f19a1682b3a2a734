"""A separate tree in which one changed source at a time is built and tested."""

import math
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
WORK = ROOT / "build" / "mutate"
UNIT = pathlib.PurePosixPath("tests/unit")
SUITE = re.compile(r"^\s*(?:TYPED_)?TEST(?:_F|_P)?\(\s*(\w+)\s*,", re.MULTILINE)
FAILED = re.compile(r"^\[  FAILED  \] ([^\s,]+)|^FAILED (\S+)", re.MULTILINE)

# Timeouts of a test, because a change may make it endless: processor time, which does not depend on the load, and
# wall-clock time, for tests that wait.
LONGEST_TIMES = 20
LEAST_PROCESSOR_SECONDS = 3
LEAST_LIMIT_SECONDS = 60
LONGEST_BUILD_SECONDS = 1800

ENDLESS = "it does not come to an end"
TOO_MUCH_PROCESSOR = (-signal.SIGXCPU, -signal.SIGKILL)
KILLED, SURVIVED, NOT_BUILT, UNSEEN = "killed", "survived", "not built", "seen by no test"


class TheTestsFail(Exception):
    """The tests fail without any change, so no change can be judged."""


def components():
    return (ROOT / "cmake" / "components.txt").read_text(encoding="utf-8").split()


def product_sources():
    """Every source and header of the product, by its path below the root, portable ones first."""
    paths = [path.relative_to(ROOT) for folder in components() for path in (ROOT / folder).rglob("*")]
    paths = [path for path in paths if path.suffix in (".cpp", ".h")]
    return sorted(map(str, paths), key=lambda path: (calls_windows(path), path.endswith(".h"), path))


def calls_windows(path, seen=frozenset()):
    """Whether it belongs to the Windows build alone: by its name, or for a header by what it includes."""
    if path.endswith(".cpp"):
        return path.endswith("_windows.cpp")
    text = (ROOT / path).read_text(encoding="utf-8")
    if re.search(r"#include <(windows|winsock2|d3d11\w*|dxgi\w*|wrl/\w+)\.h>", text):
        return True
    own = [name for name in re.findall(r'#include "([^"]+)"', text) if (ROOT / name).exists() and name not in seen]
    return any(calls_windows(name, seen | {path}) for name in own)


def within(folder, path):
    return path == folder or path.startswith(folder + "/")


def stem_of(path):
    return re.sub(r"(_windows)?\.(cpp|h)$", "", path)


def tests_of(path, windows, root=None):
    """The test files below `root` that see a source, by its name and by what they include; nearest first."""
    root = root or ROOT
    ending = "_windows_test.cpp" if windows else "_test.cpp"
    tests = [str(file.relative_to(root)) for file in sorted((root / UNIT).rglob("*" + ending))]
    tests = [test for test in tests if windows or not test.endswith("_windows_test.cpp")]
    name = str(UNIT / stem_of(path))
    namesakes = [test for test in tests if test == name + ending or windows and test.startswith(name + "_")]
    header = f'#include "{stem_of(path)}.h"'
    others = [test for test in tests if test not in namesakes and header in (root / test).read_text(encoding="utf-8")]
    found = namesakes + others
    beside = [test for test in tests if pathlib.PurePosixPath(test).parent == pathlib.PurePosixPath(name).parent]
    return found or beside


def test_filter(tests, root=None):
    """GoogleTest's filter for all suites of these test files below `root`."""
    root = root or ROOT
    suites = sorted({suite for test in tests for suite in SUITE.findall((root / test).read_text(encoding="utf-8"))})
    return ":".join(pattern for suite in suites for pattern in (f"{suite}.*", f"*/{suite}.*", f"{suite}/*", f"*/{suite}/*"))


def failed_test(output):
    """The first test that the output of GoogleTest or pytest names as failed."""
    match = FAILED.search(output)
    return (match[1] or match[2]) if match else "the program's end"


class Tree:
    """A copy of the sources, and its two builds, which are made when they are first needed."""

    def __init__(self, number, system_tests=(), build_jobs=1):
        self.folder = WORK / str(number)
        self.source = self.folder / "source"
        self.system_tests = system_tests
        self.build_jobs = build_jobs
        self.configured = set()
        self.limits = {}

    def copy_sources(self):
        """Makes the copy equal to the working tree; unchanged files keep their dates."""
        listed = subprocess.run(
            ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
            cwd=ROOT, check=True, capture_output=True, text=True,
        ).stdout.split("\0")  # fmt: skip
        wanted = {name for name in listed if name and (ROOT / name).is_file()}
        for name in wanted:
            source, copy = ROOT / name, self.source / name
            if not copy.exists() or copy.read_bytes() != source.read_bytes():
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(source, copy)
        for copy in [path for path in self.source.rglob("*") if path.is_file() and ".deps" not in path.parts]:
            name = str(copy.relative_to(self.source))
            if name not in wanted and not name.startswith("build/"):
                copy.unlink()
        if not (self.source / ".deps").is_symlink():
            (self.source / ".deps").symlink_to(ROOT / ".deps")

    def try_out(self, path, text, stages):
        """Builds with `text` as the source `path` and runs its tests: (verdict, the reason)."""
        place = self.source / path
        original = place.read_text(encoding="utf-8")
        place.write_text(text, encoding="utf-8")
        try:
            seen = False
            for stage in stages:
                for run in getattr(self, stage)(path):
                    seen = True
                    verdict, by = run()
                    if verdict != SURVIVED:
                        return verdict, by
            return (SURVIVED if seen else UNSEEN), ""
        finally:
            place.write_text(original, encoding="utf-8")

    def check_unchanged(self, path, stages):
        """Everything passes without a change, seen once per tree; also takes the times from which the limits are made."""
        for stage in stages:
            for run in getattr(self, stage)(path, measure=True):
                verdict, by = run()
                if verdict != SURVIVED:
                    raise TheTestsFail(f"{path}, {stage}: {by}")

    def native(self, path, measure=False):
        """The tests of the source's own name, then all portable ones."""
        return self._portable("native", path, measure)

    def sanitized(self, path, measure=False):
        """The same under the sanitizers, as in ./test: an out-of-bounds read may have no other effect."""
        return self._portable("sanitized", path, measure)

    def _portable(self, build, path, measure):
        if calls_windows(path):
            return
        tests = self.folder / build / "tests" / "unit"
        # Of the copy: the working tree may change during a run.
        own = test_filter(tests_of(path, windows=False, root=self.source), self.source)
        if own:
            yield lambda: self._build_and_run(build, ["portable_tests"], [tests / "portable_tests"], own, measure)
        yield lambda: self._build_and_run(build, ["portable_tests"], [tests / "portable_tests"], "*", measure)
        if "/verdict/" in path:
            reference = self.source / UNIT / "tools/vistrel_diag/sections/verdict/verdict_reference.py"
            command = ["/usr/bin/python3", reference, tests / "verdict_driver"]
            yield lambda: self._build_and_run(build, ["verdict_driver"], command, None, measure)

    def report(self, path, measure=False):
        """The finished report reader, for its own sources and for the readings of the sections."""
        if calls_windows(path) or not (within("tools/vistrel_report", path) or "_reading." in path):
            return
        program = self.folder / "native" / "vistrel_report"
        driver = self.folder / "native" / "tests" / "unit" / "wordings_driver"
        wordings = ["/usr/bin/python3", "-B", self.source / "tests" / "report_wordings.py", driver]
        yield lambda: self._build_and_run("native", ["wordings_driver"], wordings, None, measure)
        for name in ("rules", "data", "program", "page"):
            test = self.source / "tests" / "report" / f"test_{name}.py"
            environment = {"VISTREL_REPORT": str(program)}
            yield lambda test=test: self._build_and_run(
                "native", ["vistrel_report"], pytest_command(test), None, measure, environment=environment
            )

    def windows(self, path, measure=False):
        """The Windows test programs that see the source."""
        for test in tests_of(path, windows=True, root=self.source):
            name = pathlib.PurePosixPath(test).stem
            yield lambda name=name: self._build_and_run("windows", [name], None, "*", measure, program=f"{name}.exe")

    def system(self, path, measure=False):
        """Whole runs of the finished exe, those that the caller named."""
        for test in self.system_tests:
            command = pytest_command(self.source / "tests" / "system" / f"test_{test}.py")
            yield lambda command=command: self._build_and_run("windows", ["all"], command, None, measure)

    def _build_and_run(self, build, targets, command, tests, measure, program=None, environment=None):
        if not self._build(build, targets):
            return NOT_BUILT, ", ".join(targets)
        folder = self.folder / build
        if program is not None:
            (exe,) = folder.rglob(program)
            command = [ROOT / "scripts" / "wine", exe]
        if tests is not None:
            command = [*command, "--gtest_brief=1", "--gtest_fail_fast", f"--gtest_filter={tests}"]
        key = tuple(map(str, command))
        if measure and key in self.limits:
            return SURVIVED, ""
        limits = (LONGEST_BUILD_SECONDS, LONGEST_BUILD_SECONDS) if measure else self.limits[key]
        before = Times()
        code, output = run_limited(
            command, self._working_folder(program), limits, {**self._environment(folder), **(environment or {})}
        )
        if measure:
            took = Times()
            processor = max(LEAST_PROCESSOR_SECONDS, LONGEST_TIMES * (took.processor - before.processor))
            self.limits[key] = processor, max(LEAST_LIMIT_SECONDS, LONGEST_TIMES * (took.clock - before.clock))
        if code is None:
            return KILLED, ENDLESS
        return (SURVIVED, "") if code == 0 else (KILLED, failed_test(output))

    def _working_folder(self, program):
        """From the build's own list of tests; a test of the warp looks for its shader there."""
        in_install = program in ("warp_frame_windows_test.exe", "warp_timing_windows_test.exe")
        return self.source / "tests" / "lab" / "install" if in_install else self.folder

    def _environment(self, folder):
        return dict(os.environ, VISTREL_BUILD=str(folder), VISTREL_DEPS=str(ROOT / ".deps"))

    def _build(self, build, targets):
        folder = self.folder / build
        if build not in self.configured:
            options = ["-G", "Ninja", "-DCMAKE_CXX_FLAGS=-w"]
            if build == "windows":
                options += [f"-DCMAKE_TOOLCHAIN_FILE={self.source}/cmake/mingw-w64.cmake"]
            else:
                # A change then requires compiling one file and linking the library, not the tests.
                options += ["-DVISTREL_PORTABLE_LIBRARY=SHARED", "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON"]
            if build == "sanitized":
                options += ["-DCMAKE_BUILD_TYPE=Debug", "-DVISTREL_SANITIZE=address,undefined,float-cast-overflow"]
            code, output = run_limited(["cmake", "-S", self.source, "-B", folder, *options], self.folder, (LONGEST_BUILD_SECONDS, LONGEST_BUILD_SECONDS))
            if code != 0:
                raise TheTestsFail(f"cmake: {output}")
            self.configured.add(build)
        command = ["ninja", "-C", folder, "-j", str(self.build_jobs), *targets]
        code, output = run_limited(command, self.folder, (LONGEST_BUILD_SECONDS, LONGEST_BUILD_SECONDS))
        self.build_output = output
        return code == 0


def pytest_command(test):
    return ["/usr/bin/python3", "-B", "-m", "pytest", "-q", "-x", "-p", "no:cacheprovider", test]


class Times:
    """Now: the clock, and the processor time of all that this process has started and that has ended."""

    def __init__(self):
        used = resource.getrusage(resource.RUSAGE_CHILDREN)
        self.clock = time.monotonic()
        self.processor = used.ru_utime + used.ru_stime


def run_limited(command, folder, limits, env=None):
    """(exit code, or None after a timeout; the output). Kills everything it started at its end.

    `limits`: seconds of processor time of each of its processes, and wall-clock seconds.
    """
    processor, clock = limits
    process = subprocess.Popen(
        ["prlimit", f"--cpu={math.ceil(processor)}", *map(str, command)], cwd=folder, env=env, stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace", start_new_session=True,
    )  # fmt: skip
    try:
        output, _ = process.communicate(timeout=clock)
        return (None if process.returncode in TOO_MUCH_PROCESSOR else process.returncode), output
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.communicate()
        return None, ""
