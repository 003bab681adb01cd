"""Figures of sweeps with matplotlib, labelled with units."""
from __future__ import annotations

import re
from typing import TYPE_CHECKING, Any

import numpy
import pandas

from .errors import Error
from .plots import axes, scaled

if TYPE_CHECKING:
    from matplotlib.axes import Axes

    from .sweep import Sweep


def numbers(values: pandas.Series) -> tuple[Any, str] | None:
    """Values of a key as numbers, and their unit if they are texts with one unit; None where they are neither.

    >>> numbers(pandas.Series(["1 m3", "2.5 m3"]))
    (array([1. , 2.5]), 'm3')
    """
    if pandas.api.types.is_numeric_dtype(values):
        return values.to_numpy(float), ""
    found = [re.fullmatch(r"\s*([-+0-9.eE]+)\s*(\S*)\s*", str(value)) for value in values]
    units = {match[2] for match in found if match}
    if None in found or len(units) != 1:
        return None
    try:
        return numpy.array([float(match[1]) for match in found if match]), units.pop()
    except ValueError:
        return None


def label(name: str, unit: str) -> str:
    """A name with its unit behind it; a dash is no unit."""
    return f"{name}, {unit}" if unit not in ("", "-") else name


def plot_sweep(sweep: Sweep, figure: str | None, ax: Axes | None) -> Axes:
    """What Sweep.plot documents."""
    figures = sweep.figures
    if figure is None:
        figure = _telling(sweep)
    if figure not in figures:
        raise Error(f"there is no figure {figure!r}; expected one of {', '.join(figures)}")
    values, unit = scaled(figures[figure].to_numpy(), figures.attrs["units"][figure])
    keys = list(sweep.design.columns)
    columns = [numbers(sweep.design[key]) for key in keys]
    ax = axes(ax, (7, 4))
    if len(keys) == 1:
        _line(ax, sweep.design[keys[0]], columns[0], values, keys[0])
    elif len(keys) == 2 and columns[0] and columns[1]:
        _colours(ax, keys, columns[0], columns[1], values, label(figure, unit))
        return ax
    else:
        ax.plot(sweep.design.index, values, ".")
        ax.set_xlabel("member")
    ax.set_ylabel(label(figure, unit))
    return ax


def _telling(sweep: Sweep) -> str:
    """A figure that people decide by: how well what is varied serves, else the mains; else the first that varies."""
    varying = [str(name) for name in sweep.figures if sweep.figures[name].nunique() > 1]
    if not varying:
        raise Error("no figure varies among the members")
    served = [f"{str(key).rsplit('.', 1)[0]}.reliability_volume" for key in sweep.design]
    return next(name for name in [*served, "network.mains", *varying] if name in varying)


def _line(ax: Axes, texts: pandas.Series, found: tuple[Any, str] | None, values: Any, key: str) -> None:
    if found is None:
        ax.plot(range(len(texts)), values, "o")
        ax.set_xticks(range(len(texts)), [str(text) for text in texts], rotation=30, ha="right")
        ax.set_xlabel(key)
        return
    order = found[0].argsort()
    ax.plot(found[0][order], values[order], ".-")
    ax.set_xlabel(label(key, found[1]))


def _colours(ax: Axes, keys: list[str], x: tuple[Any, str], y: tuple[Any, str], values: Any, name: str) -> None:
    drawn = ax.scatter(x[0], y[0], c=values, cmap="viridis", s=30)
    ax.figure.colorbar(drawn, ax=ax, label=name)
    ax.set_xlabel(label(keys[0], x[1]))
    ax.set_ylabel(label(keys[1], y[1]))
