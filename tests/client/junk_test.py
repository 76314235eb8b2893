#!/usr/bin/env python3
"""quastel junk from end to end.

Usage: junk_test.py CLIENT [TEST...], with WINEPREFIX set."""

import json
import os
import shutil

import client_case
import client_harness
from client_case import ClientTest, plain, quastel

KEY = "Page_JunkFiles_Report_Category_"
NESTED = 1 << 60  # where the ids of the groups below the categories begin

# Relative path -> size, below the folder that plays the system's drive.
FILES = {
    "Users/ann/AppData/Local/Temp/a.tmp": 3000,
    "Users/ann/AppData/Local/Temp/sub/\u6587\u4ef6.log": 500,
    "Users/ann/AppData/Local/Temp/sub/empty": 0,
    "Users/ann/AppData/Local/Editor/Profile 1/Cache/x": 40,
    "Users/ann/AppData/Local/Editor/Profile 1/keep": 41,
    "Users/ann/Downloads/big.zip": 70000,
    "Users/ann/Downloads/set/part.bin": 9000,
    "Users/ann/Documents/letter.txt": 42,
    "Windows/Temp/update.log": 8000,
}
RULES = f"""<?xml version="1.0"?>
<Root>
  <Category DisplayName="{KEY}TemporaryFiles">
    <Folder DisplayName="Temporary files of the user" Path="{{UserHome}}\\AppData\\Local\\Temp"/>
    <Folder Path="{{Root}}Windows\\Temp" Pattern="*.log"/>
    <Category DisplayName="{KEY}EditorCaches">
      <FolderList StartPath="{{UserHome}}\\AppData\\Local\\Editor" EndPath="Cache"/>
    </Category>
  </Category>
  <Category DisplayName="Nothing here">
    <Folder Path="{{UserHome}}\\None"/>
  </Category>
  <Category DisplayName="{KEY}Downloads">
    <ChildrenList StartPath="{{UserHome}}\\Downloads"/>
  </Category>
</Root>
"""
# What the rules find, with the outermost category.
TEMPORARY = [name for name in FILES if "/Temp/" in name or "/Cache/" in name]
DOWNLOADS = [name for name in FILES if "/Downloads/" in name]


def setUpModule():
    client_case.setUpModule()
    place = client_case.PLACE
    for number, (name, size) in enumerate(FILES.items()):
        client_harness.sparse_file(os.path.join(place.folder, "drive", name), size,
                                   client_harness.FIRST_TIME + number)
    write_rules("rules.xml", RULES)


def tearDownModule():
    client_case.tearDownModule()


def write_rules(name, text):
    with open(os.path.join(client_case.PLACE.folder, name), "wb") as file:
        file.write(text if isinstance(text, bytes) else text.encode())


class JunkTest(ClientTest):
    @property
    def where(self):
        return ["--user-home", self.place.windows_path("drive/Users/ann"),
                "--system-root", self.place.windows_path("drive")]

    @property
    def rules(self):
        return ["--rules", self.place.windows_path("rules.xml"), *self.where]

    def expected(self, names):
        return {self.place.windows_path("drive/" + name): FILES[name] for name in names}


