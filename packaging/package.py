#!/usr/bin/env python3
"""Packs the built tool for release.

    packaging/package.py EXE OUTPUT_FOLDER

Makes vistrel_diag-VERSION-windows-x64.zip (the exe, README.txt, LICENSES.txt, an SPDX bill of materials and
SHA256SUMS), vistrel_diag-VERSION-windows-x64-symbols.zip, and beside them SHA256SUMS with the sums of both archives.
The same tree and the same build packages give the same bytes, whatever folder it is done in and whenever.
"""
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys
import time
import urllib.parse
import zipfile

ROOT = pathlib.Path(__file__).resolve().parent.parent

# What is linked into the exe: SPDX name, Debian package whose version and copyright file count, licence, and how.
LINKED_IN = [
    ("nlohmann-json", "nlohmann-json3-dev", "MIT", "reads the settings file (headers)"),
    ("utfcpp", "libutfcpp-dev", "BSL-1.0", "converts between UTF-8 and UTF-16 (headers)"),
    ("mingw-w64", "mingw-w64-x86-64-dev", "ZPL-2.1", "C runtime and Windows import libraries"),
    ("winpthreads", "mingw-w64-x86-64-dev", "MIT", "threads of the C++ library"),
    ("libstdc++", "gcc-mingw-w64-base", "GPL-3.0-or-later WITH GCC-exception-3.1", "C++ and compiler runtime"),
    ("openxr-headers", "libopenxr-dev", "Apache-2.0 OR MIT", "declarations of OpenXR (headers)"),
    ("onnxruntime-headers", "libonnxruntime-dev", "MIT", "declarations of ONNX Runtime (headers)"),
]


def run(*command, text=True):
    return subprocess.run(command, check=True, capture_output=True, text=text).stdout


def version():
    text = (ROOT / "tools/vistrel_diag/version.h").read_text()
    return re.search(r'VISTREL_DIAG_VERSION "([^"]+)"', text).group(1)


def commit_time():
    """When the packed tree was committed, in UTC: the date is the same wherever it is packed. SOURCE_DATE_EPOCH
    sets it for a tree without its history."""
    seconds = os.environ.get("SOURCE_DATE_EPOCH") or run("git", "-C", str(ROOT), "log", "-1", "--format=%ct")
    return time.gmtime(int(seconds))


def fetched_package(name):
    """The newest fetched .deb of `name`, or None for one that is installed."""
    found = sorted((ROOT / ".deps/downloads").glob(f"{name}_*.deb"))
    return found[-1] if found else None


def package_version(name):
    deb = fetched_package(name)
    if deb:
        return run("dpkg-deb", "--field", str(deb), "Version").strip()
    return run("dpkg-query", "--show", "--showformat=${Version}", name).strip()


def purl(package):
    """The package's URL as purl-spec has it: everything but unreserved characters and colons is escaped."""
    return f"pkg:deb/debian/{urllib.parse.quote(package, safe=':')}@{urllib.parse.quote(package_version(package), safe=':')}"


def refuse_stand_ins():
    """An exe built with another version than the one in pins.txt is not released."""
    stand_ins = ROOT / ".deps" / "stand-ins"
    if stand_ins.exists():
        sys.exit(f"package: built with {stand_ins.read_text(encoding='utf-8').strip()}, which scripts/setup took because "
                 "the pinned version was not to be had; run scripts/setup again where it is")


def copyright_text(name):
    deb = fetched_package(name)
    if not deb:
        return pathlib.Path(f"/usr/share/doc/{name}/copyright").read_text(encoding="utf-8")
    archive = subprocess.Popen(["dpkg-deb", "--fsys-tarfile", str(deb)], stdout=subprocess.PIPE)
    return subprocess.run(["tar", "-xO", f"./usr/share/doc/{name}/copyright"], stdin=archive.stdout, check=True,
                          capture_output=True).stdout.decode("utf-8")


