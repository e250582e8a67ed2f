"""Which functions of the readers the fuzzers' inputs reach.

    /usr/bin/python3 script/fuzz_coverage.py PROFILE BINARY...
"""

from __future__ import annotations

import collections
import json
import os
import re
import subprocess
import sys

# Where bytes and texts from outside are taken apart.
READERS = re.compile(
    r"src/(formats/|dsp/files/|base/(file|text|regular_file|byte_cursor)|model/field_record_file"
    r"|driver/configuration|fuzzy/functions/membership|corrections/vertical_profile"
    r"|classifier/functions/(membership_set|strict_table))"
    r"|scan/(formats/|fields/|points/|process/configuration)")
WRITERS = re.compile(r"/write|output|make_words|[a-z]_writer")


def functions(profile: str, binaries: list[str]) -> dict[str, dict[tuple[int, int], tuple[str, int]]]:
    """Of every source file: functions by their place, with name and count of calls."""
    objects = [word for binary in binaries[1:] for word in ("-object", binary)]
    report = subprocess.run(["llvm-cov", "export", f"-instr-profile={profile}", binaries[0], *objects],
                            capture_output=True, check=True, text=True).stdout
    found: dict[str, dict[tuple[int, int], tuple[str, int]]] = collections.defaultdict(dict)
    for function in json.loads(report)["data"][0]["functions"]:
        file = os.path.relpath(os.path.normpath(function["filenames"][0]))
        is_lambda = "$_" in function["name"]
        if READERS.match(file) and not WRITERS.search(file) and not is_lambda:
            place = tuple(function["regions"][0][:2])
            count = function["count"] + found[file].get(place, ("", 0))[1]
            found[file][place] = (function["name"].split(":")[-1], count)
    return found


def plain(names: list[str]) -> list[str]:
    """Names without their arguments and namespaces."""
    text = subprocess.run(["c++filt", "-p"], input="\n".join(names), capture_output=True, text=True,
                          check=True).stdout
    return [name.split("::")[-1] for name in text.splitlines()]


def main(profile: str, binaries: list[str]) -> None:
    reached_everywhere = total = 0
    one_target = len(binaries) == 2  # and the library
    for file, found in sorted(functions(profile, binaries).items()):
        missed = [name for _, (name, count) in sorted(found.items()) if count == 0]
        reached = len(found) - len(missed)
        if reached == 0 and one_target:
            continue  # another target's reader
        reached_everywhere += reached
        total += len(found)
        print(f"{file:50} {reached:3} of {len(found):3} functions"
              + (f"; not {', '.join(plain(missed))}" if missed else ""))
    print(f"{reached_everywhere} of {total} functions of the readers")


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2:])
