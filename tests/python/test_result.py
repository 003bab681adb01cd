"""The arrays and tables of a run, against its CSV files to the last bit."""
import csv
import pickle
import subprocess

import numpy
import pandas
import pytest
import xarray

import kesto
from conftest import ROOT
from kesto import command


@pytest.fixture(scope="module", params=["rainwater-house", "green-roof"])
def both(request, tmp_path_factory):
    """A run, and the folder of the same run as CSV."""
    folder = tmp_path_factory.mktemp(request.param)
    model = kesto.load(ROOT / f"examples/{request.param}/model.toml")
    subprocess.run([command.find(), "run", "-q", str(model.path), "--balance", "-o", str(folder)], check=True)
    return model.run(), folder


def columns(path):
    """Single-precision values by the column's header, without its unit."""
    with path.open(newline="") as file:
        header, *rows = csv.reader(file)
    return {name.rsplit(" [", 1)[0]: numpy.array([numpy.float32(row[at] or "nan") for row in rows])
            for at, name in enumerate(header) if at}


def same(array, values):
    return numpy.array_equal(numpy.asarray(array, numpy.float32).view(numpy.uint32), values.view(numpy.uint32))


def test_flows_equal_the_csv(both):
    run, folder = both
    written = columns(folder / "flows.csv")
    arrays = {name: array.sel(flow=name) for array in (run.flows, run.depths) for name in array["flow"].values}
    assert arrays.keys() == written.keys() and arrays
    assert all(same(arrays[name], values) for name, values in written.items())


def test_states_equal_the_csv(both):
    run, folder = both
    written = columns(folder / "states.csv")
    found = 0
    for array in (run.states, run.state_depths):
        for name in array["store"].values:
            (column,) = [key for key in written if key.split(" ")[0].split(":")[0] == name and "quality" not in key]
            assert same(array.sel(store=name), written[column])
            found += 1
    assert found


def test_qualities_equal_the_csv(both):
    run, folder = both
    written = columns(folder / "qualities.csv")
    assert written
    for name in run.qualities["flow"].values:
        # The CSV leaves out flows that have no quality at any time.
        values = written.get(name, numpy.full(run.qualities.sizes["time"], -1, numpy.float32))
        expected = numpy.where(values == -1, numpy.float32("nan"), values)
        assert numpy.array_equal(run.qualities.sel(flow=name).values, expected, equal_nan=True)


def test_units_dimensions_and_types(both):
    run, _ = both
    assert run.flows.dims == ("flow", "time") and run.flows.dtype == numpy.float32
    assert run.flows.attrs["units"] == "L" and run.states.attrs["units"] == "L"
    assert run.depths.attrs["units"] == "mm" and run.depths.dims == ("flow", "time")
    assert set(run.flows["carries"].values) <= {"water", "demand", "either"}
    assert run.potentials.dims == ("potential", "group", "time")
    assert dict(zip(run.potentials["potential"].values, run.potentials["units"].values))["energy"] == "kWh"
    assert float(run.potentials.max()) < 1e30  # no fill value passes for a potential


def test_round_trips_of_pandas_xarray_and_netcdf(both, tmp_path):
    run, _ = both
    table = run.flows.to_pandas()
    assert same(xarray.DataArray(table).values, run.flows.values)
    run.dataset.to_netcdf(tmp_path / "again.nc")
    again = xarray.open_dataset(tmp_path / "again.nc").load()
    for name, variable in run.dataset.data_vars.items():
        if variable.dtype.kind == "f":
            assert numpy.array_equal(again[name].values, variable.values, equal_nan=True), name
    assert list(again["flow"].values) == list(run.dataset["flow"].values)
    again.close()


def test_figures_and_account_equal_the_csv(both):
    run, folder = both
    figures = pandas.read_csv(folder / "figures.csv", index_col="figure", float_precision="round_trip")
    assert list(run.figures.index) == list(figures.index)
    assert numpy.array_equal(run.figures["value"], figures["value"], equal_nan=True)
    assert list(run.figures["unit"]) == list(figures["unit"])
    account = pandas.read_csv(folder / "account.csv", float_precision="round_trip")
    assert numpy.array_equal(run.account["litres"], account["litres"])
    assert list(run.account["kind"]) == list(account["kind"])


def test_tables(both):
    run, _ = both
    network = run.balance.loc["network"].iloc[0]
    assert abs(network["error"]) <= network["tolerance"]
    assert set(run.summary.index) <= set(run.figures.index)
    assert not any("_jan" in name for name in run.summary.index) and run.summary["value"].notna().all()
    assert list(run.warnings.columns)[:3] == ["code", "severity", "text"]
    assert "<table" in run._repr_html_() and run.info["title"] in repr(run)


