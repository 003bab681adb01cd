"""The files that `kesto sweep` leaves, of one folder or of several slices of a design."""
from __future__ import annotations

import functools
import json
from collections.abc import Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import TYPE_CHECKING, Any

import pandas

if TYPE_CHECKING:
    import xarray


@dataclass
class Pieces:
    """The table of members and the recorded series.

    Attributes
    ----------
    members : DataFrame
        members.csv; index `member`. Keys, outcome and message are text, figures numbers.
    units : dict
        Unit of each figure, in the order of the columns.
    warnings : list of dict
        As in members.json.
    parts : list of bytes
        NetCDF files with the recorded series, in the order of their members.
    """

    members: pandas.DataFrame
    units: dict[str, str]
    warnings: list[dict[str, Any]]
    parts: list[bytes]

    @functools.cached_property
    def dataset(self) -> xarray.Dataset:
        """The recorded series over (member, flow, time), with the names of flows as coordinates."""
        import xarray

        from .netcdf import read

        if not self.parts:
            return xarray.Dataset(coords={"member": self.members.index.to_numpy()})
        parts = [read(part) for part in self.parts]
        return parts[0] if len(parts) == 1 else xarray.concat(parts, "member", data_vars="minimal", coords="minimal",
                                                               compat="override", join="exact")


def read_pieces(folders: Sequence[Path]) -> Pieces:
    """What the sweeps in `folders` left, slices of one design in the order of their members."""
    tables, units, warnings, parts = [], {}, [], []
    for folder in folders:
        summary = json.loads((folder / "members.json").read_text(encoding="utf-8"))
        tables.append(_table(folder / "members.csv", [column["name"] for column in summary["columns"]]))
        units.update({column["name"]: column["unit"] for column in summary["columns"]})
        warnings.append(summary["warnings"])
        parts += [(folder / entry["file"]).read_bytes() for entry in summary["files"] if entry["file"].endswith(".nc")]
    return Pieces(pandas.concat(tables) if len(tables) > 1 else tables[0], units, _counted(warnings), parts)


def _table(path: Path, figures: list[str]) -> pandas.DataFrame:
    # What the command wrote in full is read in full; keys and messages stay text.
    numbers = dict.fromkeys(figures, float)
    table = pandas.read_csv(path, index_col="member", dtype={**_texts(path, figures), **numbers}, keep_default_na=False,
                            na_values=dict.fromkeys(figures, ""), float_precision="round_trip")
    return table


def _texts(path: Path, figures: list[str]) -> dict[str, type]:
    header = pandas.read_csv(path, nrows=0).columns
    return {name: str for name in header if name not in figures and name != "member"}


def _counted(lists: list[list[dict[str, Any]]]) -> list[dict[str, Any]]:
    """The warnings of several slices, each once with the members that have it."""
    found: dict[str, dict[str, Any]] = {}
    for rows in lists:
        for row in rows:
            key = json.dumps({name: value for name, value in row.items() if name != "members"}, sort_keys=True)
            known = found.setdefault(key, {**row, "members": 0})
            known["members"] += row.get("members") or 0
    return list(found.values())
