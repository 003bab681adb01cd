"""What the tests of the Python package share."""
import os
import pathlib
import re
import shutil

import pytest

import kesto

ROOT = pathlib.Path(__file__).resolve().parents[2]


def comparable(text):
    """What pages and notebooks print, for a comparison. They were written with scipy 1.10 (Debian 12): other versions
    draw other members from the same seed, and then only the words count."""
    import scipy

    if scipy.__version__.startswith("1.10."):
        return text
    return re.sub(r"\s+", " ", re.sub(r"[-+]?\d[\d.,e]*", "#", text))


def pytest_collection_modifyitems(items):
    """Tests with the mark `long` run where KESTO_TEST_LONG is set."""
    if not os.environ.get("KESTO_TEST_LONG"):
        for item in items:
            if item.get_closest_marker("long"):
                item.add_marker(pytest.mark.skip(reason="only with ./test --long"))


def pytest_configure(config):
    config.addinivalue_line("markers", "long: takes long, and runs with ./test --long")
    config.addinivalue_line("filterwarnings", "error")
    config.addinivalue_line("filterwarnings", "ignore:numpy.ndarray size changed")  # Debian 12's netCDF4, when imported


@pytest.fixture(scope="session")
def house_path():
    return ROOT / "examples/rainwater-house/model.toml"


@pytest.fixture(scope="session")
def house(house_path):
    return kesto.load(house_path)


@pytest.fixture
def own_house(tmp_path, house_path):
    """A copy of the house that a test may change."""
    shutil.copytree(house_path.parent, tmp_path / "house")
    return tmp_path / "house/model.toml"
