"""The package before any model: importing, finding the command, types, and the examples of docstrings."""
import doctest
import importlib
import os
import pathlib
import pickle
import re
import subprocess
import sys

import pytest

import kesto
from kesto import command

ROOT = pathlib.Path(__file__).resolve().parents[2]
PACKAGE = ROOT / "python/kesto"
MODULES = sorted(path.stem for path in PACKAGE.glob("*.py") if path.stem != "__init__")
HEAVY = {"numpy", "pandas", "xarray", "netCDF4", "scipy", "matplotlib", "emcee", "distributed", "dask", "tqdm"}


def in_new_process(code, **environment):
    done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=60,
                          env={**os.environ, **environment})
    assert done.returncode == 0, done.stderr
    return done.stdout.strip()


def test_import_is_quick_and_imports_nothing_heavy():
    code = ("import time, sys; begin = time.perf_counter(); import kesto\n"
            "print(time.perf_counter() - begin, *sys.modules)")
    seconds, *modules = min((in_new_process(code).split() for _ in range(5)), key=lambda words: float(words[0]))
    assert float(seconds) <= 0.15
    assert not HEAVY & set(modules)


def test_each_public_name_is_there_and_listed():
    for name in kesto.__all__:
        assert getattr(kesto, name).__doc__, name
        assert name in dir(kesto)
    with pytest.raises(AttributeError, match="no attribute 'nothing'"):
        kesto.nothing


def test_names_of_the_ctypes_module_lead_to_it():
    with pytest.raises(AttributeError, match="kesto.engine.AUEglobals now"):
        kesto.AUEglobals
    for call in (lambda: kesto.load(), lambda: kesto.load("build/release/libKESTO.so")):
        with pytest.raises(TypeError, match="from kesto import engine"):
            call()


def test_version_is_that_of_the_project():
    assert re.search(r"project\(KESTO\s+VERSION (\S+)", (ROOT / "CMakeLists.txt").read_text())[1] == kesto.__version__


def program(path, text):
    path.write_text(f"#!/bin/sh\n{text}\n")
    path.chmod(0o755)
    return path


def test_command_of_the_environment_comes_first(tmp_path, monkeypatch):
    mine = program(tmp_path / "mine", f"echo kesto {kesto.__version__}")
    monkeypatch.setenv("KESTO", str(mine))
    assert command.find() == str(mine)
    monkeypatch.setenv("KESTO", str(tmp_path / "nothing"))
    with pytest.raises(kesto.CommandError, match="nothing in the environment is no program"):
        command.find()


def test_command_beside_the_package_comes_before_the_path(tmp_path, monkeypatch):
    monkeypatch.delenv("KESTO")
    monkeypatch.setenv("PATH", str(tmp_path))
    program(tmp_path / "kesto", f"echo kesto {kesto.__version__}")
    beside = tmp_path / "beside"
    program(beside, f"echo kesto {kesto.__version__}")
    monkeypatch.setattr(command, "_beside_package", lambda: iter([beside]))
    assert command.find() == str(beside)
    monkeypatch.setattr(command, "_beside_package", lambda: iter([tmp_path / "none"]))
    assert command.find() == str(tmp_path / "kesto")
    (tmp_path / "kesto").unlink()
    with pytest.raises(kesto.CommandError, match="no kesto command beside this package or on PATH"):
        command.find()


def test_places_beside_the_package(monkeypatch):
    places = [str(place) for place in command._beside_package()]
    assert places[0] == str(ROOT / "build/release/kesto")
    monkeypatch.setattr(command, "__file__", "/usr/lib/python3/dist-packages/kesto/command.py")
    assert "/usr/bin/kesto" in [str(place) for place in command._beside_package()]


def test_command_of_another_version(tmp_path, monkeypatch):
    monkeypatch.setenv("KESTO", str(program(tmp_path / "old", "echo kesto 0.0.9")))
    with pytest.raises(kesto.CommandError, match="another version: it prints \"kesto 0.0.9\", this package is"):
        command.find()


def test_errors_can_be_pickled():
    """They cross processes of a cluster."""
    fault = kesto.Fault("unknown-key", "error", "no such key", "model.toml", 3, 1)
    for error in (kesto.ModelError("model.toml", [fault]), kesto.RunError("stopped", "failed", 3, "tank")):
        again = pickle.loads(pickle.dumps(error))
        assert str(again) == str(error) and vars(again) == vars(error)
    assert str(fault) == "model.toml:3:1: error: no such key"


@pytest.mark.parametrize("name", MODULES)
def test_docstrings(name):
    module = importlib.import_module(f"kesto.{name}")
    failed, _ = doctest.testmod(module)
    assert not failed
    assert module.__doc__


@pytest.mark.long
def test_types():
    mypy = subprocess.run([sys.executable, "-m", "mypy", "--strict"], cwd=ROOT / "python",
                          capture_output=True, text=True, timeout=600)
    assert mypy.returncode == 0, mypy.stdout
