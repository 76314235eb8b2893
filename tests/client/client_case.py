"""What the end-to-end tests of the client have in common."""

import json
import os
import sys
import unittest

import client_harness

EXE = ""
PLACE = None


def setUpModule():
    global PLACE
    PLACE = client_harness.Place(EXE)


def tearDownModule():
    PLACE.remove()


def main():
    """For `TEST_FILE CLIENT [TEST...]`, with WINEPREFIX set."""
    global EXE
    EXE = os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)


def quastel(*arguments, **how):
    return client_harness.run(EXE, *arguments, **how)


def plain(path):
    """A JSON path as people see it."""
    return path[4:] if path.startswith("\\\\?\\") else path


class ClientTest(unittest.TestCase):
    maxDiff = None

    @property
    def place(self):
        return PLACE

    def assert_done(self, result):
        self.assertEqual((result.code, result.err), (0, ""))

    def assert_refused(self, result, code, *texts):
        self.assertEqual((result.code, result.out), (code, ""))
        for text in texts:
            self.assertIn(text, result.err)
        self.assertIn("hint: ", result.err)

    def assert_same_files(self, rows, expected):
        """Names a few differences: unittest's own account of two long lists takes minutes."""
        found = {plain(row["path"]): row["size"] for row in rows}
        self.assertEqual(len(found), len(rows), "a file is listed twice")
        wrong = sorted(found.items() ^ expected.items())
        self.assertEqual(wrong[:6], [], f"{len(wrong)} differences")

    def report(self, command, *arguments, **how):
        result = quastel(command, "--json", *arguments, **how)
        self.assert_done(result)
        return json.loads(result.out)
