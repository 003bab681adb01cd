"""NetCDF files of the command as datasets of xarray."""
from __future__ import annotations

import warnings
from pathlib import Path
from typing import TYPE_CHECKING, Any

if TYPE_CHECKING:
    import xarray

# Dimensions and the variables that hold their names.
_NAMES = {"flow": "flow_name", "depth_flow": "depth_flow_name", "store": "store_name",
          "depth_store": "depth_store_name", "quality_store": "quality_store_name", "group": "group_name",
          "figure": "figure_name"}


def read(source: bytes | Path) -> xarray.Dataset:
    """A file of the command with names as coordinates of their dimensions.

    Parameters
    ----------
    source : bytes or path
        The contents of a file, or a file that stays where it is.

    Returns
    -------
    Dataset
        In memory; nothing stays open.
    """
    import netCDF4
    import xarray

    name, memory = ("results.nc", source) if isinstance(source, bytes) else (str(source), None)
    with netCDF4.Dataset(name, memory=memory) as file:
        store: Any = xarray.backends.NetCDF4DataStore
        with warnings.catch_warnings():
            # Dates beyond those of pandas, 1677 to 2262, are objects of cftime.
            warnings.simplefilter("ignore", xarray.SerializationWarning)
            data = xarray.open_dataset(store(file)).load()
    return named(_without_fill(data, netCDF4.default_fillvals["f4"]))


def _without_fill(data: xarray.Dataset, fill: float) -> xarray.Dataset:
    """Not a number where nothing was written: NetCDF's own fill value, which xarray does not know."""
    for name, variable in data.items():
        if variable.dtype == "float32" and (missing := variable == variable.dtype.type(fill)).any():
            data[name] = variable.where(~missing)
    return data


def named(data: xarray.Dataset) -> xarray.Dataset:
    """`data` with the names of flows, stores, groups and figures as coordinates of their dimensions."""
    present = {dimension: name for dimension, name in _NAMES.items() if name in data}
    data = data.set_coords([name for name in data if str(name).endswith("_carries")])
    for dimension, name in present.items():
        data = data.assign_coords({dimension: data[name].astype(str).values}).drop_vars(name)
    return data.rename({name: str(name).replace("flow_carries", "carries") for name in data.coords
                        if str(name) == "flow_carries"})
