#!/usr/bin/env python3
"""Compares `quastel hash` with xxhsum (Debian: package xxhash), digit for digit, over files of a
few thousand sizes: every size around the pieces in which the algorithm takes its input, around the read
size of the library, and random ones between.

Usage: crosscheck_hashes.py [--client QUASTEL_EXE] [--seed N]

Prints how many files agree and the first that do not. Exit code 0 when all agree, else 1."""

import argparse
import os
import random
import shutil
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
# A command line of Windows holds 32,767 units, the program's own path among them.
MOST_UNITS = 30_000
# In these the library's own order of the digits is looked at too.
OWN_ORDER_FILES = 200


def sizes(source):
    yield from range(2100)
    for centre, reach in ((4096, 40), (65536, 40), (1 << 20, 6), (2 << 20, 3), (3 << 20, 1)):
        yield from range(centre - reach, centre + reach + 1)
    for _ in range(800):
        yield source.randrange(2100, 40_000)


def make_files(folder, source):
    names = []
    for number, size in enumerate(sizes(source)):
        names.append(f"{number:04}")
        with open(os.path.join(folder, names[-1]), "wb") as file:
            file.write(source.randbytes(size))
    return names


def batches(names):
    batch, units = [], 0
    for name in names:
        if units + len(name) + 1 > MOST_UNITS:
            yield batch
            batch, units = [], 0
        batch.append(name)
        units += len(name) + 1
    yield batch


def digits(command, names, folder):
    """The first word of each line that the command prints: name -> digits."""
    found = {}
    for batch in batches(names):
        done = subprocess.run([*command, *batch], cwd=folder, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, text=True)
        if done.returncode != 0:
            sys.exit(f"{' '.join(command)} ended with {done.returncode}")
        found.update(reversed(line.split("  ", 1)) for line in done.stdout.splitlines())
    return found


def compare(what, names, folder, found, expected):
    wrong = [name for name in names if found.get(name) != expected[name]]
    for name in wrong[:10]:
        size = os.path.getsize(os.path.join(folder, name))
        print(f"  {size} bytes: quastel {found.get(name)}, expected {expected[name]}")
    total = sum(os.path.getsize(os.path.join(folder, name)) for name in names)
    print(f"{what}: {len(names) - len(wrong)} of {len(names)} files agree ({total:,} bytes)")
    return not wrong


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--client",
                        default=os.path.join(ROOT, "build", "windows", "bin", "quastel.exe"))
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    if shutil.which("xxhsum") is None:
        sys.exit("xxhsum is missing: install the package xxhash")
    client = [os.path.join(ROOT, "scripts", "wine_run.sh"), os.path.abspath(options.client), "hash"]

    with tempfile.TemporaryDirectory(prefix="hashes_", dir=os.path.join(ROOT, "build")) as folder:
        names = make_files(folder, random.Random(options.seed))
        expected = digits(["xxhsum", "-H0"], names, folder)
        agree = compare("usual order", names, folder,
                        digits([*client, "--standard"], names, folder), expected)
        few = names[:OWN_ORDER_FILES]
        own = {name: bytes.fromhex(expected[name])[::-1].hex() for name in few}
        agree &= compare("the library's order", few, folder, digits(client, few, folder), own)
    return 0 if agree else 1


if __name__ == "__main__":
    sys.exit(main())
