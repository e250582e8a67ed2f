"""What a call from Python costs beside the same call of the C entry point, and two threads beside one.

Prints medians of alternating calls in one process, 360 rays x 1,000 gates, seven inputs.
"""

from __future__ import annotations

import statistics
import sys
import threading
import time
from collections.abc import Callable
from pathlib import Path

import clutterclassifier as cc
import numpy as np

sys.path.insert(0, str(Path(__file__).parent.parent / "tests" / "python"))
from entry_point import CCall, scan_fields  # noqa: E402

RAYS, GATES, ROUNDS = 360, 1000, 60
SETTINGS = {"range": 250.0, "radar_constant": 10.0, "min_snr": 12.0}


def seconds(call: Callable[[], object]) -> float:
    begin = time.perf_counter()
    call()
    return time.perf_counter() - begin


def medians(*calls: Callable[[], object]) -> list[float]:
    """Milliseconds of each, called in turn."""
    for call in calls:
        call()
    times = [[seconds(call) for call in calls] for _ in range(ROUNDS)]
    return [1e3 * statistics.median(column) for column in zip(*times)]


def in_two_threads(first: Callable[[], object], second: Callable[[], object]) -> None:
    threads = [threading.Thread(target=call) for call in (first, second)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()


def main() -> None:
    fields = scan_fields(RAYS, GATES)
    others = scan_fields(RAYS, GATES, seed=2)
    singles = {name: values.astype(np.float32) for name, values in fields.items()}
    c_call = CCall(fields, 250.0, 10.0, 12.0, 255)
    c, python, single = medians(c_call, lambda: cc.classify(**fields, **SETTINGS),
                                lambda: cc.classify(**singles, **SETTINGS))
    several = 8  # scans a thread: starting it is not what is measured

    def work(scan: dict[str, np.ndarray]) -> Callable[[], object]:
        return lambda: [cc.classify(**scan, **SETTINGS) for _ in range(several)]

    one, two = medians(work(fields), lambda: in_two_threads(work(fields), work(others)))
    print("classify, 360 x 1,000, seven inputs, medians:")
    print(f"  C entry point              {c:7.2f} ms")
    print(f"  Python, float64 arrays     {python:7.2f} ms   {python / c:5.2f} x C")
    print(f"  Python, float32 arrays     {single:7.2f} ms   {single / c:5.2f} x C")
    print(f"  two threads, two scans     {two / several:7.2f} ms   {two / one:5.2f} x one thread, one scan")


if __name__ == "__main__":
    main()
