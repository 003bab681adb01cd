"""Calibration: the parameters that meet observations best, and what the observations cannot tell."""
from __future__ import annotations

import functools
from collections.abc import Mapping
from dataclasses import dataclass, field
from typing import TYPE_CHECKING, Any

import numpy
import pandas

from .designs import Bounds, Floats, unit_sobol
from .errors import Error
from .objective import Batch, Fit, Observed, expect_metric
from .observations import Period
from .search import dds
from .values import Value, whole

if TYPE_CHECKING:
    from matplotlib.axes import Axes

    from .model import Model
    from .result import Result

METHODS = ("de", "dds")
_STEP = 2e-4  # of finite differences, as a fraction of a range: single precision still tells, and few thresholds lie within
_NEAR = 0.01  # of a range: a parameter this close to a bound has hit it
_FLAT = 0.1  # of a range: a direction whose standard deviation is larger is flat
_AS_GOOD = 0.01  # members within this of the best metric fit as well


def calibrate(batch: Batch, bounds: Bounds, observed: Observed, *, metric: str, warmup: Period, method: str,
              max_members: int, seed: int | None) -> Calibration:
    """What Model.calibrate documents."""
    expect_metric(metric)
    if method not in METHODS:
        raise Error(f"there is no method {method!r}; expected {' or '.join(METHODS)}")
    fit = Fit(batch, bounds, observed, warmup)
    left = whole("max_members", max_members) - 4 * len(fit.keys) - 2  # the look around the best needs the rest
    if left < 10:
        raise Error(f"max_members is {max_members}; expected at least {12 + 4 * len(fit.keys)}")
    losses: list[Floats] = []

    def objective(fractions: Floats) -> Floats:
        simulated = fit.simulate(fractions)
        if not losses:
            fit.expect_defined(metric)
        losses.append(fit.losses(simulated, metric))
        if len(losses) == 1 and not numpy.isfinite(losses[0]).any():
            # A search has nothing to go by, and that of scipy would run its members twice.
            raise Error(_undefined(simulated, metric))
        return losses[-1]

    converged = (_evolve if method == "de" else _search)(objective, len(fit.keys), left, seed)
    tried, values = numpy.concatenate(fit.tried), numpy.concatenate(losses)
    best = (tried[values.argmin()] - fit.low) / (fit.high - fit.low)
    covariance = _covariance(fit, best)
    history = pandas.DataFrame(tried, columns=fit.keys).assign(**{metric: _metric_of(values, metric)})
    return Calibration(batch.plan.model, fit, metric, dict(zip(fit.keys, map(float, fit.parameters(best)))),
                       float(values.min()), covariance, history, seed, converged)


def _undefined(simulated: Floats, metric: str) -> str:
    """Why no member has a metric."""
    if numpy.isnan(simulated).any(axis=(1, 2)).all():
        return f"all {len(simulated)} members at the start failed; run one of them to see why"
    return (f"{metric} is undefined for all {len(simulated)} members at the start: each simulates a flow that is the same on"
            " all observed days, where only nse and pbias are defined")


