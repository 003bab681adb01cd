"""How well simulated values meet observed ones.

All take arrays (..., time) of simulated values and (time,) of observed ones, and return (...). Days without an
observation (not a number) are left out; where a simulated value is not a number, so is the metric.
"""
from __future__ import annotations

from collections.abc import Callable
from typing import Any

import numpy

from .designs import Floats
from .errors import Error

Metric = Callable[[Any, Any], Floats]


def nse(simulated: Any, observed: Any) -> Floats:
    """Nash-Sutcliffe efficiency: 1 is perfect, 0 as good as the mean of the observations.

    J. E. Nash, J. V. Sutcliffe: River flow forecasting through conceptual models, part I. Journal of Hydrology 10
    (1970) 282-290.

    >>> float(nse([1.0, 2.0, 4.0], [1.0, 2.0, 3.0]))
    0.5
    """
    s, o = _observed(simulated, observed)
    with numpy.errstate(divide="ignore", invalid="ignore"):
        return _array(1 - ((s - o) ** 2).sum(-1) / ((o - o.mean()) ** 2).sum())


def kge(simulated: Any, observed: Any) -> Floats:
    """Kling-Gupta efficiency: 1 is perfect; correlation, variability and bias count alike.

    H. V. Gupta, H. Kling, K. K. Yilmaz, G. F. Martinez: Decomposition of the mean squared error and NSE performance
    criteria. Journal of Hydrology 377 (2009) 80-91, equations 9 and 10.

    >>> float(kge([2.0, 4.0, 6.0], [1.0, 2.0, 3.0])).__round__(12)  # twice the mean, twice the deviation
    -0.414213562373
    """
    s, o = _observed(simulated, observed)
    with numpy.errstate(divide="ignore", invalid="ignore"):
        covariance = ((s - s.mean(-1, keepdims=True)) * (o - o.mean())).mean(-1)
        correlation = covariance / (s.std(-1) * o.std())
        return _array(1 - numpy.sqrt((correlation - 1) ** 2 + (s.std(-1) / o.std() - 1) ** 2
                                     + (s.mean(-1) / o.mean() - 1) ** 2))


def pbias(simulated: Any, observed: Any) -> Floats:
    """Bias in per cent of what was observed: positive where the model gives too much.

    H. V. Gupta, S. Sorooshian, P. O. Yapo: Status of automatic calibration for hydrologic models. Journal of Hydrologic
    Engineering 4 (1999) 135-143; with the sign that says which way the model errs.

    >>> float(pbias([1.0, 2.0, 4.2], [1.0, 2.0, 3.0])).__round__(12)
    20.0
    """
    s, o = _observed(simulated, observed)
    with numpy.errstate(divide="ignore", invalid="ignore"):
        return _array(100 * (s - o).sum(-1) / o.sum())


METRICS: dict[str, Metric] = {"nse": nse, "kge": kge, "pbias": pbias}


def loss(name: str) -> Metric:
    """What a search minimises: 1 − NSE, 1 − KGE or the size of the bias."""
    if name not in METRICS:
        raise Error(f"there is no metric {name!r}; expected {', '.join(METRICS)}")
    metric = METRICS[name]
    if name == "pbias":
        return lambda simulated, observed: numpy.abs(metric(simulated, observed))
    return lambda simulated, observed: 1 - metric(simulated, observed)


def _observed(simulated: Any, observed: Any) -> tuple[Floats, Floats]:
    """Both in double precision, without the days that were not observed."""
    s, o = numpy.asarray(simulated, float), numpy.asarray(observed, float)
    if o.ndim != 1 or s.shape[-1:] != o.shape:
        raise Error(f"simulated values of shape {s.shape} and observed ones of shape {o.shape}; expected (..., time) and"
                    " (time,)")
    known = numpy.isfinite(o)
    if not known.any():
        raise Error("no value was observed: all are missing")
    return s[..., known], o[known]


def _array(values: Any) -> Floats:
    return numpy.asarray(values, float)
