"""The tool in folders that are hard to write to, to name or to reach, and names from outside with anything in them."""

import contextlib
import os
import pathlib
import struct
import subprocess

import pytest

import golden
import lab
import programs
import terminal
from test_guided_run import closing
from test_inventory import PROXY_DLLS
from test_rescue import CAPTURE, CRASHED_IN_DRIVER, PLACE, closing_line, without_place

MACHINE = "desktop-pc"  # Its figures are the same in every run.
QUICK = ("--quick", "--no-models", "--capture-seconds", "0.5")
NO_WINDOW = [(r"^Foreground app  : .*\n", "")]
CRASH = f"crash AcquireNextFrame\n{lab.patient('frames-60')}"
NOT_WRITTEN = "\n!! Could not write the report file. Copy the text above instead.\n\nPress Enter to close.\n"
NOT_WHOLE = "\n!! Could not write the whole report file. Copy the text above instead.\n\nPress Enter to close.\n"
NOT_RESCUED = "\nThe report file could not be written. Copy the text above instead.\n"


def furnish(folder):
    """An install folder in which every reading section finds something."""
    install = lab.Install(folder)
    install.add_shader("trivial")
    install.write("settings.json", '{"vistrel_scale": 1.5}')
    install.write("ReShade.ini", "")
    return install


@pytest.fixture(scope="module")
def ordinary(tmp_path_factory):
    """The console and the report of a run in a folder like any other, the folder's name left out."""
    install = furnish(tmp_path_factory.mktemp("ordinary") / "install")
    return texts(lab.run_tool(install, *QUICK, scenario=MACHINE), install)


def texts(run, install):
    assert run.exit_code == 0
    return [golden.masked(text, install, NO_WINDOW) for text in (run.console_text, run.report_text)]


@contextlib.contextmanager
def mounted(folder, options):
    """A file system of its own on that folder while the block lasts."""
    folder.mkdir()
    command = ["mount", "-t", "tmpfs", "-o", options, "vistrel-test", folder]
    mount = subprocess.run(command, capture_output=True, text=True, check=False)
    if mount.returncode != 0:
        pytest.skip(f"no file system can be mounted here: {mount.stderr.strip()}")
    try:
        yield
    finally:
        subprocess.run(["umount", "--lazy", folder], check=True)


@contextlib.contextmanager
def reached_as(letter, folder):
    """The folder is a drive's root inside the block."""
    link = pathlib.Path(os.environ["WINEPREFIX"]) / "dosdevices" / letter
    link.unlink(missing_ok=True)  # Left by a test that was killed.
    link.symlink_to(folder)
    try:
        yield
    finally:
        link.unlink()


class Elsewhere(lab.Install):
    """An install folder that Windows knows by a path of its own."""

    def __init__(self, folder, windows_folder):
        super().__init__(folder)
        self.path = windows_folder

    @property
    def windows_folder(self):
        return self.path


def run_by(path, install, *arguments, scenario=None, scratch, cwd=None):
    """Like lab.run_tool, with the path by which the tool is started."""
    front, more = [], {}
    if scenario is not None:
        front, more, _ = lab.simulated(scenario, scratch)
    command = [lab.ROOT / "scripts" / "wine", *front, path, *arguments]
    exit_code, console, errors = lab.run_program(command, cwd=cwd or scratch, env=lab.environment(**more))
    report = install.report.read_bytes() if install.report.is_file() else None
    return lab.Run(exit_code, console, errors, report)


# Folders that cannot be written to


def test_read_only_folder(ordinary, tmp_path):
    folder = tmp_path / "install"
    with mounted(folder, "size=8m"):
        install = furnish(folder)
        subprocess.run(["mount", "-o", "remount,ro", folder], check=True)
        run = lab.run_tool(install, *QUICK, scenario=MACHINE)
        assert run.exit_code == 0 and run.report is None
        report_on_console = golden.masked(run.console_text, install, NO_WINDOW).removesuffix(NOT_WRITTEN)
        assert report_on_console == ordinary[0].split("\n" + "=" * 53 + "\n Done. ")[0]


