"""The set-up (scripts/setup) in front of a mirror, an archive and an npm registry of this test's own making."""

import hashlib
import os
import pathlib
import shutil
import subprocess

import pytest

SCRIPTS = pathlib.Path(__file__).resolve().parents[2] / "scripts"
DLLS = [
    ("gl", "package/deps/windows/dll/x64/d3dcompiler_47.dll"),
    ("onnxruntime-node", "package/bin/napi-v6/win32/x64/onnxruntime.dll"),
    ("onnxruntime-node", "package/bin/napi-v6/win32/x64/DirectML.dll"),
]
# Gives what lies in $WORLD/mirror or $WORLD/snapshot, by the list that it is told to read.
APT_GET = """#!/usr/bin/env bash
for word in "$@"; do case $word in Dir::Etc::sourcelist=*) list=$(basename "${word#*=}" .list) ;; esac; done
echo "$list ${*: -1}" >>"$WORLD/asked"
case " $* " in
*" update "*) [[ ! -e "$WORLD/$list/down" ]] ;;
*) cp "$WORLD/$list/${*: -1}"/* . ;;
esac
"""
NPM = """#!/usr/bin/env bash
echo "npm ${*: -1}" >>"$WORLD/asked"
cp "$WORLD/npm/${*: -1}"/* .
"""
DPKG_QUERY = "#!/usr/bin/env bash\necho installed\n"
BUILD_LOADER = '#!/usr/bin/env bash\ncat "$1"/openxr-sdk-source_* >"$2/openxr_loader.dll"\n'


def executable(path, text):
    path.write_text(text, encoding="utf-8")
    path.chmod(0o755)


def make_deb(folder, name, version, header):
    tree = folder / "tree"
    (tree / "DEBIAN").mkdir(parents=True)
    (tree / "usr" / "include").mkdir(parents=True)
    (tree / "usr" / "include" / f"{name}.h").write_text(header, encoding="utf-8")
    control = f"Package: {name}\nVersion: {version}\nArchitecture: all\nMaintainer: test <t@t>\nDescription: test\n"
    (tree / "DEBIAN" / "control").write_text(control, encoding="utf-8")
    deb = folder / f"{name}_{version}_all.deb"
    subprocess.run(["dpkg-deb", "--root-owner-group", "-b", tree, deb], check=True, capture_output=True)
    shutil.rmtree(tree)
    return deb


