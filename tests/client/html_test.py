#!/usr/bin/env python3
"""The pages of quastel --html from end to end.

Usage: html_test.py CLIENT [TEST...], with WINEPREFIX set. The pages are left in the folder that
QUASTEL_HTML_PAGES names, if it does, for the tests in a browser."""

import json
import os
import re
import shutil
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "html"))

import assemble
import client_case
import client_harness
from client_case import ClientTest, plain, quastel

HOSTILE = "</script><img src=x onerror=alert(1)><!--"
RULES = f"""<?xml version="1.0"?>
<Root>
  <Category DisplayName="Page_JunkFiles_Report_Category_TemporaryFiles">
    <Folder Path="{{UserHome}}\\Temp"/>
    <Category DisplayName="Inner">
      <FolderList StartPath="{{UserHome}}\\Editor" EndPath="Cache"/>
    </Category>
  </Category>
  <Category DisplayName="{HOSTILE.replace('<', '&lt;').replace('>', '&gt;')}">
    <ChildrenList StartPath="{{UserHome}}\\Downloads"/>
  </Category>
</Root>
"""
JUNK = {
    "home/Temp/a&b.tmp": 3000,
    "home/Temp/sub/it's 100%;.log": 500,
    "home/Temp/sub/empty": 0,
    "home/Editor/One/Cache/line\u2028break": 40,
    "home/Downloads/\u05e9\u05dc\u05d5\u05dd.zip": 70000,
    "home/Downloads/set/gpj.\u202eexe": 9000,
}
COPIES = {
    "copies/one/a.txt": b"the same " * 100,
    "copies/two/b.txt": b"the same " * 100,
    "copies/two/c.txt": b"the same " * 100,
    "copies/one/\U0001f3b5.bin": b"another one",
    "copies/one/x.bin": b"another one",
    "copies/one/alone.bin": b"alone",
}


def setUpModule():
    client_case.setUpModule()
    folder = client_case.PLACE.folder
    for name, size in JUNK.items():
        client_harness.sparse_file(os.path.join(folder, name), size, client_harness.FIRST_TIME)
    for name, content in COPIES.items():
        os.makedirs(os.path.dirname(os.path.join(folder, name)), exist_ok=True)
        with open(os.path.join(folder, name), "wb") as file:
            file.write(content)
    for name in ("hollow/a/b", "hollow/a/c/d", "hollow/e", "pages"):
        os.makedirs(os.path.join(folder, name))
    with open(os.path.join(folder, "rules.xml"), "wb") as file:
        file.write(RULES.encode())


def tearDownModule():
    pages = os.environ.get("QUASTEL_HTML_PAGES")
    if pages:
        os.makedirs(pages, exist_ok=True)
        source = os.path.join(client_case.PLACE.folder, "pages")
        for name in os.listdir(source):
            shutil.copy(os.path.join(source, name), os.path.join(pages, name))
    client_case.tearDownModule()


def read(path):
    with open(path, encoding="utf-8", newline="") as file:
        return file.read()


class HtmlTest(ClientTest):
    def host_path(self, name):
        return os.path.join(self.place.folder, name)

    def both(self, name, *arguments):
        """The JSON report and the page of one scan."""
        result = quastel(*arguments, "--json", "--html", self.place.windows_path(f"pages/{name}.html"))
        self.assert_done(result)
        text = read(self.host_path(f"pages/{name}.html"))
        return json.loads(result.out), assemble.report_in(text), text

    @property
    def junk(self):
        return ["junk", "--rules", self.place.windows_path("rules.xml"),
                "--user-home", self.place.windows_path("home"),
                "--system-root", self.place.windows_path("home")]

    def rows_of(self, page):
        """The rows of a page as dictionaries, with the path put together."""
        rows = []
        for cells in page["rows"]:
            row = dict(zip(page["columns"], cells))
            self.assertEqual(len(cells), len(page["columns"]))
            row["path"] = page["folders"][row.pop("folder")] + "\\" + row["name"]
            rows.append(row)
        return rows

    def assert_same_rows(self, report, page, *members):
        expected = [{"path": plain(row["path"]), "name": row["name"],
                     **{member: row[member] for member in members}} for row in report["rows"]]
        found = [{"path": row["path"], "name": row["name"],
                  **{member: row[member] for member in members}} for row in self.rows_of(page)]
        self.assertEqual(len(found), len(expected))
        wrong = [pair for pair in zip(found, expected) if pair[0] != pair[1]]
        self.assertEqual(wrong[:3], [], f"{len(wrong)} differences")

    def assert_same_scan(self, report, page):
        for member in ("library_version", "command", "roots", "options", "start_time", "status",
                       "totals", "performance"):
            self.assertEqual(page[member], report[member], member)


