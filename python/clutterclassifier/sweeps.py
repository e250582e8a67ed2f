"""The steps of the chain as functions of a sweep: dataset in, dataset out.

Each has the shape ``func(sweep, **keywords) -> xarray.Dataset`` that helpers which map over the sweeps
of a volume expect, and never modifies its argument. A sweep has the dimensions (azimuth, range), of
an RHI (elevation, range), in any order; further dimensions (time, sweep) hold scans of their own.
Dask arrays stay lazy. Variables are found by the names of CfRadial and other conventions (see
`clutterclassifier.fields`); ``fields={"dbzh": "my_name", "ldr": None}`` says otherwise.

Rays are circular: the last one is a neighbour of the first. Where they do not close a circle (a
sector, an RHI), ``circular=False`` keeps their ends apart; `process` sees it from the azimuths.
"""

from ._classify_sweep import classify, clean
from ._process_sweep import process

__all__ = ["classify", "clean", "process"]