class Json(JunkTest):
    def test_rows_are_the_files_below_the_rules(self):
        report = self.report("junk", *self.rules)
        self.assert_same_files(report["rows"], self.expected(TEMPORARY + DOWNLOADS))
        self.assertEqual(list(report), [
            "schema_version", "library_version", "command", "roots", "options", "start_time",
            "status", "cancelled", "rows", "groups", "totals", "performance"])
        self.assertEqual((report["schema_version"], report["command"], report["roots"]),
                         (1, "junk", []))
        self.assertEqual((report["status"], report["cancelled"]), ("ok", False))
        self.assertEqual(report["options"], {
            "sort": "size", "top": None, "category": None,
            "rules": self.place.windows_path("rules.xml"),
            "system_root": self.place.windows_path("drive") + "\\",
            "user_home": self.place.windows_path("drive/Users/ann")})
        self.assertEqual(list(report["performance"]), ["elapsed_us", "load_rules_us", "walk_us"])
        self.assertEqual(sorted(row["item_id"] for row in report["rows"]),
                         list(range(len(report["rows"]))))

    def test_a_row_has_what_a_clean_needs(self):
        rows = {row["name"]: row for row in self.report("junk", *self.rules)["rows"]}
        row = rows["x"]
        name = "Users/ann/AppData/Local/Editor/Profile 1/Cache/x"
        time = client_harness.FIRST_TIME + list(FILES).index(name)
        path = self.place.windows_path("drive/" + name)
        self.assertEqual(row, {
            "item_id": row["item_id"], "group_id": row["group_id"],
            "parent_group_id": row["parent_group_id"], "path": path, "name": "x",
            "location": path[:-2], "category": "Temporary files", "size": 40,
            "modified_ticks": time * 10_000_000 + client_harness.TICKS_TO_1970,
            "modified_ticks_text": str(row["modified_ticks"]),
            "modified": row["modified"], "selected": True, "folder": path[:-2]})
        self.assertEqual(list(row), [
            "item_id", "group_id", "parent_group_id", "path", "name", "location", "category",
            "size", "modified_ticks", "modified_ticks_text", "modified", "selected", "folder"])

    def test_groups_are_a_tree_that_counts_what_is_below(self):
        report = self.report("junk", *self.rules)
        drive = self.place.windows_path("drive")
        local = drive + "\\Users\\ann\\AppData\\Local"
        seen = [(g["id"] if g["id"] < NESTED else g["id"] - NESTED + 100,
                 g["parent_id"] if g["parent_id"] < NESTED else g["parent_id"] - NESTED + 100,
                 g["title"], g["name"], g["path"], g["count"], g["bytes"], g["selected"])
                for g in report["groups"]]
        self.assertEqual(seen, [
            (1, 0, KEY + "TemporaryFiles", "Temporary files", None, 5, 11540, True),
            (100, 1, "Temporary files of the user", "Temporary files of the user",
             local + "\\Temp", 3, 3500, True),
            (101, 1, "Temp", "Temp", drive + "\\Windows\\Temp", 1, 8000, True),
            (102, 1, KEY + "EditorCaches", "Editor caches", None, 1, 40, True),
            (103, 102, "Cache", "Cache", local + "\\Editor\\Profile 1\\Cache", 1, 40, True),
            (2, 0, "Nothing here", "Nothing here", None, 0, 0, False),
            (3, 0, KEY + "Downloads", "Downloads", None, 2, 79000, False),
            (105, 3, "set", "set", drive + "\\Users\\ann\\Downloads\\set", 1, 9000, False)])
        groups = {group["id"]: group for group in report["groups"]}
        for row in report["rows"]:
            self.assertEqual(row["parent_group_id"], groups[row["group_id"]]["parent_id"])

    def test_downloads_are_shown_and_not_selected(self):
        report = self.report("junk", *self.rules)
        unselected = [row for row in report["rows"] if not row["selected"]]
        self.assert_same_files(unselected, self.expected(DOWNLOADS))
        self.assertEqual({row["category"] for row in unselected}, {"Downloads"})
        self.assertEqual(report["totals"], {
            "files_visited": 7, "bytes_visited": 90540, "item_count": 7, "total_bytes": 90540,
            "selected_count": 5, "selected_bytes": 11540, "listed_count": 7,
            "listed_bytes": 90540})

    def test_each_key_sorts(self):
        keys = {
            "size": lambda row: -row["size"],
            "modified": lambda row: -row["modified_ticks"],
            "path": lambda row: row["path"].upper(),
            "name": lambda row: row["name"].upper(),
            "category": lambda row: (row["category"].upper(), -row["size"]),
        }
        for key, function in keys.items():
            with self.subTest(key):
                rows = self.report("junk", *self.rules, "--sort", key)["rows"]
                self.assertEqual(rows, sorted(rows, key=function))

    def test_top_shortens_the_rows_and_nothing_else(self):
        whole = self.report("junk", *self.rules)
        first = self.report("junk", *self.rules, "--top", "3")
        self.assertEqual(first["rows"], whole["rows"][:3])
        self.assertEqual(first["groups"], whole["groups"])
        self.assertEqual((first["totals"].pop("listed_count"), first["totals"].pop("listed_bytes")),
                         (3, 70000 + 9000 + 8000))
        del whole["totals"]["listed_count"], whole["totals"]["listed_bytes"]
        self.assertEqual(first["totals"], whole["totals"])

    def test_a_file_that_two_rules_find_has_two_rows(self):
        write_rules("twice.xml", """<Root><Category DisplayName="one">
            <Folder Path="{UserHome}\\Documents"/><Folder Path="{UserHome}\\Documents"/>
            </Category></Root>""")
        rows = self.report("junk", "--rules", self.place.windows_path("twice.xml"),
                           *self.where)["rows"]
        self.assertEqual([row["name"] for row in rows], ["letter.txt"] * 2)
        self.assertEqual([row["item_id"] for row in rows], [0, 1])

    def test_links_are_neither_found_nor_entered(self):
        folder = os.path.join(self.place.folder, "linked/Users/ann")
        os.makedirs(os.path.join(folder, "real"))
        client_harness.sparse_file(os.path.join(folder, "real/inside"), 7)
        os.symlink(os.path.join(self.place.folder, "drive"), os.path.join(folder, "real/link"))
        write_rules("linked.xml", """<Root><Category DisplayName="one">
            <Folder Path="{UserHome}\\real"/><Folder Path="{UserHome}\\real\\link"/>
            <FolderList StartPath="{UserHome}" EndPath="link"/>
            <FolderList StartPath="{UserHome}" EndPath="link\\Windows"/></Category></Root>""")
        rows = self.report("junk", "--rules", self.place.windows_path("linked.xml"), "--user-home",
                           self.place.windows_path("linked/Users/ann"), "--system-root",
                           self.place.windows_path("linked"))["rows"]
        self.assertEqual([row["name"] for row in rows], ["inside"])


