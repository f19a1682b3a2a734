import os
import pathlib
import shutil
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))

import lab  # noqa: E402


def pytest_sessionstart(session):
    if "VISTREL_LAB_SESSION" not in os.environ:
        pytest.exit("start me as: scripts/lab-session python3 -m pytest tests/system", returncode=2)


@pytest.fixture
def install(tmp_path):
    """An install folder with nothing but the tool."""
    return lab.Install(tmp_path / "install")


@pytest.fixture
def run_tool(install):
    """lab.run_tool in that folder."""

    def run(*arguments, **options):
        return lab.run_tool(install, *arguments, **options)

    return run


@pytest.fixture
def clean_user(tmp_path):
    """A user for whom the product never ran; what was there comes back afterwards. The test locks wine_prefix."""
    folder = lab.user_data_folder()
    aside = tmp_path / "user_data_aside"
    if folder.exists():
        shutil.move(folder, aside)
    yield folder
    shutil.rmtree(folder, ignore_errors=True)
    if aside.exists():
        shutil.move(aside, folder)
