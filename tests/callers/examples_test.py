#!/usr/bin/env python3
"""The programs in examples/, on real files.

usage: examples_test.py C_PROGRAM CPP_PROGRAM, with WINEPREFIX set. Both lie beside the DLL."""

import sys
import unittest

from place import Place, run

C_PROGRAM, CPP_PROGRAM = sys.argv[1:]
CONTENT = bytes(range(256)) * 100


class Example:
    program = ""

    def setUp(self):
        self.place = Place()
        self.addCleanup(self.place.remove)
        self.place.put("one/first.bin", CONTENT)
        self.place.put("one/other.bin", CONTENT[::-1])
        self.place.put("two/second.bin", CONTENT)
        self.all = ["one/first.bin", "one/other.bin", "two/second.bin"]

    def output_of(self, *arguments, env={}):
        code, output = run(self.program, self.place.windows_path, *arguments, env=env)
        self.assertEqual(0, code, output)
        return output

    def test_without_the_word_nothing_is_deleted(self):
        output = self.output_of("60")
        self.assertIn("scan: 0\n", output)
        self.assertIn(f"equal: {self.place.windows_path}\\", output)
        self.assertNotIn("clean", output)
        self.assertEqual(self.all, self.place.files())

    def test_with_the_word_one_copy_is_deleted_and_one_stays(self):
        output = self.output_of("60", "--delete")
        self.assertIn("scan: 0\n", output)
        self.assertIn("clean: 0\n", output)
        left = self.place.files()
        self.assertEqual(2, len(left))
        self.assertIn("one/other.bin", left)

    def test_a_scan_that_takes_too_long_is_polled_and_cancelled(self):
        output = self.output_of("0", "--delete", env={"QUASTEL_SCAN_HOLD_MS": "5000"})
        self.assertIn("0 files\n", output)
        self.assertIn("scan: 5\n", output)
        self.assertEqual(self.all, self.place.files())


class InC(Example, unittest.TestCase):
    program = C_PROGRAM


class InCpp(Example, unittest.TestCase):
    program = CPP_PROGRAM


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