class Category(JunkTest):
    def test_it_restricts_the_list_by_words_and_by_key(self):
        for name in ("Temporary files", "TEMPORARY FILES", KEY.lower() + "temporaryfiles"):
            with self.subTest(name):
                report = self.report("junk", *self.rules, "--category", name)
                self.assert_same_files(report["rows"], self.expected(TEMPORARY))
                self.assertEqual([group["id"] for group in report["groups"] if group["id"] < 9],
                                 [1])
                self.assertEqual(len(report["groups"]), 5)
                self.assertEqual(report["options"]["category"], name)
                self.assertEqual((report["totals"]["item_count"],
                                  report["totals"]["listed_count"]), (7, 5))

    def test_one_without_files_lists_nothing(self):
        report = self.report("junk", *self.rules, "--category", "nothing here")
        self.assertEqual((report["rows"], len(report["groups"])), ([], 1))

    def test_the_table_says_what_was_left_out(self):
        result = quastel("junk", *self.rules, "--category", "downloads")
        self.assert_done(result)
        self.assertNotIn("Temporary", result.out)
        self.assertIn("\nLeft out: 5 files, 11.3 KiB, in other categories.\n", result.out)
        self.assertRegex(result.out, r"\nTotal +2 +77\.1 KiB\nSelected +0 +0 B\n")

    def test_an_unknown_one_is_an_error_that_names_those_there_are(self):
        for name in ("Temporary", "Editor caches", "TemporaryFiles"):
            with self.subTest(name):
                self.assert_refused(
                    quastel("junk", *self.rules, "--category", name), 2,
                    f'rules.xml" has no category "{name}"',
                    "its categories are: Temporary files, Nothing here, Downloads")


