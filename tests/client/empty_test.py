#!/usr/bin/env python3
"""quastel empty from end to end.

Usage: empty_test.py CLIENT [TEST...], with WINEPREFIX set."""

import json
import os
import shutil

import client_case
import client_harness
from client_case import ClientTest, plain, quastel, setUpModule, tearDownModule

FOLDERS = ["a/b/c", "a/d", "full/none", "Downloads/old/older", "downloads 2", "\u6587\u4ef6/\u00fc"]
FILES = ["full/sub/file.txt", "other/.hidden"]  # with three more folders, and the root
# The outermost of those without files, with the number of folders in each.
EMPTY = {"a": 4, "full\\none": 1, "Downloads\\old": 2, "downloads 2": 1, "\u6587\u4ef6": 2}


class EmptyTest(ClientTest):
    def setUp(self):
        self.root = self.place.windows_path("empty")
        self.folder = os.path.join(self.place.folder, "empty")
        for name in FOLDERS:
            os.makedirs(os.path.join(self.folder, name), exist_ok=True)
        for name in FILES:
            client_harness.sparse_file(os.path.join(self.folder, name), 0)

    def relative(self, report):
        return {plain(row["path"])[len(self.root) + 1:]: row["folders"] for row in report["rows"]}


class Json(EmptyTest):
    def test_rows_are_the_outermost_folders_without_files(self):
        report = self.report("empty", self.root)
        self.assertEqual(self.relative(report), EMPTY)
        self.assertEqual(list(report), [
            "schema_version", "library_version", "command", "roots", "options", "start_time",
            "status", "cancelled", "rows", "totals", "performance"])
        self.assertEqual((report["schema_version"], report["command"], report["roots"]),
                         (1, "empty", [self.root]))
        self.assertEqual((report["status"], report["cancelled"]), ("ok", False))
        options = report["options"]
        self.assertTrue(options.pop("user_home").lower().startswith("c:\\users\\"))
        self.assertEqual(options, {"top": None, "protect": True, "system_root": "C:\\"})
        self.assertEqual(report["totals"], {
            "folders_visited": 15, "item_count": 5, "folder_count": sum(EMPTY.values())})
        self.assertEqual(list(report["performance"]), ["elapsed_us"])
        for number, row in enumerate(report["rows"]):
            self.assertEqual(list(row), ["item_id", "path", "name", "location", "folders"])
            self.assertEqual(row["item_id"], number)
            self.assertEqual(row["location"] + "\\" + row["name"], row["path"])

    def test_rows_are_in_the_order_of_their_paths(self):
        rows = self.report("empty", self.root)["rows"]
        self.assertEqual(rows, sorted(rows, key=lambda row: plain(row["path"]).upper()))

    def test_top_shortens_the_list_and_nothing_else(self):
        whole = self.report("empty", self.root)
        first = self.report("empty", self.root, "--top", "2")
        self.assertEqual(first["rows"], whole["rows"][:2])
        self.assertEqual(first["totals"], whole["totals"])
        self.assertEqual(first["options"]["top"], 2)

    def test_a_root_is_never_among_them(self):
        report = self.report("empty", self.root + "\\a", self.root + "\\a\\b")
        self.assertEqual(self.relative(report), {"a\\b\\c": 1, "a\\d": 1})
        report = self.report("empty", self.root + "\\a\\b\\c")
        self.assertEqual(report["rows"], [])

    def test_a_folder_that_its_path_does_not_lead_to_is_not_looked_into(self):
        for name in ("odd/x./y", "odd/x", "odd/z"):
            os.makedirs(os.path.join(self.folder, name))
        client_harness.sparse_file(os.path.join(self.folder, "odd/x./y/file"), 1)
        rows = self.report("empty", self.root)["rows"]
        self.assertEqual([plain(row["path"])[len(self.root) + 1:] for row in rows
                          if "odd" in row["path"]], ["odd\\x", "odd\\z"])
        shutil.rmtree(os.path.join(self.folder, "odd"))

    def test_a_long_path_keeps_the_prefix_that_makes_it_usable(self):
        name = "/".join(["a folder with a long name"] * 12)
        os.makedirs(os.path.join(self.folder, "deep", name, "end"))
        client_harness.sparse_file(os.path.join(self.folder, "deep", name, "file"), 1)
        rows = self.report("empty", self.root + "\\deep")["rows"]
        self.assertEqual([row["path"] for row in rows],
                         ["\\\\?\\" + self.root + "\\deep\\" + name.replace("/", "\\") + "\\end"])
        self.assertEqual(rows[0]["name"], "end")
        shutil.rmtree(os.path.join(self.folder, "deep"))


