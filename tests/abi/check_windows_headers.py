#!/usr/bin/env python3
"""Compiles every header of the library after a plain <windows.h>, macros and all.

usage: check_windows_headers.py --root ROOT --compiler CXX

The headers above the backend never see windows.h themselves, but a name of theirs that equals one
of its macros would change its meaning in every file that includes both.
"""

import argparse
import subprocess
import sys
from pathlib import Path


def compile_after_windows(compiler, root, headers):
    text = "#include <windows.h>\n" + "".join(f'#include "{h}"\n' for h in headers)
    return subprocess.run(
        [compiler, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Werror",
         f"-I{root / 'src'}", f"-I{root / 'include'}", "-x", "c++", "-"],
        input=text, capture_output=True, text=True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--root", type=Path, required=True)
    parser.add_argument("--compiler", required=True)
    args = parser.parse_args()

    src = args.root / "src"
    headers = sorted(p.relative_to(src).as_posix() for p in src.rglob("*.h"))
    headers = ["quastel_core.h"] + [h for h in headers if not h.startswith("platform/win32/")]
    if len(headers) < 12:
        sys.exit(f"only {len(headers)} headers found below {src}")
    if compile_after_windows(args.compiler, args.root, headers).returncode == 0:
        print(f"{len(headers)} headers compile after <windows.h>")
        return
    for header in headers:
        done = compile_after_windows(args.compiler, args.root, [header])
        if done.returncode != 0:
            print(f"FAIL {header}\n{done.stderr}")
    sys.exit(1)


if __name__ == "__main__":
    main()
