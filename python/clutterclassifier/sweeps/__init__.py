"""The steps of the chain as functions of a sweep: dataset in, dataset out.

Each except `explain` has the shape ``func(sweep, **keywords) -> xarray.Dataset`` that helpers which map
over the sweeps of a volume expect. None modifies its argument. A sweep has the dimensions (azimuth,
range), of an RHI (elevation, range), in any order; further dimensions (time, sweep) hold scans of their
own. Dask arrays stay lazy. Variables are found by the names of CfRadial and other conventions (see
`clutterclassifier.fields`); ``fields={"dbzh": "my_name", "ldr": None}`` overrides that. Of several
reflectivities, `classify`, `clean`, `process` and `signal_to_noise` take that from before the clutter
filter, the other steps the one that is called DBZH: that is what `attenuation` corrects.

Rays close a circle: the last one is a neighbour of the first, except in sweeps whose rays lie along an
elevation or whose ``sweep_mode`` is "rhi" or "sector". ``closed=False`` (or ``True``) overrides that;
`process` uses the azimuths. A ``sweep_mode`` that is a Dask array is ignored, since reading it would
compute it.
"""

from ._classify import classify, clean
from ._explain import explain
from ._process import process
from ._rain import attenuation, beam_height, rain_rate, signal_to_noise
from ._window import despeckle, smooth, texture

__all__ = ["attenuation", "beam_height", "classify", "clean", "despeckle", "explain", "process",
           "rain_rate", "signal_to_noise", "smooth", "texture"]
