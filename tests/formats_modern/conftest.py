"""Reads files with the program's own readers, as numpy arrays."""

import json
import os
import pathlib
import subprocess
import types

import numpy as np
import pytest

DATA = pathlib.Path(os.environ.get("CLUTTERCLASSIFIER_DATA") or "no-measured-files")


def dump(path, *options):
    """The scan in a file: attributes of JSON, `values` of every field."""
    run = subprocess.run([os.environ["DUMP_SCAN"], str(path), *options], capture_output=True, check=False)
    if run.returncode:
        raise ValueError(run.stderr.decode())
    assert run.stderr == b""
    head, _, body = run.stdout.partition(b"\n")
    scan = json.loads(head, object_hook=lambda known: types.SimpleNamespace(**known))
    values = np.frombuffer(body, np.float32)
    for sweep in scan.sweeps:
        sweep.values = {}
        for field in sweep.fields:
            count = sweep.rays * sweep.gates
            sweep.values[field.name] = values[:count].reshape(sweep.rays, sweep.gates)
            values = values[count:]
        sweep.no_echo = {field.name: field.no_echo for field in sweep.fields}
    assert values.size == 0
    return scan


def real(name):
    """A measured file, where there is one."""
    if not (DATA / name).exists():
        pytest.skip("no measured files here")
    return DATA / name
