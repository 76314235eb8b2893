#!/usr/bin/env python3
"""Checks that the compiler kept the hash's recurrence in general registers.

usage: check_hash_code.py OBJDUMP OBJECT...

XXH32 is as fast as its chain of add, rotate and multiply. Packed into vectors the chain is more than
twice as long, and nothing but the time would tell. The block loop must hold one scalar
multiplication by the first prime for each lane of its four stripes.
"""

import re
import subprocess
import sys

FIRST_PRIME = {"0x9e3779b1", "0xffffffff9e3779b1"}
NEEDED = 16


def main():
    objdump, *objects = sys.argv[1:]
    objects = [o for o in objects if "xxhash32" in o]
    if len(objects) != 1:
        sys.exit(f"expected one object of xxhash32.cpp, got {objects}")
    listing = subprocess.run([objdump, "-d", "--no-show-raw-insn", objects[0]], check=True,
                             capture_output=True, text=True).stdout
    best = 0
    for function in listing.split("\n\n"):
        if "pmuludq" in function:
            scalar = re.findall(r"\bimul\s+\$(-?0x[0-9a-f]+)", function)
            best = max(best, sum(constant in FIRST_PRIME for constant in scalar))
    if best < NEEDED:
        sys.exit(f"the block loop has {best} scalar multiplications by the first prime, "
                 f"{NEEDED} are needed: the compiler has packed the recurrence")
    print(f"{best} scalar multiplications in the block loop")


if __name__ == "__main__":
    main()
