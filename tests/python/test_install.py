"""The package as pip installs it, in an environment that sees the system's packages."""
import os
import shutil
import subprocess
import sys

import pytest

import kesto
from conftest import ROOT

CODE = """
import importlib.metadata, sys, kesto
assert kesto.__file__.startswith(sys.prefix), kesto.__file__
house = kesto.load(sys.argv[1])
print(importlib.metadata.version("kesto"), house.run(record="tank:overflow").flows.sizes["time"])
"""


def test_pip_installs_it(tmp_path, house_path):
    pytest.importorskip("pip")
    # A copy: pip builds beside the sources.
    sources = tmp_path / "sources"
    shutil.copytree(ROOT / "python", sources, ignore=shutil.ignore_patterns("__pycache__", ".mypy_cache", "build", "*.egg-info"))
    subprocess.run([sys.executable, "-m", "venv", "--system-site-packages", tmp_path / "env"], check=True)
    python = tmp_path / "env/bin/python"
    clean = {name: value for name, value in os.environ.items() if name != "PYTHONPATH"}
    installed = subprocess.run([python, "-m", "pip", "install", "-q", "--no-index", "--no-deps", "--no-build-isolation", sources],
                               env=clean, capture_output=True, text=True)
    assert installed.returncode == 0, installed.stderr
    assert list((tmp_path / "env").rglob("site-packages/kesto/py.typed"))
    done = subprocess.run([python, "-c", CODE, house_path], env=clean, cwd=tmp_path, capture_output=True, text=True)
    assert done.stdout.split() == [kesto.__version__, "1461"], done.stderr
