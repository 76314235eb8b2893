#!/usr/bin/env python3
"""quastel hash from end to end.

Usage: hash_test.py CLIENT [TEST...], with WINEPREFIX set."""

import json
import os

import client_case
import client_harness
from client_case import ClientTest, quastel

# Content -> the hash as other tools print it.
KNOWN = {
    "empty": (b"", "02cc5d05"),
    "one.txt": (b"a", "550d7456"),
    "f\u00fcnf \u6587\u4ef6.txt": (b"abc", "32d153ff"),
    "long": (b"Nobody inspects the spammish repetition", "e2293b2f"),
}


def setUpModule():
    client_case.setUpModule()
    for name, (content, _) in KNOWN.items():
        path = os.path.join(client_case.PLACE.folder, "hashes", name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content)


def tearDownModule():
    client_case.tearDownModule()


def swapped(digits):
    return bytes.fromhex(digits)[::-1].hex()


class Hash(ClientTest):
    def path(self, name):
        return self.place.windows_path("hashes/" + name)

    def test_the_least_significant_byte_stands_first_as_in_the_library(self):
        result = quastel("hash", *map(self.path, KNOWN))
        self.assert_done(result)
        self.assertTrue(result.out.startswith(f"055dcc02  {self.path('empty')}\n"))
        self.assertEqual(result.out, "".join(
            f"{swapped(digits)}  {self.path(name)}\n" for name, (_, digits) in KNOWN.items()))

    def test_standard_is_the_order_of_other_tools(self):
        names = list(KNOWN)
        result = quastel("hash", "--standard", *names,
                         cwd=os.path.join(self.place.folder, "hashes"))
        self.assert_done(result)
        self.assertTrue(result.out.startswith("02cc5d05  empty\n"))
        self.assertEqual(result.out, "".join(
            f"{digits}  {name}\n" for name, (_, digits) in KNOWN.items()))

    def test_json_has_both_orders(self):
        report = self.report("hash", *map(self.path, KNOWN))
        self.assertEqual(list(report), ["schema_version", "library_version", "command", "status",
                                        "cancelled", "rows", "totals"])
        self.assertEqual((report["schema_version"], report["command"]), (1, "hash"))
        self.assertEqual((report["status"], report["cancelled"]), ("ok", False))
        self.assertEqual(report["rows"], [
            {"path": self.path(name), "size": len(content), "status": "ok",
             "hash": swapped(digits), "standard": digits, "error": None}
            for name, (content, digits) in KNOWN.items()])
        self.assertEqual(report["totals"], {"item_count": len(KNOWN), "failed": 0})

    def test_what_cannot_be_hashed_is_named_and_the_others_go_on(self):
        arguments = [self.path("gone"), self.path("empty"), self.place.windows_path("hashes"),
                     self.path("*.txt"), self.path("one.txt")]
        result = quastel("hash", *arguments)
        self.assertEqual(result.code, 3)
        self.assertEqual(result.out, f"055dcc02  {self.path('empty')}\n"
                                     f"56740d55  {self.path('one.txt')}\n")
        for text in (f'error: "{self.path("gone")}" does not exist',
                     f'error: "{self.place.windows_path("hashes")}" is a folder, not a file',
                     "wildcards are not expanded"):
            self.assertIn(text, result.err)

        result = quastel("hash", "--json", *arguments)
        self.assertEqual(result.code, 3)
        report = json.loads(result.out)
        self.assertEqual([(row["status"], row["hash"]) for row in report["rows"]], [
            ("failed", None), ("ok", "055dcc02"), ("failed", None), ("failed", None),
            ("ok", "56740d55")])
        self.assertEqual(report["rows"][0]["error"], f'"{self.path("gone")}" does not exist')
        self.assertEqual(report["totals"], {"item_count": 5, "failed": 3})
        self.assertIn("is a folder", result.err)

    def test_a_long_path_is_hashed(self):
        name = "/".join(["a folder with a long name"] * 12) + "/file"
        path = os.path.join(self.place.folder, "hashes", name)
        os.makedirs(os.path.dirname(path))
        with open(path, "wb") as file:
            file.write(b"abc")
        result = quastel("hash", self.path(name))
        self.assert_done(result)
        self.assertEqual(result.out, f"ff53d132  {self.path(name)}\n")

    def test_without_files_it_is_a_usage_error(self):
        self.assert_refused(quastel("hash"), 2, "FILE", "see quastel hash --help")

    def test_ctrl_c_ends_it_within_a_file(self):
        client_harness.sparse_file(os.path.join(self.place.folder, "huge"), 1 << 38)
        huge = self.place.windows_path("huge")
        for arguments in ([], ["--json"]):
            with self.subTest(arguments):
                result, screen, took = client_harness.run_at_terminal(
                    client_case.EXE, "hash", self.path("empty"), huge, self.path("one.txt"),
                    *arguments, columns=100, interrupt_after="huge")
                self.assertEqual(result.code, 5)
                self.assertLess(took, 4)
                self.assertIn("note: cancelled", result.err)
                self.assertIn("055dcc02", result.out)
                self.assertNotIn("one.txt", result.out)
                self.assertRegex(screen.drawings[0],
                                 r"^Hashing  1 file  0 B  [\d.]+ m?s  .:\\huge(\^C)?$")
                if arguments:
                    report = json.loads(result.out)
                    self.assertEqual((report["status"], report["cancelled"]), ("cancelled", True))


if __name__ == "__main__":
    client_case.main()
