"""KESTO: the water cycle of a house, a neighbourhood or a city, from one run to a calibrated model.

    >>> import kesto
    >>> model = kesto.load("model.toml")                       # doctest: +SKIP
    >>> run = model.run({"tank.size": "3 m3"})                 # doctest: +SKIP
    >>> run.flows.sel(flow="tank:overflow")                    # doctest: +SKIP

Everything runs through the `kesto` command, one process for each run: the command that KESTO in the environment names,
else the one beside this package, else the one on PATH. Keys of parameters are those of its option `--set`.

`kesto.engine` is the library itself through ctypes, for hosts that fill the engine's record.
"""
from __future__ import annotations

import importlib
from typing import TYPE_CHECKING, Any

__version__ = "0.1.0"

if TYPE_CHECKING:
    from .calibration import Calibration as Calibration
    from .designs import grid as grid
    from .designs import lhs as lhs
    from .designs import sobol as sobol
    from .errors import CommandError as CommandError
    from .errors import Error as Error
    from .errors import Fault as Fault
    from .errors import ModelError as ModelError
    from .errors import RunError as RunError
    from .metrics import kge as kge
    from .metrics import nse as nse
    from .metrics import pbias as pbias
    from .model import load as load
    from .model import Model as Model
    from .morris import morris_effects as morris_effects
    from .morris import morris_sample as morris_sample
    from .pareto import Front as Front
    from .result import open_results as open_results
    from .result import Result as Result
    from .search import dds as dds
    from .search import non_dominated as non_dominated
    from .sensitivity import Sensitivity as Sensitivity
    from .sizing import SizingCurve as SizingCurve
    from .sweep import Sweep as Sweep
    from .uncertainty import Uncertainty as Uncertainty
    from .variance import sobol_indices as sobol_indices
    from .variance import sobol_sample as sobol_sample

# Where each public name lives. Modules are imported when a name is first used: `import kesto` is to take no time.
_HOMES = {
    "calibration": ["Calibration"],
    "designs": ["grid", "lhs", "sobol"],
    "errors": ["CommandError", "Error", "Fault", "ModelError", "RunError"],
    "metrics": ["kge", "nse", "pbias"],
    "model": ["Model", "load"],
    "morris": ["morris_effects", "morris_sample"],
    "pareto": ["Front"],
    "result": ["Result", "open_results"],
    "search": ["dds", "non_dominated"],
    "sensitivity": ["Sensitivity"],
    "sizing": ["SizingCurve"],
    "sweep": ["Sweep"],
    "uncertainty": ["Uncertainty"],
    "variance": ["sobol_indices", "sobol_sample"],
}
_HOME = {name: module for module, names in _HOMES.items() for name in names}
__all__ = sorted(_HOME)

# Names of the ctypes module that was called `kesto` once.
_OF_ENGINE = {"AUEglobals", "ComponentRow", "ConnectionRow", "SeriesEntry", "SignalSeriesEntry", "SpecificationRow",
              "SplitEntry", "rows", "series", "simulate"}


def __getattr__(name: str) -> Any:
    if name in _HOME:
        value = getattr(importlib.import_module(f".{_HOME[name]}", __name__), name)
        globals()[name] = value
        return value
    if name in _OF_ENGINE:
        raise AttributeError(f"kesto.{name} is kesto.engine.{name} now: from kesto import engine")
    raise AttributeError(f"module 'kesto' has no attribute '{name}'")


def __dir__() -> list[str]:
    return sorted([*globals(), *_HOME])
