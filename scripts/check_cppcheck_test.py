#!/usr/bin/env python3
"""Shows that check_cppcheck.py finds what is planted, on small trees made for it."""

import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True  # the source tree stays as it is
import check_cppcheck  # noqa: E402

BEYOND_THE_END = "int f() {\n  const int a[2] = {1, 2};\n  return a[2];\n}\n"
FINE = "int f() {\n  const int a[2] = {1, 2};\n  return a[1];\n}\n"


class Cppcheck(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.root = Path(self.folder.name).resolve() / "tree"
        self.work = self.root.parent / "work"

    def tearDown(self):
        self.folder.cleanup()

    def put(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def complaints(self):
        found, self.count = check_cppcheck.check(self.root, self.work)
        return found

    def assert_found(self, identifier):
        found = self.complaints()
        self.assertTrue(any(f"[{identifier}]" in line for line in found), found)

    def test_a_tree_in_order_has_no_complaint(self):
        self.put("src/fs/a.cpp", FINE)
        self.put("apps/quastel/b.cpp", FINE)
        self.assertEqual([], self.complaints())
        self.assertEqual(2, self.count)

    def test_an_index_beyond_the_end_is_found_in_the_library(self):
        self.put("src/fs/a.cpp", BEYOND_THE_END)
        self.assert_found("arrayIndexOutOfBounds")

    def test_an_index_beyond_the_end_is_found_in_the_client(self):
        self.put("src/fs/a.cpp", FINE)
        self.put("apps/quastel/b.cpp", BEYOND_THE_END)
        self.assert_found("arrayIndexOutOfBounds")

    def test_a_header_is_looked_at_through_the_sources_that_include_it(self):
        self.put("src/fs/a.h", "inline " + BEYOND_THE_END)
        self.put("src/fs/a.cpp", '#include "fs/a.h"\nint g() { return f(); }\n')
        self.assert_found("arrayIndexOutOfBounds")

    def test_code_for_windows_alone_is_looked_at(self):
        self.put("src/fs/a.cpp", f"#if defined(_WIN32)\n{BEYOND_THE_END}#endif\n")
        self.assert_found("arrayIndexOutOfBounds")

    def test_a_variable_that_was_never_set_is_found(self):
        self.put("src/fs/a.cpp", "int f() {\n  int a;\n  return a;\n}\n")
        self.assert_found("uninitvar")

    def test_what_is_let_pass_in_one_file_is_found_in_others(self):
        text = "class A {\n public:\n  A(int v) : v_(v) {}\n  int v_;\n};\n"
        self.put("src/platform/error.h", text)
        self.put("src/platform/a.cpp", '#include "platform/error.h"\nA f() { return 1; }\n')
        self.assertEqual([], self.complaints())
        self.put("src/platform/handle.h", text)
        self.put("src/platform/b.cpp", '#include "platform/handle.h"\nA g() { return 1; }\n')
        self.assert_found("noExplicitConstructor")

    def test_what_was_found_once_is_found_again_and_gone_when_mended(self):
        self.put("src/fs/a.cpp", BEYOND_THE_END)
        self.assertEqual(self.complaints(), self.complaints())
        self.put("src/fs/a.cpp", FINE)
        self.assertEqual([], self.complaints())


if __name__ == "__main__":
    unittest.main()
