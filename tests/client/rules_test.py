#!/usr/bin/env python3
"""quastel rules check from end to end.

Usage: rules_test.py CLIENT [TEST...], with WINEPREFIX set."""

import glob
import json
import os

import client_case
import client_harness
from client_case import ClientTest, quastel, setUpModule, tearDownModule

HERE = os.path.dirname(os.path.abspath(__file__))
SEEDS = os.path.join(HERE, "../fuzz/corpus/rule_document")
SHIPPED = os.path.join(HERE, "../../rules")

FILES = {
    "Users/ann/AppData/Local/Temp/a.tmp": 3000,
    "Users/ann/AppData/Local/Temp/sub/b.log": 500,
    "Users/ann/Editor/one/Cache/x": 40,
    "Users/ann/Editor/two/Cache/y": 50,
    "Users/ann/Editor/two/Cache/z": 60,
    "Users/ann/Editor/three/keep": 70,
    "Users/ann/Downloads/big.zip": 7000,
    "Users/ann/Downloads/set/part.bin": 900,
}
GOOD = """<Root>
  <Category DisplayName="Page_JunkFiles_Report_Category_TemporaryFiles">
    <Folder DisplayName="Logs" Path="{UserHome}\\AppData\\Local\\Temp" Pattern="*.log"/>
    <FolderList StartPath="{UserHome}\\Editor" EndPath="Cache" ContainsPath="tw"/>
    <Category DisplayName="Deeper">
      <FolderList StartPath="{UserHome}\\Editor" EndPath="None" DisplayName="Nowhere"/>
      <Folder Path="{Root}Windows\\Temp"/>
    </Category>
  </Category>
  <Category DisplayName="Picked">
    <ChildrenList StartPath="{UserHome}\\Downloads"/>
  </Category>
</Root>
"""


class RulesTest(ClientTest):
    def setUp(self):
        self.drive = self.place.windows_path("drive")
        self.home = self.drive + "\\Users\\ann"
        self.where = ["--user-home", self.home, "--system-root", self.drive]
        for name, size in FILES.items():
            client_harness.sparse_file(os.path.join(self.place.folder, "drive", name), size)

    def check(self, document, *arguments):
        with open(os.path.join(self.place.folder, "rules.xml"), "wb") as file:
            file.write(document if isinstance(document, bytes) else document.encode())
        self.path = self.place.windows_path("rules.xml")
        return quastel("rules", "check", self.path, *self.where, *arguments)


