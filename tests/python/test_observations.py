"""Observations of many kinds meet the days of a run, or an error says why they do not."""
import datetime

import numpy
import pandas
import pytest
import xarray

import kesto
from kesto.observations import aligned, period

STEPS = pandas.date_range("2012-01-01", periods=100)
NOON = pandas.Timedelta(hours=12)
DAYS = STEPS[20:50]
SERIES = pandas.Series(numpy.arange(30.0), DAYS)


def expected(series=SERIES):
    return series.reindex(STEPS).to_numpy()


def relabelled(index):
    return pandas.Series(SERIES.to_numpy(), index)


@pytest.mark.parametrize("index", [DAYS, DAYS.strftime("%Y-%m-%d"), [f"{day} " for day in DAYS], list(DAYS.date), DAYS.to_period("D"),
                                   [datetime.datetime(2012, 1, day) for day in range(21, 31)] + list(DAYS[10:])],
                         ids=["dates", "texts", "with time", "datetime.date", "periods", "mixed"])
def test_dates_of_many_kinds(index):
    assert numpy.array_equal(aligned("f", relabelled(index), STEPS, "L"), expected(), equal_nan=True)


def test_missing_values_and_days_are_left_out():
    gaps = SERIES.astype("Float64")
    gaps.iloc[::3] = pandas.NA
    found = aligned("f", gaps, STEPS, "L")
    assert numpy.array_equal(found, expected(gaps.astype(float)), equal_nan=True)
    assert numpy.array_equal(aligned("f", gaps.dropna(), STEPS, "L"), found, equal_nan=True)
    texts = SERIES.astype(object)
    texts.iloc[3] = None
    texts.iloc[4] = "4.0"  # as a CSV file has it
    assert numpy.isnan(aligned("f", texts, STEPS, "L")[23]) and aligned("f", texts, STEPS, "L")[24] == 4


def test_values_without_dates_are_those_of_all_days():
    for values in (expected(), list(expected()), pandas.Series(expected()), xarray.DataArray(expected())):
        assert numpy.array_equal(aligned("f", values, STEPS, "L"), expected(), equal_nan=True)


@pytest.mark.parametrize("unit, of, factor", [("L", "L", 1), ("m3", "L", 1000), ("m³", "L", 1000), ("ML", "L", 1e6), ("cm", "mm", 10)])
def test_units_are_converted(unit, of, factor):
    array = xarray.DataArray(SERIES.to_numpy(), {"time": DAYS}, attrs={"units": unit})
    assert numpy.array_equal(aligned("f", array, STEPS, of), factor * expected(), equal_nan=True)


def test_a_unit_that_is_none_of_the_flow():
    array = xarray.DataArray(SERIES.to_numpy(), {"time": DAYS}, attrs={"units": "mm"})
    with pytest.raises(kesto.Error, match="observations of f are in 'mm', the flow in L; expected L, m3,"):
        aligned("f", array, STEPS, "L")
    marked = SERIES.copy()
    marked.attrs["units"] = "gallon"
    with pytest.raises(kesto.Error, match="'gallon'"):
        aligned("f", marked, STEPS, "L")


def changed(at, value):
    series = SERIES.astype(object)
    series.iloc[at] = value
    return series


def double(at):
    return pandas.concat([SERIES, SERIES.iloc[at:at + 1]])


@pytest.mark.parametrize("series, text", [
    (SERIES.tz_localize("UTC"), "time zone UTC; expected dates without one: tz_localize"),
    (SERIES.shift(freq=NOON), "at 2012-01-21 12:00:00 is of no step of the run; expected dates at midnight"),
    (pandas.concat([SERIES, SERIES.iloc[3:5].shift(freq=NOON)]), "at 2012-01-24 12:00:00 is of no step"),
    (double(7), "two observations at 2012-01-28"),
    (changed(5, numpy.inf), "observation of f at 2012-01-26 is infinite"),
    (changed(6, "12,5"), "observation of f at 2012-01-27 is no number: '12,5'"),
    (relabelled(DAYS.strftime("%d.%m.%Y")), "the date '21.01.2012' of an observation of f cannot be read; expected YYYY-MM-DD"),
    (relabelled([None, *DAYS[1:]]), "observation 1 of f has no date"),
    (relabelled(["1650-01-01", *DAYS[1:]]), "the date '1650-01-01' of an observation"),
    (pandas.Series([30.0, 20.0, 10.0], pandas.date_range("2012-01-01", periods=3, freq="MS")),
     "29 days or more apart, from 2012-01-01 on: sums over longer periods"),
    (pandas.Series([30.0], pandas.period_range("2012-01", periods=1, freq="M")), "periods with the frequency M; expected days"),
    (SERIES.iloc[::7], "7 days or more apart"), (SERIES.to_frame(), r"a DataFrame of shape \(30, 1\); expected one series"),
    ([1.0, 2.0], "2 observed values without dates; .* each of the 100 days"),
    (xarray.DataArray(numpy.ones((2, 3)), dims=("flow", "time")), "expected time alone")])
def test_observations_that_cannot_be_compared(series, text):
    with pytest.raises(kesto.Error, match=text):
        aligned("f", series, STEPS, "L")


def test_single_days_count_where_the_days_between_are_missing():
    spots = SERIES.iloc[::7]
    assert numpy.array_equal(aligned("f", spots.asfreq("D"), STEPS, "L"), expected(spots), equal_nan=True)
    assert numpy.array_equal(aligned("f", spots.iloc[:1], STEPS, "L"), expected(spots.iloc[:1]), equal_nan=True)


def test_steps_of_two_days():
    steps, series = STEPS[::2], SERIES.iloc[::2]
    assert numpy.array_equal(aligned("f", series, steps, "L"), series.reindex(steps).to_numpy(), equal_nan=True)
    with pytest.raises(kesto.Error, match="at 2012-01-22 is of no step .*: days 2 apart, from 2012-01-01 on"):
        aligned("f", SERIES, steps, "L")


@pytest.mark.parametrize("warmup", [30, 30.0, numpy.int64(30), numpy.float32(30), "30", "30D", "720h", datetime.timedelta(30),
                                    numpy.timedelta64(30, "D"), pandas.Timedelta("30D")])
def test_a_warmup_counts_in_days(warmup):
    assert period(warmup) == datetime.timedelta(days=30)


@pytest.mark.parametrize("warmup", [-5, "-5", "a year", None, numpy.nan, numpy.inf, [30]])
def test_a_warmup_that_is_none(warmup):
    with pytest.raises(kesto.Error, match="expected a number of days from 0, or a text such as \"365D\""):
        period(warmup)


def test_a_calibration_takes_texts_as_dates_and_converts_units(house):
    bounds, end = {"tank.size": (200, 8000)}, "2012-06-30"
    overflow = house.run({"tank.size": 3000}, end=end).flows.sel(flow="tank:overflow")
    series = overflow.to_series().iloc[40:]
    cubic = (overflow[40:].astype(float) / 1000).assign_attrs(units="m3")
    same = [house.calibrate(bounds, {"tank:overflow": given}, metric="nse", warmup=warmup, max_members=40, seed=1, end=end)
            for given, warmup in ((series, 60), (series.rename(index=str), 60.0), (cubic, numpy.int64(60)))]
    assert same[0].best == same[1].best == pytest.approx(same[2].best)
    assert same[0].value == same[1].value == pytest.approx(same[2].value, abs=1e-9)
