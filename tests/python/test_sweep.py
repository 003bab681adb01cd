"""Sweeps: the same bits as single runs, failures as rows, arrays over the keys of a grid."""
import os
import pathlib
import signal
import tempfile
import threading

import numpy
import pandas
import pytest

import kesto
from conftest import ROOT

P = {"tank.size": (200, 8000), "roof.size": (20, 200)}


@pytest.fixture(scope="module")
def grid():
    return kesto.grid({"tank.size": ["1 m3", "3 m3", "8 m3"], "roof.size": [50, 100]})


@pytest.fixture(scope="module")
def swept(house, grid):
    return house.sweep(grid, record=["tank:overflow", "roof"], jobs=2)


def test_members_equal_single_runs(house, grid, swept):
    assert swept.flows.dims == ("member", "flow", "time") and swept.flows.attrs["units"] == "L"
    assert swept.flows.sizes == {"member": 6, "flow": 2, "time": 1461}
    for member, row in grid.iterrows():
        run = house.run(dict(row), record=["tank:overflow", "roof"])
        for flow in swept.flows["flow"].values:
            alone = run.flows.sel(flow=flow).values
            assert swept.flows.sel(member=member, flow=flow).values.tobytes() == alone.tobytes()
        same = [name for name in run.figures.index if name in swept.figures]
        assert "tank.reliability_volume" in same
        for name in same:
            assert swept.figures.loc[member, name] == run.figures.loc[name, "value"], name
            assert swept.figures.attrs["units"][name] == run.figures.loc[name, "unit"]


def test_unstack_has_the_keys_as_dimensions(swept):
    cube = swept.unstack()
    assert cube["quantity"].sizes["tank.size"] == 3 and cube["quantity"].sizes["roof.size"] == 2
    for member, row in swept.design.iterrows():
        at = {key: row[key] for key in swept.design}
        assert float(cube["network.mains"].sel(at)) == swept.figures.loc[member, "network.mains"]
        assert numpy.array_equal(cube["quantity"].sel({**at, "flow": "tank:overflow"}).values,
                                 swept.flows.sel(member=member, flow="tank:overflow").values)
    assert cube["network.mains"].attrs["units"] == "L"


def test_unstack_of_one_key_and_of_no_grid(house):
    one = house.sweep({"tank.size": [1000, 3000]}).unstack()
    assert list(one["tank.size"].values) == [1000, 3000] and one["network.mains"].dims == ("tank.size",)
    holes = house.sweep([{"tank.size": 1000, "roof.size": 50}, {"tank.size": 3000, "roof.size": 60}]).unstack()
    assert int(holes["network.mains"].isnull().sum()) == 2
    with pytest.raises(kesto.Error, match="cannot be told apart"):
        house.sweep({"tank.size": [1000, 1000]}).unstack()


def test_unstack_has_no_place_for_the_models_own_value(house):
    several = house.sweep({"tank.size": [1000, 3000, 8000], "roof.size": [50, 100, None]}, end="2012-01-31")
    with pytest.raises(kesto.Error, match="member 3 has no value of roof.size, but the model's own"):
        several.unstack()
    with pytest.raises(kesto.Error, match="member 2 has no value of tank.size"):
        house.sweep({"tank.size": ["1 m3", None]}, end="2012-01-31").unstack()


def test_jobs_change_nothing(house, swept, grid):
    again = house.sweep(grid, record=["tank:overflow", "roof"], jobs=1)
    assert again.members.equals(swept.members) and again.flows.identical(swept.flows)


def test_every_and_options(house):
    years = house.sweep({"tank.size": [1000, 3000]}, record="tank:overflow", every="year", set={"roof.size": 80})
    days = house.sweep({"tank.size": [1000, 3000]}, record="tank:overflow", set={"roof.size": 80})
    assert years.flows.sizes["time"] == 4
    assert numpy.allclose(years.flows.sum("time"), days.flows.sum("time", dtype=float), rtol=1e-6)
    short = house.sweep({"tank.size": [1000]}, record="tank:overflow", start="2013-01-01", end="2013-01-31")
    assert short.flows.sizes["time"] == 31
    with pytest.raises(kesto.Error, match="every is 'week'; expected day, month or year"):
        house.sweep({"tank.size": [1000]}, every="week")
    with pytest.raises(kesto.Error, match="nothing was recorded"):
        house.sweep({"tank.size": [1000]}).flows


def test_members_that_fail_are_rows():
    breaking = kesto.load(ROOT / "tests/command/failing/infeasible.toml")
    sweep = breaking.sweep({"simulation.stop_on_infeasible": [True, False]}, record="all")
    assert list(sweep.failed.index) == [1]
    assert sweep.failed.loc[1, "outcome"] == "failed" and "Infeasibility" in sweep.failed.loc[1, "message"]
    assert numpy.isnan(sweep.flows.sel(member=1).values).all()
    assert not numpy.isnan(sweep.flows.sel(member=2).values).any()
    assert sweep.figures.loc[1].isna().all() and sweep.figures.loc[2].notna().any()
    assert "1 failed" in repr(sweep)


