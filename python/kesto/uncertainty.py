"""What the parameters can be, given observations: draws from their posterior distribution."""
from __future__ import annotations

from dataclasses import dataclass, field
from typing import TYPE_CHECKING, Any

import numpy
import pandas

from .designs import Bounds, Floats, design, unit_sobol
from .errors import Error
from .objective import Batch, Fit, Observed, recorded
from .observations import Period
from .values import whole

if TYPE_CHECKING:
    import xarray
    from matplotlib.axes import Axes

_FLOOR = 0.01  # of relative errors, as a fraction of the mean of the observations: a dry day is not known exactly
_LARGEST = 2.0  # a deviation, as a multiple of that of the observations or of the simulated flow
_LIMITS = {"absolute": "twice the standard deviation of the observations", "relative": "twice the simulated flow"}
_NEAR = 0.05  # of the range of a deviation: draws this close to its limit say that the limit matters
_TAUS = 50  # autocorrelation times that a chain should have, after the manual of emcee


@dataclass
class Likelihood:
    """Gaussian errors whose standard deviation is a parameter of each flow, with a uniform prior from 0 to `largest`.

    Attributes
    ----------
    fit : Fit
    errors : "absolute" or "relative"
        Whether the deviation is in the unit of the flow, or a fraction of what is simulated (at least of a hundredth of
        the mean of the observations).
    """

    fit: Fit
    errors: str

    @property
    def largest(self) -> Floats:
        """Upper limits of the deviations, (flows,): twice the deviation of the observations, or twice the simulated flow."""
        if self.errors == "relative":
            return numpy.full(len(self.fit.flows), _LARGEST)
        largest: Floats = numpy.maximum(_LARGEST * numpy.nanstd(self.fit.observed, axis=1), 1e-6)
        return largest

    def scale(self, simulated: Floats) -> Floats:
        """What a deviation of 1 stands for, (..., flows, time)."""
        if self.errors == "absolute":
            return numpy.ones_like(simulated)
        floor = _FLOOR * numpy.abs(numpy.nanmean(self.fit.observed, axis=1))[:, None]
        return numpy.maximum(numpy.abs(simulated), numpy.maximum(floor, 1e-12))

    def log(self, points: Floats) -> Floats:
        """Logarithm of the posterior density, (members,), of points (members, parameters + flows) in the unit cube."""
        inside = ((points >= 0) & (points <= 1)).all(axis=1)
        densities = numpy.full(len(points), -numpy.inf)
        if not inside.any():
            return densities
        d = len(self.fit.keys)
        simulated = self.fit.simulate(points[inside, :d])
        deviations = numpy.maximum(points[inside, d:] * self.largest, 1e-9 * self.largest)[..., None]
        scale = self.scale(simulated) * deviations
        residuals = (simulated - self.fit.observed) / scale
        known = numpy.isfinite(self.fit.observed)
        terms = numpy.where(known, -numpy.log(scale) - 0.5 * residuals ** 2, 0).sum(axis=(1, 2))
        densities[inside] = numpy.where(numpy.isfinite(terms), terms, -numpy.inf)
        return densities

    def best_deviations(self, simulated: Floats) -> Floats:
        """The deviations that suit members best, as fractions of their bounds: (members, flows)."""
        residuals = (simulated - self.fit.observed) / self.scale(simulated)
        found: Floats = numpy.clip(numpy.sqrt(numpy.nanmean(residuals ** 2, axis=2)) / self.largest, 1e-6, 0.999)
        return found


