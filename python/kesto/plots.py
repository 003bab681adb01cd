"""Figures of results with matplotlib, labelled with units."""
from __future__ import annotations

from typing import TYPE_CHECKING, Any

from .errors import Error

if TYPE_CHECKING:
    import xarray
    from matplotlib.axes import Axes

    from .result import Result

_LARGEST = 8  # flows that are drawn unless some are named
_PERIODS = {"day": "D", "month": "MS", "year": "YS"}


def scaled(values: Any, unit: str) -> tuple[Any, str]:
    """Litres in the unit that suits their size: values and unit."""
    import numpy

    largest = numpy.nanmax(numpy.abs(values), initial=0)
    if unit == "L" and largest >= 1e4:
        return values / 1000, "m³"
    return values, unit


def axes(ax: Axes | None = None, size: tuple[float, float] = (8, 4)) -> Axes:
    """`ax`, or those of a new figure."""
    import matplotlib.pyplot as pyplot

    return ax if ax is not None else pyplot.subplots(figsize=size, layout="constrained")[1]


def plot_result(result: Result, flows: list[str] | None, every: str) -> Axes:
    """What Result.plot documents."""
    import matplotlib.pyplot as pyplot

    if every not in _PERIODS:
        raise Error(f"every is {every!r}; expected day, month or year")
    states = result.states
    rows = 2 if states.size else 1
    figure, panels = pyplot.subplots(rows, 1, figsize=(8, 3 * rows), sharex=True, squeeze=False, layout="constrained")
    chosen = _chosen(result.flows, flows)
    summed = chosen if every == "day" else chosen.resample(time=_PERIODS[every]).sum()
    _lines(panels[0, 0], summed, f"flow, L a {every}", every)
    panels[0, 0].set_title(result.info["title"])
    if states.size:
        _lines(panels[1, 0], states, "stored, L", "day")
    return panels[0, 0]


def _chosen(flows: xarray.DataArray, names: list[str] | None) -> xarray.DataArray:
    if names is not None:
        missing = [name for name in names if name not in flows["flow"].values]
        if missing:
            raise Error(f"there is no flow {missing[0]!r} among those recorded: {', '.join(flows['flow'].values)}")
        return flows.sel(flow=names)
    return flows.isel(flow=abs(flows).sum("time").values.argsort()[::-1][:_LARGEST])


def _lines(ax: Axes, array: xarray.DataArray, label: str, every: str) -> None:
    values, unit = scaled(array.values, "L")
    for name, line in zip(array[array.dims[0]].values, values):
        # What was summed holds for a whole period: a step, not a slope.
        ax.plot(array["time"].values, line, label=name, linewidth=1, drawstyle="default" if every == "day" else "steps-post")
    ax.set_ylabel(label.replace(", L", f", {unit}"))
    ax.set_ylim(bottom=min(0.0, float(values.min(initial=0))))
    if array.sizes[array.dims[0]]:
        ax.legend(loc="center left", bbox_to_anchor=(1, 0.5), frameon=False, fontsize="small")
