"""``ds.clutter``: the steps of the chain as methods of a sweep, and of a tree of sweeps.

Importing this module registers the accessors; `clutterclassifier` does so where xarray is installed.
This may happen while any other module of the package is being imported, so those modules are imported
when a method is called.
"""

from __future__ import annotations

import importlib
from collections.abc import Callable
from types import ModuleType
from typing import TYPE_CHECKING, Any

import xarray as xr

if TYPE_CHECKING:
    from matplotlib.figure import Figure

    from ._arrays.settings import Config
    from .sweeps._sweep import FieldMap


def _steps() -> ModuleType:
    return importlib.import_module(".sweeps", __package__)


@xr.register_dataset_accessor("clutter")
class ClutterAccessor:
    """The steps of `clutterclassifier.sweeps` on a sweep.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> scan = cc.synthetic_scan(5, nrays=90, ngates=200)
    >>> classes = scan.clutter.classify()
    >>> rain = scan.clutter.clean().clutter.rain_rate()
    """

    def __init__(self, ds: xr.Dataset) -> None:
        self._ds = ds

    def classify(self, **keywords: Any) -> Any:
        """Classes of the sweep, see `clutterclassifier.sweeps.classify`; with ``certainty=True`` a dataset
        of CLASS, PROBABILITY and MARGIN."""
        name = keywords.get("name", "CLASS")
        classified = _steps().classify(self._ds, **keywords)
        return classified[[name, "PROBABILITY", "MARGIN"] if keywords.get("certainty") else name]

    def explain(self, **keywords: Any) -> xr.Dataset:
        """Why a gate has its class, see `clutterclassifier.sweeps.explain`."""
        return _steps().explain(self._ds, **keywords)

    def clean(self, **keywords: Any) -> xr.Dataset:
        """The sweep with clutter and noise blanked, see `clutterclassifier.sweeps.clean`."""
        return _steps().clean(self._ds, **keywords)

    def process(self, config: Config = None, **keywords: Any) -> xr.Dataset:
        """The sweep after the processing chain, see `clutterclassifier.sweeps.process`."""
        return _steps().process(self._ds, config, **keywords)

    def texture(self, **keywords: Any) -> xr.Dataset:
        """The sweep with textures, see `clutterclassifier.sweeps.texture`."""
        return _steps().texture(self._ds, **keywords)

    def smooth(self, **keywords: Any) -> xr.Dataset:
        """The sweep with fields smoothed, see `clutterclassifier.sweeps.smooth`."""
        return _steps().smooth(self._ds, **keywords)

    def despeckle(self, **keywords: Any) -> xr.Dataset:
        """The sweep with isolated gates made clutter, see `clutterclassifier.sweeps.despeckle`."""
        return _steps().despeckle(self._ds, **keywords)

    def signal_to_noise(self, **keywords: Any) -> xr.Dataset:
        """The sweep with ``SNRH``, see `clutterclassifier.sweeps.signal_to_noise`."""
        return _steps().signal_to_noise(self._ds, **keywords)

    def attenuation(self, **keywords: Any) -> xr.Dataset:
        """The sweep corrected for attenuation, see `clutterclassifier.sweeps.attenuation`."""
        return _steps().attenuation(self._ds, **keywords)

    def rain_rate(self, **keywords: Any) -> xr.Dataset:
        """The sweep with ``RATE``, see `clutterclassifier.sweeps.rain_rate`."""
        return _steps().rain_rate(self._ds, **keywords)

    def beam_height(self) -> xr.Dataset:
        """The sweep with heights, see `clutterclassifier.sweeps.beam_height`."""
        return _steps().beam_height(self._ds)

    def plot(self, **keywords: Any) -> Figure:
        """Reflectivity beside classes, see `clutterclassifier.plot.plot`."""
        from .plot import plot

        return plot(self._ds, **keywords)


def why_no_sweep(ds: xr.Dataset, fields: FieldMap = None) -> str:
    """Why a dataset is not a sweep; empty for a sweep."""
    from .sweeps._sweep import find_sweep

    try:
        find_sweep(ds, fields)
    except ValueError as error:
        return str(error)
    return ""


def map_over_sweeps(tree: Any, step: Callable[..., xr.Dataset], *arguments: Any, **keywords: Any) -> Any:
    """A tree with a step applied to every sweep; other datasets stay as they are.

    Parameters
    ----------
    tree : xarray.DataTree
    step : function
        ``step(sweep, ...) -> xarray.Dataset``
    *arguments, **keywords
        Of the step. Its `fields` also decide which datasets are sweeps.

    Raises
    ------
    ValueError
        Nothing in the tree is a sweep; the message gives the reason for each group.
    """
    datasets = tree.to_dict()
    reasons = {path: why_no_sweep(ds, keywords.get("fields")) for path, ds in datasets.items()}
    if all(reasons.values()):
        because = "; ".join(f"{path}: {reason}" for path, reason in reasons.items()) or "it is empty"
        raise ValueError(f"no sweep is known in the tree: {because}")
    groups = {path: ds if reasons[path] else step(ds, *arguments, **keywords)
              for path, ds in datasets.items()}
    return type(tree).from_dict(groups, name=tree.name)


class ClutterTreeAccessor:
    """The steps of `clutterclassifier.sweeps` on all sweeps of a tree: each method returns a tree."""

    def __init__(self, tree: Any) -> None:
        self._tree = tree

    def __getattr__(self, name: str) -> Callable[..., Any]:
        if name not in _steps().__all__:
            raise AttributeError(f"{type(self).__name__!r} object has no attribute {name!r}")
        step = getattr(_steps(), name)

        def mapped(*arguments: Any, **keywords: Any) -> Any:
            return map_over_sweeps(self._tree, step, *arguments, **keywords)

        mapped.__name__, mapped.__doc__ = name, step.__doc__
        return mapped

    def __dir__(self) -> list[str]:
        return sorted({*super().__dir__(), *_steps().__all__})


if hasattr(xr, "register_datatree_accessor"):
    xr.register_datatree_accessor("clutter")(ClutterTreeAccessor)
