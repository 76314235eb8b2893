"""The same sources give the same DLL, wherever they lie.

usage: reproducible_test.py SOURCE BUILD

BUILD is a build of SOURCE. Another copy of the sources is built in a folder of another name and
length, and the two DLLs are compared byte by byte.
"""

import re
import shutil
import subprocess
import sys
from pathlib import Path

# What the DLL is built from.
PARTS = ["CMakeLists.txt", "cmake", "include", "src", "bench"]
# How the build at hand was configured.
KEPT = ["CMAKE_TOOLCHAIN_FILE", "CMAKE_BUILD_TYPE"]


def cached(build, name):
    cache = (build / "CMakeCache.txt").read_text(encoding="utf-8")
    found = re.search(rf"^{name}:\w+=(.+)$", cache, re.MULTILINE)
    if not found:
        sys.exit(f"{build} does not say what {name} is")
    return found.group(1)


def main():
    source, build = (Path(argument).resolve() for argument in sys.argv[1:3])
    place = build / "reproducible" / "in a folder of another name"
    shutil.rmtree(place.parent, ignore_errors=True)
    copy = place / "sources"
    copy.mkdir(parents=True)
    for part in PARTS:
        if (source / part).is_dir():
            shutil.copytree(source / part, copy / part)
        else:
            shutil.copy(source / part, copy / part)
    for command in (
            ["cmake", "-S", str(copy), "-B", str(place / "build"), "-G", "Ninja",
             "-DQUASTEL_TESTS=OFF", *[f"-D{name}={cached(build, name)}" for name in KEPT]],
            ["cmake", "--build", str(place / "build"), "--target", "quastel_core", "-j2"]):
        done = subprocess.run(command, capture_output=True, text=True, check=False)
        if done.returncode != 0:
            sys.exit(" ".join(command) + "\n" + done.stdout + done.stderr)
    first = (build / "bin" / "quastel_core.dll").read_bytes()
    second = (place / "build" / "bin" / "quastel_core.dll").read_bytes()
    if first != second:
        at = next((i for i, pair in enumerate(zip(first, second)) if pair[0] != pair[1]),
                  min(len(first), len(second)))
        sys.exit(f"the DLLs of {len(first)} and {len(second)} bytes differ from byte {at} on")
    print(f"two builds gave the same {len(first)} bytes")


if __name__ == "__main__":
    main()