class Table(JunkTest):
    def test_people_get_categories_with_their_folders_and_totals(self):
        result = quastel("junk", *self.rules)
        self.assert_done(result)
        drive = self.place.windows_path("drive")
        local = drive + "\\Users\\ann\\AppData\\Local"
        expected = (
            "Category                       Files        Size\n"
            "Temporary files                    5    11.3 KiB\n"
            f"  Temporary files of the user      3     3.4 KiB  {local}\\Temp\n"
            f"  Temp                             1     7.8 KiB  {drive}\\Windows\\Temp\n"
            "  Editor caches                    1        40 B\n"
            f"    Cache                          1        40 B  {local}\\Editor\\Profile 1\\Cache\n"
            "Downloads (not selected)           2    77.1 KiB\n"
            f"  Files by themselves              1    68.4 KiB  {drive}\\Users\\ann\\Downloads\n"
            f"  set                              1     8.8 KiB  {drive}\\Users\\ann\\Downloads\\set\n"
            "Total                              7    88.4 KiB\n"
            "Selected                           5    11.3 KiB\n"
            "\n"
            "Not selected: Downloads. Nothing brings these files back, so that each has to be "
            "picked by hand.\n"
            "Nothing in: Nothing here.\n"
            "\n"
            "7 files seen (88.4 KiB) in ")
        self.assertEqual(result.out[:len(expected)], expected)

    def test_without_a_remark_there_is_one_blank_line(self):
        write_rules("calm.xml", """<Root><Category DisplayName="one">
            <Folder Path="{UserHome}\\Documents"/></Category></Root>""")
        result = quastel("junk", "--rules", self.place.windows_path("calm.xml"), *self.where)
        self.assert_done(result)
        self.assertRegex(result.out, r"\nSelected +1 +42 B\n\n1 file seen ")

    def test_rows_fit_the_terminal(self):
        result, _, _ = client_harness.run_at_terminal(
            client_case.EXE, "junk", *self.rules, "--files", columns=76, out_at_terminal=True)
        self.assertEqual(result.code, 0)
        lines = client_harness.terminal_lines(result.err)
        (file,) = [line for line in lines if line.endswith("\\x")]
        (folder,) = [line for line in lines if line.startswith("  Temporary files of the user")]
        self.assertIn("...", file)
        self.assertLess(len(file), 76)
        self.assertRegex(folder, r"  \S{4,}\.\.\.\S*\\Temp$")
        self.assertLess(len(folder), 76)

    def test_files_are_listed_when_asked_for(self):
        drive = self.place.windows_path("drive")
        result = quastel("junk", *self.rules, "--top", "2")
        self.assert_done(result)
        lines = result.out.split("\n")
        self.assertEqual(lines[0].split(), ["Size", "Modified", "Path"])
        self.assertTrue(lines[1].endswith(f"  {drive}\\Users\\ann\\Downloads\\big.zip"), lines[1])
        self.assertTrue(lines[2].endswith("\\Downloads\\set\\part.bin"), lines[2])
        self.assertIn("\nShowing 2 of 7 files.\n", result.out)
        result = quastel("junk", *self.rules, "--files", "--category", "temporary files")
        self.assert_done(result)
        for name in TEMPORARY:
            self.assertIn(self.place.windows_path("drive/" + name) + "\n", result.out)
        self.assertNotIn("Showing", result.out)

    def test_nothing_found_is_said_kindly(self):
        write_rules("nothing.xml", '<Root><Category DisplayName="a"/></Root>')
        result = quastel("junk", "--rules", self.place.windows_path("nothing.xml"))
        self.assert_done(result)
        self.assertRegex(result.out, r"^No junk here: no rule found a file\.\n0 files seen")


class Documents(JunkTest):
    def refused(self, document, *texts, code=1):
        write_rules("tried.xml", document)
        for arguments in ([], ["--json"]):
            self.assert_refused(
                quastel("junk", "--rules", self.place.windows_path("tried.xml"), *self.where,
                        *arguments), code, *texts)

    def test_a_mistake_is_shown_with_its_place(self):
        self.refused('<Root>\n  <Category DisplayName="a>\n    <Folder DisplayName="x"/>\n</Root>',
                     'tried.xml", line 3, column 27: a quotation mark follows the attribute x',
                     "the value that begins at line 2, column 25 may lack its closing quotation")
        self.refused('<Root>\n <Category DisplayName="a">\n  <Folder path="x"/></Category></Root>',
                     'tried.xml", line 3, column 3: <Folder> has no Path', "did you mean Path?")
        self.refused(b"<Root>\n\xfc</Root>", 'tried.xml", line 2, column 1: the byte FC is not UTF-8')

    def test_files_found_before_a_mistake_are_no_report(self):
        self.refused('<Root><Category DisplayName="a"><Folder Path="{UserHome}"/></Category>\n'
                     "<Category/></Root>", "line 2, column 1: <Category> has no DisplayName")

    def test_a_document_that_is_not_there_is_named(self):
        for name in ("none.xml", "none/none.xml", "*.xml"):
            with self.subTest(name):
                path = self.place.windows_path(name)
                self.assert_refused(quastel("junk", "--rules", path), 1,
                                    f'"{path}" does not exist')
        self.assert_refused(quastel("junk", "--rules", self.place.windows_path("drive")), 1,
                            'drive" is a folder, not a rule document')

    def test_a_relative_document_counts_from_the_current_folder(self):
        report = self.report("junk", "--rules", "..\\rules.xml", *self.where,
                             cwd=os.path.join(self.place.folder, "drive"))
        self.assertEqual(len(report["rows"]), 7)
        self.assertTrue(report["options"]["rules"].endswith("\\rules.xml"))
        self.assertNotIn("..", report["options"]["rules"])

    def test_the_standard_one_lies_beside_the_program(self):
        report = self.report("junk", *self.where)
        self.assertTrue(report["options"]["rules"].endswith("\\bin\\rules\\standard.xml"))
        titles = [g["title"] for g in report["groups"] if g["parent_id"] == 0]
        self.assertIn(KEY + "TemporaryFiles", titles)
        self.assertEqual(titles[-1], KEY + "Downloads")
        found = [name for name in FILES if "/Temp/" in name or "/Downloads/" in name]
        self.assert_same_files(report["rows"], self.expected(found))

    def test_or_where_an_installation_puts_it(self):
        binaries = os.path.join(self.place.folder, "installed/bin")
        os.makedirs(binaries)
        source = os.path.dirname(client_case.EXE)
        for name in ("quastel.exe", "quastel_core.dll"):
            shutil.copy(os.path.join(source, name), binaries)
        exe = os.path.join(binaries, "quastel.exe")
        result = client_harness.run(exe, "junk", *self.where)
        self.assert_refused(result, 1, "there is no standard rule document",
                            "\\installed\\bin\\rules\\standard.xml",
                            "\\installed\\share\\quastel\\rules\\standard.xml", "--rules FILE")
        write_rules("installed/standard.xml", RULES)
        rules = os.path.join(self.place.folder, "installed/share/quastel/rules")
        os.makedirs(rules)
        os.rename(os.path.join(self.place.folder, "installed/standard.xml"),
                  os.path.join(rules, "standard.xml"))
        result = client_harness.run(exe, "junk", "--json", *self.where)
        self.assert_done(result)
        self.assertEqual(len(json.loads(result.out)["rows"]), 7)