class Rows(HtmlTest):
    def test_large_files_are_those_of_the_json_report(self):
        report, page, _ = self.both("large", "large", self.place.windows_path("tree"))
        self.assertEqual(len(report["rows"]), len(client_harness.CATEGORIES))
        self.assert_same_scan(report, page)
        self.assert_same_rows(report, page, "size", "modified")
        for row, cells in zip(report["rows"], self.rows_of(page)):
            self.assertEqual(page["groups"][cells["group"]]["title"], row["category"])
        self.assertEqual([{**group, "id": None} for group in report["groups"]],
                         [{"id": None, **group} for group in page["groups"]])

    def test_thousands_of_rows_arrive_whole(self):
        report, page, _ = self.both("many", "large", self.place.windows_path("many"))
        self.assertEqual(len(page["rows"]), 2000)
        self.assert_same_rows(report, page, "size", "modified")
        self.assertEqual(len(page["folders"]), 1)

    def test_duplicates_are_those_of_the_json_report(self):
        report, page, _ = self.both("duplicates", "duplicates", self.place.windows_path("copies"))
        self.assertEqual(len(report["rows"]), 5)
        self.assert_same_scan(report, page)
        self.assert_same_rows(report, page, "size", "modified")
        ids = [group["id"] for group in report["groups"]]
        self.assertEqual([ids[row["group"]] for row in self.rows_of(page)],
                         [row["group_id"] for row in report["rows"]])
        self.assertEqual([(group["count"], group["reclaimable"]) for group in page["groups"]],
                         [(group["count"], group["reclaimable"]) for group in report["groups"]])

    def test_junk_is_that_of_the_json_report(self):
        report, page, text = self.both("junk", *self.junk)
        self.assertEqual(len(report["rows"]), len(JUNK))
        self.assert_same_scan(report, page)
        self.assert_same_rows(report, page, "size", "modified")
        ids = [group["id"] for group in report["groups"]]
        for row, cells in zip(report["rows"], self.rows_of(page)):
            self.assertEqual(ids[cells["group"]], row["group_id"])
            self.assertEqual(cells["selected"], int(row["selected"]))
        self.assertEqual([None if group["parent"] is None else ids[group["parent"]]
                          for group in page["groups"]],
                         [group["parent_id"] or None for group in report["groups"]])
        self.assertIn(HOSTILE, [group["name"] for group in page["groups"]])
        self.assertNotIn("<img", text)
        self.assertNotIn("\u2028", text)

    def test_empty_folders_are_those_of_the_json_report(self):
        report, page, _ = self.both("empty", "empty", self.place.windows_path("hollow"))
        self.assertEqual([row["name"] for row in report["rows"]], ["a", "e"])
        self.assert_same_scan(report, page)
        self.assert_same_rows(report, page, "folders")

    def test_a_list_is_that_of_the_json_report(self):
        report, page, _ = self.both("list", "list", self.place.windows_path("tree"))
        self.assertEqual(len(report["rows"]), len(page["rows"]))
        self.assert_same_scan(report, page)
        self.assert_same_rows(report, page, "size", "modified")

    def test_top_shortens_the_page_as_well(self):
        report, page, _ = self.both("top", "large", self.place.windows_path("tree"), "--top", "3")
        self.assertEqual(len(page["rows"]), 3)
        self.assert_same_rows(report, page, "size")

    def test_nothing_found_makes_a_page_too(self):
        _, page, _ = self.both("nothing", "large", self.place.windows_path("hollow"))
        self.assertEqual((page["rows"], page["folders"]), ([], []))

    def test_people_are_told_where_the_page_is(self):
        path = self.place.windows_path("pages/told.html")
        result = quastel("large", self.place.windows_path("tree"), "--html", path)
        self.assert_done(result)
        self.assertTrue(result.out.endswith(f'\nThe page is "{path}".\n'), result.out)
        self.assertIn("holiday.mp4", result.out)


