#!/usr/bin/env python3
"""Compares `./run large` with the host's own listing, row for row: scripts/compare_large.py FOLDER

Both report the files above 10,485,760 bytes below the folder. No walk of the library enters links to
folders or what is mounted below the folder. Links to files look like files under Wine, so they count
here as well.
"""

import json
import os
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent


def large_files(folder, device):
    for entry in os.scandir(folder):
        if entry.is_dir(follow_symlinks=False):
            if entry.stat(follow_symlinks=False).st_dev == device:
                yield from large_files(entry.path, device)
        elif entry.is_file() and entry.stat().st_size > 10485760:
            yield entry.path, entry.stat().st_size


def main():
    folder = os.path.realpath(sys.argv[1])
    found = [f"{size} {os.path.relpath(path, folder)}"
             for path, size in large_files(folder, os.stat(folder).st_dev)]
    report = json.loads(subprocess.run(
        [ROOT / "run", "large", folder, "--json", "--no-protect"], check=True,
        stdout=subprocess.PIPE).stdout)
    rows = [f"{row['size']} " + row["path"].split(":\\", 1)[1].replace("\\", "/")
            for row in report["rows"]]
    only_found = sorted(set(found) - set(rows))
    only_reported = sorted(set(rows) - set(found))
    for line in only_found:
        print("host alone:   ", line)
    for line in only_reported:
        print("quastel alone:", line)
    print(f"{len(found)} by the host, {len(rows)} by quastel, of "
          f"{report['totals']['files_visited']} files seen")
    return 1 if only_found or only_reported or len(found) != len(rows) else 0


if __name__ == "__main__":
    sys.exit(main())