def test_crash_in_a_read_only_folder(tmp_path):
    folder = tmp_path / "install"
    with mounted(folder, "size=8m"):
        install = lab.Install(folder)
        subprocess.run(["mount", "-o", "remount,ro", folder], check=True)
        run = lab.run_tool(install, *QUICK, scenario=CRASH, dies=True)
        cause = CRASHED_IN_DRIVER
        assert without_place(run.console_text).endswith(f"\n{closing_line(CAPTURE, cause)}{NOT_RESCUED}")
        assert run.report is None


def test_crash_while_another_program_holds_the_report(tmp_path):
    install = lab.Install(tmp_path / "install")
    install.write(lab.REPORT_NAME, "an older report\n")
    with programs.held(install.report, "none"):
        run = lab.run_tool(install, *QUICK, scenario=CRASH, dies=True)
    cause = CRASHED_IN_DRIVER
    assert without_place(run.console_text).endswith(f"\n{closing_line(CAPTURE, cause)}{NOT_RESCUED}")
    assert install.report.read_bytes() == b"an older report\n"


def fill(folder, left):
    """Leaves so many bytes of the folder's file system free."""
    free = os.statvfs(folder)
    (folder / "filler").write_bytes(bytes(free.f_bavail * free.f_frsize - left))
    free = os.statvfs(folder)
    assert free.f_bavail * free.f_frsize == left


@pytest.mark.parametrize("left", [0, 4096], ids=["nothing left", "room for a part"])
def test_full_disk(ordinary, tmp_path, left):
    """The file lacks what could not be written, and the console says so."""
    folder = tmp_path / "install"
    with mounted(folder, "size=8m"):
        install = furnish(folder)
        fill(folder, left)
        run = lab.run_tool(install, *QUICK, scenario=MACHINE)
        assert run.exit_code == 0
        said = golden.masked(run.console_text, install, NO_WINDOW)
        assert said.endswith(NOT_WHOLE)
        assert ordinary[0].startswith(said[: -len(NOT_WHOLE)])
        assert run.report == run.report[:left] and len(run.report) == left


@pytest.mark.parametrize("left", [0, 4096], ids=["nothing left", "room for a part"])
def test_crash_on_a_full_disk(tmp_path, left):
    folder = tmp_path / "install"
    with mounted(folder, "size=8m"):
        install = lab.Install(folder)
        install.write("settings.json", "{" + ",\n".join(f'"vistrel_key_{n}": {n}' for n in range(100)) + "}")
        fill(folder, left)
        run = lab.run_tool(install, *QUICK, scenario=CRASH, dies=True)
        cause = CRASHED_IN_DRIVER
        assert without_place(run.console_text).endswith(f"\n{closing_line(CAPTURE, cause)}{NOT_RESCUED}")


# Folders with odd names


@pytest.mark.parametrize(
    "name",
    ["%s%n%d", "a  folder with  blanks", "'quotes' `and` “quotes”", "&(paren)^!;=,~ @[x]{y}$HOME%TEMP%", "Ünïcødé 高性能 🎮"],
)
def test_folder_named(ordinary, tmp_path, name):
    install = furnish(tmp_path / name)
    run = lab.run_tool(install, *QUICK, scenario=MACHINE)
    assert f"Running from: {install.windows_folder}\n" in run.report_text
    assert run.console_text.endswith(closing(install))
    assert texts(run, install) == ordinary


# Folders that are hard to reach


def test_root_of_a_drive(ordinary, tmp_path):
    folder = tmp_path / "install"
    furnish(folder)
    install = Elsewhere(folder, "X:")
    with reached_as("x:", folder):
        run = run_by("X:\\vistrel_diag.exe", install, *QUICK, scenario=MACHINE, scratch=tmp_path)
    assert "Running from: X:\n" in run.report_text
    assert texts(run, install) == ordinary


