"""Sizing: how a figure follows the size of one thing, and the smallest size that is enough."""
from __future__ import annotations

from collections.abc import Sequence
from dataclasses import dataclass, field
from typing import TYPE_CHECKING

import pandas

from .designs import grid
from .errors import Error
from .objective import Batch
from .sweep import Sweep
from .sweep_plots import numbers
from .values import Value

if TYPE_CHECKING:
    from matplotlib.axes import Axes

_DEFAULT = "reliability_volume"


@dataclass(repr=False)
class SizingCurve:
    """A figure over the sizes of one key.

    Attributes
    ----------
    key, figure : str
    target : float
        What is enough.
    curve : Series
        The figure by size.
    smallest : value or None
        The smallest of the sizes from which on the figure reaches the target; None where the largest does not.
    sweep : Sweep
    """

    key: str
    figure: str
    target: float
    curve: pandas.Series
    smallest: Value | None
    sweep: Sweep = field(repr=False)

    def plot(self, *, ax: Axes | None = None) -> Axes:
        """Draws the curve, the target and the smallest size."""
        from .study_plots import plot_sizing

        return plot_sizing(self, ax)

    def __repr__(self) -> str:
        found = f"{self.key} = {self.smallest} is the smallest" if self.smallest is not None else "none of the sizes is enough"
        return (f"<kesto.SizingCurve: {self.figure} over {self.key}, target {self.target:g}: {found}>\n"
                f"{self.curve.to_string(name=True)}")


def sizing_curve(batch: Batch, key: str, sizes: Sequence[Value], target: float, figure: str | None) -> SizingCurve:
    """What Model.sizing_curve documents."""
    _expect_one_unit(key, sizes)
    figure = figure or f"{key.rsplit('.', 1)[0]}.{_DEFAULT}"
    sweep = batch.sweep(grid({key: sizes}))
    if figure not in sweep.figures:
        raise Error(f"there is no figure {figure!r}; expected figure= one of {', '.join(sweep.figures)}")
    curve = pandas.Series(sweep.figures[figure].to_numpy(), pandas.Index(list(sizes), name=key), name=figure)
    return SizingCurve(key, figure, target, curve, _smallest(curve, target), sweep)


def _expect_one_unit(key: str, sizes: Sequence[Value]) -> None:
    """Raises Error where sizes are numbers in different units: nobody here can order them."""
    first: dict[str, Value] = {}
    for size in sizes:
        found = numbers(pandas.Series([size]))
        first.setdefault(found[1] if found else "", size)
    if len(first) > 1:
        raise Error(f"the sizes of {key} are in different units: {', '.join(map(repr, first.values()))}; expected texts with"
                    " one unit, or numbers in the unit of the key")


def _smallest(curve: pandas.Series, target: float) -> Value | None:
    """The first size, in the order of the sizes, from which on all reach the target."""
    found = numbers(pandas.Series(curve.index))
    order = found[0].argsort(kind="stable") if found is not None else range(len(curve))
    smallest: Value | None = None
    for at in reversed(list(order)):
        if not curve.iloc[at] >= target:
            break
        smallest = curve.index[at]
    return smallest
