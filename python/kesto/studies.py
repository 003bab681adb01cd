"""What a model can be asked beyond one run; the methods of Model that search."""
from __future__ import annotations

import os
from collections.abc import Mapping, Sequence
from typing import TYPE_CHECKING, Any

from .values import Day, Value

if TYPE_CHECKING:
    from .calibration import Calibration
    from .designs import Bounds
    from .model import Model
    from .objective import Batch, Observed
    from .observations import Period
    from .pareto import Front
    from .sensitivity import Sensitivity, Statistic
    from .sizing import SizingCurve
    from .sweep import Design, Sweep
    from .uncertainty import Uncertainty


def _batch(model: Any, record: Sequence[str], figures: str, options: dict[str, Any]) -> Batch:
    """How the members of a study run; raises TypeError for options that there are not."""
    from .objective import Batch
    from .sweep import Plan

    how = {name: options.pop(name) for name in ("jobs", "client", "progress") if name in options}
    known = {"set", "scenario", "start", "end"}
    if wrong := sorted(options.keys() - known):
        raise TypeError(f"there is no option {wrong[0]}; expected set, scenario, start, end, jobs, client or progress")
    return Batch(Plan.of(model, record=record, figures=figures, **options), **how)


class Studies:
    """Sweeps and what is made of them.

    All methods take these options: `set`, `scenario`, `start` and `end` as for `Model.run`, of all members; `jobs`,
    how many members run at a time; `client`, a cluster; all but `sweep` also `progress=True`, which shows how many
    members have run.
    """

    def sweep(self, design: Design, *, set: Mapping[str, Value] | None = None, scenario: str | Sequence[str] = (),
              start: Day | None = None, end: Day | None = None, record: str | Sequence[str] = (), every: str = "day",
              figures: str = "all", jobs: int | None = None, client: Any = None,
              keep: str | os.PathLike[str] | None = None) -> Sweep:
        """Runs many members, each in a process of its own.

        Parameters
        ----------
        design : DataFrame or mapping
            A column for each key, a row for each member; cells are values as after `--set`, a missing one is the
            model's own. `kesto.grid`, `kesto.lhs` and `kesto.sobol` make such tables.
        set, scenario, start, end
            Of all members, as for `run`; the design wins.
        record : str or sequence of str
            Flows to keep as series; their totals are figures. Only these: a run also keeps what recorders
            have received.
        every : "day", "month" or "year"
            What recorded flows are summed over.
        figures : "all" or "key"
            Figures of each component, or of the network alone.
        jobs : int, optional
            Members that run at a time; by default one on each core.
        client : dask.distributed.Client, optional
            A cluster that runs the members, in chunks.
        keep : path, optional
            A folder for the files of the sweep, which stays. Without a cluster, the same sweep into
            it goes on where it was stopped.

        Returns
        -------
        Sweep
            Members that failed are rows of `failed`, and not a number elsewhere.

        Raises
        ------
        ModelError
            A key, a value or the model is wrong; all faults, with the member.
        CommandError
            The folder `keep` cannot be used: it holds another sweep or other files, or cannot be written.
        Error
            The design has no members, or an argument is none of those above.
        """
        from .sweep import Plan, run_sweep

        plan = Plan.of(self, set=set, scenario=scenario, start=start, end=end, record=record, every=every,
                       figures=figures)
        return run_sweep(plan, design, jobs=jobs, client=client, keep=keep)

    def calibrate(self, bounds: Bounds, observed: Observed, *, metric: str = "kge", warmup: Period = 0,
                  method: str = "de", max_members: int = 2000, seed: int | None = None, **options: Any) -> Calibration:
        """Finds the parameters that meet observations best.

        Parameters
        ----------
        bounds : mapping of str to (low, high)
            Keys and their ranges, in the units of the keys.
        observed : mapping of str to series
            Of each flow a Series or DataArray with a date for each day, or values of all days of the run; of several flows
            the mean metric counts. Missing days are left out. In L, or mm of soil stores; an attribute `units` such as
            "m3" is converted.
        metric : "nse", "kge" or "pbias"
        warmup : number, str or timedelta
            What is left out at the start: days, or a text such as "365D".
        method : "de" or "dds"
            Differential evolution, or dynamically dimensioned search for many parameters and few members.
        max_members : int
            Where the search stops.
        seed : int, optional
            The same seed gives the same bits.
        **options
            As of all studies.

        Returns
        -------
        Calibration
            The best, and what the observations cannot tell.

        Raises
        ------
        ModelError
            A key, a value or the model is wrong; all faults.
        Error
            The observations cannot be compared with the days of the run, the metric is undefined for them, all members
            fail, or an argument is none of those above.
        """
        from .calibration import calibrate
        from .objective import observed_flows

        batch = _batch(self, observed_flows(observed), "key", options)
        return calibrate(batch, bounds, observed, metric=metric, warmup=warmup, method=method, max_members=max_members,
                         seed=seed)

    def uncertainty(self, bounds: Bounds, observed: Observed, *, warmup: Period = 0, errors: str = "absolute",
                    walkers: int | None = None, steps: int = 500, burn: int | None = None, seed: int | None = None,
                    **options: Any) -> Uncertainty:
        """Draws from what the parameters can be, given observations (needs emcee).

        The likelihood is that of Gaussian errors, independent from day to day, whose standard deviation is a parameter
        of each flow; priors are uniform in the bounds, those of the deviations up to twice the deviation of the
        observations or, of relative errors, twice the simulated flow. The walkers are those of D. Foreman-Mackey, D. W. Hogg, D. Lang,
        J. Goodman: emcee: the MCMC hammer. PASP 125 (2013) 306-312.

        Parameters
        ----------
        bounds, observed, warmup
            As for `calibrate`.
        errors : "absolute" or "relative"
            Whether the deviation is in the unit of the flow, or a fraction of the simulated flow.
        walkers : int, optional
            An even number; by default four for each parameter, and at least 32.
        steps : int
            Of each walker; a step runs as many members as there are walkers.
        burn : int, optional
            Steps at the start that are left out; by default half.
        seed : int, optional
            The same seed gives the same bits.
        **options
            As of all studies.

        Returns
        -------
        Uncertainty

        Raises
        ------
        ModelError
            A key, a value or the model is wrong; all faults.
        Error
            As of `calibrate`; `walkers` are too few or odd, `burn` leaves no steps, or there is no emcee.
        """
        from .objective import observed_flows
        from .uncertainty import uncertainty

        batch = _batch(self, observed_flows(observed), "key", options)
        return uncertainty(batch, bounds, observed, warmup=warmup, errors=errors, walkers=walkers, steps=steps,
                           burn=burn, seed=seed)

    def sensitivity(self, bounds: Bounds, target: str, *, n: int = 1024, method: str = "sobol",
                    statistic: Statistic | None = None, seed: int | None = None, **options: Any) -> Sensitivity:
        """Which parameters matter for an output.

        Parameters
        ----------
        bounds : mapping of str to (low, high)
        target : str
            A figure such as "tank.served", or a flow such as "tank:overflow": its total [L].
        n : int
            Points of "sobol", a power of two, which run n (parameters + 2) members; trajectories of "morris", which
            run n (parameters + 1).
        method : "sobol" or "morris"
            Shares of the variance, or elementary effects.
        statistic : callable, optional
            What is made of the days of a flow: takes (members, time), returns (members,).
        seed : int, optional
            The same seed gives the same bits.
        **options
            As of all studies.

        Returns
        -------
        Sensitivity

        Raises
        ------
        ModelError
            A key, a value or the model is wrong; all faults.
        Error
            There is no such figure, flow or method, `n` is no power of two, the target is the same for all members, or the
            statistic does not give a number for each.
        """
        from .sensitivity import sensitivity

        batch = _batch(self, [target] if ":" in target or statistic else [], "all", options)
        return sensitivity(batch, bounds, target, n=n, method=method, statistic=statistic, seed=seed)

    def sizing_curve(self, key: str, sizes: Sequence[Value], *, target: float = 0.9, figure: str | None = None,
                     **options: Any) -> SizingCurve:
        """How a figure follows a size, and the smallest size that is enough.

        Parameters
        ----------
        key : str
            Such as "tank.size".
        sizes : sequence of value
            Numbers in the unit of the key, or texts with one unit.
        target : float
            Of the figure.
        figure : str, optional
            By default the reliability by volume of the key's component.
        **options
            As of all studies.

        Returns
        -------
        SizingCurve

        Raises
        ------
        ModelError
            A key, a value or the model is wrong; all faults.
        Error
            There is no such figure, or the sizes are in different units.
        """
        from .sizing import sizing_curve

        return sizing_curve(_batch(self, [], "all", options), key, sizes, target, figure)

    def pareto(self, bounds: Bounds, *, minimise: str | Sequence[str] = (), maximise: str | Sequence[str] = (),
               n: int = 2000, seed: int | None = None, **options: Any) -> Front:
        """Members that no other beats in several aims, of a Latin hypercube.

        Parameters
        ----------
        bounds : mapping of str to (low, high)
        minimise, maximise : str or sequence of str
            Figures, or keys of the bounds; two or more in all.
        n : int
            Members.
        seed : int, optional
            The same seed gives the same bits.
        **options
            As of all studies.

        Returns
        -------
        Front

        Raises
        ------
        ModelError
            A key, a value or the model is wrong; all faults.
        Error
            There are fewer than two aims, or one is neither a figure nor a key.
        """
        from .pareto import pareto

        return pareto(_batch(self, [], "all", options), bounds, minimise, maximise, n, seed)
