"""Figures of results with matplotlib, labelled with units."""
from __future__ import annotations

from collections.abc import Sequence
from typing import TYPE_CHECKING, Any

from .errors import Error
from .values import listed

if TYPE_CHECKING:
    import xarray
    from matplotlib.axes import Axes

    from .result import Result

_LARGEST = 8  # flows that are drawn unless some are named
_PERIODS = {"day": "D", "month": "MS", "year": "YS"}
_LITRES = ((1e8, 1e6, "ML"), (1e4, 1e3, "m³"))  # from how many litres on which unit is read best


def scaled(values: Any, unit: str) -> tuple[Any, str]:
    """Litres in the unit that suits their size: values and unit."""
    import numpy

    largest = numpy.nanmax(numpy.abs(values), initial=0)
    for least, factor, larger in _LITRES:
        if unit == "L" and largest >= least:
            return values / factor, larger
    return values, unit


def axes(ax: Axes | None = None, size: tuple[float, float] = (8, 4)) -> Axes:
    """`ax`, or those of a new figure."""
    import matplotlib.pyplot as pyplot

    return ax if ax is not None else pyplot.subplots(figsize=size, layout="constrained")[1]


def dates(ax: Axes) -> None:
    """Ticks of dates that leave each other room."""
    import matplotlib.dates

    locator = matplotlib.dates.AutoDateLocator(minticks=3, maxticks=8)
    ax.xaxis.set_major_locator(locator)
    ax.xaxis.set_major_formatter(matplotlib.dates.ConciseDateFormatter(locator))


def plot_result(result: Result, flows: str | Sequence[str] | None, every: str) -> Axes:
    """What Result.plot documents."""
    import matplotlib.pyplot as pyplot

    if every not in _PERIODS:
        raise Error(f"every is {every!r}; expected day, month or year")
    names = None if flows is None else _expect_flows(result, listed(flows))
    drawn = [(_chosen(result.flows, names), f"flow, L a {every}", every), (_chosen(result.depths, names), f"flow, mm a {every}", every),
             (result.states, "stored, L", "day"), (result.state_depths, "stored, mm", "day")]
    drawn = [panel for panel in drawn if panel[0].size]
    rows = max(1, len(drawn))
    panels = pyplot.subplots(rows, 1, figsize=(8, 3 * rows), sharex=True, squeeze=False, layout="constrained")[1][:, 0]
    for ax, (array, label, period) in zip(panels, drawn):
        _lines(ax, array, label, period)
    panels[0].set_title(result.info["title"])
    return panels[0]


def _expect_flows(result: Result, names: list[str]) -> list[str]:
    known = [*result.flows["flow"].values, *result.depths["flow"].values]
    missing = [name for name in names if name not in known]
    if missing:
        raise Error(f"there is no flow {missing[0]!r} among those recorded: {', '.join(known)}")
    return names


def _chosen(flows: xarray.DataArray, names: list[str] | None) -> xarray.DataArray:
    """The named flows; without names the largest, each series once: one leaves a port and arrives at a recorder."""
    if names is not None:
        return flows.sel(flow=[name for name in names if name in flows["flow"].values])
    largest: dict[bytes, int] = {}
    for at in abs(flows).sum("time", dtype=float).values.argsort(kind="stable")[::-1]:
        largest.setdefault(flows.values[at].tobytes(), int(at))
    return flows.isel(flow=list(largest.values())[:_LARGEST])


def _lines(ax: Axes, array: xarray.DataArray, label: str, every: str) -> None:
    import matplotlib

    summed = array if every == "day" else array.resample(time=_PERIODS[every]).sum()
    times = _edges(array, summed) if every != "day" else _days(summed)
    values, unit = scaled(summed.values, "L") if ", L" in label else (summed.values, "mm")
    demands = array["carries"].values == "demand" if "carries" in array.coords else [False] * len(values)
    ax.set_prop_cycle(color=matplotlib.colormaps["tab10" if len(values) <= 10 else "tab20"].colors)
    for name, line, demand in zip(array[array.dims[0]].values, values, demands):
        style = {"label": name, "linewidth": 1, "linestyle": "--" if demand else "-"}
        if every == "day":
            ax.plot(times, line, marker="." if len(line) == 1 else "", **style)
        else:  # What was summed holds for a whole period: a step, not a slope.
            ax.step(times, [*line, line[-1]], where="post", **style)
    ax.set_ylabel(label.replace(", L", f", {unit}"))
    ax.set_ylim(bottom=min(0.0, float(values.min(initial=0))))
    dates(ax)
    ax.legend(loc="center left", bbox_to_anchor=(1, 0.5), frameon=False, fontsize="small")


def _edges(days: xarray.DataArray, summed: xarray.DataArray) -> Any:
    """Where periods begin, of which the first may be cut, and where the last one ends with the run."""
    import numpy

    times = _days(days)
    step = times[1] - times[0] if len(times) > 1 else numpy.timedelta64(1, "D")
    return numpy.concatenate([times[:1], _days(summed)[1:], [times[-1] + step]])


def _days(array: xarray.DataArray) -> Any:
    """The time of each value; dates beyond those of pandas are objects of cftime, which matplotlib does not know."""
    import numpy

    times = array["time"].values
    return numpy.array([time.isoformat() for time in times], "datetime64[D]") if times.dtype == object else times