def uncertainty(batch: Batch, bounds: Bounds, observed: Observed, *, warmup: Period, errors: str, walkers: int | None,
                steps: int, burn: int | None, seed: int | None) -> Uncertainty:
    """What Model.uncertainty documents."""
    try:
        import emcee
    except ImportError:
        raise Error("uncertainty needs emcee; on Debian, apt-get install python3-emcee") from None

    if errors not in ("absolute", "relative"):
        raise Error(f"errors is {errors!r}; expected absolute or relative")
    fit = Fit(batch, bounds, observed, warmup)
    likelihood = Likelihood(fit, errors)
    dimensions = len(fit.keys) + len(fit.flows)
    walkers = max(32, 4 * dimensions) if walkers is None else whole("walkers", walkers)
    steps = whole("steps", steps)
    burn = steps // 2 if burn is None else whole("burn", burn, 0)
    if walkers < 2 * dimensions or walkers % 2:
        raise Error(f"walkers is {walkers}; expected an even number of at least {2 * dimensions}")
    if burn >= steps:
        raise Error(f"burn is {burn}; expected a number from 0 to {steps - 1}, fewer than the {steps} steps")
    start = _start(likelihood, walkers, seed)
    state = emcee.State(start, random_state=numpy.random.RandomState(seed).get_state())
    sampler = emcee.EnsembleSampler(walkers, dimensions, likelihood.log, vectorize=True)
    sampler.log_prob_fn = likelihood.log  # without the wrapper that prints all walkers when a cell is interrupted
    sampler.run_mcmc(state, steps)
    scale = numpy.concatenate([fit.high - fit.low, likelihood.largest])
    names = [*fit.keys, *(f"deviation of {flow}" for flow in fit.flows)]
    draws = sampler.get_chain(discard=burn, flat=True) * scale + numpy.concatenate([fit.low, numpy.zeros(len(fit.flows))])
    with numpy.errstate(invalid="ignore"):  # a walker that never moved has no autocorrelation
        times = pandas.Series(sampler.get_autocorr_time(discard=burn, tol=0), names, name="autocorrelation")
    return Uncertainty(fit, likelihood, pandas.DataFrame(draws, columns=names), walkers, steps, burn,
                       float(sampler.acceptance_fraction.mean()), times, seed)


def _start(likelihood: Likelihood, walkers: int, seed: int | None) -> Floats:
    """Where the walkers begin: the best of four times as many points that fill the ranges, with fitting deviations."""
    fit = likelihood.fit
    points = unit_sobol(len(fit.keys), 1 << (4 * walkers - 1).bit_length(), seed)
    simulated = fit.simulate(points)
    full = numpy.concatenate([points, likelihood.best_deviations(simulated)], axis=1)
    known = numpy.isfinite(fit.observed)
    scale = likelihood.scale(simulated) * (full[:, len(fit.keys):] * likelihood.largest)[..., None]
    terms = -numpy.log(scale) - 0.5 * ((simulated - fit.observed) / scale) ** 2
    density = numpy.where(known, terms, 0).sum(axis=(1, 2))
    density = numpy.where(numpy.isfinite(density), density, -numpy.inf)
    if numpy.isfinite(density).sum() < walkers:
        raise Error("most members failed; run one of them to see why")
    chosen: Floats = full[numpy.argsort(-density, kind="stable")[:walkers]]
    return chosen