def _evolve(objective: Any, dimensions: int, members: int, seed: int | None) -> bool | None:
    """Differential evolution: R. Storn, K. Price, Journal of Global Optimization 11 (1997) 341-359, of scipy."""
    from scipy.optimize import differential_evolution

    population = max(8, min(15 * dimensions, members // 8))
    start = unit_sobol(dimensions, 1 << (population - 1).bit_length(), seed)[:population]
    # scipy minimises over (parameters, members).
    found = differential_evolution(lambda columns: objective(columns.T), [(0.0, 1.0)] * dimensions, init=start,
                                   maxiter=max(0, members // population - 1), tol=1e-4, polish=False, vectorized=True,
                                   updating="deferred", seed=seed)
    return bool(found.success)


def _search(objective: Any, dimensions: int, members: int, seed: int | None) -> bool | None:
    """Uses all members, and cannot tell whether it has converged."""
    dds(objective, numpy.zeros(dimensions), numpy.ones(dimensions), members=members, batch=8, seed=seed)
    return None


def _metric_of(losses: Floats, metric: str) -> Floats:
    return losses if metric == "pbias" else 1 - losses


def _covariance(fit: Fit, best: Floats) -> Floats:
    """The covariance of the parameters around the best, as fractions of their ranges: (parameters, parameters).

    From the derivatives of the simulated series and the residuals of the best, for Gaussian errors; the ranges count
    as what is known before (a uniform distribution has the variance 1/12), so that what the observations say
    nothing about keeps the variance of its range.
    """
    slopes, residuals = _derivatives(fit, best, numpy.full(len(best), _STEP))
    # Again with steps of equal effect: two parameters that do the same then cross the same thresholds (a tank that just
    # spills), and their derivatives are the same, too.
    effects = numpy.sqrt((slopes ** 2).sum(axis=(1, 2)))
    steps = _STEP * (numpy.median(effects[effects > 0]) if effects.any() else 0.0) / numpy.where(effects > 0, effects, numpy.inf)
    slopes, residuals = _derivatives(fit, best, numpy.clip(steps, _STEP / 20, 20 * _STEP))
    variances = (residuals ** 2).sum(axis=1) / numpy.isfinite(fit.observed).sum(axis=1)
    # A perfect fit, of made-up observations, leaves the rounding to single precision.
    variances = numpy.maximum(variances, 1e-12 * numpy.nanmean(fit.observed ** 2, axis=1) + 1e-300)
    information = numpy.einsum("ift,jft,f->ij", slopes, slopes, 1 / variances)
    found: Floats = numpy.linalg.inv(12 * numpy.eye(len(best)) + information)
    return found


def _derivatives(fit: Fit, best: Floats, steps: Floats) -> tuple[Floats, Floats]:
    """Central differences of the flows over each parameter, (parameters, flows, time), and the residuals of the best,
    (flows, time); 0 where nothing was observed or a member failed."""
    d = len(best)
    up, down = numpy.minimum(best + numpy.diag(steps), 1), numpy.maximum(best - numpy.diag(steps), 0)
    around = fit.simulate(numpy.concatenate([best[None], up, down]))
    known = numpy.isfinite(fit.observed)
    slopes = (around[1:d + 1] - around[d + 1:]) / (up - down).diagonal()[:, None, None]
    return numpy.nan_to_num(numpy.where(known, slopes, 0)), numpy.nan_to_num(around[0] - fit.observed)


@dataclass(repr=False)
class Calibration:
    """The best parameters, and how well they are known.

    Attributes
    ----------
    model : Model
    fit : Fit
    metric : str
    best : dict of str to float
        In the units of the keys.
    loss : float
    covariance : ndarray, (parameters, parameters)
        Around the best, as fractions of the ranges.
    history : DataFrame
        All members: a column for each key, and the metric.
    seed : int or None
    converged : bool or None
        Whether the search ended because it found nothing better any more, before `max_members`; None: "dds" cannot tell.
    """

    model: Model
    fit: Fit = field(repr=False)
    metric: str
    best: dict[str, float]
    loss: float
    covariance: Floats = field(repr=False)
    history: pandas.DataFrame = field(repr=False)
    seed: int | None
    converged: bool | None = None

    @property
    def value(self) -> float:
        """The metric of the best; of several flows the mean. Of pbias its size."""
        return self.loss if self.metric == "pbias" else 1 - self.loss

    @property
    def members(self) -> int:
        """How many members have run."""
        return self.fit.batch.members

    @property
    def deviation(self) -> pandas.Series:
        """Standard deviation of each parameter around the best, in its unit; that of its range where the observations
        say nothing."""
        deviations = numpy.sqrt(self.covariance.diagonal()) * (self.fit.high - self.fit.low)
        return pandas.Series(deviations, self.fit.keys, name="deviation")

    @property
    def correlation(self) -> pandas.DataFrame:
        """Correlations of the parameters around the best: near 1 or −1, only a combination of the two is known."""
        deviations = numpy.sqrt(self.covariance.diagonal())
        return pandas.DataFrame(self.covariance / numpy.outer(deviations, deviations), self.fit.keys, self.fit.keys)

    @property
    def at_bounds(self) -> dict[str, str]:
        """Parameters that have hit a bound: "low" or "high"."""
        hit = {}
        for key, low, high in zip(self.fit.keys, self.fit.low, self.fit.high):
            fraction = (self.best[key] - low) / (high - low)
            if fraction < _NEAR or fraction > 1 - _NEAR:
                hit[key] = "low" if fraction < _NEAR else "high"
        return hit

    @property
    def flat(self) -> pandas.DataFrame:
        """Directions along which the fit hardly changes: a row each, with the change of each parameter by one standard
        deviation, in its unit. Without rows where all parameters are known to a tenth of their ranges."""
        variances, directions = numpy.linalg.eigh(self.covariance)
        rows = [direction * numpy.sqrt(variance) * (self.fit.high - self.fit.low)
                for variance, direction in zip(variances[::-1], directions.T[::-1]) if variance > _FLAT ** 2]
        rows = [row * (1 if row[numpy.abs(row / (self.fit.high - self.fit.low)).argmax()] > 0 else -1) for row in rows]
        return pandas.DataFrame(rows, columns=self.fit.keys)

    @property
    def as_good(self) -> pandas.DataFrame:
        """The range of each parameter among members whose metric is within 0.01 of the best (of pbias 1 %)."""
        values = self.history[self.metric]
        margin = 1.0 if self.metric == "pbias" else _AS_GOOD
        near = self.history[(values - self.value).abs() <= margin]
        return near[self.fit.keys].agg(["min", "max"]).T.rename(columns={"min": "low", "max": "high"})

    @functools.cached_property
    def result(self) -> Result:
        """The run of the best."""
        return self.run()

    def run(self, set: Mapping[str, Value] | None = None, **options: Any) -> Result:
        """Runs the model with the best parameters: another period, for validation, or under a scenario.

        Parameters
        ----------
        set : mapping of str to value
            More values; the best parameters win.
        **options
            As for `Model.run`. `set`, `scenario`, `start` and `end` of the calibration count where none are given here.

        Returns
        -------
        Result

        Raises
        ------
        ModelError, RunError
            As for `Model.run`.
        """
        return self.fit.batch.plan.run({**(set or {}), **self.best}, **options)

    def plot(self) -> Axes:
        """Draws observed and simulated flows, and the metric of all members over each parameter.

        Returns
        -------
        matplotlib Axes
            Those of the first flow.
        """
        from .study_plots import plot_calibration

        return plot_calibration(self)

    def __repr__(self) -> str:
        wide = max(map(len, self.fit.keys))
        rows = [f"<kesto.Calibration: {self.metric} {self.value:.4g} of {', '.join(self.fit.flows)},"
                f" {self.members} members>", f"  {'':<{wide}} {'best':>12} {'± deviation':>12}   bounds"]
        for key, low, high in zip(self.fit.keys, self.fit.low, self.fit.high):
            rows.append(f"  {key:<{wide}} {self.best[key]:>12.6g} {self.deviation[key]:>12.3g}   {low:g} to {high:g}")
        return "\n".join([*rows, *self._doubts()])

    def _doubts(self) -> list[str]:
        """What the observations cannot tell, in words."""
        doubts = [f"  {key} is at its {bound} bound" for key, bound in self.at_bounds.items()]
        correlation = self.correlation.to_numpy()
        for i, j in zip(*numpy.triu_indices(len(self.fit.keys), 1)):
            if abs(correlation[i, j]) > 0.9:
                doubts.append(f"  {self.fit.keys[i]} and {self.fit.keys[j]} are correlated by {correlation[i, j]:.3f}")
        flat = self.flat
        part_of = flat.columns[(flat.abs() > _NEAR * (self.fit.high - self.fit.low)).any()]
        for _, row in flat.iterrows():
            parts = [f"{key} by {row[key]:+.3g}" for key in part_of]
            doubts.append("  flat direction: the fit hardly changes with " + ", ".join(parts))
        as_good = self.as_good
        # Where the search has tried less than the deviation, its members tell nothing that the deviation does not.
        doubts += [f"  {key} fits as well from {as_good['low'][key]:.4g} to {as_good['high'][key]:.4g}" for key in part_of
                   if as_good["high"][key] - as_good["low"][key] >= self.deviation[key]]
        if self.converged is False:
            doubts.append("  the search stopped at max_members before it converged: a better fit may lie elsewhere")
        return doubts or ["  all parameters are known to a tenth of their ranges; no bound was hit"]


