"""Loading, checking and running a model."""
import datetime
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import textwrap
import threading
import time

import numpy
import pandas
import pytest
import xarray

import kesto
from conftest import ROOT
from kesto import command


def test_load_tells_what_the_model_is(house):
    assert house.title == "House with a rainwater tank"
    assert (house.start, house.end) == (datetime.date(2012, 1, 1), datetime.date(2015, 12, 31))
    assert (house.steps, house.components, house.connections) == (1461, 13, 18)
    assert house.path.is_absolute()
    assert house.warnings.empty and "code" in house.warnings


def test_load_reports_all_faults_with_file_and_line():
    with pytest.raises(kesto.ModelError) as caught:
        kesto.load(ROOT / "tests/command/broken/names.toml")
    faults = caught.value.faults
    assert len(faults) > 5
    assert all(fault.file.endswith("names.toml") and fault.line for fault in faults)
    assert str(caught.value).count("\n") == len(faults) - 1


def test_load_of_no_file():
    with pytest.raises(kesto.ModelError, match="No such file"):
        kesto.load("no such model.toml")


def test_warnings_of_a_model():
    model = kesto.load(next((ROOT / "tests/command/doubtful").glob("*.toml")))
    assert not model.warnings.empty
    assert set(model.warnings["severity"]) <= {"warning", "note"}


def test_notebook_shows_components_period_and_drawing(house, own_house, monkeypatch):
    shown = house._repr_html_()
    assert "13, with 18 connections" in shown and "2012-01-01 to 2015-12-31" in shown
    if shutil.which("dot"):
        assert "<svg" in shown and "tank" in shown
    monkeypatch.setenv("PATH", "")  # no Graphviz
    assert "<svg" not in house._repr_html_()


def test_titles_are_escaped(own_house):
    own_house.write_text(own_house.read_text().replace("House with a rainwater tank", "<script>alert(1)</script>"))
    assert "<script>" not in kesto.load(own_house)._repr_html_()


@pytest.mark.parametrize("size", ["3 m3", 3000, 3000.0, numpy.float64(3000), numpy.int32(3000), numpy.array(3000),
                                  numpy.array(3000.0), xarray.DataArray(3000.0)])
def test_values_are_set(house, size):
    assert house.run({"tank.size": size}, record="none").figures["value"]["tank.served"] == pytest.approx(106235, abs=1)


def test_values_that_are_none(house):
    with pytest.raises(TypeError, match="no value of a key"):
        house.run({"tank.size": None})
    with pytest.raises(TypeError, match="no value of a key"):
        house.run({"tank.size": {"m3": 3}})
    with pytest.raises(TypeError, match="the values to set are 'tank.size=3'; expected a mapping"):
        house.run("tank.size=3")


def test_monthly_values(house):
    monthly = [1.0] * 12
    for values in (monthly, numpy.ones(12), pandas.Series(monthly), xarray.DataArray(monthly)):
        run = house.run({"groups.garden.demand_fluctuation.monthly": values})
        garden = run.flows.sel(flow="garden:demand").values
        assert (garden == garden[0]).all()


def test_a_wrong_key_is_a_model_error(house):
    with pytest.raises(kesto.ModelError, match="did you mean \"size\"") as caught:
        house.run({"tank.sise": 3, "roof.size": "one"})
    assert len(caught.value.faults) == 2


def test_scenarios_and_period(own_house):
    with own_house.open("a") as file:
        file.write("\n[scenarios.dry]\nseries.rainfall.scale = 0.5\n[scenarios.large]\n\"tank.size\" = \"5 m3\"\n")
    model = kesto.load(own_house)
    dry = model.run(scenario="dry", record="none")
    both = model.run(scenario=["dry", "large"], record="none")
    same = model.run({"series.rainfall.scale": 0.5, "tank.size": 5000}, record="none")
    assert dry.figures["value"]["tank.served"] < both.figures["value"]["tank.served"]
    assert both.figures.equals(same.figures)
    year = model.run(start="2013-01-01", end=datetime.date(2013, 12, 31))
    assert year.flows.sizes["time"] == 365
    assert model.run(start=pandas.Timestamp("2013-01-01"), end="2013-12-31").flows.identical(year.flows)
    assert model.run(start=numpy.datetime64("2013-01-01"), end=numpy.datetime64("2013-12-31T00:00")).flows.identical(year.flows)
    with pytest.raises(TypeError, match="2013 is no day; expected a date"):
        model.run(start=2013)


def test_record(house):
    assert list(house.run(record=["tank:overflow", "roof"]).flows["flow"].values)[:2] == ["roof:runoff", "tank:overflow"]
    assert "tank:overflow" not in house.run(record="none").flows["flow"].values
    with pytest.raises(kesto.ModelError, match="no output \"x\""):
        house.run(record="tank:x")


