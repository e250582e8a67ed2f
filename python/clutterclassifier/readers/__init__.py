"""Radar files as sweep Datasets.

Universal Format, German DX, polar data files of coded gates and the library's own field records are read
and, some of them, written.

In the fields, NaN is "not measured": missing words, and gates past the end of a short ray. A
gate that was measured but holds no echo keeps the format's value for that, which is the field's
attribute ``_Undetect``: -32.5 dBZ in German DX files, -32 dBZ in reflectivities of polar data
files, of field records and of Universal Format files that were made from them. Other Universal Format
files have only one kind of missing.
"""

from ._read import (FORMATS, LAYOUTS, Path, check_layout, open_dx, open_polar, open_record, open_uf, read,
                    read_sweep, recognise, require_format)
from ._write import write

__all__ = ["FORMATS", "LAYOUTS", "Path", "check_layout", "open_dx", "open_polar", "open_record", "open_uf",
           "read", "read_sweep", "recognise", "require_format", "write"]
