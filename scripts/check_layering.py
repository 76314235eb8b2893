#!/usr/bin/env python3
"""Checks who includes whom, and the few other rules of the house that a compiler does not see.

usage: check_layering.py [ROOT]
"""

import re
import sys
from pathlib import Path

# What the files of each room of src/ may include besides their own room.
MAY_INCLUDE = {
    "base": set(),
    "platform": {"base"},
    "frame": {"base", "platform"},
    "fs": {"base", "platform", "frame"},
    "scan": {"base", "platform", "frame", "fs"},
    "junk": {"base", "platform", "frame", "fs", "scan"},
    "duplicate": {"base", "platform", "frame", "fs", "scan"},
    "session": {"base", "platform", "frame", "fs"},
}
# The scan object knows no scan kind: this one file hands it the table of the three runners.
EXCEPTIONS = {"scan/product_scan_exports.cpp": {"junk", "duplicate"}}

BACKEND = "platform/win32/"
PUBLIC_HEADER = "quastel_core.h"
COMPILER_HEADERS = {"emmintrin.h", "immintrin.h"}
# What takes longer to compile than the rest of a source, and the few sources of the client that may
# include it.
SLOW_HEADERS = {
    "CLI/": {"apps/quastel/arguments.cpp", "apps/quastel/command_options.cpp"},
    "nlohmann/": {"apps/quastel/json.cpp", "apps/quastel/saved_report.cpp"},
}
MAX_LINES = 500
SOURCE_SUFFIXES = {".h", ".cpp", ".c"}

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)
COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.DOTALL)


def read(path):
    return path.read_text(encoding="utf-8")


def sources(folder):
    if not folder.is_dir():
        return []
    return sorted(p for p in folder.rglob("*") if p.suffix in SOURCE_SUFFIXES)


def includes(path):
    return [(m.group(1) == "<", m.group(2)) for m in INCLUDE.finditer(read(path))]


def is_portable(header):
    """C++ names its headers without a suffix; whatever has one comes from a system, except for the
    vector instructions, which are the compiler's own."""
    return ("/" not in header and not header.endswith(".h")) or header in COMPILER_HEADERS


def check_library_file(src, path, complain):
    name = path.relative_to(src).as_posix()
    room = name.split("/")[0]
    if room not in MAY_INCLUDE:
        complain(path, "lies in no known room")
        return
    allowed = MAY_INCLUDE[room] | {room} | EXCEPTIONS.get(name, set())
    in_backend = name.startswith(BACKEND)
    for system, header in includes(path):
        if system:
            if not is_portable(header) and not in_backend:
                complain(path, f"includes the system header <{header}>")
            continue
        if header == PUBLIC_HEADER:
            continue
        if not (src / header).is_file():
            complain(path, f'"{header}" is not a path from src/')
            continue
        if header.split("/")[0] not in allowed:
            complain(path, f'{room} must not include "{header}"')
        if header.startswith(BACKEND) and not in_backend:
            complain(path, f'"{header}" belongs to the backend alone')
    text = read(path)
    if not in_backend and re.search(r"\bGetLastError\b", COMMENT.sub("", text)):
        complain(path, "asks GetLastError; errors come as values from the seam")
    lines = text.count("\n")
    if lines > MAX_LINES:
        complain(path, f"has {lines} lines, more than {MAX_LINES}")


def check_loops(src, complain):
    graph = {}
    for path in sources(src):
        graph[path.relative_to(src).as_posix()] = [h for s, h in includes(path) if not s]
    state = {}

    def visit(name, trail):
        if name not in graph or state.get(name) == "done":
            return
        if state.get(name) == "open":
            complain(src / name, "includes itself in a loop: " + " > ".join(trail + [name]))
            return
        state[name] = "open"
        for header in graph[name]:
            visit(header, trail + [name])
        state[name] = "done"

    for name in sorted(graph):
        visit(name, [])


def check_outsider(root, folder, path, complain):
    """The client and the tests of the DLL see the library as everybody else does."""
    own = root / folder
    for system, header in includes(path):
        if system or header == PUBLIC_HEADER:
            continue
        candidates = [(base / header).resolve() for base in (path.parent, own, own.parent)]
        if not any(p.is_file() and p.is_relative_to(own) for p in candidates):
            complain(path, f'includes "{header}", neither the public header nor its own')


def check_slow_headers(root, path, complain):
    for _, header in includes(path):
        for folder, users in SLOW_HEADERS.items():
            if header.startswith(folder) and path.relative_to(root).as_posix() not in users:
                complain(path, f"includes {header}, which takes long to compile, and is none of "
                               f"{', '.join(sorted(users))}")


def check_listed(root, complain):
    """A test that no CMake file names is never built."""
    lists = [root / "CMakeLists.txt"]
    for folder in ("src", "tests", "apps", "bench", "cmake"):
        if (root / folder).is_dir():
            lists += [p for p in (root / folder).rglob("*")
                      if p.suffix == ".cmake" or p.name == "CMakeLists.txt"]
    text = "\n".join(re.sub(r"#[^\n]*", "", read(p)) for p in lists if p.is_file())
    words = set(re.findall(r"[\w.+-]+\.cpp\b", text))
    for folder in ("src", "tests", "apps"):
        for path in sources(root / folder):
            if path.suffix == ".cpp" and path.name not in words:
                complain(path, "is named in no CMake file")


def check(root):
    complaints = []

    def complain(path, text):
        complaints.append(f"{path.relative_to(root).as_posix()}: {text}")

    src = root / "src"
    for path in sources(src):
        check_library_file(src, path, complain)
    check_loops(src, complain)
    for folder in ("apps/quastel", "tests/dll"):
        for path in sources(root / folder):
            check_outsider(root, folder, path, complain)
    for path in sources(root / "apps/quastel"):
        check_slow_headers(root, path, complain)
    check_listed(root, complain)
    return complaints


def main():
    root = Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).parent.parent).resolve()
    files = len(sources(root / "src"))
    if files == 0:
        sys.exit(f"no sources below {root / 'src'}")
    complaints = check(root)
    for complaint in complaints:
        print(complaint)
    if complaints:
        sys.exit(1)
    print(f"{files} files of src/ keep to the rules")


if __name__ == "__main__":
    main()
