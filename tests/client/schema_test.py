#!/usr/bin/env python3
"""docs/report.schema.json against what the client writes with --json: each report is valid, holds no
member that the schema does not name, and all reports together hold all that it names.

Usage: schema_test.py CLIENT [TEST...], with WINEPREFIX set."""

import copy
import json
import os
import re
import shutil
import sys
from pathlib import Path

try:
    from jsonschema import Draft202012Validator
except ImportError:
    # The one that the packages of the system belong to need not be the first.
    if os.path.realpath(sys.executable) == os.path.realpath("/usr/bin/python3"):
        sys.exit("install python3-jsonschema")
    os.execv("/usr/bin/python3", ["/usr/bin/python3", "-B", *sys.argv])

import client_case
import client_harness
from client_case import ClientTest, quastel

ROOT = Path(__file__).resolve().parent.parent.parent
SCHEMA = json.loads((ROOT / "docs/report.schema.json").read_text(encoding="utf-8"))
# Of names that are no proper Unicode, which no program can make in a folder of Linux.
NOT_SEEN_HERE = {"path_utf16"}
# Where the part of the schema is not named after the command.
PART_OF_COMMAND = {"hash": "hashes", "rules check": "rules_check", "version": "version_report"}

RULES = """<?xml version="1.0"?>
<Root>
  <Category DisplayName="Temporary files">
    <Folder Path="{UserHome}\\Temp" Pattern="*.tmp"/>
    <FolderList StartPath="{UserHome}\\Editor" EndPath="Cache" ContainsPath="Profile"/>
    <Folder Path="{UserHome}\\None" pattern="*"/>
  </Category>
  <Category DisplayName="Page_JunkFiles_Report_Category_Downloads">
    <ChildrenList StartPath="{UserHome}\\Downloads"/>
  </Category>
</Root>
"""
FILES = {
    "home/Temp/a.tmp": b"aaa",
    "home/Editor/Profile 1/Cache/x": b"x",
    "home/Downloads/set/part.bin": b"part",
    "home/rules.xml": RULES.encode(),
    "home/bad.xml": b"<Root><Category></Root>",
    "copies/one.txt": b"the same words",
    "copies/two.txt": b"the same words",
    "copies/more/three.txt": b"the same words",
    "copies/b/one.bin": b"1" * 200,
    "copies/b/two.bin": b"1" * 200,
}


def setUpModule():
    client_case.setUpModule()
    put_files()


def tearDownModule():
    client_case.tearDownModule()


def put_files():
    place = client_case.PLACE
    shutil.rmtree(os.path.join(place.folder, "schema"), ignore_errors=True)
    for number, (name, content) in enumerate(FILES.items()):
        path = os.path.join(place.folder, "schema", name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content)
        os.utime(path, (client_harness.FIRST_TIME + number,) * 2)
    os.makedirs(os.path.join(place.folder, "schema", "nothing", "in here"))


def strict(schema):
    """The same, but without room for members that it does not name."""
    if isinstance(schema, dict):
        schema = {key: strict(value) for key, value in schema.items()}
        if "properties" in schema and schema.get("type") == "object":
            schema["additionalProperties"] = False
    elif isinstance(schema, list):
        schema = [strict(value) for value in schema]
    return schema


def part_of(schema, part):
    """A validator for a part of the schema alone."""
    return Draft202012Validator({**part, "$defs": schema["$defs"]})


OPEN = Draft202012Validator(SCHEMA)
STRICT = Draft202012Validator(strict(SCHEMA))


def resolved(schema):
    while "$ref" in schema:
        schema = SCHEMA["$defs"][schema["$ref"].rpartition("/")[2]]
    return schema


def all_members(schema):
    """Where each member stands in the schema, by the identity of its object."""
    if isinstance(schema, dict):
        if isinstance(schema.get("properties"), dict):
            for name in schema["properties"]:
                yield id(schema), name
        for value in schema.values():
            yield from all_members(value)
    elif isinstance(schema, list):
        for value in schema:
            yield from all_members(value)


def members_of(schema, value):
    """The members of the schema that a value has."""
    schema = resolved(schema)
    for choice in schema.get("oneOf", []) + schema.get("anyOf", []):
        if part_of(SCHEMA, choice).is_valid(value):
            yield from members_of(choice, value)
    if isinstance(value, dict):
        for name, part in schema.get("properties", {}).items():
            if name in value:
                yield id(schema), name
                yield from members_of(part, value[name])
    elif isinstance(value, list) and "items" in schema:
        for part in value:
            yield from members_of(schema["items"], part)


