"""Something to do once another module is imported, without importing it."""

from __future__ import annotations

import importlib.util
import sys
import threading
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
        self._asking = threading.local()

    def find_spec(self, name: str, path: Any = None, target: Any = None) -> ModuleSpec | None:
        if name != self._name or getattr(self._asking, "others", False):
            return None
        self._asking.others = True
        try:
            spec = importlib.util.find_spec(name)
        finally:
            self._asking.others = False
        if spec is not None and spec.loader is not None:
            self._act_behind(spec.loader)
        return spec

    def _act_behind(self, loader: Any) -> None:
        """Until a module is executed, it was only looked for."""
        execute = loader.exec_module

        def execute_and_act(module: ModuleType) -> None:
            loader.exec_module = execute
            execute(module)
            if self in sys.meta_path:
                sys.meta_path.remove(self)
                self.act()

        loader.exec_module = execute_and_act

    def act(self) -> None:
        """What fails here must not spoil the import of the other module."""
        try:
            self._action()
        except Exception as error:  # noqa: BLE001
            warnings.warn(f"no clutterclassifier accessor for this {self._name}: {error!r}", stacklevel=2)


def when_imported(name: str, action: Callable[[], Any]) -> None:
    """Calls `action` now if the module `name` is imported already, else when it is."""
    watcher = _Watcher(name, action)
    if sys.modules.get(name) is not None:  # None: somebody forbids the import
        watcher.act()
    else:
        sys.meta_path.insert(0, watcher)
