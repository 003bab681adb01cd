"""A model file, checked, and what can be done with it."""
from __future__ import annotations

import datetime
import html
import os
from collections.abc import Mapping, Sequence
from dataclasses import dataclass, field
from pathlib import Path
from typing import TYPE_CHECKING, Any

from . import command
from .errors import CommandError, Error, Fault, ModelError
from .interrupts import passing_folder
from .studies import Studies
from .values import Day, Value, options

if TYPE_CHECKING:
    import pandas

    from .result import Result


def load(path: str | os.PathLike[str] | None = None) -> Model:
    """Reads and checks a model file.

    Parameters
    ----------
    path : str or path
        The model file (TOML).

    Returns
    -------
    Model

    Raises
    ------
    ModelError
        The model cannot run; it lists all faults with file and line.
    CommandError
        The `kesto` command is missing or of another version.
    """
    if path is None or Path(path).suffix in (".so", ".0", ".dll"):
        raise TypeError("kesto.load() reads a model file, as in kesto.load(\"model.toml\"); the engine's library through"
                        " ctypes is kesto.engine now: from kesto import engine; engine.load()")
    place = Path(path).absolute()
    said = command.call("check", "--json", str(place)).json()
    if not said["fit"]:
        raise ModelError(str(place), map(Fault.of, said["errors"]))
    return Model(path=place, title=said["title"], start=datetime.date.fromisoformat(said["start"]),
                 end=datetime.date.fromisoformat(said["end"]), steps=said["steps"],
                 days_per_step=said["days_per_step"], components=said["components"],
                 connections=said["connections"], faults=tuple(map(Fault.of, said["warnings"])))


@dataclass(frozen=True, repr=False)
class Model(Studies):
    """A model that `kesto.load` has read and checked. Runs read the file again, so that edits count.

    Attributes
    ----------
    path : Path
        The model file.
    title : str
    start, end : datetime.date
        The first and last day of a run, both included.
    steps : int
        Steps of a run.
    days_per_step : float
        [d]
    components, connections : int
        How many.
    faults : tuple of Fault
        Warnings and notes of the check; `warnings` is their table.
    """

    path: Path
    title: str
    start: datetime.date
    end: datetime.date
    steps: int
    days_per_step: float
    components: int
    connections: int
    faults: tuple[Fault, ...] = field(default=(), repr=False)

    @property
    def warnings(self) -> pandas.DataFrame:
        """Warnings and notes of the check: a row each, the columns those of Fault."""
        from .tables import fault_table

        return fault_table(self.faults)

    def run(self, set: Mapping[str, Value] | None = None, *, scenario: str | Sequence[str] = (),
            start: Day | None = None, end: Day | None = None, record: str | Sequence[str] = "all",
            keep: str | os.PathLike[str] | None = None) -> Result:
        """Runs the model once, in a process of its own, and balances its water.

        Parameters
        ----------
        set : mapping of str to value
            Values by key, as after `--set`: `{"tank.size": "3 m3", "series.rainfall.scale": 0.7}`. A number is in
            the unit of the key, a text can carry a unit.
        scenario : str or sequence of str
            Scenarios of the model; later ones win, and `set` wins over all.
        start, end : date or str, optional
            First and last day, both included; by default the model's.
        record : str or sequence of str
            Outputs to record: "all", "none", or flows and components such as `["tank:overflow", "roof"]`.
        keep : path, optional
            A folder for the results of the run, which stays. Without it nothing is left on disk.

        Returns
        -------
        Result

        Raises
        ------
        ModelError
            A key, a value or the model is wrong; all faults.
        RunError
            The run stopped; `result` of the error holds the steps before.
        CommandError
            The folder `keep` cannot be used: it holds other files, or cannot be written.
        """
        from .run import run

        return run(self, options(set, scenario, start, end), record, keep)

    def draw(self, path: str | os.PathLike[str], set: Mapping[str, Value] | None = None, *,
             scenario: str | Sequence[str] = ()) -> Path:
        """Draws the network (needs Graphviz).

        Parameters
        ----------
        path : path
            The picture: NAME.svg, .png, .pdf or, as text, .dot.
        set, scenario
            As for `run`.

        Returns
        -------
        Path
            `path`.
        """
        drawn = command.call("draw", str(self.path), *options(set, scenario), "-o", str(path))
        if drawn.status:
            raise CommandError(drawn.errors.strip())
        return Path(path)

    def __repr__(self) -> str:
        return (f"<kesto.Model: {self.title or self.path.stem}, {self.components} components,"
                f" {self.start} to {self.end}, {len(self.faults)} warnings and notes>")

    def _repr_html_(self) -> str:
        kinds = {severity: sum(fault.severity == severity for fault in self.faults) for severity in ("warning", "note")}
        rows = {"model": os.path.relpath(self.path), "components": f"{self.components}, with {self.connections} connections",
                "period": f"{self.start} to {self.end}: {self.steps} steps of {self.days_per_step:g} d",
                "warnings": f"{kinds['warning']}, and {kinds['note']} notes"}
        table = "".join(f"<tr><th style='text-align:left'>{name}</th><td style='text-align:left'>{html.escape(text)}"
                        "</td></tr>" for name, text in rows.items())
        return f"<h4>{html.escape(self.title or self.path.stem)}</h4><table>{table}</table>{self._drawing()}"

    def _drawing(self) -> str:
        """The network as SVG; where Graphviz is missing, nothing."""
        with passing_folder() as folder:
            try:
                text = self.draw(folder / "network.svg").read_text(encoding="utf-8")
            except (Error, OSError):
                return ""
        return text[text.find("<svg"):]
