"""Many runs of a model: `kesto sweep`, and what it leaves."""
from __future__ import annotations

import csv
import functools
import os
from collections.abc import Iterable, Mapping, Sequence, Sized
from dataclasses import dataclass, field, replace
from pathlib import Path
from typing import TYPE_CHECKING, Any, Union

import pandas

from . import command
from .errors import CommandError, Error, Fault, not_begun
from .interrupts import passing_folder
from .sweep_files import Pieces, read_pieces
from .tables import fault_table, is_monthly
from .values import Day, Value, listed, options, whole, written

if TYPE_CHECKING:
    import xarray
    from matplotlib.axes import Axes

    from .model import Model
    from .result import Result

Design = Union[pandas.DataFrame, Mapping[str, Sequence[Value]], Iterable[Mapping[str, Value]]]
FINISHED = "finished"
_TABLE = "kesto-design.csv"


@dataclass(frozen=True)
class Plan:
    """What `kesto sweep` is told beside the design: model, options, and what is kept of each member."""

    model: Model
    options: Mapping[str, Any]  # set, scenario, start and end of Model.run
    record: tuple[str, ...] = ()
    every: str = "day"
    figures: str = "all"

    @classmethod
    def of(cls, model: Any, *, set: Mapping[str, Value] | None = None, scenario: str | Sequence[str] = (),
           start: Day | None = None, end: Day | None = None, record: str | Sequence[str] = (), every: str = "day",
           figures: str = "all") -> Plan:
        """A plan with the arguments of Model.sweep."""
        for name, value, known in (("every", every, ("day", "month", "year")), ("figures", figures, ("key", "all"))):
            if value not in known:
                raise Error(f"{name} is {value!r}; expected {', '.join(known[:-1])} or {known[-1]}")
        options(set, scenario, start, end)  # raises what is wrong with them
        return cls(model, {"set": dict(set or {}), "scenario": scenario, "start": start, "end": end},
                   tuple(listed(record)), every, figures)

    @property
    def words(self) -> list[str]:
        """The options as words of the command."""
        return options(**self.options)

    def run(self, set: Mapping[str, Value], **changed: Any) -> Result:
        """One member by itself; arguments of Model.run win over those of the plan."""
        arguments: dict[str, Any] = {**self.options, **changed, "set": {**self.options["set"], **set}}
        return self.model.run(**arguments)

    def arguments(self, model: str, table: str, folder: str) -> list[str]:
        """The words of the command."""
        words = ["sweep", model, table, "-o", folder, "--json", "-q", "--figures", self.figures, "--every", self.every]
        return [*words, "--record", ",".join(self.record) or "none", *self.words]


def as_design(design: Design) -> pandas.DataFrame:
    """A design as a table with a row for each member, numbered from 1."""
    if isinstance(design, Mapping):
        _expect_columns(design)
    table = design if isinstance(design, pandas.DataFrame) else pandas.DataFrame(design)
    if not len(table) or not len(table.columns):
        raise Error("the design has no members; expected a row for each, and a column for each key")
    return table.set_index(pandas.RangeIndex(1, len(table) + 1, name="member"))


def _expect_columns(design: Mapping[str, Any]) -> None:
    """Raises Error where the keys have no lists of values, or lists of different lengths."""
    counts = {key: len(values) for key, values in design.items() if isinstance(values, Sized) and not isinstance(values, str)}
    if design and not counts:
        raise Error("the design has one value for each key; expected a list of values, one for each member")
    if len(set(counts.values())) > 1:
        told = ", ".join(f"{count} of {key}" for key, count in counts.items())
        raise Error(f"the design has different numbers of values: {told}; expected one for each member (kesto.grid combines them)")


def write_design(design: pandas.DataFrame, path: Path) -> None:
    """Writes a design as the table that `kesto sweep` reads. A cell without a value is the model's own."""
    with path.open("w", newline="", encoding="utf-8") as file:
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow(design.columns)
        columns = [[_cell(value) for value in design[key]] for key in design.columns]
        writer.writerows(zip(*columns))


def _cell(value: Any) -> str:
    missing = pandas.api.types.is_scalar(value) and pandas.isna(value)
    return "" if missing else written(value)


def run_sweep(plan: Plan, design: Design, *, jobs: int | None = None, client: Any = None,
              keep: str | os.PathLike[str] | None = None) -> Sweep:
    """What Model.sweep documents."""
    if jobs is not None:
        jobs = whole("jobs", jobs)
    if client is not None and not (hasattr(client, "scatter") and hasattr(client, "submit")):
        raise Error(f"client is {client!r}; expected a dask.distributed.Client")
    table = as_design(design)
    if client is not None:
        from .cluster import run_chunks

        return Sweep(plan, table, run_chunks(plan, table, client, keep), None if keep is None else Path(keep).absolute())
    with passing_folder() as passing:
        folder = Path(passing, "sweep") if keep is None else Path(keep).absolute()
        members = Path(passing, _TABLE)
        write_design(table, members)
        arguments = plan.arguments(str(plan.model.path), str(members), str(folder))
        expect_swept(plan, command.call(*arguments, *(["--jobs", str(jobs)] if jobs else [])))
        return Sweep(plan, table, read_pieces([folder]), None if keep is None else folder)


def expect_swept(plan: Plan, called: command.Completed) -> None:
    """Raises what a sweep that ran no members came to; members that failed are rows of its table."""
    said = called.json()
    if said.get("outcome") == "not run":
        faults = [_of_design(Fault.of(row)) for row in said["errors"]]
        if called.status == 2:
            raise not_begun(str(plan.model.path), faults)
        raise CommandError("\n".join(str(fault) for fault in faults) or called.errors.strip())