class Folders(JunkTest):
    def test_the_profile_comes_from_the_environment(self):
        home = self.place.windows_path("drive/Users/ann")
        exe = "Z:" + client_case.EXE.replace("/", "\\")
        # Wine sets the variable for the first program of a run, so that a second one is started.
        command = (f"set USERPROFILE={home}&{exe} junk --json --rules "
                   + self.place.windows_path("rules.xml"))
        result = client_harness.run("cmd", "/c", command)
        self.assert_done(result)
        report = json.loads(result.out)
        self.assertEqual(report["options"]["user_home"], home)
        self.assertEqual(report["options"]["system_root"], "C:\\")
        paths = {plain(row["path"]) for row in report["rows"]}
        in_profile = [name for name in TEMPORARY + DOWNLOADS if name.startswith("Users/")]
        self.assertLessEqual(set(self.expected(in_profile)), paths)

    def test_an_unknown_profile_is_an_error(self):
        exe = "Z:" + client_case.EXE.replace("/", "\\")
        result = client_harness.run("cmd", "/c", f"set USERPROFILE=&{exe} junk")
        self.assert_refused(result, 1, "USERPROFILE is not set",
                            "it is not known what {UserHome} stands for", "--user-home DIR")

    def test_a_folder_that_is_not_there_is_an_error(self):
        missing = self.place.windows_path("none")
        self.assert_refused(quastel("junk", "--user-home", missing), 1,
                            f'"{missing}" does not exist')
        self.assert_refused(quastel("junk", "--system-root", missing), 1,
                            f'"{missing}" does not exist')


class Usage(JunkTest):
    def test_mistakes_are_named_with_a_hint(self):
        for arguments, texts in (
                (["jnk"], ["did you mean junk?"]),
                (["junk", self.place.windows_path("drive")], ["see quastel junk --help"]),
                (["junk", "--no-protect"], ['no option "--no-protect"']),
                (["junk", "--categories", "x"], ["did you mean --category?"]),
                (["junk", "--top", "-1"], ["-1 is not a number of files"]),
                (["junk", "--sort", "count"], ["count"])):
            with self.subTest(arguments):
                self.assert_refused(quastel(*arguments), 2, *texts)


class Terminal(JunkTest):
    def test_ctrl_c_keeps_the_report_and_says_so(self):
        result, _, took = client_harness.run_at_terminal(
            client_case.EXE, "junk", *self.rules, "--json",
            env={"QUASTEL_SCAN_HOLD_MS": "5000"}, interrupt_after="Scanning")
        self.assertEqual(result.code, 5)
        self.assertLess(took, 4)
        report = json.loads(result.out)
        self.assertEqual((report["status"], report["cancelled"]), ("cancelled", True))
        self.assertEqual((report["rows"], report["groups"]), ([], []))
        self.assertIn("note: cancelled", result.err)


if __name__ == "__main__":
    client_case.main()
