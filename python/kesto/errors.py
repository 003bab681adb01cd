"""What can go wrong: exceptions that carry the data of an error, not only its text."""
from __future__ import annotations

from collections.abc import Iterable, Mapping, Sequence
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any

if TYPE_CHECKING:
    from .result import Result


@dataclass(frozen=True)
class Fault:
    """One error, warning or note of the `kesto` command.

    Attributes
    ----------
    code : str
        What `kesto codes` lists; it does not change between versions.
    severity : str
        "error", "warning" or "note".
    text : str
        For people.
    file : str or None
    line, column : int or None
        Where, counted from 1; None where that is not known.
    component : str or None
        Whom it is about.
    accepted : bool
        Whether the model accepts it.
    """

    code: str
    severity: str
    text: str
    file: str | None = None
    line: int | None = None
    column: int | None = None
    component: str | None = None
    accepted: bool = False

    @classmethod
    def of(cls, row: Mapping[str, Any]) -> Fault:
        """The fault of a row of the command's JSON; keys that this version does not know are passed over."""
        return cls(**{name: row[name] for name in cls.__dataclass_fields__ if name in row})

    def __str__(self) -> str:
        place = ":".join(str(part) for part in (self.file, self.line, self.column) if part is not None)
        return f"{place}: {self.severity}: {self.text}" if place else f"{self.severity}: {self.text}"


class Error(Exception):
    """What all errors of this package have in common."""


class CommandError(Error):
    """The `kesto` command is missing, of another version, or did not do what it was asked to."""


class ModelError(Error):
    """A model that cannot run: all of its faults.

    Attributes
    ----------
    path : str
        The model file.
    faults : tuple of Fault
        Each with file, line and column where they are known.
    """

    def __init__(self, path: str, faults: Iterable[Fault]) -> None:
        self.path = path
        self.faults = tuple(faults)
        super().__init__("\n".join(str(fault) for fault in self.faults) or f"{path}: the model cannot run")

    def __reduce__(self) -> tuple[Any, ...]:
        return type(self), (self.path, self.faults)


# Codes of faults that the folder of `keep` has, not the model.
_OF_FOLDERS = {"not-results", "over-input", "folder-busy", "other-sweep", "cannot-write"}


def not_begun(path: str, faults: Sequence[Fault]) -> Error:
    """The error of a run or sweep of the model `path` that did not begin."""
    if not any(fault.code in _OF_FOLDERS for fault in faults):
        return ModelError(path, faults)
    # The options that the command advises are not those of this package.
    return CommandError("\n".join(f"{fault.file} holds another sweep, of another design, model or options; expected keep= with"
                                  " another folder" if fault.code == "other-sweep" else fault.text for fault in faults))


class RunError(Error):
    """A run that did not end well.

    Attributes
    ----------
    outcome : str
        "failed", "crashed" or "interrupted".
    step : int
        The step, counted from 1, in which the run stopped.
    component : str or None
        The component that stopped it.
    result : Result or None
        The steps before it.
    """

    def __init__(self, message: str, outcome: str, step: int, component: str | None,
                 result: Result | None = None) -> None:
        super().__init__(message)
        self.message = message
        self.outcome = outcome
        self.step = step
        self.component = component
        self.result = result

    def __reduce__(self) -> tuple[Any, ...]:
        return type(self), (self.message, self.outcome, self.step, self.component, self.result)
