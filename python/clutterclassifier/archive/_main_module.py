"""Whether the processes of a local cluster can start: each of them imports the main module first."""

from __future__ import annotations

import multiprocessing
import sys

_GUARD = 'call classify_archive below `if __name__ == "__main__":`'


def refuse_while_imported() -> None:
    """Raise RuntimeError in a new process that is importing the main module of its parent."""
    if getattr(multiprocessing.current_process(), "_inheriting", False):
        raise RuntimeError(f"a process of the cluster called this while it imported the script: {_GUARD}")


def require_importable() -> None:
    """Raise RuntimeError where a new process cannot import the main module: the cluster would start
    its processes again and again."""
    main = sys.modules["__main__"]
    name = getattr(getattr(main, "__spec__", None), "name", "")
    if not hasattr(main, "__file__") or name.endswith("__main__"):
        return  # such a main module is not imported
    process = multiprocessing.get_context("spawn").Process(target=_do_nothing)
    process.start()
    process.join()
    if process.exitcode:
        raise RuntimeError(f"the processes of the cluster cannot import the script: {_GUARD}")


def _do_nothing() -> None:
    pass