def test_wrong_cells_are_all_named_with_their_member(house):
    with pytest.raises(kesto.ModelError) as caught:
        house.sweep({"tank.size": [1000, -2, "x"]})
    assert [fault.file for fault in caught.value.faults] == ["member 2 of the design", "member 3 of the design"]
    with pytest.raises(kesto.ModelError, match="did you mean \"size\""):
        house.sweep({"tank.sze": [1, 2]})
    with pytest.raises(kesto.Error, match="no members"):
        house.sweep(pandas.DataFrame())
    with pytest.raises(kesto.Error, match=r"different numbers of values: 2 of tank.size, 1 of roof.size; .*kesto.grid combines"):
        house.sweep({"tank.size": [1, 2], "roof.size": [50]})
    with pytest.raises(kesto.Error, match="expected a list of values"):
        house.sweep({"tank.size": 3})
    for jobs in (0, 1.5):
        with pytest.raises(kesto.Error, match=f"jobs is {jobs}; expected a whole number from 1"):
            house.sweep({"tank.size": [1, 2]}, jobs=jobs)
    with pytest.raises(kesto.Error, match="client is 'x'; expected a dask.distributed.Client"):
        house.sweep({"tank.size": [1, 2]}, client="x")


def test_a_missing_cell_is_the_models_own(house):
    sweep = house.sweep(pandas.DataFrame({"tank.size": [None, "3 m3"], "roof.size": [50, numpy.nan]}))
    assert sweep.figures.loc[1, "network.mains"] == house.run({"roof.size": 50}).figures["value"]["network.mains"]
    assert sweep.figures.loc[2, "network.mains"] == house.run({"tank.size": 3000}).figures["value"]["network.mains"]
    nullable = house.sweep(pandas.DataFrame({"tank.size": pandas.array([pandas.NA, 3000], "Int64"), "roof.size": [50, None]}))
    assert nullable.figures.equals(sweep.figures)


def test_more_members_than_a_part_holds(house):
    design = kesto.lhs(P, 300, seed=1)
    sweep = house.sweep(design, record="tank:overflow", figures="key")
    assert len(sweep.pieces.parts) == 2 and list(sweep.flows["member"].values) == list(range(1, 301))
    for member in (1, 256, 257, 300):
        run = house.run(dict(design.loc[member]), record="tank:overflow")
        assert run.flows.sel(flow="tank:overflow").values.tobytes() == sweep.flows.sel(member=member).values.tobytes()
    totals = sweep.flows.sum("time", dtype=float).values[:, 0]
    assert numpy.allclose(totals, sweep.figures["tank:overflow"], rtol=1e-9)


def test_a_sweep_is_kept_on_request_and_goes_on(house, tmp_path):
    first = house.sweep({"tank.size": [1000, 3000]}, record="tank:overflow", keep=tmp_path / "kept")
    assert first.folder == tmp_path / "kept" and (tmp_path / "kept/members.csv").exists()
    again = house.sweep({"tank.size": [1000, 3000]}, record="tank:overflow", keep=tmp_path / "kept")
    assert again.members.equals(first.members)
    assert house.sweep({"tank.size": [1000]}).folder is None
    with pytest.raises(kesto.CommandError, match="kept holds another sweep, .* expected keep= with another folder$"):
        house.sweep({"tank.size": [2000]}, keep=tmp_path / "kept")


def test_members_have_the_keys_as_the_design_has_them(house):
    sweep = house.sweep({"tank.size": [1000, 3000.5], "roof.size": ["50 m2", "60 m2"]}, end="2012-01-31")
    assert sweep.members["tank.size"].tolist() == [1000, 3000.5] and sweep.members["tank.size"].dtype == float
    assert sweep.members["roof.size"].tolist() == ["50 m2", "60 m2"]


def test_an_interrupt_ends_the_members_and_clears_up(house, tmp_path, monkeypatch):
    """Ctrl-C in the middle of a long sweep: no process of it is left, and no folder."""
    monkeypatch.setattr(tempfile, "tempdir", str(tmp_path))
    threading.Timer(1.5, os.kill, [os.getpid(), signal.SIGINT]).start()
    with pytest.raises(KeyboardInterrupt):
        house.sweep(kesto.lhs(P, 20_000, seed=1), jobs=2)

    def left():
        places = (place / "cmdline" for place in pathlib.Path("/proc").glob("[0-9]*"))
        return [place for place in places if os.fsencode(tmp_path) in read(place)]

    def read(place):
        try:
            return place.read_bytes()
        except OSError:  # it has ended since
            return b""

    assert not left()
    assert not list(tmp_path.iterdir())


def test_plots(house, swept, tmp_path):
    axes = swept.plot("tank.reliability_volume")
    assert (axes.get_xlabel(), axes.get_ylabel()) == ("tank.size, m3", "roof.size")
    one = house.sweep({"tank.size": ["1 m3", "3 m3"]}).plot("network.mains")
    assert (one.get_xlabel(), one.get_ylabel()) == ("tank.size, m3", "network.mains, m³")
    one.figure.savefig(tmp_path / "sweep.png")
    default = house.sweep({"tank.size": ["1 m3", "3 m3"], "roof.size": ["50 m2", "60 m2"]}).plot()
    assert default.figure.axes[-1].get_ylabel() == "tank.reliability_volume"
    assert house.sweep({"roof.size": [50, 60]}).plot().get_ylabel() == "network.mains, m³"
    with pytest.raises(kesto.Error, match="there is no figure"):
        swept.plot("nothing")
