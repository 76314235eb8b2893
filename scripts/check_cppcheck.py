#!/usr/bin/env python3
"""Runs cppcheck over the library and the client, each as it is built for Windows.

usage: check_cppcheck.py ROOT WORK

WORK is a folder of its own, below a build folder, where cppcheck keeps what it knows already.
"""

import subprocess
import sys
from pathlib import Path

COMMON = [
    "cppcheck", "--language=c++", "--std=c++20", "--platform=win64", "-j2", "--quiet",
    "--enable=warning,style,performance,portability", "--inline-suppr", "--error-exitcode=1",
    "--template={file}:{line}: {severity}: {message} [{id}]",
]
# The folder, what it is built with, and where its headers are.
PLACES = [
    ("src", ["-DQUASTEL_CORE_BUILDING"], ["src", "include"]),
    ("apps/quastel", ["-DUNICODE", '-DQUASTEL_CLIENT_VERSION="0"'], ["apps/quastel", "include"]),
]


def check_place(root, work, place):
    folder, definitions, headers = place
    known = work / folder.replace("/", "_")
    known.mkdir(parents=True, exist_ok=True)
    suppressions = Path(__file__).resolve().parent / "cppcheck_suppressions.txt"
    command = [*COMMON, "-D_WIN32", "-D__x86_64__", *definitions,
               *[f"-I{root / header}" for header in headers],
               f"--cppcheck-build-dir={known}", f"--suppressions-list={suppressions}",
               str(root / folder)]
    done = subprocess.run(command, capture_output=True, text=True, check=False,
                          stdin=subprocess.DEVNULL)
    lines = (done.stdout + done.stderr).splitlines()
    if done.returncode != 0 and not lines:
        lines = [f"{folder}: cppcheck ended with {done.returncode}"]
    return sorted(set(lines))


def check(root, work):
    """The complaints, and how many sources were looked at."""
    complaints = []
    count = 0
    for place in PLACES:
        sources = list((root / place[0]).rglob("*.cpp"))
        if sources:
            count += len(sources)
            complaints += check_place(root, work, place)
    return complaints, count


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    root, work = (Path(argument).resolve() for argument in sys.argv[1:])
    complaints, count = check(root, work)
    if count == 0:
        sys.exit(f"no sources below {root}")
    for complaint in complaints:
        print(complaint)
    if complaints:
        sys.exit(1)
    print(f"{count} sources have nothing that cppcheck complains about")


if __name__ == "__main__":
    main()
