"""Radar files as sweep Datasets.

Four formats are read: Universal Format, German DX, polar data files of coded gates, and the library's
own field records. CfRadial and ODIM_H5 files come in through xarray's own engines.

In the fields, NaN is "not measured": missing words, and what lies beyond the end of a short ray. A
gate that was measured but holds no echo keeps the value that the format has for it, which the field's
attribute ``_Undetect`` tells: -32.5 dBZ in German DX files, -32 dBZ in reflectivities of polar data
files, of field records and of Universal Format files that were made from them. Other Universal Format
files know only one kind of missing.
"""

from ._read import (FORMATS, LAYOUTS, Path, check_layout, open_dx, open_polar, open_record, open_uf, read,
                    read_sweep, recognise, require_format)
from ._write import write

__all__ = ["FORMATS", "LAYOUTS", "Path", "check_layout", "open_dx", "open_polar", "open_record", "open_uf",
           "read", "read_sweep", "recognise", "require_format", "write"]
