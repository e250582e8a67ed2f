"""Writes clutterclassifier/_core.pyi, the types of the extension, from what pybind11 says of it.

    PYTHONPATH=build/release/python /usr/bin/python3 script/python_stub.py [--check]
"""

from __future__ import annotations

import re
import sys
import textwrap
from pathlib import Path

from clutterclassifier import _core

STUB = Path(__file__).resolve().parents[1] / "python" / "clutterclassifier" / "_core.pyi"
HEAD = '''"""Operations of the library on contiguous arrays; the package checks and documents."""

from typing import Any

import numpy as np
from numpy.typing import NDArray
'''


def types(signature: str) -> str:
    """Types as a type checker wants them."""
    signature = re.sub(r"numpy\.ndarray\[(?:numpy\.)?(\w+)\]",
                       lambda found: f"NDArray[np.{found[1].replace('bool', 'bool_')}]", signature)
    signature = re.sub(r"Optional\[(NDArray\[[\w.]+\]|\w+)\]", r"\1 | None", signature)
    signature = re.sub(r"\b(List|Dict|Tuple)\b", lambda found: found[1].lower(), signature)
    signature = re.sub(r"\b(file|path): str", r"\1: str | bytes", signature)  # names of files are bytes
    signature = re.sub(r"\bdict$", "dict[str, Any]", signature)
    return re.sub(r"\btuple$", "tuple[Any, ...]", signature)


def wrapped(name: str, signature: str) -> str:
    """The definition in lines that break after arguments."""
    keep = re.sub(r"(?<!,) ", "\0", f"def {signature}: ...")
    lines = textwrap.wrap(keep, 108, subsequent_indent="\0" * (5 + len(name)), break_long_words=False,
                          break_on_hyphens=False)
    return "\n".join(lines).replace("\0", " ")


def stub() -> str:
    names = sorted(name for name in dir(_core) if not name.startswith("_"))
    members = {name: getattr(_core, name) for name in names}
    constants = [f"{name}: {type(value).__name__}" for name, value in members.items() if not callable(value)]
    definitions = [wrapped(name, types(function.__doc__.splitlines()[0])) for name, function in members.items()
                   if callable(function)]
    return "\n".join([HEAD, *constants, *definitions]) + "\n"


if __name__ == "__main__":
    if "--check" in sys.argv[1:]:
        sys.exit(0 if STUB.read_text() == stub() else f"{STUB.name} is out of date: run {Path(__file__).name}")
    STUB.write_text(stub())
