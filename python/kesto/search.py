"""Searches over a batch objective: a function of a matrix (members, parameters) that returns (members,)."""
from __future__ import annotations

import math
from collections.abc import Callable

import numpy
from numpy.typing import NDArray

from .designs import Floats
from .errors import Error

Objective = Callable[[Floats], Floats]


def dds(objective: Objective, low: Floats, high: Floats, *, members: int, batch: int = 1, reach: float = 0.2,
        seed: int | None = None) -> tuple[Floats, float]:
    """Dynamically dimensioned search: fewer and fewer parameters are changed as the search goes on.

    B. A. Tolson, C. A. Shoemaker: Dynamically dimensioned search algorithm for computationally efficient watershed model
    calibration. Water Resources Research 43 (2007) W01413. With a `batch` above 1 several candidates are drawn around
    the best point at a time, so that they can run side by side; the probability of changing a parameter follows the
    number of members all the same.

    Parameters
    ----------
    objective : callable
        Takes (members, parameters), returns what is minimised, (members,); not a number counts as the worst.
    low, high : array, (parameters,)
    members : int
        How often the objective is computed, in all.
    batch : int
    reach : float
        Standard deviation of a change, as a fraction of the range.
    seed : int, optional

    Returns
    -------
    best : ndarray, (parameters,)
    value : float
    """
    if members < 1 or batch < 1:
        raise Error(f"members is {members} and batch {batch}; expected numbers from 1")
    random = numpy.random.default_rng(seed)
    d = low.size
    # Half a per cent of the members, and no fewer than five, find where to begin.
    start = min(members, max(5, math.ceil(0.005 * members), batch))
    points = low + (high - low) * random.random((start, d))
    values = _finite(objective(points))
    best, value = points[values.argmin()], float(values.min())
    done = start
    while done < members:
        count = min(batch, members - done)
        # Of the last member the probability is 0, and one parameter is drawn.
        chance = 1 - numpy.log(numpy.arange(done + 1, done + count + 1)) / math.log(members)
        candidates = _candidates(best, low, high, chance, reach, random)
        values = _finite(objective(candidates))
        if values.min() <= value:
            best, value = candidates[values.argmin()], float(values.min())
        done += count
    return best, value


def _candidates(best: Floats, low: Floats, high: Floats, chance: Floats, reach: float,
                random: numpy.random.Generator) -> Floats:
    """One point for each chance, with normal changes of some parameters; beyond a bound they are reflected."""
    changed = random.random((chance.size, best.size)) < chance[:, None]
    none = ~changed.any(axis=1)
    changed[none, random.integers(0, best.size, int(none.sum()))] = True
    points = numpy.where(changed, best + reach * (high - low) * random.standard_normal(changed.shape), best)
    from_low, from_high = 2 * low - points, 2 * high - points
    points = numpy.where(points < low, numpy.where(from_low > high, low, from_low),
                         numpy.where(points > high, numpy.where(from_high < low, high, from_high), points))
    return points


def non_dominated(costs: Floats) -> NDArray[numpy.bool_]:
    """Which rows no other row beats: none is as low in all columns and lower in one. Equal rows are all kept.

    Parameters
    ----------
    costs : array, (members, objectives)
        All minimised. Rows with a value that is not a number are dominated.

    Returns
    -------
    ndarray of bool, (members,)

    >>> non_dominated(numpy.array([[1.0, 3.0], [2.0, 2.0], [2.0, 3.0], [3.0, 1.0]])).tolist()
    [True, True, False, True]
    """
    costs = numpy.asarray(costs, float)
    kept: NDArray[numpy.bool_] = numpy.isfinite(costs).all(axis=1)
    # By the first column and then the next: whoever beats a row stands before it.
    rows = numpy.flatnonzero(kept)
    rows = rows[numpy.lexsort(costs[rows].T[::-1])]
    front = numpy.empty((0, costs.shape[1]))
    for row in rows:
        cost = costs[row]
        if ((front <= cost).all(axis=1) & (front < cost).any(axis=1)).any():
            kept[row] = False
        else:
            front = numpy.vstack([front, cost])
    return kept


def _finite(values: Floats) -> Floats:
    return numpy.where(numpy.isfinite(values), values, math.inf)