def licences():
    parts = ["What vistrel_diag.exe is built from beside its own code, and under which licences.\n"]
    described = set()
    for name, package, licence, use in LINKED_IN:
        parts.append(f"{name}: {use}. {licence}. Text under: {package}\n")
    for _, package, _, _ in LINKED_IN:
        if package not in described:
            described.add(package)
            parts.append(f"\n{'=' * 78}\n{package} {package_version(package)}\n{'=' * 78}\n\n{copyright_text(package)}")
    return "".join(parts)


def bill_of_materials(name, exe_hash, created):
    packages = [{
        "SPDXID": "SPDXRef-vistrel-diag", "name": "vistrel_diag", "versionInfo": version(),
        "downloadLocation": "NOASSERTION", "licenseConcluded": "NOASSERTION", "licenseDeclared": "NOASSERTION",
        "copyrightText": "NOASSERTION", "filesAnalyzed": False,
        "checksums": [{"algorithm": "SHA256", "checksumValue": exe_hash}],
    }]
    relations = [{"spdxElementId": "SPDXRef-DOCUMENT", "relationshipType": "DESCRIBES",
                  "relatedSpdxElement": "SPDXRef-vistrel-diag"}]
    for part, package, licence, use in LINKED_IN:
        identifier = f"SPDXRef-{re.sub('[^A-Za-z0-9.-]', '-', part)}"
        packages.append({
            "SPDXID": identifier, "name": part, "versionInfo": package_version(package), "comment": use,
            "downloadLocation": "NOASSERTION", "licenseConcluded": licence, "licenseDeclared": licence,
            "copyrightText": "NOASSERTION", "filesAnalyzed": False,
            "externalRefs": [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                              "referenceLocator": purl(package)}],
        })
        relations.append({"spdxElementId": "SPDXRef-vistrel-diag", "relationshipType": "STATIC_LINK",
                          "relatedSpdxElement": identifier})
    return json.dumps({
        "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT", "name": name,
        "documentNamespace": f"urn:vistrel:{name}:{exe_hash}",
        "creationInfo": {"created": time.strftime("%Y-%m-%dT%H:%M:%SZ", created),
                         "creators": ["Tool: vistrel_diag packaging"]},
        "packages": packages, "relationships": relations,
    }, indent=2) + "\n"


def write_zip(path, files, stamp):
    """`files`: name -> bytes. Order, times and modes are fixed, so that equal contents make equal bytes."""
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for name, data in sorted(files.items()):
            entry = zipfile.ZipInfo(name, stamp[:6])
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 0  # Windows: no Unix modes.
            archive.writestr(entry, data)


def main():
    exe_path, output = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    refuse_stand_ins()
    output.mkdir(parents=True, exist_ok=True)
    created = commit_time()
    name = f"vistrel_diag-{version()}-windows-x64"
    exe = exe_path.read_bytes()

    files = {
        "vistrel_diag.exe": exe,
        "README.txt": (ROOT / "packaging/README.txt").read_bytes(),
        "LICENSES.txt": licences().replace("\r\n", "\n").replace("\n", "\r\n").encode("utf-8"),
        "vistrel_diag.spdx.json": bill_of_materials(name, hashlib.sha256(exe).hexdigest(), created).encode("utf-8"),
    }
    sums = "".join(f"{hashlib.sha256(data).hexdigest()}  {file}\n" for file, data in sorted(files.items()))
    files["SHA256SUMS"] = sums.encode("ascii")
    write_zip(output / f"{name}.zip", files, created)

    symbols = exe_path.with_name(exe_path.name + ".debug")
    write_zip(output / f"{name}-symbols.zip", {symbols.name: symbols.read_bytes()}, created)
    archives = [output / f"{name}-symbols.zip", output / f"{name}.zip"]
    sums = "".join(f"{hashlib.sha256(made.read_bytes()).hexdigest()}  {made.name}\n" for made in archives)
    (output / "SHA256SUMS").write_text(sums, encoding="ascii")
    print(sums, end="")


if __name__ == "__main__":
    main()
