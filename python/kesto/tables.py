"""Rows of the command's JSON as tables of pandas."""
from __future__ import annotations

import dataclasses
from collections.abc import Iterable, Mapping, Sequence
from typing import TYPE_CHECKING, Any

from .errors import Fault

if TYPE_CHECKING:
    import pandas

_MONTHS = ("jan", "feb", "mar", "apr", "may", "jun", "jul", "aug", "sep", "oct", "nov", "dec")


def table(rows: Iterable[Mapping[str, Any]], columns: Sequence[str], index: str | Sequence[str] | None = None
          ) -> pandas.DataFrame:
    """A table with `columns` first, also where there are no rows, and then what else the rows hold."""
    import pandas

    rows = list(rows)
    more = dict.fromkeys(key for row in rows for key in row if key not in columns)
    made = pandas.DataFrame(rows, columns=[*columns, *more])
    return made if index is None else made.set_index(index if isinstance(index, str) else list(index))


def fault_table(faults: Iterable[Fault]) -> pandas.DataFrame:
    """A row for each fault, the columns those of Fault."""
    columns = [field.name for field in dataclasses.fields(Fault)]
    return table((dataclasses.asdict(fault) for fault in faults), columns)


def figure_table(rows: Iterable[Mapping[str, Any]]) -> pandas.DataFrame:
    """Derived figures: index `figure`; columns `value` (not a number where there is none), `unit`, `from`, `to`."""
    made = table(rows, ["name", "value", "unit", "from", "to"]).rename(columns={"name": "figure"}).set_index("figure")
    made["value"] = made["value"].astype(float)
    return made


def is_monthly(figure: str) -> bool:
    """Whether a figure is one of twelve, of a month.

    >>> is_monthly("tank.unmet_jan"), is_monthly("tank.unmet")
    (True, False)
    """
    return figure.rsplit("_", 1)[-1] in _MONTHS


def key_figures(figures: pandas.DataFrame) -> pandas.DataFrame:
    """Those that people decide by: with a value, and without the months."""
    yearly = figures[[not is_monthly(name) for name in figures.index]]
    return yearly.loc[yearly["value"].notna(), ["value", "unit"]]