class Good(RulesTest):
    def test_json_tells_where_each_rule_leads_and_what_is_there(self):
        result = self.check(GOOD, "--json")
        self.assert_done(result)
        report = json.loads(result.out)
        self.assertEqual(list(report), [
            "schema_version", "library_version", "command", "document", "valid", "problem",
            "warnings", "system_root", "user_home", "status", "cancelled", "rules", "totals"])
        self.assertEqual((report["command"], report["document"], report["valid"]),
                         ("rules check", self.path, True))
        self.assertEqual((report["problem"], report["warnings"]), (None, []))
        self.assertEqual((report["system_root"], report["user_home"]),
                         (self.drive + "\\", self.home))
        self.assertEqual((report["status"], report["cancelled"]), ("ok", False))
        self.assertEqual(report["totals"],
                         {"rules": 5, "existing": 4, "places": 4, "files": 5, "bytes": 8510})
        rules = report["rules"]
        self.assertEqual(list(rules[0]), [
            "line", "column", "element", "categories", "name", "path", "pattern", "end_path",
            "contains_path", "exists", "places", "files", "bytes"])
        self.assertEqual(
            [(r["line"], r["column"], r["element"], r["name"], r["path"], r["exists"], r["files"],
              r["bytes"]) for r in rules],
            [(3, 5, "Folder", "Logs", self.home + "\\AppData\\Local\\Temp", True, 1, 500),
             (4, 5, "FolderList", "Cache", self.home + "\\Editor", True, 2, 110),
             (6, 7, "FolderList", "Nowhere", self.home + "\\Editor", True, 0, 0),
             (7, 7, "Folder", "Temp", self.drive + "\\Windows\\Temp", False, 0, 0),
             (11, 5, "ChildrenList", "Each folder in Downloads", self.home + "\\Downloads", True,
              2, 7900)])
        key = "Page_JunkFiles_Report_Category_TemporaryFiles"
        self.assertEqual([r["categories"] for r in rules],
                         [[key], [key], [key, "Deeper"], [key, "Deeper"], ["Picked"]])
        self.assertEqual([(r["pattern"], r["end_path"], r["contains_path"]) for r in rules],
                         [("*.log", None, None), (None, "Cache", "tw"), (None, "None", None),
                          (None, None, None), (None, None, None)])
        self.assertEqual(rules[1]["places"], [
            {"path": self.home + "\\Editor\\two\\Cache", "below": True, "files": 2, "bytes": 110}])
        self.assertEqual(rules[4]["places"], [
            {"path": self.home + "\\Downloads\\set", "below": True, "files": 1, "bytes": 900},
            {"path": self.home + "\\Downloads", "below": False, "files": 1, "bytes": 7000}])

    def test_the_table_tells_the_same(self):
        result = self.check(GOOD)
        self.assert_done(result)
        expected = (
            f'"{self.path}" is good: 5 rules in 2 categories.\n'
            "\nTemporary files\n"
            "  Line 3: Logs, *.log\n"
            f"          1       500 B  {self.home}\\AppData\\Local\\Temp\n"
            f"  Line 4: Cache in each folder of {self.home}\\Editor with \"tw\" in its path\n"
            f"          2       110 B  {self.home}\\Editor\\two\\Cache\n"
            "\nTemporary files / Deeper\n"
            f"  Line 6: Nowhere, None in each folder of {self.home}\\Editor\n"
            f"          -           -  {self.home}\\Editor  (no such folders in it)\n"
            "  Line 7: Temp\n"
            f"          -           -  {self.drive}\\Windows\\Temp  (not there)\n"
            "\nPicked\n"
            "  Line 11: Each folder in Downloads\n"
            f"          1       900 B  {self.home}\\Downloads\\set\n"
            f"          1     6.8 KiB  {self.home}\\Downloads  (directly in it)\n"
            "\nOf 5 rules 4 have their folder: 4 places with 5 files (8.3 KiB), looked up in ")
        self.assertEqual(result.out[:len(expected)], expected)

    def test_a_junk_scan_finds_the_same(self):
        checked = json.loads(self.check(GOOD, "--json").out)
        scanned = self.report("junk", "--rules", self.path, *self.where)
        self.assertEqual((checked["totals"]["files"], checked["totals"]["bytes"]),
                         (scanned["totals"]["item_count"], scanned["totals"]["total_bytes"]))

    def test_links_lead_nowhere(self):
        folder = os.path.join(self.place.folder, "linked/p")
        os.makedirs(folder)
        os.symlink(os.path.join(self.place.folder, "drive"), os.path.join(folder, "link"))
        self.where[1] = self.place.windows_path("linked")
        result = self.check(
            '<Root><Category DisplayName="a"><Folder Path="{UserHome}\\p\\link"/>'
            '<FolderList StartPath="{UserHome}" EndPath="link"/>'
            '<FolderList StartPath="{UserHome}" EndPath="link\\Users"/></Category></Root>',
            "--json")
        self.assert_done(result)
        totals = json.loads(result.out)["totals"]
        self.assertEqual((totals["existing"], totals["places"], totals["files"]), (2, 0, 0))
        scanned = self.report("junk", "--rules", self.path, *self.where)
        self.assertEqual(scanned["rows"], [])

    def test_what_was_hardly_meant_is_pointed_out_and_no_error(self):
        document = ('<Root>\n <Category DisplayName="a">\n'
                    '  <Folder Path="{UserHome}\\AppData\\Local\\Temp" pattern="*.log"/>\n'
                    '  <Foldr/>\n </Category>\n</Root>')
        result = self.check(document)
        self.assertEqual(result.code, 0)
        self.assertIn("is good: 1 rule in 1 category.\n", result.out)
        self.assertEqual(result.err, (
            f'quastel: note: "{self.path}", line 3, column 48: pattern is no attribute of <Folder> '
            "and is ignored; did you mean Pattern? letter case counts\n"
            f'quastel: note: "{self.path}", line 4, column 3: <Foldr> is ignored, with all in it; '
            "did you mean Folder?\n"))
        result = self.check(document, "--json")
        self.assert_done(result)
        self.assertEqual([(w["line"], w["column"]) for w in json.loads(result.out)["warnings"]],
                         [(3, 48), (4, 3)])

    def test_the_shipped_documents_are_good(self):
        rules = os.path.join(os.path.dirname(client_case.EXE), "rules")
        documents = sorted(os.listdir(rules))
        self.assertIn("standard.xml", documents)
        self.assertIn("extended.xml", documents)
        # CMake copies the documents that it is told of.
        self.assertLessEqual(set(os.listdir(SHIPPED)), set(documents))
        for name in documents:
            with self.subTest(name):
                result = quastel("rules", "check", "Z:" + os.path.join(rules, name), *self.where)
                self.assert_done(result)


