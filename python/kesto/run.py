"""One run of a model."""
from __future__ import annotations

import os
from collections.abc import Sequence
from pathlib import Path
from typing import TYPE_CHECKING, Any

from . import command
from .errors import CommandError, Fault, RunError, not_begun
from .interrupts import passing_folder
from .result import Result
from .values import listed

if TYPE_CHECKING:
    from .model import Model


def run(model: Model, options: Sequence[str], record: str | Sequence[str],
        keep: str | os.PathLike[str] | None) -> Result:
    """Runs `model` with `options` of the command; what Model.run documents."""
    if keep is not None:
        return _run_into(Path(keep).absolute(), model, options, record, kept=True)
    with passing_folder() as folder:
        return _run_into(folder, model, options, record, kept=False)


def _run_into(folder: Path, model: Model, options: Sequence[str], record: str | Sequence[str], kept: bool) -> Result:
    called = command.call("run", str(model.path), "--json", "--balance", "--format", "netcdf",
                          "--record", ",".join(listed(record)) or "none", "-o", str(folder), *options)
    summary = called.json()
    if summary["outcome"] == "not run":
        raise not_begun(str(model.path), list(map(Fault.of, summary["errors"])))
    result = _result(folder, summary, kept)
    if summary["outcome"] != "finished":
        raise run_error(summary, result)
    if called.status or result is None:
        raise CommandError(called.errors.strip() or f"kesto run ended with status {called.status}")
    return result


def _result(folder: Path, summary: dict[str, Any], kept: bool) -> Result | None:
    path = folder / "results.nc"
    if not path.exists():
        return None
    return Result(summary, path if kept else path.read_bytes())


def run_error(summary: dict[str, Any], result: Result | None = None) -> RunError:
    """The error of a run that stopped, out of its summary."""
    faults = [Fault.of(row) for row in summary["errors"]]
    message = "\n".join(fault.text for fault in faults) or summary["message"] or f"the run {summary['outcome']}"
    component = next((fault.component for fault in faults if fault.component), None)
    return RunError(message, summary["outcome"], summary["steps_run"] + 1, component, result)
