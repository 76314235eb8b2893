#!/usr/bin/env python3
"""Shows that check_words.py finds each kind of word, on small trees made for it."""

import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True  # the source tree stays as it is
import check_words  # noqa: E402


class Words(unittest.TestCase):
    def complaints(self, files):
        with tempfile.TemporaryDirectory() as folder:
            root = Path(folder).resolve()
            for name, data in files.items():
                path = root / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_bytes(data if isinstance(data, bytes) else data.encode())
            found, count = check_words.check(root)
            self.files_read = count
            return found

    def assert_found(self, *pieces):
        text = "".join(pieces)
        self.assertEqual(1, len(self.complaints({"src/a.cpp": f"int a;\n// {text}.\n"})), text)

    def assert_fine(self, text):
        self.assertEqual([], self.complaints({"src/a.cpp": text}))
        self.assertEqual(1, self.files_read)

    def test_documents_that_are_not_here_are_found(self):
        self.assert_found("see pla", "n.m", "d")
        self.assert_found("[the plan](../papers/pla", "n.m", "d)")

    def test_documents_that_are_here_are_fine(self):
        self.assertEqual([], self.complaints({"docs/rules.m" "d": "fine\n",
                                              "src/a.cpp": "// see docs/rules.m" "d\n"}))
        self.assertEqual(2, self.files_read)

    def test_conversations_are_found(self):
        self.assert_found("for iss", "ue #12")
        self.assert_found("fix", "es #7")

    def test_folders_of_one_machine_are_found(self):
        for folder in ("wo" "rk/main", "tm" "p/x", "ro" "ot/.cache", "ho" "me/me"):
            self.assert_found("in /", folder)
            self.assert_found('open("/', folder, '")')
            self.assert_found("PREFIX=/", folder)
            self.assert_found("-I /", folder)

    def test_paths_that_are_nobody_s_are_fine(self):
        self.assert_fine("C:/wo" "rk/here and build/tm" "p/x and </ro" "ot>\n")
        self.assert_fine("a/wo" "rk/b, //ho" "me/share and ./tm" "p\n")

    def test_hosts_of_packages_are_found(self):
        self.assert_found("https://py", "pi.org/simple")
        self.assert_found("https://regis", "try.npm", "js.org")
        self.assert_found("https://proxy.go", "lang.org")
        self.assert_found("deb.deb", "ian.org")

    def test_notes_about_work_that_is_left_are_found(self):
        self.assert_found("TO", "DO later")
        self.assert_found("FIX", "ME")
        self.assert_fine("to" "do.txt\n")

    def test_words_that_belong_to_the_system_are_fine(self):
        self.assert_fine("// A session scans a folder. \\brief one sentence. The issues of 2 names.\n")

    def test_names_of_files_are_searched(self):
        self.assertEqual(1, len(self.complaints({"docs/TO" "DO": "fine\n"})))

    def test_bytes_that_are_no_text_are_searched_all_the_same(self):
        self.assertEqual(1, len(self.complaints({"a.bin": b"\xff\xfe\n/tm" b"p/x\n"})))

    def test_what_is_built_and_what_a_machine_made_is_left_out(self):
        word = "FIX" "ME"
        self.assertEqual([], self.complaints({"build/a": word, ".git/b": word,
                                              "tests/fuzz/corpus/c/d": word, "kept": ""}))
        self.assertEqual(1, self.files_read)

    def test_the_check_and_its_test_keep_to_it_themselves(self):
        here = Path(__file__).resolve().parent
        for name in ("check_words.py", "check_words_test.py"):
            self.assertEqual([], self.complaints({name: (here / name).read_bytes()}))


if __name__ == "__main__":
    unittest.main()
