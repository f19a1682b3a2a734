"""The machine around the tool: programs that run under the names it looks for, and the user's GPU preferences."""

import contextlib
import os
import shutil
import subprocess

import lab

PROGRAMS = lab.BUILD / "tests" / "lab" / "programs"
PREFERENCES = "HKCU\\Software\\Microsoft\\DirectX\\UserGpuPreferences"


@contextlib.contextmanager
def running(folder, program, name, *arguments):
    """Runs the test program `program` as a process of that name while the block lasts."""
    place = folder / f"program{len(list(folder.glob('program*')))}"
    place.mkdir()
    exe = shutil.copy(PROGRAMS / f"{program}.exe", place / name)
    process = subprocess.Popen(
        [str(lab.ROOT / "scripts" / "wine"), lab.windows_path(exe), *arguments],
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        env=lab.environment(),
    )
    try:
        assert process.stdout.readline().strip() == b"ready"
        yield process
    finally:
        process.terminate()
        process.wait(lab.HANGING_SECONDS)


def asleep(folder, name):
    """A process of that name that does nothing."""
    return running(folder, "sleeper", name, "600")


def in_foreground(folder, name, title):
    """A process of that name whose window of that title is in the foreground."""
    return running(folder, "titled_window", name, "600", title)


@contextlib.contextmanager
def held(path, share):
    """Another program has the file open inside the block, shared with others for "none", "read" or "write"."""
    holder = subprocess.Popen(
        [lab.ROOT / "scripts" / "wine", lab.BUILD / "tests" / "system" / "hold_file.exe", lab.windows_path(path), share],
        stdin=subprocess.PIPE,
        stdout=subprocess.PIPE,
        env=lab.environment(),
    )
    try:
        assert holder.stdout.readline().strip() == b"held"
        yield
    finally:
        holder.stdin.close()
        assert holder.wait(lab.HANGING_SECONDS) == 0


@contextlib.contextmanager
def gpu_preferences(values):
    """The current user's GPU preferences while the block lasts, these alone; `values` by application. None without
    values. The test locks wine_prefix."""
    _forget_preferences()
    for application, choice in values.items():
        exit_code, output, errors = _registry(
            "add", PREFERENCES, "/v", application, "/t", "REG_SZ", "/d", choice, "/f"
        )
        assert exit_code == 0, (application, output, errors)
    try:
        yield
    finally:
        _forget_preferences()


def _forget_preferences():
    """A test that was killed may have left some."""
    _registry("delete", PREFERENCES, "/f")
    exit_code, output, errors = _registry("query", PREFERENCES)
    assert exit_code != 0, (output, errors)


def _registry(*arguments):
    return lab.run_program([lab.ROOT / "scripts" / "wine", "reg.exe", *arguments])


INJECTED_DLL = PROGRAMS / "injected_dll.dll"


def add_proxy_dlls(install, *names, content=None):
    """Puts a file under each of these names beside the tool: a library, or that content. Returns the environment in
    which Wine, as Windows does, takes a DLL of these names from the program's folder first."""
    for name in names:
        install.write(name, INJECTED_DLL.read_bytes() if content is None else content)
    return windows_library_order(name.lower().removesuffix(".dll") for name in names)


def windows_library_order(modules):
    """Wine takes its own DLL of a name of Windows' unless it is told otherwise. version.dll stays Wine's own: Wine's
    user32 imports it, and as Wine has no known DLLs, no program with a window would start beside a broken one."""
    order = ",".join(module for module in modules if module != "version")
    return {"WINEDLLOVERRIDES": f"{os.environ['WINEDLLOVERRIDES']};{order}=n,b;version=b"}
