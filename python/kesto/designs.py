"""Designs: which members a sweep has. Each is a table with a row for each member and a column for each key."""
from __future__ import annotations

import itertools
from collections.abc import Mapping, Sequence, Sized
from typing import Any

import numpy
import pandas
from numpy.typing import NDArray

from .errors import Error
from .values import Value, whole

Bounds = Mapping[str, tuple[float, float]]
Floats = NDArray[numpy.float64]


def grid(axes: Mapping[str, Sequence[Value]]) -> pandas.DataFrame:
    """All combinations of values; the last key varies fastest.

    Parameters
    ----------
    axes : mapping of str to sequence
        Values of each key, as after `--set`.

    Returns
    -------
    DataFrame
        Index `member` from 1, a column for each key.

    >>> grid({"tank.size": ["1 m3", "3 m3"], "roof.size": [50, 100]})
           tank.size  roof.size
    member                     
    1           1 m3         50
    2           1 m3        100
    3           3 m3         50
    4           3 m3        100
    """
    for key, values in axes.items():
        if isinstance(values, str) or not isinstance(values, Sized):
            raise Error(f"the values of {key} are {values!r}; expected a list")
    if not axes or any(len(values) == 0 for values in axes.values()):
        raise Error("a grid needs at least one key, and a value for each")
    rows = list(itertools.product(*(list(values) for values in axes.values())))
    return pandas.DataFrame(rows, columns=list(axes), index=_members(len(rows)))


def lhs(bounds: Bounds, n: int, *, seed: int | None = None) -> pandas.DataFrame:
    """A Latin hypercube: of `n` equal classes of each key's range, each holds one member.

    M. D. McKay, R. J. Beckman, W. J. Conover: A comparison of three methods for selecting values of input variables in
    the analysis of output from a computer code. Technometrics 21 (1979) 239-245.

    Parameters
    ----------
    bounds : mapping of str to (low, high)
        In the units of the keys.
    n : int
        Members.
    seed : int, optional
        The same seed gives the same bits.

    Returns
    -------
    DataFrame
        Index `member` from 1, a column for each key.
    """
    from scipy.stats import qmc

    low, high = limits(bounds)
    points = qmc.LatinHypercube(len(bounds), seed=seed).random(whole("n", n))
    return design(bounds, qmc.scale(points, low, high))


def sobol(bounds: Bounds, n: int, *, seed: int | None = None) -> pandas.DataFrame:
    """Points of a scrambled Sobol' sequence, which fill the ranges more evenly than random ones.

    I. M. Sobol': On the distribution of points in a cube and the approximate evaluation of integrals. USSR Computational
    Mathematics and Mathematical Physics 7 (1967) 86-112; scrambled after A. B. Owen.

    Parameters
    ----------
    bounds : mapping of str to (low, high)
        In the units of the keys.
    n : int
        Members, a power of two: others lose the balance of the sequence.
    seed : int, optional
        The same seed gives the same bits.

    Returns
    -------
    DataFrame
        Index `member` from 1, a column for each key.
    """
    low, high = limits(bounds)
    return design(bounds, low + (high - low) * unit_sobol(len(bounds), n, seed))


def unit_sobol(dimensions: int, n: int, seed: int | None) -> Floats:
    """`n` points of a scrambled Sobol' sequence in the unit cube: (n, dimensions)."""
    from scipy.stats import qmc

    n = whole("n", n)
    if n & (n - 1):
        raise Error(f"n is {n}; expected a power of two, such as {1 << round(numpy.log2(n))}")
    points: Floats = qmc.Sobol(dimensions, scramble=True, seed=seed).random_base2(n.bit_length() - 1)
    return points


def limits(bounds: Bounds) -> tuple[Floats, Floats]:
    """The lower and the upper bounds, (keys,) each. Raises Error where there is no range."""
    if not bounds:
        raise Error("no parameters; expected bounds such as {\"tank.size\": (200, 8000)}")
    for key, pair in bounds.items():
        try:
            low, high = (float(one) for one in pair)
        except (TypeError, ValueError):
            raise Error(f"the bounds of {key} are {pair!r}; expected two numbers in the unit of the key") from None
        if not (numpy.isfinite([low, high]).all() and low < high):
            raise Error(f"the bounds of {key} are {low:g} and {high:g}; expected a lower and a higher number")
    low_and_high = numpy.array([[float(low), float(high)] for low, high in bounds.values()])
    return low_and_high[:, 0], low_and_high[:, 1]


def design(keys: Mapping[str, Any] | Sequence[str], rows: Floats) -> pandas.DataFrame:
    """Rows of values, (members, keys), as a table."""
    return pandas.DataFrame(rows, columns=list(keys), index=_members(len(rows)))


def _members(count: int) -> pandas.Index:
    return pandas.RangeIndex(1, count + 1, name="member")