@dataclass(repr=False)
class Uncertainty:
    """Draws from the posterior distribution of parameters and errors.

    Attributes
    ----------
    fit : Fit
    likelihood : Likelihood
    draws : DataFrame
        A row for each draw: parameters in their units, then the standard deviation of the errors of each flow.
    walkers, steps, burn : int
        Chains, steps of each, and those at the start that are left out.
    acceptance : float
        Mean fraction of moves that were accepted.
    autocorrelation : Series
        Steps between independent draws, by parameter; not a number where the chain is too short to tell.
    seed : int or None
    """

    fit: Fit = field(repr=False)
    likelihood: Likelihood = field(repr=False)
    draws: pandas.DataFrame = field(repr=False)
    walkers: int
    steps: int
    burn: int
    acceptance: float
    autocorrelation: pandas.Series
    seed: int | None

    @property
    def at_limits(self) -> list[str]:
        """Deviations that press against the upper limit of their prior, which the user does not choose: the model cannot
        give such observations, or errors are of the other kind."""
        deviations = self.draws.iloc[:, len(self.fit.keys):]
        near = deviations.quantile(0.95).to_numpy() > (1 - _NEAR) * self.likelihood.largest
        return list(deviations.columns[near])

    @property
    def too_short(self) -> bool:
        """Whether the chain has fewer than 50 autocorrelation times of some parameter."""
        return not bool((self.steps - self.burn >= _TAUS * self.autocorrelation).all())

    def bands(self, level: float = 0.9, *, draws: int = 200, errors: bool = True) -> xarray.DataArray:
        """Where the flows lie with a probability of `level`.

        Parameters
        ----------
        level : float
            Between 0 and 1.
        draws : int
            Members that are run for it.
        errors : bool
            With the errors, as observations would lie; without, what the model alone gives.

        Returns
        -------
        DataArray, (band, flow, time)
            Bands "low", "median" and "high"; the coordinate `units` along `flow`.

        Raises
        ------
        Error
            `level` is no fraction, or `draws` no number from 1.
        """
        import xarray

        if not 0 < level < 1:
            raise Error(f"level is {level!r}; expected a fraction between 0 and 1")
        draws = whole("draws", draws)
        rows = self.draws.iloc[numpy.linspace(0, len(self.draws) - 1, min(draws, len(self.draws))).astype(int)]
        d = len(self.fit.keys)
        swept = recorded(self.fit.batch.sweep(design(self.fit.keys, rows.iloc[:, :d].to_numpy())), self.fit.flows)
        simulated = swept.values.astype(float)
        if errors:
            noise = numpy.random.default_rng(self.seed).standard_normal(simulated.shape)
            simulated = simulated + noise * self.likelihood.scale(simulated) * rows.iloc[:, d:].to_numpy()[..., None]
        tail = (1 - level) / 2
        values = numpy.nanquantile(simulated, [tail, 0.5, 1 - tail], axis=0)
        return xarray.DataArray(values, dims=("band", "flow", "time"),
                                coords={"band": ["low", "median", "high"], "flow": self.fit.flows,
                                        "time": swept["time"].values, "units": ("flow", self.fit.units)})

    def coverage(self, level: float = 0.9, **options: Any) -> pandas.Series:
        """Which fraction of the observations lies in the bands, by flow; options as for `bands`."""
        bands = self.bands(level, **options)
        observed = self.fit.observed
        inside = (bands.sel(band="low").values <= observed) & (observed <= bands.sel(band="high").values)
        known = numpy.isfinite(observed)
        return pandas.Series((inside & known).sum(axis=1) / known.sum(axis=1), self.fit.flows, name="coverage")

    def plot(self) -> Axes:
        """Draws the posterior of each parameter and the bands of each flow.

        Returns
        -------
        matplotlib Axes
            Those of the first parameter.
        """
        from .study_plots import plot_uncertainty

        return plot_uncertainty(self)

    def __repr__(self) -> str:
        kind = {"absolute": "in the unit of the flow", "relative": "as a fraction of the simulated flow"}
        wide = max(map(len, self.draws))
        rows = [f"<kesto.Uncertainty: {len(self.draws)} draws of {self.walkers} walkers, {self.steps} steps less"
                f" {self.burn}>",
                f"  Gaussian errors, independent from day to day, with a standard deviation {kind[self.likelihood.errors]};"
                " uniform priors in the bounds",
                f"  deviations with uniform priors up to {', '.join(f'{one:.6g}' for one in self.likelihood.largest)}"
                f" ({_LIMITS[self.likelihood.errors]})",
                f"  accepted {self.acceptance:.0%}, autocorrelation time up to {self.autocorrelation.max():.0f} steps",
                f"  {'':<{wide}} {'5 %':>12} {'median':>12} {'95 %':>12}"]
        for name, row in self.draws.quantile([0.05, 0.5, 0.95]).T.iterrows():
            rows.append(f"  {name:<{wide}} {row[0.05]:>12.6g} {row[0.5]:>12.6g} {row[0.95]:>12.6g}")
        rows += [f"  {name} is at its upper limit: the errors may be larger, or of the other kind" for name in self.at_limits]
        if self.too_short:
            rows.append(f"  the chain is too short to trust: expected {_TAUS} autocorrelation times, it has"
                        f" {(self.steps - self.burn) / self.autocorrelation.max():.0f}; raise steps")
        return "\n".join(rows)
