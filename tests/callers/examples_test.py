#!/usr/bin/env python3
"""The programs in examples/, on real files.

usage: examples_test.py C_PROGRAM CPP_PROGRAM WINDOW_WORKER, with WINEPREFIX set. They lie beside the
DLL."""

import os
import shutil
import sys
import unittest

from place import Place, run

C_PROGRAM, CPP_PROGRAM, WINDOW_WORKER = sys.argv[1:]
CONTENT = bytes(range(256)) * 100
MIB = 1024 * 1024


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


class WindowWorker(unittest.TestCase):
    def setUp(self):
        self.place = Place()
        self.addCleanup(self.place.remove)
        # More rows than a page of the example has, and one with a path that is longer than its buffer.
        self.long = "/".join(["a folder with a long name"] * 12) + "/deep.iso"
        for name in ["old.mkv", "new.mkv", self.long, *(f"many/{i:03}.iso" for i in range(250))]:
            self.put(name, 11 * MIB)
        self.put("small.txt", 12)
        self.all = self.place.files()

    def put(self, name, size):
        os.truncate(self.place.put(name, b""), size)

    def output_of(self, *arguments, env={}):
        code, output = run(WINDOW_WORKER, self.place.windows_path, *arguments, env=env)
        self.assertEqual(0, code, output)
        return output.splitlines()

    @staticmethod
    def rows(lines):
        """The names in the list of files, in its order."""
        return [line.rpartition("\\")[2] for line in lines if line.startswith(" ")]

    def test_it_lists_all_large_files_page_by_page_and_deletes_nothing(self):
        lines = self.output_of("60")
        self.assertIn("scan: done", lines)
        self.assertIn("254 files, 253 of them large", lines)
        found = self.rows(lines)
        self.assertEqual(sorted(["old.mkv", "new.mkv", "deep.iso",
                                 *(f"{i:03}.iso" for i in range(250))]), sorted(found))
        self.assertTrue(any(line.endswith(self.long.replace("/", "\\")) for line in lines))
        self.assertEqual(self.all, self.place.files())

    def test_what_is_ticked_is_deleted_for_good(self):
        lines = self.output_of("60", "old.mkv", "deep.iso", "small.txt")
        self.assertIn(f"2 of 2: 2 deleted, 0 left alone, {22 * MIB} bytes freed", lines)
        self.assertIn("clean: done", lines)
        self.assertEqual(sorted(set(self.all) - {"old.mkv", self.long}), self.place.files())

    def test_what_is_ticked_goes_to_the_recycle_bin(self):
        trash = self.place.folder.with_name(self.place.folder.name + "_trash")
        trash.mkdir()
        self.addCleanup(shutil.rmtree, trash)
        lines = self.output_of("60", "--recycle", "old.mkv", env={"XDG_DATA_HOME": str(trash)})
        self.assertIn("recycle: done", lines)
        self.assertEqual(sorted(set(self.all) - {"old.mkv"}), self.place.files())
        self.assertEqual(["old.mkv"], [path.name for path in trash.rglob("files/*")])

    def test_a_button_that_is_pressed_cancels(self):
        lines = self.output_of("0", "old.mkv", env={"QUASTEL_SCAN_HOLD_MS": "5000"})
        self.assertIn("0 files, 0 of them large", lines)
        self.assertIn("scan: cancelled", lines)
        self.assertEqual(self.all, self.place.files())

    def test_it_explains_itself(self):
        code, output = run(WINDOW_WORKER)
        self.assertEqual(2, code)
        self.assertIn("usage: window_worker FOLDER SECONDS", output)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
