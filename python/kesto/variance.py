"""Variance-based sensitivity: which share of an output's variance is due to which parameter."""
from __future__ import annotations

from typing import Any

import numpy
import pandas

from .designs import Bounds, Floats, limits, unit_sobol
from .errors import Error


def sobol_sample(bounds: Bounds, n: int, *, seed: int | None = None) -> Floats:
    """The members that the indices need.

    Two matrices A and B of `n` points each, and for each parameter A with the column of that parameter from B: A. Saltelli
    and others, Computer Physics Communications 181 (2010) 259-270, table 2. A and B are halves of one scrambled Sobol'
    sequence.

    Parameters
    ----------
    bounds : mapping of str to (low, high)
    n : int
        A power of two.
    seed : int, optional
        The same seed gives the same bits.

    Returns
    -------
    ndarray, (n (parameters + 2), parameters)
        A, then B, then the mixed matrices in the order of the parameters.
    """
    low, high = limits(bounds)
    d = len(bounds)
    points = unit_sobol(2 * d, n, seed)
    a, b = points[:, :d], points[:, d:]
    mixed = numpy.repeat(a[None], d, axis=0)
    for i in range(d):
        mixed[i, :, i] = b[:, i]
    sample: Floats = low + (high - low) * numpy.concatenate([a, b, *mixed])
    return sample


def sobol_indices(values: Any, parameters: list[str], *, resamples: int = 500, confidence: float = 0.95,
                  seed: int | None = None) -> pandas.DataFrame:
    """First-order and total indices of the outputs of `sobol_sample`.

    First order after Saltelli and others (2010), table 2 (b), total after Jansen (1999), (f): M. J. W. Jansen, Computer
    Physics Communications 117 (1999) 35-43. Outputs are centred first, which leaves the indices as they are and makes
    their error smaller. The intervals are percentiles of a bootstrap over the `n` points: G. E. B. Archer, A. Saltelli,
    I. M. Sobol', Journal of Statistical Computation and Simulation 58 (1997) 99-120.

    Parameters
    ----------
    values : array, (n (parameters + 2),)
        The output of each member. Points with a member that failed (not a number) are left out.
    parameters : list of str
        Names, in the order of the sample.
    resamples : int
        Of the bootstrap.
    confidence : float
        Of the intervals.
    seed : int, optional
        Of the bootstrap.

    Returns
    -------
    DataFrame
        Index `parameter`; columns `first`, `first_low`, `first_high`, `total`, `total_low`, `total_high`.
    """
    d = len(parameters)
    outputs = numpy.asarray(values, float)
    if outputs.ndim != 1 or not outputs.size or outputs.size % (d + 2):
        raise Error(f"{outputs.size} outputs; expected those of a sample of n (parameters + 2) = n · {d + 2} members")
    table = outputs.reshape(d + 2, -1)
    table = table[:, numpy.isfinite(table).all(axis=0)]
    n = table.shape[1]
    if n < 2 or numpy.ptp(table[:2]) == 0:
        raise Error("the output is the same for all members, or all have failed: it has no variance to share out")
    table = table - table[:2].mean()
    first, total = _indices(table)
    drawn = numpy.random.default_rng(seed).integers(0, n, size=(resamples, n))
    resampled = numpy.array([_indices(table[:, rows]) for rows in drawn])  # (resamples, 2, parameters)
    tail = 50 * (1 - confidence)
    low, high = numpy.percentile(resampled, [tail, 100 - tail], axis=0)
    return pandas.DataFrame({"first": first, "first_low": low[0], "first_high": high[0], "total": total,
                             "total_low": low[1], "total_high": high[1]},
                            index=pandas.Index(parameters, name="parameter"))


def _indices(table: Floats) -> tuple[Floats, Floats]:
    """First order and total of outputs (parameters + 2, n)."""
    a, b, mixed = table[0], table[1], table[2:]
    variance = table[:2].var()
    if variance == 0:  # a resample may draw one point alone
        missing = numpy.full(len(mixed), numpy.nan)
        return missing, missing
    first: Floats = (b * (mixed - a)).mean(axis=1) / variance
    total: Floats = ((a - mixed) ** 2).mean(axis=1) / (2 * variance)
    return first, total
