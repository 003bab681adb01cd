"""What a run left, as labelled arrays and tables."""
from __future__ import annotations

import functools
import json
import os
from collections.abc import Mapping, Sequence
from pathlib import Path
from typing import TYPE_CHECKING, Any

from .errors import Error, Fault
from .tables import fault_table, figure_table, key_figures, table

if TYPE_CHECKING:
    import pandas
    import xarray
    from matplotlib.axes import Axes

# The variables of potentials in results.nc.
_POTENTIALS = ("energy", "infiltration", "losses", "evaporation", "capacity", "operation", "infiltration_depth")


def open_results(folder: str | os.PathLike[str]) -> Result:
    """The results that a run kept, or that `kesto run --format netcdf` wrote.

    Parameters
    ----------
    folder : path
        The folder with summary.json and results.nc.

    Returns
    -------
    Result

    Raises
    ------
    Error
        There are no such results in the folder.
    """
    place = Path(folder).absolute()
    try:
        summary = json.loads((place / "summary.json").read_text(encoding="utf-8"))
    except OSError as error:
        raise Error(f"{place} holds no results of a run: {error.strerror}: {error.filename}") from error
    if "results.nc" not in {entry["file"] for entry in summary["files"]}:
        raise Error(f"{place} holds no NetCDF results; expected those of kesto run --format netcdf")
    return Result(summary, place / "results.nc")


class Result:
    """The results of one run. All arrays hold single-precision values as the engine computed them.

    Attributes
    ----------
    flows : DataArray, (flow, time), L a step
    depths : DataArray, (flow, time), mm a step
        The flows of soil stores, which have no area.
    qualities : DataArray, (flow, time)
        Not a number where a flow has no quality.
    states : DataArray, (store, time), L at the end of each step
    state_depths : DataArray, (store, time), mm likewise
    state_qualities : DataArray, (store, time)
    potentials : DataArray, (potential, group, time)
        Their units are the coordinate `units` along `potential`.
    figures, balance, account, warnings, summary : DataFrame
    dataset : Dataset
        All of results.nc.
    folder : Path or None
        Where the results are kept.
    """

    def __init__(self, summary: Mapping[str, Any], source: bytes | Path) -> None:
        self._summary = dict(summary)
        self._source = source

    @property
    def folder(self) -> Path | None:
        return self._source.parent if isinstance(self._source, Path) else None

    @property
    def info(self) -> dict[str, Any]:
        """summary.json of the run, as it is."""
        return self._summary

    @functools.cached_property
    def dataset(self) -> xarray.Dataset:
        """All of results.nc, with the names of flows, stores and groups as coordinates."""
        from .netcdf import read

        return read(self._source)

    @property
    def flows(self) -> xarray.DataArray:
        """Recorded flows, dims (flow, time) [L a step], with the coordinate `carries`: water or demand."""
        return self._array("quantity", "flow", "L")

    @property
    def depths(self) -> xarray.DataArray:
        """Recorded flows of soil stores, dims (flow, time) [mm a step]."""
        return self._array("depth", "depth_flow", "mm").rename(depth_flow="flow")

    @property
    def qualities(self) -> xarray.DataArray:
        """Qualities of the recorded flows, dims (flow, time); not a number where a flow has none."""
        return self._array("quality", "flow", "1")

    @property
    def states(self) -> xarray.DataArray:
        """What stores hold at the end of each step, dims (store, time) [L]."""
        return self._array("storage", "store", "L")

    @property
    def state_depths(self) -> xarray.DataArray:
        """What soil stores hold at the end of each step, dims (store, time) [mm]."""
        return self._array("storage_depth", "depth_store", "mm").rename(depth_store="store")

    @property
    def state_qualities(self) -> xarray.DataArray:
        """Qualities of what stores hold, dims (store, time)."""
        return self._array("stored_quality", "quality_store", "1").rename(quality_store="store")

    @functools.cached_property
    def potentials(self) -> xarray.DataArray:
        """Potentials of groups, dims (potential, group, time), with their units as a coordinate along `potential`."""
        import xarray

        present = [name for name in _POTENTIALS if name in self.dataset]
        if not present:
            return self._array("", "group", "1").expand_dims(potential=0)
        arrays = [self.dataset[name].drop_vars("group_name", errors="ignore") for name in present]
        joined = xarray.concat(arrays, "potential", combine_attrs="drop").rename("potential")
        units = [array.attrs.get("units", "") for array in arrays]
        return joined.assign_coords(potential=present, units=("potential", units))

    def _array(self, name: str, dimension: str, unit: str) -> xarray.DataArray:
        """A variable of results.nc; without any such series an array without rows."""
        import numpy
        import xarray

        if name in self.dataset:
            return self.dataset[name]
        time = self.dataset["time"]
        return xarray.DataArray(numpy.empty((0, time.size), numpy.float32), dims=(dimension, "time"),
                                coords={dimension: numpy.empty(0, "U1"), "time": time}, name=name or None,
                                attrs={"units": unit})

    @functools.cached_property
    def figures(self) -> pandas.DataFrame:
        """Derived figures: index `figure`; columns `value`, `unit`, and `from` and `to` of those with dates."""
        return figure_table(self._summary["figures"])

    @property
    def summary(self) -> pandas.DataFrame:
        """The key figures: those with a value, without the months; index `figure`, columns `value`, `unit`."""
        return key_figures(self.figures)

    @functools.cached_property
    def account(self) -> pandas.DataFrame:
        """The account of the network, each litre once: columns `side`, `kind`, `component`, `litres`, `reason`."""
        return table(self._summary["account"], ["side", "kind", "component", "litres", "reason"])

    @functools.cached_property
    def balance(self) -> pandas.DataFrame:
        """The balance of network, groups and components [L]: index `level` and `name`, a column for each term."""
        return table(self._summary.get("balance", []), ["level", "name", "carries", "unit"], index=["level", "name"])

    @functools.cached_property
    def warnings(self) -> pandas.DataFrame:
        """Warnings and notes: a row each, the columns those of Fault."""
        return fault_table(Fault.of(row) for row in self._summary["warnings"])

    def plot(self, flows: str | Sequence[str] | None = None, *, every: str = "month") -> Axes:
        """Draws flows and states over time; flows that are demands are dashed.

        Parameters
        ----------
        flows : str or sequence of str, optional
            Names of flows; by default the largest eight that differ.
        every : "day", "month" or "year"
            What flows are summed over.

        Returns
        -------
        matplotlib Axes
            Those of the flows.

        Raises
        ------
        Error
            There is no such flow or period.
        """
        from .plots import plot_result

        return plot_result(self, flows, every)

    def __repr__(self) -> str:
        info = self._summary
        lines = [f"<kesto.Result: {info['title'] or info['model']}, {info['start']} to {info['end']}, {info['outcome']}>"]
        lines += [f"  {name:<28} {row.value:>14.6g} {row.unit}" for name, row in self.summary.iterrows()]
        return "\n".join(lines)

    def _repr_html_(self) -> str:
        import html

        info = self._summary
        title = html.escape(f"{info['title'] or info['model']}, {info['start']} to {info['end']}, {info['outcome']}")
        return f"<b>{title}</b>{self.summary.to_html()}"
