"""A module that is imported together with another one, whoever imports that, and not before."""

from __future__ import annotations

import importlib
import importlib.util
import sys
from typing import TYPE_CHECKING

if TYPE_CHECKING:
    from collections.abc import Sequence
    from importlib.abc import Loader
    from importlib.machinery import ModuleSpec
    from types import ModuleType

# Not derived from classes of importlib.abc: its import takes longer than that of all modules here.


class _Follower:
    """Finds one module as all other finders do, and imports the follower after it, once."""

    def __init__(self, name: str, follower: str) -> None:
        self._name = name
        self._follower = follower

    def find_spec(self, fullname: str, path: Sequence[str] | None,
                  target: ModuleType | None = None) -> ModuleSpec | None:
        if fullname != self._name or self not in sys.meta_path:
            return None
        sys.meta_path.remove(self)
        spec = importlib.util.find_spec(fullname)
        if spec is not None and spec.loader is not None:
            spec.loader = _Loader(spec.loader, self._follower)  # type: ignore[assignment]
        return spec


class _Loader:
    """Loads as another loader does, which takes its place, and then imports the follower."""

    def __init__(self, loader: Loader, follower: str) -> None:
        self._loader = loader
        self._follower = follower

    def create_module(self, spec: ModuleSpec) -> ModuleType | None:
        return self._loader.create_module(spec)

    def exec_module(self, module: ModuleType) -> None:
        if module.__spec__ is not None:
            module.__spec__.loader = self._loader
        module.__loader__ = self._loader
        self._loader.exec_module(module)
        importlib.import_module(self._follower)


def when_imported(name: str, follower: str) -> bool:
    """Import a follower now where a module is loaded, else after it. Returns whether that module exists."""
    if name in sys.modules:
        importlib.import_module(follower)
        return True
    try:
        exists = importlib.util.find_spec(name) is not None
    except ModuleNotFoundError:  # of a finder that refuses to look
        exists = False
    if not exists:
        return False
    sys.meta_path.insert(0, _Follower(name, follower))  # type: ignore[arg-type]
    return True
