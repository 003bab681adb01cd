"""Several aims at once: members that no other beats."""
from __future__ import annotations

from collections.abc import Sequence
from dataclasses import dataclass, field
from typing import TYPE_CHECKING

import numpy
import pandas

from .designs import Bounds, lhs
from .errors import Error
from .objective import Batch
from .search import non_dominated
from .sweep import Sweep
from .values import listed

if TYPE_CHECKING:
    from matplotlib.axes import Axes


@dataclass(repr=False)
class Front:
    """The members that no other member beats in all aims.

    Attributes
    ----------
    minimise, maximise : tuple of str
        Figures or keys.
    members : DataFrame
        All members: keys and aims, and whether they are on the `front`; index `member`.
    units : dict
        Of the aims.
    sweep : Sweep
    """

    minimise: tuple[str, ...]
    maximise: tuple[str, ...]
    members: pandas.DataFrame
    units: dict[str, str]
    sweep: Sweep = field(repr=False)

    @property
    def front(self) -> pandas.DataFrame:
        """Members on the front, by the first aim."""
        first = (*self.minimise, *self.maximise)[0]
        return self.members[self.members["front"]].drop(columns="front").sort_values(first)

    def plot(self, *, ax: Axes | None = None) -> Axes:
        """Draws all members and the front over the first two aims; a third colours it."""
        from .study_plots import plot_front

        return plot_front(self, ax)

    def __repr__(self) -> str:
        aims = ", ".join([*(f"least {name}" for name in self.minimise), *(f"most {name}" for name in self.maximise)])
        front = self.front
        return f"<kesto.Front: {len(front)} of {len(self.members)} members: {aims}>\n{front.head(10).to_string()}"


def pareto(batch: Batch, bounds: Bounds, minimise: str | Sequence[str], maximise: str | Sequence[str], n: int,
           seed: int | None) -> Front:
    """What Model.pareto documents."""
    low, high = tuple(listed(minimise)), tuple(listed(maximise))
    aims = [*low, *high]
    if len(aims) < 2 or len(set(aims)) != len(aims):
        raise Error("expected two different aims or more, in minimise and maximise")
    sweep = batch.sweep(lhs(bounds, n, seed=seed))
    known = pandas.concat([sweep.design, sweep.figures], axis=1)
    missing = [name for name in aims if name not in known]
    if missing:
        raise Error(f"there is no figure or key {missing[0]!r}; expected one of {', '.join(known)}")
    signs = numpy.array([1.0] * len(low) + [-1.0] * len(high))
    members = known[list(dict.fromkeys([*bounds, *aims]))].copy()
    members["front"] = non_dominated(known[aims].to_numpy(float) * signs)
    units = {name: str(sweep.figures.attrs["units"].get(name, "")) for name in aims}
    return Front(low, high, members, units, sweep)
