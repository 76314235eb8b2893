#!/usr/bin/env python3
"""Lets no change of the binary interface pass unannounced.

usage: check_interface.py --root ROOT [--compiler CC]

The header has to agree with the snapshot tests/abi/interface.txt, and the newest section "Binary
interface" of CHANGELOG.md has to name the snapshot's digest. So whoever changes a record, a constant
or a function is led to that section.
"""

import argparse
import difflib
import re
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # the source tree stays as it is
import interface_snapshot  # noqa: E402

SECTION = re.compile(r"^### Binary interface\n(.*?)(?=^##|\Z)", re.MULTILINE | re.DOTALL)
DIGEST = re.compile(r"digest of the interface\b.*?`([0-9a-f]{16})`", re.IGNORECASE)

HOW_TO_ACCEPT = """
If the change is wanted (docs/abi.md says which changes are allowed):
  1. python3 tests/abi/interface_snapshot.py --root . --accept
  2. in CHANGELOG.md, under "Binary interface" of the version in progress, say what changes for a
     program that was built with the earlier header, and write the digest that step 1 printed."""


def complaints(root, compiler):
    wanted = interface_snapshot.snapshot(root / "include/quastel_core.h", compiler)
    stored = (root / interface_snapshot.SNAPSHOT).read_text(encoding="utf-8")
    if wanted != stored:
        difference = difflib.unified_diff(stored.splitlines(), wanted.splitlines(),
                                          "accepted interface", "header", lineterm="", n=1)
        yield "the header differs from the accepted interface:\n" + "\n".join(difference)
    section = SECTION.search((root / "CHANGELOG.md").read_text(encoding="utf-8"))
    if section is None:
        yield 'CHANGELOG.md has no section "Binary interface"'
        return
    named = DIGEST.findall(section.group(1))
    digest = interface_snapshot.digest(stored)
    if named != [digest]:
        yield (f'the newest section "Binary interface" of CHANGELOG.md gives the digest {named}, '
               f"and the accepted interface has {digest}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--root", type=Path, required=True)
    parser.add_argument("--compiler", default=interface_snapshot.DEFAULT_COMPILER)
    args = parser.parse_args()
    found = list(complaints(args.root, args.compiler))
    for text in found:
        print(f"FAIL {text}")
    if found:
        print(HOW_TO_ACCEPT)
        sys.exit(1)
    print("ok   header, accepted interface and changelog agree")


if __name__ == "__main__":
    main()