# Wine finds a share, but gives a program there a path that Windows never would, so the machine provides the path.
@pytest.mark.parametrize(
    "share", ["\\\\server\\Tools %s", "\\\\?\\UNC\\server\\Tools %s"], ids=["a share", "a share in its long form"]
)
def test_folder_on_a_server(ordinary, tmp_path, share):
    folder = tmp_path / "server" / "Tools %s" / "install"
    furnish(folder)
    install = Elsewhere(folder, share + "\\install")
    machine = f"program at {install.windows_folder}\\vistrel_diag.exe\n" + lab.scenario_text(MACHINE)
    with reached_as("unc", tmp_path):
        run = run_by(lab.windows_path(install.exe), install, *QUICK, scenario=machine, scratch=tmp_path)
    assert f"Running from: {install.windows_folder}\n" in run.report_text
    assert texts(run, install) == ordinary


def long_install(tmp_path, length):
    """An install folder whose tool has a path of so many characters."""
    base = lab.windows_path(tmp_path) + "\\"
    left = length - len("\\vistrel_diag.exe") - len(base)
    folder = tmp_path
    while left > 120:
        folder /= "l" * 100
        left -= 101
    install = furnish(folder / ("l" * left))
    assert len(lab.windows_path(install.exe)) == length
    return install


def test_longest_path_that_the_tool_can_run_from(ordinary, tmp_path):
    install = long_install(tmp_path, 259)
    assert len(install.windows_folder + "\\" + lab.REPORT_NAME) > 260
    run = lab.run_tool(install, *QUICK, scenario=MACHINE, scratch=tmp_path)
    assert texts(run, install) == ordinary


def test_crash_in_a_folder_with_a_long_path(tmp_path):
    install = long_install(tmp_path, 259)
    run = lab.run_tool(install, *QUICK, scenario=CRASH, scratch=tmp_path, dies=True)
    line = closing_line(CAPTURE, CRASHED_IN_DRIVER)
    assert without_place(run.console_text).endswith(f"\n{line}{PLACE}")
    assert run.report_text.startswith("Vistrel diagnostic report v1.0\n")
    assert without_place(run.report_text).endswith(f"\n\n{line}\n")


def test_path_that_is_too_long_for_the_tool(tmp_path):
    """Its folder is then unknown and the report comes into the current directory."""
    install = long_install(tmp_path, 300)
    run = run_by(install.exe, install, *lab.CHEAP, scratch=tmp_path)
    assert run.exit_code == 0 and run.report is None
    report = (tmp_path / lab.REPORT_NAME).read_bytes().decode("utf-8").replace("\r\n", "\n")
    assert "\nRunning from: \n" in report
    assert f" Done. Report written to:\n   {lab.REPORT_NAME}\n\n Please send" in run.console_text


# Foreign DLLs beside the tool and in the current directory

PROXY_LINES = "".join(f"PROXY DLL      : {name}   <- not ours\n" for name in PROXY_DLLS)


def library_for_32_bits():
    """A whole, if idle, DLL for 32-bit processors: one section, whose entry point returns TRUE."""
    code = b"\xb8\x01\x00\x00\x00\xc2\x0c\x00"
    file_header = struct.pack("<4sHHIIIHH", b"PE", 0x014C, 1, 0, 0, 0, 224, 0x2102)
    optional_header = struct.pack("<HBBIIIIII", 0x010B, 14, 0, 512, 0, 0, 0x1000, 0x1000, 0x2000)
    optional_header += struct.pack("<IIIHHHHHHIIIIHH", 0x10000000, 0x1000, 512, 6, 0, 0, 0, 6, 0, 0, 0x2000, 512, 0, 2, 0x140)
    optional_header += struct.pack("<IIIIII", 0x100000, 0x1000, 0x100000, 0x1000, 0, 16) + bytes(128)
    section = struct.pack("<8sIIIIIIHHI", b".text", len(code), 0x1000, 512, 512, 0, 0, 0, 0, 0x60000020)
    headers = b"MZ" + bytes(58) + struct.pack("<I", 64) + file_header + optional_header + section
    return headers.ljust(512, b"\0") + code.ljust(512, b"\0")


FOREIGN_FILES = {
    "for 32 bits": library_for_32_bits,
    "empty": lambda: b"",
    "cut short": lambda: programs.INJECTED_DLL.read_bytes()[:4096],
    "a proxy": programs.INJECTED_DLL.read_bytes,
}


