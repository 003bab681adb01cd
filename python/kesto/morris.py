"""Elementary effects: which parameters matter, from few members.

M. D. Morris: Factorial sampling plans for preliminary computational experiments. Technometrics 33 (1991) 161-174; the mean of
absolute effects after F. Campolongo, J. Cariboni, A. Saltelli: An effective screening design for sensitivity analysis of
large models. Environmental Modelling & Software 22 (2007) 1509-1518.
"""
from __future__ import annotations

from typing import Any

import numpy
import pandas

from .designs import Bounds, Floats, limits
from .errors import Error
from .values import whole


def morris_sample(bounds: Bounds, trajectories: int, *, levels: int = 4, seed: int | None = None) -> Floats:
    """Trajectories that change one parameter at a time by levels / (2 (levels − 1)) of its range.

    Parameters
    ----------
    bounds : mapping of str to (low, high)
    trajectories : int
    levels : int
        Of each parameter, even.
    seed : int, optional
        The same seed gives the same bits.

    Returns
    -------
    ndarray, (trajectories (parameters + 1), parameters)
        Trajectory by trajectory.
    """
    if whole("levels", levels, 2) % 2:
        raise Error(f"levels is {levels}; expected an even number from 2")
    trajectories = whole("trajectories", trajectories)
    low, high = limits(bounds)
    d = len(bounds)
    step = levels / (2 * (levels - 1))
    random = numpy.random.default_rng(seed)
    sample = numpy.empty((trajectories, d + 1, d))
    for trajectory in sample:
        # From the lower half of the levels upwards, or from the upper half downwards.
        upwards = random.integers(0, 2, d)
        start = random.integers(0, levels // 2, d) / (levels - 1)
        point = numpy.where(upwards, start, 1 - start)
        trajectory[0] = point
        for at, parameter in enumerate(random.permutation(d), start=1):
            point[parameter] += step if upwards[parameter] else -step
            trajectory[at] = point
    scaled: Floats = low + (high - low) * sample.reshape(-1, d)
    return scaled


def morris_effects(sample: Any, values: Any, bounds: Bounds) -> pandas.DataFrame:
    """The effects of the outputs of `morris_sample`, in the unit of the output, over the whole range of a parameter.

    Parameters
    ----------
    sample : array, (trajectories (parameters + 1), parameters)
    values : array, (trajectories (parameters + 1),)
        The output of each member. Steps from or to a member that failed (not a number) are left out.
    bounds : mapping of str to (low, high)
        As for the sample.

    Returns
    -------
    DataFrame
        Index `parameter`; columns `mu` (mean effect), `mu_star` (mean of absolute effects), `sigma` (standard
        deviation: curved, or dependent on other parameters).
    """
    low, high = limits(bounds)
    d = len(bounds)
    points = (numpy.asarray(sample, float).reshape(-1, d + 1, d) - low) / (high - low)
    outputs = numpy.asarray(values, float).reshape(-1, d + 1)
    moves, changes = numpy.diff(points, axis=1), numpy.diff(outputs, axis=1)
    moved = numpy.abs(moves).argmax(axis=2)  # (trajectories, parameters): which one
    effects = changes / numpy.take_along_axis(moves, moved[..., None], axis=2)[..., 0]
    rows = []
    for parameter in range(d):
        own = effects[(moved == parameter) & numpy.isfinite(effects)]
        rows.append((own.mean(), numpy.abs(own).mean(), own.std(ddof=1) if own.size > 1 else numpy.nan)
                    if own.size else (numpy.nan,) * 3)
    return pandas.DataFrame(rows, columns=["mu", "mu_star", "sigma"], index=pandas.Index(list(bounds), name="parameter"))
