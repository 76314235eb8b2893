#!/usr/bin/env python3
"""Writes down the binary interface that the public header describes, one fact a line.

usage: interface_snapshot.py --root ROOT [--compiler CC] [--accept]

Prints the snapshot, or with --accept stores it as tests/abi/interface.txt and prints its digest.
Names, types and order come from the header's text; sizes, offsets and values come from the compiler,
which only compiles: the numbers are read from its assembly, so that a cross compiler will do.
"""

import argparse
import hashlib
import re
import subprocess
import sys
from pathlib import Path

SNAPSHOT = "tests/abi/interface.txt"
DEFAULT_COMPILER = "x86_64-w64-mingw32-gcc-posix"

TITLE = """\
# The binary interface of quastel_core, as include/quastel_core.h describes it to a compiler for x64.
# Made by tests/abi/interface_snapshot.py; docs/abi.md says how a wanted change is accepted.
"""

COMMENT = re.compile(r"/\*.*?\*/|//[^\n]*", re.DOTALL)
CONSTANT = re.compile(r"^#define[ \t]+(QS_\w+)[ \t]+\S[^\n]*$", re.MULTILINE)
RECORD = re.compile(r"typedef\s+struct\s+(\w+)\s*\{(.*?)\}\s*(\w+)\s*;", re.DOTALL)
CALLBACK = re.compile(r"typedef\s+([\w\s*]+?)\(\s*\*\s*(\w+)\s*\)\s*\(([^)]*)\)\s*;")
HANDLE = re.compile(r"typedef\s+struct\s+(\w+)\s+(\w+)\s*;")
ALIAS = re.compile(r"typedef\s+(\w+)\s+(\w+)\s*;")
FUNCTION = re.compile(r"^QS_API\s+([\w\s*]+?)(\w+)\s*\(([^)]*)\)\s*;", re.MULTILINE)
FIELD = re.compile(r"^(.*?)(\w+)(\[\d+\])?$", re.DOTALL)
# What may be left of the header once all the above are taken out of it.
LEFTOVER = re.compile(r'extern\s+"C"\s*\{|^\}$|^\s*#[^\n]*$', re.MULTILINE)
# Empty, or chosen by the compiler's own settings: no part of the binary interface.
NO_CONSTANTS = {"QS_API", "QUASTEL_CORE_H_"}


def spaced(text):
    """One spelling for one type: single spaces, and stars beside what they belong to."""
    text = re.sub(r"\s+", " ", text).strip()
    return re.sub(r"\s*\*", "*", text)


def declaration(text):
    """"const qs_char *path" and its like, as (type, name)."""
    kind, name, array = FIELD.match(spaced(text)).groups()
    return spaced(kind) + (array or ""), name


def parameters(text):
    text = spaced(text)
    if text in ("", "void"):
        return []
    return [declaration(part) for part in text.split(",")]


class Interface:
    """What the header declares, in its order."""

    def __init__(self, header_text):
        text = COMMENT.sub(" ", header_text)
        text = re.sub(r"\\\n", " ", text)
        macros = set(re.findall(r"^[ \t]*#[ \t]*define[ \t]+(\w+)", text, re.MULTILINE))

        def take(pattern):
            nonlocal text
            found = list(pattern.finditer(text))
            text = pattern.sub("", text)
            return found

        self.constants = [m.group(1) for m in take(CONSTANT) if m.group(1) not in NO_CONSTANTS]
        unknown = sorted(macros - set(self.constants) - NO_CONSTANTS)
        if unknown:
            sys.exit(f"the header defines macros that are no constants: {unknown}")
        self.records = []
        for match in take(RECORD):
            if match.group(1) != match.group(3):
                sys.exit(f"the record {match.group(1)} is also called {match.group(3)}")
            members = [part for part in match.group(2).split(";") if part.strip()]
            self.records.append((match.group(3), [declaration(part) for part in members]))
        self.callbacks = [(m.group(2), spaced(m.group(1)), parameters(m.group(3)))
                          for m in take(CALLBACK)]
        self.handles = [m.group(2) for m in take(HANDLE)]
        self.aliases = {}
        for match in take(ALIAS):
            self.aliases.setdefault(match.group(2), []).append(match.group(1))
        self.functions = [(m.group(2), spaced(m.group(1)), parameters(m.group(3)))
                          for m in take(FUNCTION)]
        rest = LEFTOVER.sub("", text).strip()
        if rest:
            sys.exit(f"the header has something that is no known part of an interface:\n{rest}")

    def questions(self):
        """C expressions whose values the snapshot needs."""
        for name in self.aliases:
            yield f"sizeof({name})"
        for name in self.constants:
            yield f"(unsigned long long)({name})"
            yield f"sizeof({name})"
        for record, members in self.records:
            yield f"sizeof({record})"
            yield f"_Alignof({record})"
            for _, member in members:
                yield f"offsetof({record}, {member})"
                yield f"sizeof((({record}*)0)->{member})"


