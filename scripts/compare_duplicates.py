#!/usr/bin/env python3
"""Compares `./run duplicates FOLDER` with jdupes or fdupes (Debian: packages of these names), group
for group, on a real folder of this machine.

Usage: compare_duplicates.py FOLDER [--tool jdupes|fdupes] [--run COMMAND]

Both find files by content and treat the names of one file as copies; empty files count, links are
not followed. Prints whether the groups are the same and the ones that are not. Exit code 0 when
they are the same, 1 when not."""

import argparse
import json
import os
import shutil
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
TOOLS = {
    # -H: several names of one file are copies. -z: empty files too, which fdupes takes by itself.
    "jdupes": ["jdupes", "-r", "-q", "-H", "-z"],
    "fdupes": ["fdupes", "-r", "-q", "-H"],
}
# No duplicate scan reports the system's own files.
IGNORED = {"pagefile.sys", "swapfile.sys", "hiberfil.sys"}
# No Windows program can open a file that has one of these in its name.
NOT_IN_WINDOWS = set('<>:"|?*\\') | {chr(code) for code in range(32)}
SHOWN = 10


def is_windows_name(name):
    try:
        name.encode()
    except UnicodeEncodeError:
        return False
    return not NOT_IN_WINDOWS & set(name) and not name.endswith((".", " "))


def comparable_files(folder):
    """Paths below the folder that both programs can see, and how many others there are."""
    files = set()
    left_out = {"links": 0, "names that Windows does not allow": 0, "mount points": 0}
    for parent, folders, names in os.walk(folder):
        for name in list(folders):
            path = os.path.join(parent, name)
            if os.path.islink(path):
                left_out["links"] += 1
            elif os.path.ismount(path):
                # Wine shows a mount point as a reparse point, which no scan enters.
                left_out["mount points"] += 1
            elif not is_windows_name(name):
                left_out["names that Windows does not allow"] += 1
            else:
                continue
            folders.remove(name)
        for name in names:
            path = os.path.join(parent, name)
            if os.path.islink(path):
                left_out["links"] += 1
            elif not is_windows_name(name):
                left_out["names that Windows does not allow"] += 1
            elif os.path.isfile(path) and name.lower() not in IGNORED:
                files.add(path)
    return files, {reason: count for reason, count in left_out.items() if count}


def expected_groups(tool, folder, files):
    done = subprocess.run([*TOOLS[tool], folder], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          check=True)
    groups = set()
    for block in os.fsdecode(done.stdout).split("\n\n"):
        group = frozenset(path for path in block.split("\n") if path in files)
        if len(group) > 1:
            groups.add(group)
    return groups


def found_groups(run, folder):
    done = subprocess.run([run, "duplicates", folder, "--json"], stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE)
    if done.returncode != 0:
        sys.exit(f"{run} duplicates ended with {done.returncode}")
    report = json.loads(done.stdout)
    (root,) = report["roots"]
    groups = {}
    for row in report["rows"]:
        path = row["path"].removeprefix("\\\\?\\")
        if not path.startswith(root):
            sys.exit(f"{path} is not below {root}")
        names = path[len(root):].strip("\\").split("\\")
        path = os.path.join(folder, *names)
        # Wine shows a link to a file as the file itself; Windows has an attribute that tells. And a
        # folder "name." is listed with what is in the folder "name", for which it stands.
        if all(map(is_windows_name, names)) and not os.path.islink(path):
            groups.setdefault(row["group_id"], set()).add(path)
    return report, {frozenset(group) for group in groups.values() if len(group) > 1}


def describe(name, groups):
    # A path may be wrong: that is what the comparison is for.
    sizes = {group: next((os.path.getsize(path) for path in group if os.path.isfile(path)), 0)
             for group in groups}
    free = sum(size * (len(group) - 1) for group, size in sizes.items())
    print(f"  {name:8} {len(groups):7,} groups {sum(map(len, groups)):8,} files "
          f"{free:15,} bytes reclaimable")


def show(title, groups):
    print(f"{len(groups)} groups {title}:")
    for group in sorted(map(sorted, groups))[:SHOWN]:
        print("\n".join(f"  {os.fsencode(path).decode(errors='replace')}" for path in group) + "\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("folder")
    parser.add_argument("--tool", choices=TOOLS,
                        default="jdupes" if shutil.which("jdupes") else "fdupes")
    parser.add_argument("--run", default=os.path.join(ROOT, "run"),
                        help="the command that runs the client on a folder of this machine")
    options = parser.parse_args()
    if shutil.which(options.tool) is None:
        sys.exit(f"{options.tool} is missing: install jdupes or fdupes")
    folder = os.path.realpath(options.folder)
    if not os.path.isdir(folder):
        sys.exit(f"{options.folder} is not a folder")

    files, left_out = comparable_files(folder)
    expected = expected_groups(options.tool, folder, files)
    report, found = found_groups(options.run, folder)
    print(f"{folder}: {len(files):,} files")
    for reason, count in left_out.items():
        print(f"  not compared: {count:,} {reason}")
    describe("quastel", found)
    describe(options.tool, expected)
    print(f"  quastel took {report['performance']['elapsed_us'] / 1e6:.2f} s")
    if not files:
        sys.exit("there is nothing to compare")
    if found == expected:
        print("The groups are the same.")
        return 0
    show(f"only from {options.tool}", expected - found)
    show("only from quastel", found - expected)
    return 1


if __name__ == "__main__":
    sys.exit(main())
