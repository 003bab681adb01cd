"""Keys and values as the command's options write them."""
from __future__ import annotations

import datetime
from collections.abc import Mapping, Sequence
from typing import Any, SupportsFloat, SupportsIndex, Union

from .errors import Error

Value = Union[str, bool, int, float, SupportsFloat, Sequence["Value"]]
Day = Union[str, datetime.date]


def written(value: Value) -> str:
    """A value as after `--set KEY=`: numbers in full, texts as they are. Arrays are lists, those without dimensions numbers.

    >>> written("3 m3"), written(0.1), written(True), written([1, 2.5])
    ('3 m3', '0.1', 'true', '[1, 2.5]')

    Raises
    ------
    TypeError
        It is neither a text, a number nor a list of such.
    """
    if isinstance(value, str):
        return value
    if hasattr(value, "dtype"):  # of numpy, pandas or xarray
        import numpy

        value = numpy.asarray(value).tolist()
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, SupportsIndex):
        return str(value.__index__())
    if isinstance(value, SupportsFloat):
        return repr(float(value))
    if isinstance(value, Sequence):
        return "[" + ", ".join(f'"{one}"' if isinstance(one, str) else written(one) for one in value) + "]"
    raise TypeError(f"{value!r} is no value of a key; expected a number, a text or a list of numbers")


def day(value: Day) -> str:
    """A day as YYYY-MM-DD; a Timestamp of pandas is a date, too, and numpy has its own.

    >>> day("2012-01-31"), day(datetime.date(2012, 1, 31))
    ('2012-01-31', '2012-01-31')
    """
    if hasattr(value, "dtype"):  # of numpy, which is not imported here
        moment: Any = value
        return str(moment.astype("datetime64[D]"))
    if isinstance(value, datetime.datetime):
        value = value.date()
    if not isinstance(value, (str, datetime.date)):
        raise TypeError(f"{value!r} is no day; expected a date, or a text such as 2012-01-31")
    return value if isinstance(value, str) else value.isoformat()


def whole(name: str, value: Any, least: int = 1) -> int:
    """A whole number of things, numpy's among them.

    >>> whole("n", 3)
    3

    Raises
    ------
    Error
        It is none, or less than `least`.
    """
    if isinstance(value, SupportsIndex) and not isinstance(value, bool) and value.__index__() >= least:
        return value.__index__()
    raise Error(f"{name} is {value!r}; expected a whole number from {least}")


def listed(names: str | Sequence[str]) -> list[str]:
    """One name or several, as a list."""
    return [names] if isinstance(names, str) else list(names)


def options(set: Mapping[str, Value] | None = None, scenario: str | Sequence[str] = (), start: Day | None = None,
            end: Day | None = None) -> list[str]:
    """The options of the command that replace values of a model.

    >>> options({"tank.size": "3 m3"}, "dry", end="2012-12-31")
    ['--scenario', 'dry', '--set', 'tank.size=3 m3', '--to', '2012-12-31']
    """
    if set is not None and not isinstance(set, Mapping):
        raise TypeError(f"the values to set are {set!r}; expected a mapping such as {{'tank.size': '3 m3'}}")
    words: list[str] = []
    for name in listed(scenario):
        words += ["--scenario", name]
    for key, value in (set or {}).items():
        words += ["--set", f"{key}={written(value)}"]
    if start is not None:
        words += ["--from", day(start)]
    if end is not None:
        words += ["--to", day(end)]
    return words
