#!/usr/bin/env python3
"""Checks the properties of a packed vistrel_diag.exe: imports, hardening, manifest and version resource.

    packaging/check_exe.py EXE

Prints one line a check and exits with 1 when one does not hold.
"""
import re
import subprocess
import sys

# The known DLLs of every Windows 10: it loads them and their imports only from its system folder. It searches the
# program's folder first for any other imported DLL, and a wrong file there would keep the program from starting. ntdll
# is in every process from the start.
KNOWN_DLLS = {"advapi32.dll", "gdi32.dll", "kernel32.dll", "msvcrt.dll", "ntdll.dll", "shell32.dll", "user32.dll"}
DLL_CHARACTERISTICS = {"high-entropy VA": 0x0020, "ASLR (dynamic base)": 0x0040, "NX": 0x0100}
MANIFEST = {
    "asks for no administrator rights": '<requestedExecutionLevel level="asInvoker" uiAccess="false"/>',
    "per-monitor DPI awareness v2": ">PerMonitorV2</dpiAwareness>",
    "long paths": ">true</longPathAware>",
    "active code page UTF-8": ">UTF-8</activeCodePage>",
}
VERSION_STRINGS = {"FileVersion": "1.0", "ProductVersion": "1.0", "OriginalFilename": "vistrel_diag.exe"}


def headers(exe):
    return subprocess.run(["x86_64-w64-mingw32-objdump", "-p", exe], check=True, capture_output=True,
                          text=True).stdout


def imported_dlls(text):
    return {name.lower() for name in re.findall(r"DLL Name: (\S+)", text)}


def dll_characteristics(text):
    return int(re.search(r"^DllCharacteristics\s+([0-9a-f]+)", text, re.MULTILINE).group(1), 16)


def version_string(image, name):
    """The value behind `name` in the version resource: UTF-16, aligned to four bytes behind the key's zero."""
    key = name.encode("utf-16-le") + b"\0\0"
    at = image.find(key)
    if at < 0:
        return None
    at += len(key)
    at += -at % 4
    return image[at:image.index(b"\0\0\0", at) + 1].decode("utf-16-le")


def checks(exe):
    text = headers(exe)
    with open(exe, "rb") as file:
        image = file.read()
    others = imported_dlls(text) - KNOWN_DLLS
    yield "64-bit console program", "pei-x86-64" in text and "(Windows CUI)" in text
    yield f"imports known DLLs only {sorted(others) or ''}".rstrip(), bool(imported_dlls(text)) and not others
    for name, bit in DLL_CHARACTERISTICS.items():
        yield name, dll_characteristics(text) & bit != 0
    for name, words in MANIFEST.items():
        yield f"manifest: {name}", words.encode() in image
    for name, value in VERSION_STRINGS.items():
        yield f"version resource: {name} {value}", version_string(image, name) == value
    yield "no timestamp", re.search(r"^Time/Date\s+Thu Jan  1 00:00:00 1970", text, re.MULTILINE) is not None


def main():
    failed = 0
    for name, holds in checks(sys.argv[1]):
        print(f"{'ok    ' if holds else 'FAILED'}  {name}")
        failed += not holds
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
