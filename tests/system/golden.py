"""Compares whole texts with reviewed files.

What depends on the machine that the tests run on is masked on both sides; everything else is compared exactly.
VISTREL_UPDATE_GOLDEN=1 rewrites the files; review the difference before committing it.
"""

import difflib
import os
import pathlib
import re

FOLDER = pathlib.Path(__file__).resolve().parent / "golden"

# Lines that describe the machine the tests run on.
HOST_MASKS = [
    (r"^(OS              : )\S.* \(build \d+\.\d*\)$", r"\1<os> (build <n>.<n>)"),
    (r"^(CPU             : )\S.* \(\d+ logical\)$", r"\1<cpu> (<n> logical)"),
    (r"C:\\users\\[^\\]+\\", r"C:\\users\\<user>\\"),
    (r"^(RAM             : )\d+\.\d GB total, \d+\.\d GB free$", r"\1<n> GB total, <n> GB free"),
]


def masked(text, install=None, masks=()):
    """The text with the install folder's path and what the masks match replaced; masks are (pattern, replacement)
    pairs, tried on single lines."""
    if install is not None:
        text = text.replace(install.windows_folder, "<install>")
    for pattern, replacement in [*HOST_MASKS, *masks]:
        text = re.sub(pattern, replacement, text, flags=re.MULTILINE)
    return text


def check(name, text, install=None, masks=()):
    """Compares with golden/NAME, or writes it."""
    check_file(FOLDER / name, masked(text, install, masks))


def check_file(path, text):
    """Compares with any file, or writes it."""
    if os.environ.get("VISTREL_UPDATE_GOLDEN") == "1":
        path.write_bytes(text.encode("utf-8"))
        return
    assert path.exists(), f"{path} is missing; VISTREL_UPDATE_GOLDEN=1 writes it"
    expected = path.read_bytes().decode("utf-8")
    difference = "".join(
        difflib.unified_diff(
            expected.splitlines(keepends=True), text.splitlines(keepends=True), path.name, "this run"
        )
    )
    assert text == expected, "\n" + difference