class SchemaTest(ClientTest):
    def path(self, name):
        return self.place.windows_path("schema/" + name)

    def write(self, *arguments, code=0):
        env = {"XDG_DATA_HOME": os.path.join(self.place.folder, "trash")}
        result = quastel(*arguments, "--json", env=env)
        self.assertEqual(code, result.code, result.err)
        report = json.loads(result.out)
        with self.subTest(" ".join(arguments)):
            # By the part for its command, whose complaints say what is wrong; then by the whole.
            name = PART_OF_COMMAND.get(report["command"], report["command"])
            part = part_of(STRICT.schema, {"$ref": f"#/$defs/{name}"})
            self.assertEqual([], [error.message for error in part.iter_errors(report)])
            self.assertTrue(STRICT.is_valid(report) and OPEN.is_valid(report))
        return report

    def test_the_schema_itself_is_valid(self):
        Draft202012Validator.check_schema(SCHEMA)

    def test_the_reports_have_the_members_of_the_schema_and_no_others(self):
        put_files()
        tree = self.place.windows_path("tree")
        home = ["--user-home", self.path("home"), "--system-root", self.path("home")]
        junk = ["junk", "--rules", self.path("home\\rules.xml"), *home]
        copies = ["duplicates", self.path("copies"), "--no-protect"]
        saved = self.write(*copies)
        with open(os.path.join(self.place.folder, "saved.json"), "w", encoding="utf-8") as file:
            json.dump(saved, file)
        changed = os.path.join(self.place.folder, "schema/copies/more/three.txt")
        reports = [
            saved,
            self.write("large", tree),
            self.write("large", tree, "--top", "1", "--sort", "name", "--no-protect"),
            self.write("large", tree, "--clean", "--permanent", "--dry-run"),
            self.write(*copies, "--min-size", "100", "--top", "1"),
            self.write(*copies, "--clean", "--recycle", "--keep-under", self.path("copies\\more"),
                       "--dry-run"),
            self.write("clean", "--from", self.place.windows_path("saved.json"), "--recycle",
                       "--keep", "oldest", "--dry-run"),
            self.write(*junk),
            self.write(*junk, "--category", "Temporary files", "--top", "0"),
            self.write(*junk, "--clean", "--permanent", "--dry-run"),
            self.write("empty", self.path("")),
            self.write("list", tree, "--large", "--top", "2"),
            self.write("list", tree, "--inspect"),
            self.write("hash", self.path("copies\\one.txt"), self.path("gone"), code=3),
            self.write("rules", "check", self.path("home\\rules.xml"), *home),
            self.write("rules", "check", self.path("home\\bad.xml"), *home, code=1),
            self.write("version"),
        ]
        # What changes something comes last.
        os.utime(changed, (1, 1))
        reports += [
            self.write("clean", "--from", self.place.windows_path("saved.json"), "--permanent",
                       "--keep", "oldest", "--yes", code=3),
            self.write(*junk, "--clean", "--permanent", "--yes"),
            self.write("list", self.path("copies"), "--clean", "0", "--permanent", "--yes"),
        ]
        seen = {member for report in reports for member in members_of(SCHEMA, report)}
        never = {name for place, name in set(all_members(SCHEMA)) - seen}
        self.assertEqual(NOT_SEEN_HERE, never)

    def test_all_members_are_explained(self):
        text = (ROOT / "docs/client.md").read_text(encoding="utf-8")
        # Examples do not count, only names in the text.
        explained = set(re.findall(r"\w+", " ".join(re.findall(r"`([^`\n]+)`", text))))
        self.assertEqual(set(), {name for _, name in all_members(SCHEMA)} - explained)

    def test_a_wrong_report_is_refused(self):
        report = self.write("large", self.place.windows_path("tree"))
        self.assertTrue(report["rows"])

        def refuses(change, validator=OPEN):
            wrong = copy.deepcopy(report)
            change(wrong)
            return not validator.is_valid(wrong)

        self.assertTrue(refuses(lambda wrong: wrong.pop("totals")))
        self.assertTrue(refuses(lambda wrong: wrong.update(schema_version=2)))
        self.assertTrue(refuses(lambda wrong: wrong.update(command="duplicates")))
        self.assertTrue(refuses(lambda wrong: wrong.update(status="fine")))
        self.assertTrue(refuses(lambda wrong: wrong["rows"][0].pop("path")))
        self.assertTrue(refuses(lambda wrong: wrong["rows"][0].update(size="12")))
        self.assertTrue(refuses(lambda wrong: wrong["options"].update(top="all")))
        self.assertTrue(refuses(lambda wrong: wrong["rows"][0].update(modified="yesterday")))

    def test_a_member_of_a_later_version_is_accepted_though_it_is_noticed_here(self):
        report = self.write("version")
        report["new"] = 1
        self.assertTrue(OPEN.is_valid(report))
        self.assertFalse(STRICT.is_valid(report))


if __name__ == "__main__":
    client_case.main()
