"""Settings of the processing chain: a file of keys and values, or a dict of them."""

from __future__ import annotations

import contextlib
import math
import os
from collections.abc import Iterator, Mapping
from pathlib import Path
from typing import Any, NamedTuple, Union

from .. import _core
from .arguments import finite

Config = Union[str, os.PathLike, Mapping[str, Any], None]

_LARGEST_FILE = 1 << 20


class Settings(NamedTuple):
    """Checked settings, as text, so that they can go to other processes unchanged."""

    text: str = ""
    what: int | None = None
    inputs: int | None = None
    membership: str | None = None


def _word(key: str, value: Any) -> str:
    """A value as the file has it. Whole numbers have no decimal point there."""
    if isinstance(value, os.PathLike):
        return os.path.join(os.fspath(value), "")
    if isinstance(value, str):
        return value
    if isinstance(value, float) and not math.isfinite(value):
        return str(float(value))  # the check of the settings reports the problem
    number = finite(key, value)
    return str(int(number)) if number.is_integer() else repr(number)


def _text_of(config: Config) -> str:
    if config is None:
        return ""
    if isinstance(config, Mapping):
        pairs = {str(key): _word(str(key), value) for key, value in config.items()}
        for key, word in pairs.items():
            if not word or word.split() != [word]:
                raise ValueError(f"{key}: {word!r} is not a single word, as every setting must be")
        return "".join(f"{key} {word}\n" for key, word in pairs.items())
    if not isinstance(config, (str, os.PathLike)):
        raise TypeError(f"config must be a file of settings or a dict of them, not {config!r}")
    path = Path(config)
    if path.stat().st_size > _LARGEST_FILE:
        raise ValueError(f"{path} is too large for a file of settings")
    return path.read_bytes().decode("utf-8", errors="replace")


def check_config(config: Config) -> list[str]:
    """Problems of settings of the processing chain.

    Parameters
    ----------
    config : path or dict
        A file of settings, or its keys and values.

    Returns
    -------
    list of str
        One sentence a problem: unknown keys, keys given twice or without a value, values that are not
        (whole) numbers or out of range, a directory without its last ``/``. Empty when all is well.

    Raises
    ------
    OSError
        The file cannot be read.
    TypeError, ValueError
        `config` is neither, or a value is not a single word or number; the message names its key.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> cc.check_config({"ATTENUATION_ALG": 4, "FREEZING_LEVEL": 2600})
    []
    >>> cc.check_config({"RAINFALL_ALG": 1.5})
    ['RAINFALL_ALG: 1.5 is not a whole number']
    """
    problems = _core.configuration_problems(_text_of(config))
    if isinstance(config, Mapping):
        return [text for _, text in problems]
    return [f"line {line}: {text}" for line, text in problems]


def example_config(membership: str | os.PathLike[str] = "") -> str:
    """A complete, valid file of settings: every key with its default, but all stages selected.

    Parameters
    ----------
    membership : path, optional
        Directory of membership functions to name in it; none by default.

    Returns
    -------
    str
        Text of a file: one line ``KEY value`` a setting.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> print(cc.example_config().splitlines()[0])
    WHAT2DO 255
    """
    directory = os.path.join(os.fspath(membership), "") if membership else ""
    return _core.example_configuration(directory)


def config_table() -> str:
    """The keys of the settings and their meaning.

    Returns
    -------
    str
        A text table: one line for each key, which begins with it.

    Examples
    --------
    >>> import clutterclassifier as cc
    >>> any(line.startswith("ATTENUATION_ALG") for line in cc.config_table().splitlines())
    True
    """
    return _core.configuration_table()


@contextlib.contextmanager
def settings_file(text: str) -> Iterator[str]:
    """A file of these settings while the library reads it; no name for no settings."""
    if not text:
        yield ""
        return
    import tempfile

    with tempfile.NamedTemporaryFile("w", suffix=".settings", encoding="utf-8") as file:
        file.write(text)
        file.flush()
        yield file.name


def read_settings(config: Config | Settings) -> Settings:
    """Settings that are ready for use.

    Raises
    ------
    ValueError
        naming every problem.
    OSError
        A file cannot be read.
    """
    if isinstance(config, Settings):
        return config
    text = _text_of(config)
    problems = check_config(config) if text else []
    if problems:
        name = os.fspath(config) if isinstance(config, (str, os.PathLike)) else "config"
        raise ValueError(f"{name}: " + "; ".join(problems))
    with settings_file(text) as path:
        return Settings(text, **_core.read_settings(path, text))
