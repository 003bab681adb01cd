"""The KESTO library from Python, through ctypes and nothing else.

The record and its rows are the structures of AUEglobals.h under the same names; that header says what each field means.

    from kesto import engine

    library = engine.load()
    record = engine.AUEglobals(nSteps=3, TimeStep=1)
    record.Net_Compnt, record.nComps = engine.rows(engine.ComponentRow, [(1, 30, 0, 0, 0)])
    engine.simulate(library, record, 1, 3)
    ...                                    # read the outputs out of the record
    library.FreeAUEglobals(record)         # and give them back

The library keeps statics for as long as the process lives, and a violated invariant ends the process: use a process for
each run (multiprocessing with maxtasksperchild=1, or subprocess) unless the runs are meant to share them.
"""
from __future__ import annotations

import ctypes
import os
import sys
from collections.abc import Iterable, Mapping, Sequence
from typing import Any

SUCCESS = 123456789
SETUP_FAILURE = -123456798
RUN_FAILURE = -123456789

_I, _F = ctypes.c_int32, ctypes.c_float


def _fields(kind: Any, names: str) -> list[tuple[str, Any]]:
    return [(name, kind) for name in names.split()]


class Signal(ctypes.Structure):
    _fields_ = _fields(_F, "quantity quality")


class ComponentRow(ctypes.Structure):
    _fields_ = _fields(_F, "id techid key brand size")


class ConnectionRow(ctypes.Structure):
    _fields_ = _fields(_I, "link senderId senderPort receiverId receiverPort")


class SpecificationRow(ctypes.Structure):
    _fields_ = _fields(_F, "host0 host1 brand host3 select1 select2 number value host8")


class SeriesEntry(ctypes.Structure):
    _fields_ = [("id", _I), ("Value", ctypes.POINTER(_F))]


class SignalSeriesEntry(ctypes.Structure):
    _fields_ = [("id", _I), ("Signal", ctypes.POINTER(Signal))]


class SplitEntry(ctypes.Structure):
    _fields_ = [("id", _I), ("nMembers", _I), ("members", ctypes.POINTER(_I)), ("beta", _F)]


def _table(name: str, entry: Any, count: str | None = None) -> list[tuple[str, Any]]:
    return [(name, ctypes.POINTER(entry)), (count or "n" + name, _I)]


_INPUT_SERIES = "FreqSer Rainfall Temp Tmin Tmax Wind Multpls Threshold Occup Dmdflct InsDmd WatQuant WatQual"
_POTENTIALS = "NrgPot InfPot LosPot EvaPot CapPot OprPot"


class AUEglobals(ctypes.Structure):
    _fields_ = [
        ("StartTime", _I),
        ("nSteps", _I),
        ("TimeStep", _F),
        ("Latitude", _F),
        ("StopOnInfeas", _I),
        ("BuildTree", _I),
        ("CurStep", _I),
        *_table("PotCompIds", _I, "nPotComps"),
        *_table("TechSpecs", SpecificationRow),
        *_table("Net_Compnt", ComponentRow, "nComps"),
        *_table("Net_Conn", ConnectionRow, "nConns"),
        *(field for name in _INPUT_SERIES.split() for field in _table(name, SeriesEntry)),
        ("nSplits", _I),  # the one count that stands before its table
        ("Splits", ctypes.POINTER(SplitEntry)),
        *_table("Logs", SignalSeriesEntry),
        *_table("WatBod", SignalSeriesEntry),
        *_fields(ctypes.POINTER(SeriesEntry), _POTENTIALS),
        ("ErrMsg", ctypes.c_char * 256),
        ("ErrFlag", _I),
    ]


class Error(Exception):
    """A call that did not succeed: its status, and the library's text."""

    def __init__(self, status: int, message: str) -> None:
        super().__init__(f"{message} (status {status})")
        self.status = status
        self.message = message


def load(path: str | None = None) -> ctypes.CDLL:
    """The library at `path`, or where KESTO_LIBRARY in the environment says, or where the system looks for libraries."""
    name = "KESTO.dll" if sys.platform == "win32" else "libKESTO.so.0"
    library = ctypes.CDLL(path or os.environ.get("KESTO_LIBRARY") or name)
    library.KESTO_simul.argtypes = [ctypes.POINTER(AUEglobals), _I, _I]
    library.KESTO_simul.restype = _I
    library.FreeAUEglobals.argtypes = [ctypes.POINTER(AUEglobals)]
    library.FreeAUEglobals.restype = None
    return library


def rows(kind: Any, values: Iterable[Any]) -> tuple[Any, int]:
    """An array of `kind` and its length. A row is given as a tuple, a number or an object of the kind itself.

    The array lives as long as something refers to it; a record or an entry that it is assigned to does.
    """
    values = [kind(*value) if isinstance(value, tuple) else value for value in values]
    return (kind * len(values))(*values), len(values)


def series(entries: Mapping[int, Sequence[float]]) -> tuple[Any, int]:
    """A table of series from a dictionary of lists by id, and its length."""
    return rows(SeriesEntry, [(id, rows(_F, values)[0]) for id, values in entries.items()])


def simulate(library: ctypes.CDLL, record: AUEglobals, first: int, last: int) -> None:
    """Runs the steps first ... last, counted from 1. Raises Error unless the library reports success."""
    record.ErrFlag = 0
    status = library.KESTO_simul(record, first, last)
    if status != SUCCESS:
        raise Error(status, record.ErrMsg.decode("ascii", "replace"))
