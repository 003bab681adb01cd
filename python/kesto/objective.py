"""The one batch objective of all searches: a matrix of members in, simulated and observed series out."""
from __future__ import annotations

from collections.abc import Mapping
from dataclasses import dataclass, field
from typing import TYPE_CHECKING, Any

import numpy
import pandas

from .designs import Bounds, Floats, design, limits
from .errors import Error
from .metrics import METRICS, loss
from .observations import Period, aligned, period
from .sweep import Plan, Sweep, run_sweep

if TYPE_CHECKING:
    import xarray

Observed = Mapping[str, Any]


@dataclass
class Batch:
    """How members of a study are run.

    Attributes
    ----------
    plan : Plan
    jobs : int or None
    client : dask.distributed.Client or None
    progress : bool
        Whether to show how many members have run.
    """

    plan: Plan
    jobs: int | None = None
    client: Any = None
    progress: bool = False
    members: int = 0
    _bar: Any = field(default=None, repr=False)

    def sweep(self, table: pandas.DataFrame) -> Sweep:
        """The sweep of a design; counts its members."""
        made = run_sweep(self.plan, table, jobs=self.jobs, client=self.client)
        self.members += len(table)
        if self.progress:
            self._show(len(table))
        return made

    def _show(self, count: int) -> None:
        if self._bar is None:
            from tqdm.auto import tqdm

            self._bar = tqdm(unit=" members")
        self._bar.update(count)


class Fit:
    """Members against observations. Searches see parameters as fractions of their ranges.

    Parameters
    ----------
    batch : Batch
        Its plan records the flows that were observed.
    bounds : mapping of str to (low, high)
    observed : mapping of str to series
        Of each flow a Series or DataArray with dates, or values for all days of the run. Missing days are left out.
    warmup : number, str or timedelta
        What is left out at the start: days, or a text such as "365D".
    """

    def __init__(self, batch: Batch, bounds: Bounds, observed: Observed, warmup: Period) -> None:
        if not observed:
            raise Error("nothing was observed; expected series by flow, such as {\"tank:overflow\": series}")
        self.batch = batch
        self.bounds = dict(bounds)
        self.keys = list(bounds)
        self.low, self.high = limits(bounds)
        self.flows = list(observed)
        self.warmup = period(warmup)
        self._given = dict(observed)
        self._observed: Floats | None = None
        self.time: Any = None
        self.units: list[str] = []
        self.tried: list[Floats] = []  # parameters of all members, in their own units

    def parameters(self, fractions: Floats) -> Floats:
        """Fractions of the ranges as values in the units of the keys."""
        scaled: Floats = self.low + numpy.clip(fractions, 0, 1) * (self.high - self.low)
        return scaled

    def simulate(self, fractions: Floats) -> Floats:
        """What the members give: (members, flows, time), not a number where a member failed."""
        values = self.parameters(numpy.atleast_2d(fractions))
        self.tried.append(values)
        simulated = recorded(self.batch.sweep(design(self.keys, values)), self.flows)
        if self._observed is None:
            self.time = simulated["time"].values
            self.units = [str(unit) for unit in simulated["units"].values]
            self._observed = numpy.stack(list(map(self._aligned, self.flows, self.units)))
        found: Floats = simulated.values.astype(float)
        return found

    @property
    def observed(self) -> Floats:
        """(flows, time), not a number where nothing was observed or the model warms up."""
        if self._observed is None:
            self.simulate(numpy.full(len(self.keys), 0.5))
        assert self._observed is not None
        return self._observed

    def expect_defined(self, metric: str) -> None:
        """Raises Error where a metric of the observations is undefined, whatever is simulated."""
        for name, values in zip(self.flows, self.observed):
            known = values[numpy.isfinite(values)]
            if metric != "pbias" and numpy.ptp(known) == 0:
                raise Error(f"{metric} is undefined: all observations of {name} after the warm-up are {known[0]:g}; expected"
                            " values that vary (pbias needs no variation)")
            if metric != "nse" and known.mean() == 0:
                raise Error(f"{metric} is undefined: the mean of the observations of {name} is 0 (nse needs no mean)")

    def losses(self, simulated: Floats, metric: str) -> Floats:
        """What a search minimises, (members,): the mean over the flows; infinite where a member failed."""
        each = [loss(metric)(simulated[:, at], self.observed[at]) for at in range(len(self.flows))]
        mean = numpy.mean(each, axis=0)
        return numpy.where(numpy.isfinite(mean), mean, numpy.inf)

    def _aligned(self, name: str, unit: str) -> Floats:
        values = aligned(name, self._given[name], self.time, unit)
        begin = self.time[0] + self.warmup.to_timedelta64()
        values[self.time < begin] = numpy.nan
        if not numpy.isfinite(values).any():
            raise Error(f"no observation of {name} lies in the run after its warm-up,"
                        f" {str(begin)[:10]} to {str(self.time[-1])[:10]}")
        return values


def observed_flows(observed: Observed) -> list[str]:
    """The names of the flows that were observed. Raises TypeError where the series have no names."""
    if not isinstance(observed, Mapping):
        raise TypeError(f"the observations are a {type(observed).__name__}; expected a mapping such as"
                        " {'tank:overflow': series}")
    return list(observed)


def recorded(sweep: Sweep, names: list[str]) -> xarray.DataArray:
    """The named flows of a sweep, dims (member, flow, time), with the coordinate `units` along `flow`."""
    import xarray

    found, units = [], []
    for name in names:
        for quantity in (name_ for name_ in ("quantity", "depth") if name_ in sweep.dataset):
            array = getattr(sweep, {"quantity": "flows", "depth": "depths"}[quantity])
            if name in array["flow"].values:
                found.append(array.sel(flow=[name]).drop_vars("carries", errors="ignore"))
                units.append(array.attrs["units"])
    if len(found) != len(names):
        raise Error(f"{', '.join(names)}: each must be the name of one flow, such as tank:overflow")
    joined = xarray.concat(found, "flow", combine_attrs="drop")
    labelled: xarray.DataArray = joined.assign_coords(units=("flow", units))
    return labelled


def expect_metric(name: str) -> str:
    """The name of a metric. Raises Error where there is none of that name."""
    if name not in METRICS:
        raise Error(f"there is no metric {name!r}; expected {', '.join(METRICS)}")
    return name
