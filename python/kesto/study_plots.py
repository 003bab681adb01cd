"""Figures of studies with matplotlib, labelled with units."""
from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy
import pandas

from .plots import axes, dates, scaled
from .sweep_plots import label, numbers

if TYPE_CHECKING:
    from matplotlib.axes import Axes

    from .calibration import Calibration
    from .pareto import Front
    from .sensitivity import Sensitivity
    from .sizing import SizingCurve
    from .uncertainty import Uncertainty

_OBSERVED = {"linestyle": "none", "marker": ".", "markersize": 3, "color": "0.35", "label": "observed"}


def plot_calibration(found: Calibration) -> Axes:
    """What Calibration.plot documents."""
    import matplotlib.pyplot as pyplot

    fit, keys = found.fit, found.fit.keys
    columns = max(len(keys), 1)
    figure = pyplot.figure(figsize=(max(8, 2.6 * columns), 3 * len(fit.flows) + 2.8), layout="constrained")
    grid = figure.add_gridspec(len(fit.flows) + 1, columns)
    first = None
    for at, flow in enumerate(fit.flows):
        ax = figure.add_subplot(grid[at, :])
        first = first or ax
        simulated = _array_of(found.result, flow)
        ax.plot(fit.time, simulated, linewidth=0.8, label="best", color="tab:blue")
        ax.plot(fit.time, fit.observed[at], **_OBSERVED)
        ax.set_ylabel(f"{flow}, {fit.units[at]} a day")
        dates(ax)
        ax.legend(loc="upper left", frameon=False, ncols=2, fontsize="small")
    values = found.history[found.metric]
    shown = values >= values.quantile(0.25) if found.metric != "pbias" else values <= values.quantile(0.75)
    for at, key in enumerate(keys):
        ax = figure.add_subplot(grid[len(fit.flows), at])
        ax.plot(found.history[key][shown], values[shown], ".", markersize=2, color="0.5")
        ax.plot(found.best[key], found.value, "o", color="tab:red")
        ax.set_xlabel(_narrow(key))
        ax.set_ylabel(found.metric if at == 0 else "")
    assert first is not None
    return first


def _narrow(key: str) -> str:
    """A long key in several lines."""
    return key if len(key) <= 24 else key.replace(".", ".\n").replace(" of ", "\nof ")


def _array_of(result: Any, flow: str) -> Any:
    array = result.flows if flow in result.flows["flow"].values else result.depths
    return array.sel(flow=flow).values


def plot_uncertainty(found: Uncertainty) -> Axes:
    """What Uncertainty.plot documents."""
    import matplotlib.pyplot as pyplot

    fit, names = found.fit, list(found.draws)
    figure = pyplot.figure(figsize=(max(8, 2.2 * len(names)), 2.6 + 3 * len(fit.flows)), layout="constrained")
    grid = figure.add_gridspec(len(fit.flows) + 1, len(names))
    first = None
    for at, name in enumerate(names):
        ax = figure.add_subplot(grid[0, at])
        first = first or ax
        ax.hist(found.draws[name], 40, density=True, color="tab:blue")
        ax.set_xlabel(_narrow(name), fontsize="small")
        ax.set_yticks([])
    bands = found.bands()
    for at, flow in enumerate(fit.flows):
        ax = figure.add_subplot(grid[at + 1, :])
        low, middle, high = (bands.sel(band=band, flow=flow).values for band in ("low", "median", "high"))
        ax.fill_between(fit.time, low, high, alpha=0.35, linewidth=0, label="90 % band")
        ax.plot(fit.time, middle, linewidth=0.8, label="median")
        ax.plot(fit.time, fit.observed[at], **_OBSERVED)
        ax.set_ylabel(f"{flow}, {fit.units[at]} a day")
        dates(ax)
        ax.legend(loc="upper left", frameon=False, ncols=3, fontsize="small")
    assert first is not None
    return first


def plot_sensitivity(found: Sensitivity, ax: Axes | None) -> Axes:
    """What Sensitivity.plot documents."""
    largest = "total" if found.method == "sobol" else "mu_star"
    table = found.table.sort_values(largest)
    places = numpy.arange(len(table))
    ax = axes(ax, (7, 1.2 + 0.5 * len(table)))
    if found.method == "morris":
        ax.barh(places, table["mu_star"], 0.6)
        ax.set_xlabel(label(f"mean absolute effect on {found.target}", found.unit))
    else:
        for shift, column in ((0.18, "first"), (-0.18, "total")):
            reach = numpy.abs(table[[f"{column}_low", f"{column}_high"]].to_numpy().T - table[column].to_numpy())
            ax.barh(places + shift, table[column], 0.34, xerr=reach, label={"first": "alone", "total": "in all"}[column],
                    error_kw={"linewidth": 1, "capsize": 2})
        ax.set_xlabel(f"share of the variance of {found.target}, with 95 % intervals")
        ax.legend(loc="lower right", frameon=False)
    ax.set_yticks(places, list(table.index))
    return ax


def plot_sizing(found: SizingCurve, ax: Axes | None) -> Axes:
    """What SizingCurve.plot documents."""
    unit = found.sweep.figures.attrs["units"][found.figure]
    ax = axes(ax, (7, 4))
    sizes = numbers(pandas.Series(found.curve.index))
    places = sizes[0] if sizes is not None else numpy.arange(len(found.curve))
    order = numpy.argsort(places, kind="stable")
    ax.plot(places[order], found.curve.to_numpy()[order], ".-")
    ax.axhline(found.target, color="0.5", linestyle="--", linewidth=1, label=f"target {found.target:g}")
    if found.smallest is not None:
        at = list(found.curve.index).index(found.smallest)
        ax.plot(places[at], found.curve.iloc[at], "o", color="tab:red", label=f"smallest: {found.smallest}")
    if sizes is None:
        ax.set_xticks(places, [str(size) for size in found.curve.index], rotation=30, ha="right")
    ax.set_xlabel(label(found.key, sizes[1] if sizes else ""))
    ax.set_ylabel(label(found.figure, unit))
    ax.legend(frameon=False)
    return ax


def plot_front(found: Front, ax: Axes | None) -> Axes:
    """What Front.plot documents."""
    aims = [*found.minimise, *found.maximise]
    ax = axes(ax, (7, 5))
    shown, units = {}, {}
    for name in aims[:3]:
        shown[name], units[name] = scaled(found.members[name].to_numpy(float), found.units[name])
    on = found.members["front"].to_numpy()
    x, y = aims[:2]
    ax.plot(shown[x][~on], shown[y][~on], ".", color="0.75", markersize=3, label="members")
    if len(aims) > 2:
        drawn = ax.scatter(shown[x][on], shown[y][on], c=shown[aims[2]][on], cmap="viridis", s=25, label="front", zorder=3)
        ax.figure.colorbar(drawn, ax=ax, label=label(aims[2], units[aims[2]]))
    else:
        ax.plot(shown[x][on], shown[y][on], "o", markersize=4, color="tab:red", label="front")
    ax.set_xlabel(label(x, units[x]))
    ax.set_ylabel(label(y, units[y]))
    ax.legend(frameon=False)
    return ax
