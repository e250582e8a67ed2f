"""Something to do once another module is imported, without importing it."""

from __future__ import annotations

import contextlib
import importlib.util
import sys
import warnings
from collections.abc import Callable
from importlib.machinery import ModuleSpec
from types import ModuleType
from typing import Any


class _Watcher:
    """Finds one module as the others would, and calls `action` behind its import."""

    def __init__(self, name: str, action: Callable[[], Any]) -> None:
        self._name = name
        self._action = action

    def find_spec(self, name: str, path: Any = None, target: Any = None) -> ModuleSpec | None:
        if name != self._name:
            return None
        with contextlib.suppress(ValueError):  # another thread may have been faster
            sys.meta_path.remove(self)
        spec = importlib.util.find_spec(name)
        if spec is None or spec.loader is None:
            return spec
        execute = spec.loader.exec_module

        def execute_and_act(module: ModuleType) -> None:
            execute(module)
            self._act()

        spec.loader.exec_module = execute_and_act  # type: ignore[assignment]  # of this one loader
        return spec

    def _act(self) -> None:
        """What fails here must not spoil the import of the other module."""
        try:
            self._action()
        except Exception as error:  # noqa: BLE001
            warnings.warn(f"no clutterclassifier accessor for this {self._name}: {error!r}", stacklevel=2)


def when_imported(name: str, action: Callable[[], Any]) -> None:
    """Calls `action` now if the module `name` is imported already, else when it is."""
    if name in sys.modules:
        action()
    else:
        sys.meta_path.insert(0, _Watcher(name, action))
