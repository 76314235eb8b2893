#!/usr/bin/env python3
"""Counts the instructions of each scenario of bench/instruction_scenarios.cpp under callgrind.

  count_instructions.py PROGRAM            compares with bench/instruction_counts.json
  count_instructions.py PROGRAM --accept   writes the counts into that file

The counts do not depend on how busy the machine is. They do depend on the compiler: the file names
the one that it was made with, and with another one the limit is wider.
"""

import argparse
import concurrent.futures
import json
import os
import re
import subprocess
import sys

TOLERANCE = 0.05
TOLERANCE_OF_ANOTHER_COMPILER = 0.30
FILE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "bench",
                    "instruction_counts.json")


def count(program, scenario):
    done = subprocess.run(
        ["valgrind", "--tool=callgrind", "--instr-atstart=no", "--callgrind-out-file=/dev/null",
         program, scenario], stderr=subprocess.PIPE, text=True)
    match = re.search(r"Collected : (\d+)", done.stderr)
    if done.returncode != 0 or not match:
        sys.exit(f"{scenario} could not be counted:\n{done.stderr}")
    return int(match.group(1))


def count_all(program):
    names = subprocess.run([program], stdout=subprocess.PIPE, text=True, check=True).stdout.split()
    with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
        return dict(zip(names, pool.map(lambda name: count(program, name), names)))


def compare(expected, counted, tolerance):
    """The complaints about counts that left what is expected."""
    complaints = []
    for name, now in counted.items():
        before = expected.get(name)
        if before is None:
            complaints.append(f"{name}: {now} instructions, and none are on file")
        elif now > before * (1 + tolerance):
            complaints.append(f"{name}: {now} instructions, {now / before - 1:+.1%} against {before}")
    complaints += [f"{name}: is on file, but no scenario" for name in expected if name not in counted]
    return complaints


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("program")
    parser.add_argument("--compiler", default="", help="what the program was compiled by")
    parser.add_argument("--accept", action="store_true", help="write the counts into the file")
    arguments = parser.parse_args()

    if arguments.accept:
        counted = count_all(arguments.program)
        with open(FILE, "w", encoding="utf-8") as out:
            json.dump({"compiler": arguments.compiler, "counts": counted}, out, indent=2)
            out.write("\n")
        return 0

    with open(FILE, encoding="utf-8") as stored:
        expected = json.load(stored)
    tolerance = TOLERANCE
    if expected["compiler"] != arguments.compiler:
        tolerance = TOLERANCE_OF_ANOTHER_COMPILER
        print(f"the counts on file are of {expected['compiler']}, this program is of "
              f"{arguments.compiler}: up to {tolerance:.0%} more is let through")
    counted = count_all(arguments.program)
    for name, now in counted.items():
        print(f"{name:32} {now:>14}  {now / expected['counts'].get(name, now) - 1:+.2%}")
    complaints = compare(expected["counts"], counted, tolerance)
    for complaint in complaints:
        print(complaint)
    if complaints:
        print("\nSomething costs more than it did. If that is wanted, accept the new counts:\n"
              f"  {os.path.relpath(__file__)} {arguments.program} "
              f"--compiler '{arguments.compiler}' --accept\n"
              "and say in the change why they grow.")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
