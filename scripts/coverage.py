#!/usr/bin/env python3
"""Prints how much of src/ the host tests cover: scripts/coverage.py [BUILD_FOLDER]

Builds the preset host-coverage, runs its tests and reads gcov's data. A line or branch counts as
covered when any test takes it. The branches that only an exception takes are left out: gcov counts
one for nearly every call.
"""

import collections
import json
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def run(*command, **options):
    return subprocess.run(command, cwd=ROOT, check=True, **options)


def gcov_files(data_file):
    """The per-source records of one .gcda file."""
    out = run("gcov", "--json-format", "--stdout", "--branch-probabilities", str(data_file),
              capture_output=True, text=True).stdout
    for line in out.splitlines():
        if line.startswith("{"):
            yield from json.loads(line)["files"]


def main():
    build = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ROOT / "build" / "host-coverage")
    if len(sys.argv) <= 1:
        run("cmake", "--preset", "host-coverage", stdout=subprocess.DEVNULL)
        run("cmake", "--build", "--preset", "host-coverage", stdout=subprocess.DEVNULL)
        for old in build.rglob("*.gcda"):
            old.unlink()
        run("ctest", "--test-dir", str(build), "-j2", stdout=subprocess.DEVNULL)

    lines = collections.defaultdict(lambda: collections.defaultdict(int))
    branches = collections.defaultdict(lambda: collections.defaultdict(list))
    for data_file in sorted(build.rglob("*.gcda")):
        if "_tests.dir" in str(data_file):
            continue
        for record in gcov_files(data_file):
            path = (ROOT / record["file"]).resolve()
            if not path.is_relative_to(ROOT / "src"):
                continue
            name = str(path.relative_to(ROOT))
            for line in record["lines"]:
                number = line["line_number"]
                lines[name][number] += line["count"]
                taken = [b["count"] for b in line["branches"] if not b["throw"]]
                known = branches[name][number]
                if len(known) == len(taken):
                    branches[name][number] = [a + b for a, b in zip(known, taken)]
                elif len(taken) > len(known):
                    branches[name][number] = taken

    print(f"{'file':44} {'lines':>12} {'branches':>12}  not covered")
    totals = [0, 0, 0, 0]
    for name in sorted(lines):
        counts = lines[name]
        missed = sorted(n for n, count in counts.items() if count == 0)
        taken = [count for per_line in branches[name].values() for count in per_line]
        half = sorted(n for n, per_line in branches[name].items()
                      if 0 in per_line and counts[n] > 0)
        figures = [len(counts) - len(missed), len(counts), sum(c > 0 for c in taken), len(taken)]
        totals = [a + b for a, b in zip(totals, figures)]
        detail = ""
        if missed:
            detail += " lines " + ",".join(map(str, missed))
        if half:
            detail += " branches at " + ",".join(map(str, half))
        print(f"{name:44} {figures[0]:5}/{figures[1]:5}  {figures[2]:5}/{figures[3]:5} {detail}")
    print(f"{'all':44} {totals[0] / totals[1]:11.1%} {totals[2] / max(totals[3], 1):12.1%}")


if __name__ == "__main__":
    main()