class Page(HtmlTest):
    def test_it_is_the_page_of_the_tree_around_its_report(self):
        _, _, text = self.both("whole", "large", self.place.windows_path("tree"))
        before, after = assemble.pieces()
        self.assertTrue(text.startswith(before))
        self.assertTrue(text.endswith(after))
        self.assertGreater(len(after), 20_000)

    def test_it_refers_to_nothing_elsewhere(self):
        _, _, text = self.both("alone", *self.junk)
        addresses = re.findall(r"[a-z]+://[^\s\"'<>)]*", text)
        # The origin of the library, in the comment that its licence asks for.
        self.assertEqual(addresses, ["https://d3js.org/d3-hierarchy/"])
        self.assertIn("Permission to use, copy, modify, and/or distribute this software", text)
        self.assertEqual(re.findall(r"<(?:link|img|iframe|object|embed|base)\b[^>]*>", text),
                         ['<link rel="icon" href="data:,">'])
        self.assertEqual(text.count("</script>"), 3)

    def test_a_long_name_and_any_letters_will_do(self):
        name = "/".join(["pages"] + ["a folder with a long name"] * 12)
        os.makedirs(self.host_path(name))
        path = self.place.windows_path(name + "/\u00fc \u6587\u4ef6 [1].html")
        self.assert_done(quastel("empty", self.place.windows_path("hollow"), "--html", path))
        self.assertIn("<!doctype html>", read(self.host_path(name + "/\u00fc \u6587\u4ef6 [1].html")))
        shutil.rmtree(self.host_path("pages/a folder with a long name"))

    def test_it_does_not_change_what_the_scan_finds(self):
        path = self.place.windows_path("hollow/a/b/page.html")
        result = quastel("empty", self.place.windows_path("hollow"), "--json", "--html", path)
        self.assert_done(result)
        self.assertEqual([row["name"] for row in json.loads(result.out)["rows"]], ["a", "e"])
        self.assertTrue(os.path.exists(self.host_path("hollow/a/b/page.html")))
        os.unlink(self.host_path("hollow/a/b/page.html"))


class Refusals(HtmlTest):
    def refused(self, name, *texts, code=1):
        before = sorted(os.listdir(self.host_path("pages")))
        result = quastel("large", self.place.windows_path("tree"), "--html", name)
        self.assert_refused(result, code, *texts)
        self.assertEqual(sorted(os.listdir(self.host_path("pages"))), before)

    def test_nothing_is_overwritten(self):
        path = self.host_path("pages/there.html")
        with open(path, "w", encoding="utf-8") as file:
            file.write("dear to somebody")
        self.refused(self.place.windows_path("pages/there.html"), 'there.html" is there already',
                     "nothing is overwritten")
        self.assertEqual(read(path), "dear to somebody")
        os.unlink(path)

    def test_each_wrong_name_has_its_reason(self):
        self.refused(self.place.windows_path("pages"), 'pages" is a folder')
        self.refused(self.place.windows_path("no such folder/page.html"), "the folder of", "does not exist")
        self.refused(self.place.windows_path("pages/a?b.html"), "is no name for a file")
        self.refused("", "the name of the page is empty", code=2)

    def test_a_wrong_root_leaves_no_page(self):
        path = self.place.windows_path("pages/none.html")
        self.assert_refused(quastel("large", self.place.windows_path("gone"), "--html", path), 1,
                            'gone" does not exist')
        self.assertFalse(os.path.exists(self.host_path("pages/none.html")))

    def test_a_clean_makes_no_page(self):
        path = self.place.windows_path("pages/clean.html")
        for arguments in (["large", self.place.windows_path("tree"), "--clean", "--permanent"],
                          ["list", self.place.windows_path("tree"), "--clean", "0", "--permanent"]):
            with self.subTest(arguments[0]):
                self.assert_refused(quastel(*arguments, "--yes", "--html", path), 2,
                                    "what a scan found", "nothing was touched")
        self.assertFalse(os.path.exists(self.host_path("pages/clean.html")))
        for name in client_harness.FILES:
            self.assertTrue(os.path.exists(self.host_path("tree/" + name)), name)

    def test_the_option_is_told_by_the_help(self):
        for command in ("large", "duplicates", "junk", "empty", "list"):
            with self.subTest(command):
                result = quastel(command, "--help")
                self.assert_done(result)
                self.assertIn("--html FILE", result.out)
                self.assertRegex(result.out, rf"\n  quastel {command} .*--html \w+\.html\n")


if __name__ == "__main__":
    client_case.main()
