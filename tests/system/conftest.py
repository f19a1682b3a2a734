import os
import pathlib
import sys

import pytest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))

import lab  # noqa: E402
from skips import pytest_runtest_makereport  # noqa: E402, F401


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


@pytest.fixture(scope="module", autouse=True)
def user_of_the_file():
    """The tests of a file share a user that no other file uses."""
    with lab.new_user() as product_data:
        yield product_data


@pytest.fixture
def clean_user():
    """A user only for this test, for whom the product has never run: the product's data folder, not created yet."""
    with lab.new_user() as product_data:
        yield product_data
