#!/usr/bin/env python3
"""The pages that Doxygen makes from the header: they come without a warning, and all of the interface
is in them.

usage: reference_test.py --root ROOT --doxyfile FILE"""

import argparse
import html
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

parser = argparse.ArgumentParser()
parser.add_argument("--root", type=Path, required=True)
parser.add_argument("--doxyfile", type=Path, required=True)
OPTIONS = parser.parse_args()
HEADER = OPTIONS.root / "include/quastel_core.h"


def make(folder, header=HEADER):
    """Runs Doxygen with the settings of the target, into another folder: (code, output)."""
    settings = OPTIONS.doxyfile.read_text(encoding="utf-8")
    settings += f"\nOUTPUT_DIRECTORY = {folder}\nINPUT = {header}\n"
    done = subprocess.run([shutil.which("doxygen") or "doxygen is missing", "-"], input=settings,
                          capture_output=True, text=True)
    return done.returncode, done.stdout + done.stderr


def text_of(page):
    return html.unescape(re.sub(r"<[^>]*>", "", page.read_text(encoding="utf-8")))


def names_of(kind):
    interface = (OPTIONS.root / "tests/abi/interface.txt").read_text(encoding="utf-8")
    patterns = {"function": r"^function .*?\b(qs_\w+)\(", "constant": r"^constant (\w+) ",
                "record": r"^record (\w+) ", "callback": r"^callback .*?\b(qs_\w+)\("}
    return re.findall(patterns[kind], interface, re.MULTILINE)


class Reference(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory(prefix="reference_")
        cls.addClassCleanup(cls.folder.cleanup)
        cls.code, cls.output = make(cls.folder.name)
        cls.pages = Path(cls.folder.name) / "reference"

    def test_it_is_made_without_a_warning(self):
        self.assertEqual((0, ""), (self.code, self.output))

    def test_every_function_has_its_description_with_statuses_and_threads(self):
        functions = names_of("function")
        self.assertEqual(58, len(functions))
        page = (self.pages / "quastel__core_8h.html").read_text(encoding="utf-8")
        # One description for each, from its heading to the next one.
        descriptions = dict(re.findall(
            r'<h2 class="memtitle">.*?</a></span>(\w+)\(?\)?.*?</h2>(.*?)(?=<h2 class="memtitle">|\Z)',
            page, re.DOTALL))
        for name in functions:
            with self.subTest(name):
                self.assertIn(name, descriptions)
                self.assertIn("Threads: any", descriptions[name])
                self.assertIn("Returns", descriptions[name])

    def test_constants_callbacks_and_records_are_there(self):
        page = text_of(self.pages / "quastel__core_8h.html")
        for kind, count in (("constant", 29), ("callback", 2), ("record", 9)):
            names = names_of(kind)
            self.assertEqual(count, len(names), kind)
            for name in names:
                self.assertRegex(page, rf"\b{name}\b")
        for name in names_of("record"):
            self.assertTrue((self.pages / f"struct{name.replace('_', '__')}.html").is_file(), name)

    def test_the_conventions_and_the_rule_documents_are_pages(self):
        conventions = text_of(self.pages / "index.html")
        for words in ("Conventions", "1 done, 0 not done", "A product scan, from start to end",
                      'Both "\\" and "/" are accepted as separators',
                      "\\Ferrowynd\\cache\\duplicate-hashes-v1.bin"):
            self.assertIn(words, conventions)
        self.assertIn("FolderList StartPath EndPath", text_of(self.pages / "rule_documents.html"))


class Breaches(unittest.TestCase):
    """What the reference is there to notice."""

    def assert_refused(self, old, new, complaint):
        text = HEADER.read_text(encoding="utf-8")
        self.assertEqual(1, text.count(old))
        with tempfile.TemporaryDirectory(prefix="reference_") as folder:
            header = Path(folder) / "quastel_core.h"
            header.write_text(text.replace(old, new), encoding="utf-8")
            code, output = make(folder, header)
        self.assertNotEqual(0, code)
        self.assertIn(complaint, output)

    def test_a_parameter_without_a_word(self):
        self.assert_refused(" * \\param path the file; null gives 0\n * \\param size its size",
                            " * \\param size its size", "parameter 'path'")

    def test_a_parameter_that_there_is_not(self):
        self.assert_refused(" * \\param item_ids array", " * \\param ids array", "'ids'")

    def test_a_function_without_documentation(self):
        self.assert_refused("QS_API const char* qs_version(void);",
                            "QS_API const char* qs_version(void);\n\nQS_API int32_t qs_new(int32_t a);",
                            "qs_new")

    def test_a_name_that_the_interface_does_not_have(self):
        self.assert_refused("made by qs_session_create", "made by qs_session_make",
                            "qs_session_make")

    def test_a_member_without_documentation(self):
        self.assert_refused("  /** Rows that the running or last clean was asked to delete. */\n", "",
                            "requested")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
