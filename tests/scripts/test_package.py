"""The package (packaging/package.py), made of an exe that is none."""

import hashlib
import importlib.util
import json
import os
import pathlib
import re
import subprocess
import sys
import zipfile

import license_expression
import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SCRIPT = ROOT / "packaging" / "package.py"


def load():
    found = importlib.util.spec_from_file_location("package", SCRIPT)
    module = importlib.util.module_from_spec(found)
    found.loader.exec_module(module)
    return module


@pytest.fixture(scope="module")
def packed(tmp_path_factory):
    """The folder with the archives, and their common name."""
    folder = tmp_path_factory.mktemp("package")
    (folder / "vistrel_diag.exe").write_bytes(b"MZ no program")
    (folder / "vistrel_diag.exe.debug").write_bytes(b"no symbols")
    subprocess.run(
        [sys.executable, "-B", SCRIPT, folder / "vistrel_diag.exe", folder / "out"],
        check=True,
        capture_output=True,
        env={**os.environ, "SOURCE_DATE_EPOCH": "1700000000"},
    )
    return folder / "out"


def archive(packed):
    (path,) = (path for path in packed.glob("*.zip") if not path.name.endswith("-symbols.zip"))
    return zipfile.ZipFile(path)


def test_checksums_of_the_archives_are_beside_them(packed):
    names = sorted(path.name for path in packed.iterdir())
    assert names == ["SHA256SUMS", *sorted(path.name for path in packed.glob("vistrel_diag-*-windows-x64*.zip"))]
    assert len(names) == 3
    checked = subprocess.run(["sha256sum", "-c", "SHA256SUMS"], cwd=packed, capture_output=True, text=True, check=True)
    assert checked.stdout == "".join(f"{name}: OK\n" for name in names[1:])


def test_checksums_of_the_files_are_in_the_archive(packed):
    with archive(packed) as files:
        sums = dict(reversed(line.split("  ")) for line in files.read("SHA256SUMS").decode("ascii").splitlines())
        assert sorted([*sums, "SHA256SUMS"]) == sorted(files.namelist())
        for name, expected in sums.items():
            assert hashlib.sha256(files.read(name)).hexdigest() == expected


@pytest.mark.parametrize(
    "version, escaped",
    [
        ("1.1.47~ds-2", "1.1.47~ds-2"),
        ("1.21.0+dfsg-1", "1.21.0%2Bdfsg-1"),
        ("12.2.0-14+25.2", "12.2.0-14%2B25.2"),
        ("2:1.0-1", "2:1.0-1"),
    ],
)
def test_a_purl_is_escaped(monkeypatch, version, escaped):
    package = load()
    monkeypatch.setattr(package, "package_version", lambda name: version)
    assert package.purl("libstdc++-12-dev") == f"pkg:deb/debian/libstdc%2B%2B-12-dev@{escaped}"


def bill(packed):
    with archive(packed) as files:
        return json.loads(files.read("vistrel_diag.spdx.json"))


def test_the_bill_of_materials_is_complete(packed):
    """What SPDX 2.3 requires of a document. Debian has no program that checks one."""
    document = bill(packed)
    assert (document["spdxVersion"], document["dataLicense"]) == ("SPDX-2.3", "CC0-1.0")
    assert document["SPDXID"] == "SPDXRef-DOCUMENT"
    assert re.fullmatch(r"urn:[a-z0-9][a-z0-9-]*:[^#\s]+", document["documentNamespace"])
    assert document["creationInfo"]["created"] == "2023-11-14T22:13:20Z"
    assert all(re.fullmatch(r"(Tool|Person|Organization): .+", who) for who in document["creationInfo"]["creators"])
    identifiers = [package["SPDXID"] for package in document["packages"]]
    assert len(set(identifiers)) == len(identifiers) > 1
    for package in document["packages"]:
        assert re.fullmatch(r"SPDXRef-[A-Za-z0-9.-]+", package["SPDXID"])
        assert package["name"] and package["versionInfo"] and package["downloadLocation"] == "NOASSERTION"
        for reference in package.get("externalRefs", []):
            assert (reference["referenceCategory"], reference["referenceType"]) == ("PACKAGE-MANAGER", "purl")
            assert re.fullmatch(r"pkg:deb/debian/[a-z0-9.%-]+@[A-Za-z0-9.~:%-]+", reference["referenceLocator"])
    known = {*identifiers, "SPDXRef-DOCUMENT"}
    for relation in document["relationships"]:
        assert {relation["spdxElementId"], relation["relatedSpdxElement"]} <= known
        assert relation["relationshipType"] in {"DESCRIBES", "STATIC_LINK"}
    related = {relation["relatedSpdxElement"] for relation in document["relationships"]}
    assert related == set(identifiers)


def test_every_licence_is_an_spdx_licence(packed):
    licensing = license_expression.get_spdx_licensing()
    for package in bill(packed)["packages"]:
        for expression in {package["licenseConcluded"], package["licenseDeclared"]} - {"NOASSERTION"}:
            checked = licensing.validate(expression)
            assert not checked.errors, (package["name"], checked.errors)


def test_a_build_with_a_replacement_package_is_not_packed(monkeypatch, tmp_path):
    package = load()
    monkeypatch.setattr(package, "ROOT", tmp_path)
    package.refuse_stand_ins()
    (tmp_path / ".deps").mkdir()
    (tmp_path / ".deps" / "stand-ins").write_text("a 1 in place of a 2\n", encoding="utf-8")
    with pytest.raises(SystemExit, match="^package: built with a 1 in place of a 2, which scripts/setup took"):
        package.refuse_stand_ins()
