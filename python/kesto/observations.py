"""Observations of flows: series of many kinds as a number for each step of a run."""
from __future__ import annotations

import datetime
from typing import Any, Union

import numpy
import pandas

from .designs import Floats
from .errors import Error

Period = Union[int, float, str, datetime.timedelta]

# Units that become that of a flow, as after `--set`.
_FACTORS = {"L": {"L": 1.0, "m3": 1000.0, "m³": 1000.0, "ML": 1e6, "hm3": 1e9},
            "mm": {"mm": 1.0, "L/m2": 1.0, "cm": 10.0, "m": 1000.0, "in": 25.4}}


def aligned(name: str, series: Any, time: Any, unit: str) -> Floats:
    """What was observed of a flow at each step, (time,), in the unit of the flow; not a number where nothing was.

    Raises
    ------
    Error
        Its dates, values or unit cannot be those of the flow.
    """
    steps = _steps(time)
    factor = _factor(name, getattr(series, "attrs", {}).get("units"), unit)
    given = _series(name, series)
    days = _days(name, given.index)
    if days is None and len(given) != len(steps):
        raise Error(f"{name} has {len(given)} observed values without dates; expected a series with dates, or a value"
                    f" for each of the {len(steps)} days")
    values = _numbers(name, given) * factor
    if days is None:
        return values
    _expect_steps(name, days, steps)
    found: Floats = pandas.Series(values, days).reindex(steps).to_numpy()
    return found


def period(warmup: Period) -> pandas.Timedelta:
    """Days, or a text with a unit, as a time.

    >>> period(30) == period(30.0) == period("30") == period("30D")
    True

    Raises
    ------
    Error
        It is no time, or a negative one.
    """
    try:
        try:
            found = pandas.Timedelta(warmup if isinstance(warmup, (datetime.timedelta, numpy.timedelta64))
                                     else datetime.timedelta(days=float(warmup)))
        except (TypeError, ValueError):
            found = pandas.Timedelta(warmup)
        if found >= pandas.Timedelta(0):
            return found
    except (TypeError, ValueError, OverflowError):
        pass
    raise Error(f"warmup is {warmup!r}; expected a number of days from 0, or a text such as \"365D\"")


def _steps(time: Any) -> pandas.DatetimeIndex:
    try:
        return pandas.DatetimeIndex(time)
    except (TypeError, ValueError):
        raise Error(f"the run lasts from {time[0]} to {time[-1]}; observations need dates from"
                    f" {pandas.Timestamp.min:%Y-%m-%d} to {pandas.Timestamp.max:%Y-%m-%d}, which pandas can hold:"
                    " give start and end") from None


def _factor(name: str, found: Any, unit: str) -> float:
    """What takes observations to the unit of the flow; 1 where they have no unit."""
    if found is None or found == unit:
        return 1.0
    known = _FACTORS.get(unit, {})
    if found not in known:
        raise Error(f"the observations of {name} are in {found!r}, the flow in {unit}; expected {', '.join(known)}")
    return known[found]


def _series(name: str, series: Any) -> pandas.Series:
    if hasattr(series, "to_series"):
        if getattr(series, "ndim", 1) != 1:
            raise Error(f"the observations of {name} have dimensions {series.dims}; expected time alone")
        series = series.to_series()
    if isinstance(series, pandas.Series):
        return series
    values = numpy.asarray(series)
    if values.ndim != 1:
        raise Error(f"the observations of {name} are a {type(series).__name__} of shape {values.shape}; expected one"
                    " series")
    return pandas.Series(values)


def _numbers(name: str, given: pandas.Series) -> Floats:
    values: Floats = pandas.to_numeric(given, errors="coerce").to_numpy(float, na_value=numpy.nan)
    for wrong, what in ((numpy.isinf(values), "infinite"), (numpy.isnan(values) & given.notna().to_numpy(), "no number")):
        if wrong.any():
            at = wrong.argmax()
            raise Error(f"the observation of {name} at {_label(given.index[at])} is {what}: {given.iloc[at]!r}; expected"
                        " numbers, and none where nothing was observed")
    return values


def _label(label: Any) -> str:
    return str(label).removesuffix(" 00:00:00")


def _days(name: str, index: pandas.Index) -> pandas.DatetimeIndex | None:
    """The dates of observations; None where they are numbered."""
    if pandas.api.types.is_numeric_dtype(index.dtype):
        return None
    if isinstance(index, pandas.PeriodIndex):
        if index.freqstr != "D":
            raise Error(f"the observations of {name} are of periods with the frequency {index.freqstr}; expected days")
        index = index.to_timestamp()
    elif not isinstance(index, pandas.DatetimeIndex):
        index = _read_days(name, index)
    if index.tz is not None:
        raise Error(f"the dates of the observations of {name} have the time zone {index.tz}; expected dates without one:"
                    " tz_localize(None) drops it")
    if index.hasnans:
        raise Error(f"observation {index.isna().argmax() + 1} of {name} has no date")
    return index


def _read_days(name: str, index: pandas.Index) -> pandas.DatetimeIndex:
    """Texts and objects of the calendar as dates."""
    days: list[datetime.date] = []
    for label in index:
        try:
            days.append(label if isinstance(label, datetime.date) else datetime.datetime.fromisoformat(
                label.strip() if isinstance(label, str) else label.isoformat()))
            if not pandas.Timestamp.min.year < days[-1].year < pandas.Timestamp.max.year:
                raise ValueError
        except (AttributeError, TypeError, ValueError):
            raise Error(f"the date {label!r} of an observation of {name} cannot be read; expected YYYY-MM-DD, from"
                        f" {pandas.Timestamp.min.year + 1} to {pandas.Timestamp.max.year - 1}") from None
    return pandas.DatetimeIndex(days)


def _expect_steps(name: str, days: pandas.DatetimeIndex, steps: pandas.DatetimeIndex) -> None:
    """Raises Error where dates are there twice, are no steps of the run, or so far apart that they stand for longer."""
    if days.has_duplicates:
        raise Error(f"{name} has two observations at {_label(days[days.duplicated()][0])}; expected one for each day")
    step = steps[1] - steps[0] if len(steps) > 1 else pandas.Timedelta(days=1)
    between = days[(days >= steps[0]) & (days < steps[-1] + step) & ~days.isin(steps)]
    if len(between):
        every = "" if step.days == 1 else f": days {step.days} apart, from {steps[0]:%Y-%m-%d} on"
        raise Error(f"the observation of {name} at {_label(between[0])} is of no step of the run; expected dates at midnight,"
                    f" at which steps begin{every}")
    apart = days.sort_values().to_series().diff().min()  # not a time where there is one alone
    if apart > step:
        raise Error(f"the observations of {name} are {apart.days} days or more apart, from"
                    f" {_label(days.min())} on: sums over longer periods cannot be compared with days. Expected a value for"
                    " each day; if these are single days, asfreq(\"D\") adds the missing ones")
