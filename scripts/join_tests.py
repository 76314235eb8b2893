#!/usr/bin/env python3
"""Writes one CTest file that runs the tests of several build trees, so that one summary closes.

usage: join_tests.py OUTPUT_FOLDER NAME=BUILD_TREE...

Every test is named after its tree, as in "host-asan: fs_tests".
"""

import json
import subprocess
import sys
from pathlib import Path

NAMES_OF_TESTS = {"DEPENDS"}
NAMES_OF_FIXTURES = {"FIXTURES_SETUP", "FIXTURES_CLEANUP", "FIXTURES_REQUIRED"}


def quoted(text):
    return f"[==[{text}]==]"


def tests_of(tree):
    done = subprocess.run(["ctest", "--test-dir", str(tree), "--show-only=json-v1"],
                          capture_output=True, text=True, check=True)
    return json.loads(done.stdout)["tests"]


def lines_of(prefix, test):
    if "command" not in test:
        sys.exit(f"{prefix}: the program of test {test['name']} has not been built")
    name = f"{prefix}: {test['name']}"
    yield f"add_test({quoted(name)} {' '.join(quoted(part) for part in test['command'])})"
    for entry in test.get("properties", []):
        key, value = entry["name"], entry["value"]
        if isinstance(value, bool):
            value = "TRUE" if value else "FALSE"
        values = value if isinstance(value, list) else [str(value)]
        if key in NAMES_OF_TESTS | NAMES_OF_FIXTURES:
            values = [f"{prefix}: {each}" for each in values]
        text = ";".join(each.replace(";", "\\;") for each in values)
        yield f"set_tests_properties({quoted(name)} PROPERTIES {key} {quoted(text)})"


def main():
    output = Path(sys.argv[1])
    lines = []
    for argument in sys.argv[2:]:
        name, tree = argument.split("=", 1)
        tests = tests_of(Path(tree))
        if not tests:
            sys.exit(f"{name}: no tests in {tree}")
        for test in tests:
            lines += lines_of(name, test)
    output.mkdir(parents=True, exist_ok=True)
    (output / "CTestTestfile.cmake").write_text("\n".join(lines) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
