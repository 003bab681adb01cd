"""Which parameters matter for an output of a model."""
from __future__ import annotations

from collections.abc import Callable
from dataclasses import dataclass, field
from typing import TYPE_CHECKING, Any

import numpy
import pandas

from .designs import Bounds, Floats, design
from .errors import Error
from .morris import morris_effects, morris_sample
from .objective import Batch, recorded
from .sweep import Sweep
from .variance import sobol_indices, sobol_sample

if TYPE_CHECKING:
    from matplotlib.axes import Axes

Statistic = Callable[[Floats], Floats]


@dataclass(repr=False)
class Sensitivity:
    """How much each parameter matters.

    Attributes
    ----------
    target : str
        A figure, or a flow.
    unit : str
        Of the target.
    method : "sobol" or "morris"
    table : DataFrame
        Index `parameter`; of "sobol" `first` and `total` with intervals, of "morris" `mu`, `mu_star`, `sigma`.
    sweep : Sweep
    values : Series
        The target of each member.
    """

    target: str
    unit: str
    method: str
    table: pandas.DataFrame
    sweep: Sweep = field(repr=False)
    values: pandas.Series = field(repr=False)

    def plot(self, *, ax: Axes | None = None) -> Axes:
        """Draws bars with intervals, the largest first."""
        from .study_plots import plot_sensitivity

        return plot_sensitivity(self, ax)

    def __repr__(self) -> str:
        about = {"sobol": "shares of the variance of", "morris": f"elementary effects [{self.unit}] on"}[self.method]
        lines = [f"<kesto.Sensitivity: {about} {self.target}, {len(self.sweep)} members, {len(self.sweep.failed)} failed>"]
        return "\n".join([*lines, self.table.round(4).to_string()])


def sensitivity(batch: Batch, bounds: Bounds, target: str, *, n: int, method: str, statistic: Statistic | None,
                seed: int | None) -> Sensitivity:
    """What Model.sensitivity documents."""
    if method == "sobol":
        sample = sobol_sample(bounds, n, seed=seed)
    elif method == "morris":
        sample = morris_sample(bounds, n, seed=seed)
    else:
        raise Error(f"there is no method {method!r}; expected sobol or morris")
    sweep = batch.sweep(design(bounds, sample))
    values, unit = target_of(sweep, target, statistic)
    table = (sobol_indices(values, list(bounds), seed=seed) if method == "sobol"
             else morris_effects(sample, values, bounds))
    return Sensitivity(target, unit, method, table, sweep, values)


def target_of(sweep: Sweep, target: str, statistic: Statistic | None = None) -> tuple[pandas.Series, str]:
    """A figure of each member, the total of a flow, or a statistic of its days; with its unit."""
    if statistic is None:
        if target not in sweep.figures:
            raise Error(f"there is no figure or flow {target!r}; expected one of {', '.join(sweep.figures)}")
        return sweep.figures[target], str(sweep.figures.attrs["units"][target])
    flow = recorded(sweep, [target])
    values: Any = numpy.asarray(statistic(flow.values[:, 0].astype(float)), float)
    if values.shape != (len(sweep),):
        raise Error(f"the statistic gave shape {values.shape}; expected one number for each of the {len(sweep)} members")
    return pandas.Series(values, sweep.design.index, name=target), str(flow["units"].values[0])