class World:
    def __init__(self, folder):
        self.folder = folder
        self.root = folder / "project"
        self.deps = self.root / ".deps"
        scripts = self.root / "scripts"
        scripts.mkdir(parents=True)
        for name in ("setup", "steps"):
            shutil.copy(SCRIPTS / name, scripts)
        (scripts / "packages.txt").write_text("cmake\n", encoding="utf-8")
        executable(scripts / "build-openxr-loader", BUILD_LOADER)
        (folder / "bin").mkdir()
        for name, text in (("apt-get", APT_GET), ("npm", NPM), ("dpkg-query", DPKG_QUERY)):
            executable(folder / "bin" / name, text)
        self.pins = {}
        for name in ("libopenxr-dev", "libonnxruntime-dev", "nlohmann-json3-dev"):
            self.pin("deb", name, "1.2-3", make_deb(folder, name, "1.2-3", f"{name} 1.2"))
        self.pin("or-deb", "nlohmann-json3-dev", "1.1-1", make_deb(folder, "nlohmann-json3-dev", "1.1-1", "older"))
        for name, version in (("openxr-sdk-source", "1.2~ds"), ("libjsoncpp", "1.9.6")):
            file = folder / f"{name}_{version}.orig.tar.xz"
            file.write_bytes(f"sources of {name}".encode())
            self.pin("source", name, version, file)
        for name in ("gl", "onnxruntime-node"):
            self.pin("npm", name, "8.1.6", self.make_npm(name))
        (folder / "asked").write_text("", encoding="utf-8")

    def make_npm(self, name):
        tree = self.folder / "npm-tree"
        for package, path in DLLS:
            if package == name:
                (tree / path).parent.mkdir(parents=True, exist_ok=True)
                (tree / path).write_text(f"{path} of {name}", encoding="utf-8")
        archive = self.folder / f"{name}-8.1.6.tgz"
        subprocess.run(["tar", "-czf", archive, "-C", tree, "package"], check=True)
        shutil.rmtree(tree)
        return archive

    @staticmethod
    def asked_as(kind, name, version):
        return {"source": name, "npm": f"{name}@{version}"}.get(kind, f"{name}={version}")

    def places(self, kind):
        return ["npm"] if kind == "npm" else ["mirror", "snapshot"]

    def pin(self, kind, name, version, file):
        """Everywhere that has such files has it, and pins.txt asks for it."""
        for place in self.places(kind):
            shelf = self.folder / place / self.asked_as(kind, name, version)
            shelf.mkdir(parents=True, exist_ok=True)
            shutil.copy(file, shelf)
        content = file.read_bytes()
        self.pins[kind, name] = [kind, name, version, str(len(content)), hashlib.sha256(content).hexdigest()]

    def lose(self, place, kind, name):
        shutil.rmtree(self.folder / place / self.asked_as(kind, name, self.pins[kind, name][2]))

    def spoil(self, place, kind, name):
        (file,) = (self.folder / place / self.asked_as(kind, name, self.pins[kind, name][2])).iterdir()
        content = file.read_bytes()
        file.write_bytes(content[:-1] + bytes([content[-1] ^ 1]))

    def asked(self):
        """What the places were asked for since the last time."""
        path = self.folder / "asked"
        lines = path.read_text(encoding="utf-8").splitlines()
        path.write_text("", encoding="utf-8")
        return lines

    def setup(self):
        lines = ["# comment", "snapshot 20261031T000000Z", *(" ".join(pin) for pin in self.pins.values())]
        (self.root / "scripts" / "pins.txt").write_text("\n".join(lines) + "\n", encoding="utf-8")
        done = subprocess.run(
            [self.root / "scripts" / "setup"],
            env={**os.environ, "PATH": f"{self.folder / 'bin'}:{os.environ['PATH']}", "WORLD": str(self.folder)},
            capture_output=True,
            text=True,
            check=False,
        )
        return done.returncode, done.stdout, done.stderr

    def header(self, name):
        return (self.deps / "include" / f"{name}.h").read_text(encoding="utf-8")

    def stand_ins(self):
        path = self.deps / "stand-ins"
        return path.read_text(encoding="utf-8") if path.exists() else ""


@pytest.fixture
def world(tmp_path):
    return World(tmp_path)


def test_the_mirror_provides_everything(world):
    code, shown, errors = world.setup()
    assert (code, errors) == (0, "")
    assert "NOTE" not in shown
    assert world.asked() == [
        "mirror update",
        "mirror libopenxr-dev=1.2-3",
        "mirror libonnxruntime-dev=1.2-3",
        "mirror nlohmann-json3-dev=1.2-3",
        "mirror openxr-sdk-source",
        "mirror libjsoncpp",
        "npm gl@8.1.6",
        "npm onnxruntime-node@8.1.6",
    ]
    assert world.header("libopenxr-dev") == "libopenxr-dev 1.2"
    assert sorted(file.name for file in (world.deps / "windows").iterdir()) == [
        "DirectML.dll",
        "d3dcompiler_47.dll",
        "onnxruntime.dll",
        "openxr_loader.dll",
    ]
    assert world.stand_ins() == ""


def test_a_second_run_downloads_nothing(world):
    world.setup()
    world.asked()
    assert world.setup() == (0, "", "")
    assert world.asked() == []


@pytest.mark.parametrize("kind, name", [("deb", "libopenxr-dev"), ("source", "openxr-sdk-source")])
def test_the_archive_replaces_files_missing_from_the_mirror_with_a_message(world, kind, name):
    world.lose("mirror", kind, name)
    code, shown, _ = world.setup()
    version = world.pins[kind, name][2]
    assert code == 0
    assert f"NOTE: this machine's mirror no longer has {name} {version}" in shown
    assert f"Fetching {name} {version} from snapshot.debian.org ... done" in shown
    asked = world.asked()
    assert [line for line in asked if line.startswith("snapshot")] == [
        "snapshot update",
        f"snapshot {world.asked_as(kind, name, version)}",
    ]
    assert "20261031T000000Z trixie main" in (world.deps / "apt" / "snapshot.list").read_text(encoding="utf-8")
    assert world.stand_ins() == ""