def _of_design(fault: Fault) -> Fault:
    """Rows of the table that the command has read are members of the design."""
    if fault.file is None or Path(fault.file).name != _TABLE:
        return fault
    place = f"member {fault.line - 1} of the design" if fault.line and fault.line > 1 else "the design"
    return replace(fault, file=place, line=None, column=None)


@dataclass(repr=False)
class Sweep:
    """The members of a sweep and what they gave.

    Attributes
    ----------
    plan : Plan
    design : DataFrame
        Index `member` from 1, a column for each key.
    pieces : Pieces
        What the command has left: the table of members and the recorded series.
    folder : Path or None
        Where the files are kept.
    """

    plan: Plan
    design: pandas.DataFrame
    pieces: Pieces = field(repr=False)
    folder: Path | None = None

    @functools.cached_property
    def members(self) -> pandas.DataFrame:
        """members.csv: keys, outcome, message and figures; index `member`. Keys that are numbers in the design are numbers."""
        keys = self.design.select_dtypes("number")
        return self.pieces.members.assign(**{str(key): keys[key] for key in keys if key in self.pieces.members})

    @property
    def outcomes(self) -> pandas.Series:
        """How each member ended, index `member`."""
        return self.members["outcome"]

    @functools.cached_property
    def figures(self) -> pandas.DataFrame:
        """Figures of each member, account by kind and totals of what was recorded; index `member`, `attrs["units"]`
        their units. Not a number where a member failed or a figure has no value."""
        figures = self.members[list(self.pieces.units)].astype(float)
        figures.attrs["units"] = dict(self.pieces.units)
        return figures

    @property
    def failed(self) -> pandas.DataFrame:
        """Members that did not finish: their keys, `outcome` and `message`; index `member`."""
        columns = [*self.design.columns, "outcome", "message"]
        return self.members.loc[self.outcomes != FINISHED, columns]

    @functools.cached_property
    def warnings(self) -> pandas.DataFrame:
        """Warnings and notes, each once with how many members have it; columns as of Fault, and `members`."""
        made = fault_table(map(Fault.of, self.pieces.warnings))
        return made.assign(members=[row.get("members") for row in self.pieces.warnings])

    @property
    def dataset(self) -> xarray.Dataset:
        """All that was recorded, over (member, flow, time)."""
        return self.pieces.dataset

    @property
    def flows(self) -> xarray.DataArray:
        """Recorded flows, dims (member, flow, time) [L a step]; not a number where a member failed."""
        return self._array("quantity", "flow")

    @property
    def depths(self) -> xarray.DataArray:
        """Recorded flows of soil stores, dims (member, flow, time) [mm a step]."""
        return self._array("depth", "depth_flow").rename(depth_flow="flow")

    @property
    def qualities(self) -> xarray.DataArray:
        """Qualities of recorded flows, dims (member, flow, time)."""
        return self._array("quality", "flow")

    @property
    def states(self) -> xarray.DataArray:
        """What recorded stores hold at the end of each step, dims (member, store, time) [L]; recorded with their
        component, as in `record=["tank"]`."""
        return self._array("storage", "store")

    def _array(self, name: str, dimension: str) -> xarray.DataArray:
        if name not in self.dataset:
            raise Error(f"nothing was recorded over {dimension}; give the sweep record=[\"tank:overflow\"] or the like")
        return self.dataset[name]

    def unstack(self) -> xarray.Dataset:
        """Figures and recorded series with the keys of the design as dimensions in place of `member`.

        Returns
        -------
        Dataset
            A variable for each figure and recorded quantity; not a number where the design has no member.

        Raises
        ------
        Error
            Two members have the same values, or one has the model's own.
        """
        import xarray

        for key in self.design:
            for member in self.design.index[self.design[key].isna()]:
                raise Error(f"member {member} has no value of {key}, but the model's own, which is no place along a dimension;"
                            f" give {key} a value in all members")
        if self.design.duplicated().any():
            raise Error("members with the same values cannot be told apart: the design is no grid")
        data = xarray.Dataset({name: ("member", column.to_numpy(), {"units": self.pieces.units[name]})
                               for name, column in self.figures.items()}, {"member": self.design.index.to_numpy()})
        if self.plan.record:
            data = data.merge(self.dataset)
        keys = list(self.design.columns)
        if len(keys) == 1:
            return data.assign_coords(member=self.design[keys[0]].to_numpy()).rename(member=keys[0])
        levels = {key: ("member", self.design[key].to_numpy()) for key in keys}
        return data.drop_vars("member").assign_coords(levels).set_index(member=keys).unstack("member")

    def plot(self, figure: str | None = None, *, ax: Axes | None = None) -> Axes:
        """Draws a figure over the keys of the design: a line over one key, colours over two, else a point a member.

        Parameters
        ----------
        figure : str, optional
            A column of `figures`; by default the reliability by volume of a component of the keys, else the mains,
            else the first that varies.
        ax : matplotlib Axes, optional

        Returns
        -------
        matplotlib Axes
        """
        from .sweep_plots import plot_sweep

        return plot_sweep(self, figure, ax)

    def __len__(self) -> int:
        return len(self.design)

    def __repr__(self) -> str:
        lines = [f"<kesto.Sweep: {len(self)} members over {', '.join(self.design.columns)}, {len(self.failed)} failed>"]
        shown = [name for name in self.figures if not name.startswith("account.") and not is_monthly(name)]
        varying = [name for name in shown if self.figures[name].nunique() > 1]
        if varying:
            lines += [f"  {'':<32} {'lowest':>12} {'median':>12} {'highest':>12}"]
        for name in varying:
            column = self.figures[name]
            lines.append(f"  {name:<32} {column.min():>12.6g} {column.median():>12.6g} {column.max():>12.6g}"
                         f" {self.pieces.units[name]}")
        return "\n".join(lines)