def test_sums_of_years(house):
    run = house.run()
    overflow = run.flows.sel(flow="tank:overflow")
    years = overflow.resample(time="YS").sum()
    assert years.sizes["time"] == 4
    assert float(years.sum()) == pytest.approx(float(overflow.sum(dtype=float)), rel=1e-6)


def test_a_result_can_be_pickled(house):
    run = house.run()
    run.dataset
    assert pickle.loads(pickle.dumps(run)).flows.identical(run.flows)


def test_plot(both, tmp_path):
    run, _ = both
    axes = run.plot()
    axes.figure.savefig(tmp_path / "run.png")
    assert axes.get_ylabel().startswith("flow, ") and axes.get_lines()
    with pytest.raises(kesto.Error, match="there is no flow 'nothing'"):
        run.plot(["nothing"])
    with pytest.raises(kesto.Error, match="expected day, month or year"):
        run.plot(every="week")


def labels(ax):
    return [line.get_label() for line in ax.get_lines()]


def test_plots_show_the_last_period_in_full(house):
    run = house.run(start="2012-01-15", end="2014-03-10")
    yearly = run.plot("tank:overflow", every="year").get_lines()
    overflow = run.flows.sel(flow="tank:overflow").to_series()
    assert len(yearly) == 1 and list(yearly[0].get_ydata()[:-1]) == pytest.approx(list(overflow.resample("YS").sum() / 1000))
    days = [str(day)[:10] for day in yearly[0].get_xdata()]
    assert days == ["2012-01-15", "2013-01-01", "2014-01-01", "2014-03-11"]


def test_plots_tell_demands_from_water_and_draw_no_flow_twice(house):
    run = house.run()
    lines = run.plot().get_lines()
    drawn = {line.get_label(): run.flows.sel(flow=line.get_label()) for line in lines}
    assert len({flow.values.tobytes() for flow in drawn.values()}) == len(drawn) == 8
    carried = {str(flow["carries"].values): line.get_linestyle() for line, flow in zip(lines, drawn.values())}
    assert carried == {"water": "-", "demand": "--"}
    for line, flow in zip(lines, drawn.values()):
        assert line.get_linestyle() == carried[str(flow["carries"].values)]


def test_plots_have_a_panel_for_each_unit():
    run = kesto.load(ROOT / "examples/town/model.toml").run()
    panels = run.plot(every="year").figure.axes
    assert [ax.get_ylabel() for ax in panels] == ["flow, ML a year", "flow, mm a year", "stored, ML", "stored, mm"]
    assert labels(panels[3]) == list(run.state_depths["store"].values)
    assert len({line.get_color() for line in panels[2].get_lines()}) == run.states.sizes["store"] > 10
    soil = run.depths["flow"].values[0]
    assert labels(run.plot([soil]).figure.axes[0]) == [soil]


def test_labels_of_dates_do_not_touch(house):
    for run in (house.run(), house.run(end="2012-03-01"), house.run(end="2012-01-01")):
        ax = run.plot()
        bottom = ax.figure.axes[-1]
        ax.figure.canvas.draw()
        boxes = [text.get_window_extent() for text in bottom.get_xticklabels() if text.get_text()]
        assert 1 < len(boxes) and all(left.x1 < right.x0 for left, right in zip(boxes, boxes[1:]))


@pytest.mark.parametrize("start, end", [("1650-01-01", "1651-12-31"), ("2260-01-01", "2264-12-31")])
def test_dates_that_pandas_cannot_hold(tmp_path, start, end):
    path = tmp_path / "model.toml"
    path.write_text(f"""kesto_model = 1
[simulation]
start = {start}
end = {end}
[groups.g]
rainfall = 5
[brands.b]
evaporation_fraction = 0.1
[[components]]
name = "roof"
type = "impervious_surface"
group = "g"
brand = "b"
size = 50
""")
    model = kesto.load(path)
    run = model.run()
    assert str(run.flows["time"].values[0])[:10] == start and str(run.flows["time"].values[-1])[:10] == end
    for every in ("day", "month", "year"):
        line = run.plot("roof:runoff", every=every).get_lines()[0]
        assert str(line.get_xdata()[0])[:10] == start
    assert len(line.get_ydata()) == int(end[:4]) - int(start[:4]) + 2
    with pytest.raises(kesto.Error, match=f"the run lasts from {start}.* to {end}.*; observations need dates from 1677-09-21 to 2262"):
        model.calibrate({"roof.size": (20, 200)}, {"roof:runoff": run.flows.sel(flow="roof:runoff")}, max_members=40, seed=1)