def test_a_mirror_that_does_not_respond_is_tried_once(world):
    (world.folder / "mirror" / "down").touch()
    code, shown, _ = world.setup()
    assert code == 0
    assert shown.count("NOTE: this machine's mirror no longer has ") == 5
    # Without experimental, once more.
    assert [line for line in world.asked() if line.startswith("mirror")] == ["mirror update", "mirror update"]


def test_a_file_with_the_wrong_hash_is_rejected_from_every_source(world):
    world.spoil("mirror", "deb", "libopenxr-dev")
    world.spoil("snapshot", "deb", "libopenxr-dev")
    code, shown, errors = world.setup()
    assert code == 1
    assert "is not the pinned file" in errors
    assert "This step failed: Fetching libopenxr-dev 1.2-3\n" in errors
    assert not (world.deps / "complete").exists()
    assert not list((world.deps / "downloads").iterdir())


def test_another_version_is_the_last_resort_and_is_reported(world):
    world.lose("mirror", "deb", "nlohmann-json3-dev")
    world.lose("snapshot", "deb", "nlohmann-json3-dev")
    code, shown, _ = world.setup()
    assert code == 0
    assert (
        "NOTE: taking nlohmann-json3-dev 1.1-1 in place of nlohmann-json3-dev 1.2-3. The exe built with it is ANOTHER "
        "ONE than with nlohmann-json3-dev 1.2-3, though it does the same; packaging/package will not pack it." in shown
    )
    assert world.header("nlohmann-json3-dev") == "older"
    assert world.stand_ins() == "nlohmann-json3-dev 1.1-1 in place of nlohmann-json3-dev 1.2-3\n"


def test_the_pinned_version_replaces_the_other_version_again(world):
    file = next((world.folder / "mirror" / "nlohmann-json3-dev=1.2-3").iterdir())
    kept = shutil.copy(file, world.folder)
    world.lose("mirror", "deb", "nlohmann-json3-dev")
    world.lose("snapshot", "deb", "nlohmann-json3-dev")
    world.setup()
    world.pin("deb", "nlohmann-json3-dev", "1.2-3", pathlib.Path(kept))
    (world.deps / "complete").unlink()
    assert world.setup()[0] == 0
    assert world.header("nlohmann-json3-dev") == "nlohmann-json3-dev 1.2"
    assert world.stand_ins() == ""
    assert [file.name for file in (world.deps / "downloads").glob("nlohmann*")] == ["nlohmann-json3-dev_1.2-3_all.deb"]


def test_a_missing_file_without_a_replacement_is_an_error(world):
    world.lose("npm", "npm", "gl")
    code, _, errors = world.setup()
    assert code == 1
    assert "gl 8.1.6 is not available from the registry" in errors
    assert "This step failed: Fetching gl 8.1.6\n" in errors


def test_a_changed_hash_is_checked_even_if_the_file_exists(world):
    world.setup()
    world.asked()
    world.pins["deb", "libopenxr-dev"][4] = "0" * 64
    code, _, errors = world.setup()
    assert code == 1
    assert f"wanted {'0' * 64}" in errors
    assert "mirror libopenxr-dev=1.2-3" in world.asked()


def test_a_modified_file_is_downloaded_again(world):
    world.setup()
    world.asked()
    (file,) = (world.deps / "downloads").glob("gl-*")
    file.write_bytes(b"another")
    (world.deps / "complete").unlink()
    assert world.setup()[0] == 0
    assert world.asked() == ["npm gl@8.1.6"]
    assert hashlib.sha256(file.read_bytes()).hexdigest() == world.pins["npm", "gl"][4]


def test_a_new_version_replaces_the_file_and_its_headers(world):
    world.setup()
    world.pin("deb", "libopenxr-dev", "1.3-1", make_deb(world.folder, "libopenxr-dev", "1.3-1", "newer"))
    assert world.setup()[0] == 0
    assert world.header("libopenxr-dev") == "newer"
    assert [file.name for file in (world.deps / "downloads").glob("libopenxr*")] == ["libopenxr-dev_1.3-1_all.deb"]