class Bad(RulesTest):
    CASES = {
        "<Root>\n  <Category DisplayName='a'>\n</Root>": (
            3, 1, "</Root> closes nothing: the element that is open is <Category> of line 2, "
            "column 3"),
        "<Root>\r\n<a b=1/>\r\n</Root>": (
            2, 6, "the value of b does not begin with a quotation mark"),
        "<Root>\n\t<!-- no end\n</Root>": (2, 2, "this comment has no end"),
        b"<Root>\n<!-- \xc3\xbc \xe4 -->\n</Root>": (2, 8, "the byte E4 is not UTF-8"),
        "<root/>": (1, 1, "the outer element is <root>, not <Root>"),
        "<Root>\n\n <Category/>\n</Root>": (3, 2, "<Category> has no DisplayName"),
        "<Root/>\n<Root/>": (2, 1, '"<" stands after the end of the outer element <Root>'),
        "": (1, 1, "the document has no element"),
        "\ufeff<Root>\n  <Category DisplayName='\U0001f3b5'/ >\n</Root>": (
            2, 28, '"/" stands in the tag <Category> where an attribute or the end of the tag '
            "should be"),
    }

    def test_the_first_mistake_is_told_with_line_and_column(self):
        for document, (line, column, message) in self.CASES.items():
            with self.subTest(document):
                result = self.check(document)
                self.assertEqual((result.code, result.out), (1, ""))
                self.assertTrue(result.err.startswith(
                    f'quastel: error: "{self.path}", line {line}, column {column}: {message}'),
                    result.err)

    def test_json_has_the_mistake_and_no_rules(self):
        for document, (line, column, message) in self.CASES.items():
            with self.subTest(document):
                result = self.check(document, "--json")
                self.assertEqual(result.code, 1)
                report = json.loads(result.out)
                problem = report["problem"]
                self.assertEqual(list(problem), ["line", "column", "message", "hint"])
                self.assertEqual((report["valid"], problem["line"], problem["column"]),
                                 (False, line, column))
                self.assertTrue(problem["message"].startswith(message), problem["message"])
                self.assertEqual((report["rules"], report["totals"]["rules"]), ([], 0))
                self.assertIn(f"line {line}, column {column}", result.err)

    def test_the_verdict_is_that_of_a_scan(self):
        """The library itself is asked about far more documents by the unit tests."""
        verdicts = set()
        for seed in sorted(glob.glob(os.path.join(SEEDS, "*.xml")))[::4]:
            with self.subTest(os.path.basename(seed)):
                with open(seed, "rb") as file:
                    checked = self.check(file.read())
                scanned = quastel("junk", "--rules", self.path, *self.where)
                self.assertEqual(checked.code, scanned.code)
                if checked.code != 0:
                    self.assertEqual(checked.err, scanned.err)
                verdicts.add(checked.code)
        self.assertEqual(verdicts, {0, 1})

    def test_a_document_that_is_not_there_is_an_error(self):
        missing = self.place.windows_path("none.xml")
        for arguments in ([], ["--json"]):
            self.assert_refused(quastel("rules", "check", missing, *arguments), 1,
                                f'"{missing}" does not exist')
        self.assert_refused(quastel("rules", "check", self.drive), 1, "is a folder")


class Usage(RulesTest):
    def test_mistakes_are_named_with_a_hint(self):
        for arguments, texts in (
                (["rule", "check", "x"], ["did you mean rules?"]),
                (["rules"], ["see quastel rules --help"]),
                (["rules", "chek", "x"], ['no command "chek"', "did you mean check?"]),
                (["rules", "check"], ["FILE", "see quastel rules check --help"]),
                (["rules", "check", "x", "--jsn"], ['no option "--jsn"', "did you mean --json?"])):
            with self.subTest(arguments):
                self.assert_refused(quastel(*arguments), 2, *texts)

    def test_help_is_data_and_no_error(self):
        result = quastel("rules", "check", "--help")
        self.assert_done(result)
        self.assertIn("Usage: quastel rules check [OPTIONS] FILE", result.out)


class Terminal(RulesTest):
    def test_ctrl_c_ends_the_look_at_the_places(self):
        # So many rules that looking them up does not end by itself before the key is pressed.
        rule = '<Folder Path="' + self.place.windows_path("many") + '"/>\n'
        result = self.check('<Root><Category DisplayName="a">' + rule * 3000 +
                            "</Category></Root>", "--help")
        self.assertEqual(result.code, 0)
        result, _, took = client_harness.run_at_terminal(
            client_case.EXE, "rules", "check", self.path, "--json", interrupt_after="Scanning")
        self.assertEqual(result.code, 5)
        self.assertLess(took, 4)
        report = json.loads(result.out)
        self.assertEqual((report["valid"], report["status"], report["cancelled"]),
                         (True, "cancelled", True))
        self.assertLess(len(report["rules"]), 3000)
        self.assertEqual(report["totals"]["rules"], 3000)


if __name__ == "__main__":
    client_case.main()
