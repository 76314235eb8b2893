#!/usr/bin/env python3
"""Shows that the program in every_export/ calls the whole interface.

usage: check_every_export.py --root ROOT

For each name of the .def file there has to be a call whose expected answer is a success, and for
each of its pointers a call with NULL in that place. Every call has to stand in EXPECT or EXPECT_TEXT,
so that somebody looks at its answer. Comments and texts do not count.
"""

import argparse
import re
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # the source tree stays as it is
from interface_snapshot import COMMENT, Interface  # noqa: E402

PROGRAM = "tests/abi/every_export"
TEXT = re.compile(r'L?"(?:[^"\\]|\\.)*"')
CALL = re.compile(r"\b(qs_\w+)\s*\(")
EXPECTATION = re.compile(r"\b(EXPECT(?:_TEXT)?)\s*\(")


def arguments_at(text, opening):
    """The arguments of the call whose "(" is at `opening`, and where it ends."""
    depth, start, parts = 0, opening + 1, []
    for at in range(opening, len(text)):
        if text[at] in "([{":
            depth += 1
        elif text[at] in ")]}":
            depth -= 1
            if depth == 0:
                parts.append(text[start:at].strip())
                return [part for part in parts if part], at + 1
        elif text[at] == "," and depth == 1:
            parts.append(text[start:at].strip())
            start = at + 1
    raise ValueError("a call without an end")


def expectations(text):
    """(macro, expected, name, arguments) of every call that stands alone in an expectation, and the
    names of those that do not."""
    found, inside = [], set()
    for match in EXPECTATION.finditer(text):
        parts, _ = arguments_at(text, match.end() - 1)
        call = CALL.match(parts[-1])
        if len(parts) != 2 or call is None:
            continue
        arguments, end = arguments_at(parts[1], call.end() - 1)
        if end != len(parts[1]):
            continue
        inside.add(text.index(parts[1], match.end()))
        found.append((match.group(1), parts[0], call.group(1), arguments))
    outside = [m.group(1) for m in CALL.finditer(text) if m.start() not in inside]
    return found, outside


def is_success(result, macro, expected):
    if result == "qs_status":
        return expected == "QS_OK"
    if result == "int32_t":
        return expected == "1"
    if result == "const char*":
        return macro == "EXPECT_TEXT"
    return True  # a number, such as a class


def complaints(header_text, listed, sources):
    interface = Interface(header_text)
    functions = {name: (result, parameters) for name, result, parameters in interface.functions}
    pointers = {name for name, _, _ in interface.callbacks}
    calls = []
    for source in sources:
        found, outside = expectations(COMMENT.sub(" ", TEXT.sub("TEXT", source)))
        calls += found
        for name in outside:
            yield f"an answer of {name} is not looked at"
    if sorted(listed) != sorted(functions):
        yield "the .def file and the header name different functions"
        return
    for name in listed:
        result, parameters = functions[name]
        own = [call for call in calls if call[2] == name]
        for _, _, _, arguments in own:
            if len(arguments) != len(parameters):
                yield f"{name} is called with {len(arguments)} arguments"
                return
        if not any(is_success(result, macro, expected) for macro, expected, _, _ in own):
            yield f"{name} is never called with success"
        for place, (kind, parameter) in enumerate(parameters):
            if kind.endswith("*") or kind in pointers:
                if not any(arguments[place] == "NULL" for _, _, _, arguments in own):
                    yield f"{name} is never called with a null {parameter}"


def names_of_list(path):
    return re.findall(r"^\s*(qs_\w+)\s*$", path.read_text(encoding="utf-8"), re.MULTILINE)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--root", type=Path, required=True)
    args = parser.parse_args()
    listed = names_of_list(args.root / "src/frame/quastel_core.def")
    header = (args.root / "include/quastel_core.h").read_text(encoding="utf-8")
    sources = [path.read_text(encoding="utf-8")
               for path in sorted((args.root / PROGRAM).glob("*.c"))]
    found = list(complaints(header, listed, sources))
    for text in found:
        print(f"FAIL {text}")
    if not listed or found:
        sys.exit(1)
    print(f"ok   {len(listed)} functions are called with success and with every null argument")


if __name__ == "__main__":
    main()