def measured(header, compiler, questions):
    """The values of constant expressions, by compiling a table of them."""
    # In halves with a bit above them, so that no entry is 0, which has other directives.
    rows = "".join(f"  (1ULL << 32) | ((unsigned long long)({q}) & 0xFFFFFFFFu),\n"
                   f"  (1ULL << 32) | ((unsigned long long)({q}) >> 32),\n" for q in questions)
    source = (f'#include "{header}"\n#include <stddef.h>\n'
              f"const unsigned long long quastel_table[] = {{\n{rows}}};\n")
    done = subprocess.run(
        compiler.split() + ["-x", "c", "-std=c11", "-Werror", "-O0", "-S", "-o", "-", "-"],
        input=source, capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"{compiler} does not compile the header:\n{done.stderr}")
    entries = [int(m) for m in re.findall(r"^\s*\.(?:quad|xword)\s+(\d+)", done.stdout, re.MULTILINE)]
    if len(entries) != 2 * len(questions):
        sys.exit(f"{compiler} gave {len(entries)} numbers for {2 * len(questions)} questions")
    low = [entry & 0xFFFFFFFF for entry in entries]
    return dict(zip(questions, (low[i] | low[i + 1] << 32 for i in range(0, len(low), 2))))


def signature(result, name, arguments):
    inner = ", ".join(f"{kind} {argument}" for kind, argument in arguments) or "void"
    return f"{result} {name}({inner})"


def snapshot(header, compiler=DEFAULT_COMPILER):
    interface = Interface(header.read_text(encoding="utf-8"))
    value = measured(header.resolve(), compiler, list(dict.fromkeys(interface.questions())))
    lines = [TITLE]
    for name, meanings in interface.aliases.items():
        lines.append(f"type {name} is {' or '.join(meanings)} of {value[f'sizeof({name})']} bytes")
    lines.append("")
    for name in interface.constants:
        number, size = value[f"(unsigned long long)({name})"], value[f"sizeof({name})"]
        lines.append(f"constant {name} = {number} of {size} bytes")
    lines.append("")
    lines += [f"handle {name}" for name in interface.handles]
    lines += [f"callback {signature(result, name, arguments)}"
              for name, result, arguments in interface.callbacks]
    for record, members in interface.records:
        lines.append("")
        lines.append(f"record {record} of {value[f'sizeof({record})']} bytes, "
                     f"aligned to {value[f'_Alignof({record})']}")
        for kind, member in members:
            offset = value[f"offsetof({record}, {member})"]
            size = value[f"sizeof((({record}*)0)->{member})"]
            lines.append(f"  at {offset}: {kind} {member} of {size} bytes")
    lines.append("")
    lines += [f"function {signature(result, name, arguments)}"
              for name, result, arguments in interface.functions]
    return "\n".join(lines) + "\n"


def digest(text):
    return hashlib.sha256(text.encode("utf-8")).hexdigest()[:16]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--root", type=Path, required=True)
    parser.add_argument("--compiler", default=DEFAULT_COMPILER)
    parser.add_argument("--accept", action="store_true")
    args = parser.parse_args()
    text = snapshot(args.root / "include/quastel_core.h", args.compiler)
    if not args.accept:
        print(text, end="")
        return
    (args.root / SNAPSHOT).write_text(text, encoding="utf-8")
    print(f"stored; its digest is {digest(text)}")


if __name__ == "__main__":
    main()