def test_a_run_that_stops():
    model = kesto.load(ROOT / "tests/command/failing/infeasible.toml")
    with pytest.raises(kesto.RunError, match="Infeasibility") as caught:
        model.run()
    error = caught.value
    assert (error.outcome, error.step, error.component) == ("failed", 3, "intake")
    assert error.result.flows.sizes["time"] == 2


def test_results_are_kept_on_request_only(house, tmp_path, monkeypatch):
    scratch = tmp_path / "scratch"
    scratch.mkdir()
    monkeypatch.setattr(tempfile, "tempdir", str(scratch))
    run = house.run()
    assert run.folder is None and not list(scratch.iterdir())
    kept = house.run(keep=tmp_path / "kept")
    assert kept.folder == tmp_path / "kept"
    again = kesto.open_results(tmp_path / "kept")
    assert again.flows.identical(run.flows) and again.figures.equals(run.figures)
    (tmp_path / "mine").mkdir()
    (tmp_path / "mine/results.nc").write_text("mine")
    with pytest.raises(kesto.CommandError, match="mine/results.nc is no file that a run has left here"):
        house.run(keep=tmp_path / "mine")
    with pytest.raises(kesto.Error, match="holds no results"):
        kesto.open_results(tmp_path)


def test_edits_of_the_model_count(own_house):
    model = kesto.load(own_house)
    own_house.write_text(own_house.read_text().replace("size = 1500", "sise = 1500"))
    with pytest.raises(kesto.ModelError, match="sise"):
        model.run()


def children():
    return [pid for listed in pathlib.Path("/proc/self/task").glob("*/children") for pid in listed.read_text().split()]


def test_an_interrupt_ends_the_children(tmp_path, monkeypatch):
    """A command that would run for a minute ends when Ctrl-C reaches Python."""
    slow = tmp_path / "slow"
    slow.write_text(f"#!/bin/sh\n[ $1 = --version ] && echo kesto {kesto.__version__} && exit\nexec sleep 60\n")
    slow.chmod(0o755)
    monkeypatch.setenv("KESTO", str(slow))
    threading.Timer(0.5, os.kill, [os.getpid(), signal.SIGINT]).start()
    begin = time.monotonic()
    with pytest.raises(KeyboardInterrupt):
        command.call("run")
    assert time.monotonic() - begin < 20
    assert not children()


def test_an_interrupt_while_a_folder_is_removed(house, tmp_path, monkeypatch):
    monkeypatch.setattr(tempfile, "tempdir", str(tmp_path))
    remove = tempfile.TemporaryDirectory._rmtree

    def interrupted(*arguments, **options):
        os.kill(os.getpid(), signal.SIGINT)
        remove(*arguments, **options)

    monkeypatch.setattr(tempfile.TemporaryDirectory, "_rmtree", staticmethod(interrupted))
    for call in (lambda: house.run(end="2012-01-02"), lambda: house.sweep({"tank.size": [1000]}, end="2012-01-02")):
        with pytest.raises(KeyboardInterrupt):
            call()
        assert not list(tmp_path.iterdir())
    assert signal.getsignal(signal.SIGINT) is signal.default_int_handler


def test_an_interrupt_while_the_command_starts(tmp_path, monkeypatch):
    class Interrupted(subprocess.Popen):
        def __init__(self, *arguments, **options):
            super().__init__(*arguments, **options)
            os.kill(os.getpid(), signal.SIGINT)

    slow = tmp_path / "slow"
    slow.write_text(f"#!/bin/sh\n[ $1 = --version ] && echo kesto {kesto.__version__} && exit\nexec sleep 60\n")
    slow.chmod(0o755)
    monkeypatch.setenv("KESTO", str(slow))
    command.find()
    monkeypatch.setattr(subprocess, "Popen", Interrupted)
    with pytest.raises(KeyboardInterrupt):
        command.call("run")
    assert not children()


def test_run_costs_little_more_than_the_command(house, tmp_path):
    arguments = [command.find(), "run", "-q", str(house.path), "--json", "--balance", "--format", "netcdf", "-o",
                 str(tmp_path / "out")]

    def seconds(call):
        begin = time.perf_counter()
        call()
        return time.perf_counter() - begin

    house.run()
    pairs = [(seconds(house.run), seconds(lambda: subprocess.run(arguments, capture_output=True, check=True)))
             for _ in range(15)]
    package, alone = (min(times) for times in zip(*pairs))
    print(f"m.run {1000 * package:.1f} ms, kesto run {1000 * alone:.1f} ms")
    assert package <= alone + 0.040