@pytest.mark.parametrize("kind", FOREIGN_FILES)
def test_other_dlls_beside_the_tool_are_reported_but_not_loaded(ordinary, tmp_path, kind):
    """Windows starts no program beside such files under the names of DLLs that it imports and that are no known
    DLLs. Wine passes over those for 32 bits, but the rest keeps it from starting the program too."""
    install = furnish(tmp_path / "install")
    environment = programs.add_proxy_dlls(install, *PROXY_DLLS, content=FOREIGN_FILES[kind]())
    if kind == "empty":
        install.write("version.dll", FOREIGN_FILES["cut short"]())  # Wine does not replace an empty file by its own.
    loaded = tmp_path / "loaded.txt"
    environment["VISTREL_INJECTED_LOG"] = lab.windows_path(loaded)
    run = lab.run_tool(install, *QUICK, scenario=MACHINE, env=environment)
    assert PROXY_LINES in run.report_text
    assert [text.replace(PROXY_LINES, "") for text in texts(run, install)] == ordinary
    assert not loaded.exists(), loaded.read_text()


def test_nothing_is_loaded_from_the_current_directory(tmp_path):
    install = lab.Install(tmp_path / "install")
    elsewhere = lab.Install(tmp_path / "elsewhere")
    for name in (*PROXY_DLLS, "openxr_loader.dll", "onnxruntime.dll", "DirectML.dll", "d3dcompiler_47.dll"):
        elsewhere.add_file(programs.INJECTED_DLL, name)
    loaded = tmp_path / "loaded.txt"
    environment = programs.windows_library_order(name.removesuffix(".dll") for name in PROXY_DLLS)
    environment["VISTREL_INJECTED_LOG"] = lab.windows_path(loaded)
    install.add_shader("trivial")
    models = ("--quick", "--capture-seconds", "0")
    run = lab.run_tool(install, *models, scenario=MACHINE, cwd=elsewhere.folder, env=environment)
    assert run.exit_code == 0
    assert "openxr_loader.dll not found" in run.section("HEADSET / OPENXR")
    assert not loaded.exists(), loaded.read_text()


# Names from outside

CLEAR_SCREEN = "\x1b[2J\x1b[H"
EVIL = f"100%s %n{CLEAR_SCREEN}\x07\x08end"


def machine_with_evil_gpu():
    text = lab.scenario_text("desktop-pc")
    return text.replace("adapter NVIDIA GeForce RTX 3070", f"adapter {EVIL}")


def test_names_with_control_characters_are_reported_as_they_are(tmp_path):
    install = lab.Install(tmp_path / "install")
    with programs.in_foreground(tmp_path, "100%s %n.exe", EVIL):
        run = lab.run_tool(install, *QUICK, scenario=machine_with_evil_gpu())
    foreground, gpu = f'\nForeground app  : 100%s %n.exe  "{EVIL}"\n', f"\nGPU 0           : {EVIL} [NVIDIA]\n"
    for text in (run.report_text, run.console_text):
        assert foreground in text and gpu in text


def test_line_breaks_in_a_title_stay_line_breaks(tmp_path):
    install = lab.Install(tmp_path / "install")
    with programs.in_foreground(tmp_path, "lines.exe", "one\ntwo\r\nthree"):
        run = lab.run_tool(install, *QUICK, scenario=MACHINE)
    assert '\nForeground app  : lines.exe  "one\ntwo\nthree"\n' in run.report_text
    assert '\nForeground app  : lines.exe  "one\ntwo\nthree"\n' in run.console_text


def test_names_cannot_control_a_terminal(tmp_path):
    install = lab.Install(tmp_path / "install")
    with terminal.Terminal(install, *QUICK, scenario=machine_with_evil_gpu()) as person:
        person.answer("\nPress Enter to close.\n", "\r")
        assert person.wait_for_end() == 0
        screen = person.screen.text()
    assert "\n Vistrel diagnostic\n" in screen
    assert "\nGPU 0           : 100%s %n␛[2J␛[H␇␈end [NVIDIA]\n" in screen
