#!/usr/bin/env python3
"""Compiles the public header alone, and the record layouts, as C11 and as C++20.

usage: check_header.py --root ROOT COMPILER...

Each COMPILER is a C compiler's command; its C++ mode is asked for with -x c++. A clang also proves
the documentation comments. A compiler that is missing is a failure: nothing is passed over.
"""

import argparse
import subprocess
import sys
from pathlib import Path

WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow", "-Werror"]
LANGUAGES = {"C11": ["-x", "c", "-std=c11"], "C++20": ["-x", "c++", "-std=c++20"]}


def compile_source(compiler, root, source, flags):
    command = compiler.split() + flags + WARNINGS + [
        "-fsyntax-only", f"-I{root / 'include'}", str(root / "tests/abi" / source)]
    done = subprocess.run(command, capture_output=True, text=True, stdin=subprocess.DEVNULL)
    return done.returncode == 0, done.stderr


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--root", type=Path, required=True)
    parser.add_argument("compilers", nargs="+")
    args = parser.parse_args()

    failures = 0
    for compiler in args.compilers:
        for language, flags in LANGUAGES.items():
            extra = ["-Wdocumentation"] if "clang" in compiler else []
            for source in ("header_alone.c", "record_layouts.c"):
                good, text = compile_source(compiler, args.root, source, flags + extra)
                print(f"{'ok  ' if good else 'FAIL'} {compiler}: {source} as {language}")
                if not good:
                    failures += 1
                    print(text)
            # Layout assertions that cannot fail would prove nothing.
            good, _ = compile_source(compiler, args.root, "record_layouts.c",
                                     flags + ["-DQUASTEL_ABI_PROVE_THAT_IT_CAN_FAIL"])
            if good:
                failures += 1
                print(f"FAIL {compiler}: a wrong layout compiled as {language}")
    sys.exit(1 if failures else 0)


if __name__ == "__main__":
    main()