class Links(EmptyTest):
    def test_a_link_to_a_folder_is_neither_entered_nor_content(self):
        folder = os.path.join(self.place.folder, "linked/holder")
        os.makedirs(folder)
        os.symlink(os.path.join(self.place.folder, "outside"), os.path.join(folder, "link"))
        report = self.report("empty", self.place.windows_path("linked"))
        self.assertEqual([row["name"] for row in report["rows"]], ["holder"])
        self.assertEqual(report["rows"][0]["folders"], 1)

    def test_a_link_to_a_file_is_content(self):
        folder = os.path.join(self.place.folder, "linked file/holder")
        os.makedirs(folder)
        os.symlink(os.path.join(self.place.folder, "outside/linked.iso"),
                   os.path.join(folder, "link"))
        self.assertEqual(self.report("empty", self.place.windows_path("linked file"))["rows"], [])


class Protection(EmptyTest):
    def test_protected_folders_and_what_holds_them_stay_out(self):
        name = os.path.basename(self.place.system_open)
        protected = os.path.join(self.place.system_protected, "none")
        opened = os.path.join(self.place.system_open, "none")
        os.makedirs(protected)
        os.makedirs(opened)
        paths = {row["path"] for row in self.report("empty", "C:\\")["rows"]}
        self.assertIn(f"C:\\{name}\\none", paths)
        guarded = ("c:\\windows", "c:\\program files", "c:\\programdata")
        self.assertEqual([path for path in paths if path.lower().startswith(guarded)], [])

        root = f"C:\\ProgramData\\{name}"
        result = quastel("empty", root)
        self.assertEqual(result.code, 0)
        self.assertIn(f'"{root}" is protected: nothing below it is scanned; use --no-protect',
                      result.err)
        self.assertIn("No empty folders here", result.out)
        report = self.report("empty", root, "--no-protect")
        self.assertEqual([row["path"] for row in report["rows"]], [root + "\\none"])
        self.assertEqual((report["options"]["protect"], report["options"]["user_home"]),
                         (False, None))


class Table(EmptyTest):
    def test_people_get_the_paths_and_totals(self):
        result = quastel("empty", self.root + "\\a", self.root + "\\full")
        self.assert_done(result)
        self.assertRegex(result.out, "^  Folders  Path\n" + "".join(
            f"        {count}  {self.root}\\{name}\n".replace("\\", "\\\\")
            for name, count in (("a\\b", 2), ("a\\d", 1), ("full\\none", 1))) +
            "\n3 empty folders, 4 folders with those that lie in them\\.\n\n"
            r"7 folders seen in \d+ ms\.\n$")

    def test_top_says_how_much_it_left_out(self):
        result = quastel("empty", self.root, "--top", "1")
        self.assert_done(result)
        self.assertIn("\nShowing 1 of 5 rows.\n", result.out)

    def test_nothing_found_is_said_kindly(self):
        result = quastel("empty", self.root + "\\full\\sub")
        self.assert_done(result)
        self.assertRegex(result.out, r"^No empty folders here: .*\n1 folder seen in ")


class Usage(EmptyTest):
    def test_mistakes_are_named_with_a_hint(self):
        for arguments, texts in (
                (["empti", self.root], ["did you mean empty?"]),
                (["empty"], ["ROOT", "see quastel empty --help"]),
                (["empty", self.root, "--sort", "path"], ['no option "--sort"']),
                (["empty", self.root, "--top", "all"], ["all is not a number of rows"])):
            with self.subTest(arguments):
                self.assert_refused(quastel(*arguments), 2, *texts)

    def test_a_root_that_is_no_folder_is_an_error(self):
        self.assert_refused(quastel("empty", self.root, self.root + "\\full\\sub\\file.txt"), 1,
                            'file.txt" is a file, not a folder')


class Terminal(EmptyTest):
    def test_ctrl_c_keeps_the_report_and_says_so(self):
        # So many that listing them does not end by itself before the key is pressed.
        folder = os.path.join(self.place.folder, "wide")
        for number in range(12000):
            os.makedirs(os.path.join(folder, f"{number // 100:03}", f"{number:05}"))
        result, _, took = client_harness.run_at_terminal(
            client_case.EXE, "empty", self.place.windows_path("wide"), "--json", "--no-protect",
            interrupt_after="Scanning")
        self.assertEqual(result.code, 5)
        self.assertLess(took, 4)
        report = json.loads(result.out)
        self.assertEqual((report["status"], report["cancelled"]), ("cancelled", True))
        self.assertIn("note: cancelled", result.err)
        self.assertRegex(result.err, r"Scanning  [\d,]+ folders?  \d+ ms")


if __name__ == "__main__":
    client_case.main()
