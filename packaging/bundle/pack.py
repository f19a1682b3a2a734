#!/usr/bin/env python3
"""Packs the Windows tests.

    packaging/bundle/pack.py BUILD_FOLDER ZIP

bin/ in the archive is laid out as the build folder is, source/ as the source tree, so that test programs find their
neighbours. Symbols are left out.
"""

import pathlib
import sys
import zipfile

ROOT = pathlib.Path(__file__).resolve().parents[2]

# Paths in the build folder, and what of each.
BINARIES = ["vistrel_diag.exe", "models/**/*", "tests/unit/*.exe", "tests/lab/*.exe", "tests/lab/*.dll", "tests/lab/**/*.exe",
            "tests/lab/**/*.dll", "tests/lab/**/*.json"]
SOURCES = ["tests/lab/install/**/*", "tests/lab/scenarios/*.txt", "tests/lab/openxr/headsets/*", "tests/lab/openxr/probes/*",
           "tests/system/golden/*.txt", "tests/system/data/*"]


def files_of(folder, patterns):
    found = {path for pattern in patterns for path in folder.glob(pattern) if path.is_file()}
    assert found, (folder, patterns)
    for path in sorted(found):
        relative = path.relative_to(folder)
        if "CMakeFiles" not in relative.parts:
            yield relative.as_posix(), path


def main():
    build, target = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2])
    target.parent.mkdir(parents=True, exist_ok=True)
    contents = {"bin/" + name: path for name, path in files_of(build, BINARIES)}
    contents["bin/run_tests.exe"] = build / "tests" / "bundle" / "run_tests.exe"
    contents.update({"source/" + name: path for name, path in files_of(ROOT, SOURCES)})
    for name in ("run-tests.cmd", "README.txt"):
        contents[name] = ROOT / "packaging" / "bundle" / name
    with zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED, compresslevel=6) as archive:
        for name, path in sorted(contents.items()):
            archive.write(path, name)
    print(f"{target.name}: {len(contents)} files, {target.stat().st_size / 1048576:.0f} MB")


if __name__ == "__main__":
    main()
