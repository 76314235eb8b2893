#!/usr/bin/env python3
"""quastel clean and --clean from end to end.

Usage: clean_test.py CLIENT [TEST...], with WINEPREFIX set."""

import json
import os
import shutil
import subprocess
import tempfile

import client_case
import client_harness
from client_case import ClientTest, plain, quastel

MIB = 1024 * 1024


def setUpModule():
    client_case.setUpModule()


def tearDownModule():
    client_case.tearDownModule()


class CleanTest(ClientTest):
    """Each test has a folder of its own, "clean" on the place's drive."""

    def setUp(self):
        self.folder = os.path.join(self.place.folder, "clean")
        os.makedirs(self.folder)
        self.trash = tempfile.mkdtemp(prefix="trash_", dir=self.place.folder)

    def tearDown(self):
        for folder, _, _ in os.walk(self.folder):
            os.chmod(folder, 0o755)
        shutil.rmtree(self.folder)
        shutil.rmtree(self.trash)

    @property
    def root(self):
        return self.place.windows_path("clean")

    def put(self, name, content=b"", size=None, modified=None):
        path = os.path.join(self.folder, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content)
            if size is not None:
                file.truncate(size)
        if modified is not None:
            os.utime(path, (modified, modified))
        return path

    def left(self):
        """The files that are there, by their path below the folder."""
        return sorted(os.path.relpath(os.path.join(folder, name), self.folder)
                      for folder, _, names in os.walk(self.folder) for name in names)

    def state(self):
        """All that a dry run must not change: names, contents, times."""
        state = []
        for folder, folders, names in os.walk(self.place.folder):
            for name in folders + names:
                path = os.path.join(folder, name)
                facts = os.lstat(path)
                state.append((path, facts.st_size, facts.st_mtime_ns, facts.st_mode))
        return sorted(state)

    def run_clean(self, *arguments, answer=None, code=0):
        env = client_harness.environment({"XDG_DATA_HOME": self.trash})
        done = subprocess.run(["wine", client_case.EXE, *arguments], env=env,
                              input=(answer or "").encode(), capture_output=True,
                              timeout=client_harness.TIME_LIMIT)
        result = client_harness.Result(done.returncode, done.stdout.decode(), done.stderr.decode())
        self.assertEqual(result.code, code, result.out + result.err)
        return result

    def clean_json(self, *arguments, code=0):
        return json.loads(self.run_clean(*arguments, "--yes", "--json", code=code).out)

    def outcomes(self, report):
        return {plain(row["path"])[len(self.root) + 1:].replace("\\", "/"):
                (row["outcome"], row["reason"]) for row in report["rows"]}

    def save(self, report):
        path = os.path.join(self.place.folder, "report.json")
        with open(path, "w", encoding="utf-8") as file:
            if isinstance(report, str):
                file.write(report)
            else:
                json.dump(report, file)
        return self.place.windows_path("report.json")


class Options(CleanTest):
    def test_a_clean_must_be_told_how(self):
        self.put("a", size=11 * MIB)
        result = quastel("large", self.root, "--clean", "--yes")
        self.assert_refused(result, 2, "how to remove", "--recycle", "--permanent", "--dry-run")
        self.assertEqual(self.left(), ["a"])

    def test_permanent_and_recycle_exclude_each_other(self):
        self.put("a", size=11 * MIB)
        result = quastel("large", self.root, "--clean", "--yes", "--permanent", "--recycle")
        self.assert_refused(result, 2)
        self.assertEqual(self.left(), ["a"])

    def test_the_other_words_need_clean(self):
        for word in ("--permanent", "--yes", "--dry-run"):
            self.assert_refused(quastel("large", self.root, word), 2, "--clean")

    def test_duplicates_must_say_which_copy_stays(self):
        self.put("a", b"same")
        self.put("b", b"same")
        result = quastel("duplicates", self.root, "--clean", "--permanent", "--yes")
        self.assert_refused(result, 2, "which copy stays", "--keep")
        self.assertEqual(self.left(), ["a", "b"])


class Question(CleanTest):
    def test_only_yes_is_yes(self):
        self.put("a", size=11 * MIB)
        for answer in ("", "\n", "n\n", "no\n", "yess\n", "1\n", "ye"):
            result = self.run_clean("large", self.root, "--clean", "--permanent", answer=answer,
                                    code=5)
            self.assertIn("Delete 1 file (11.0 MiB) for good? [y/N]", result.err)
            self.assertIn("nothing was touched", result.err)
            self.assertEqual(result.out, "")
        self.assertEqual(self.left(), ["a"])
        for answer in ("y\n", "YES\r\n"):
            self.put("a", size=11 * MIB)
            self.run_clean("large", self.root, "--clean", "--permanent", answer=answer)
            self.assertEqual(self.left(), [])

    def test_the_bin_is_named_in_its_question(self):
        self.put("a", size=11 * MIB)
        result = self.run_clean("large", self.root, "--clean", "--recycle", answer="n", code=5)
        self.assertIn("Move 1 file (11.0 MiB) to the Recycle Bin? [y/N]", result.err)

    def test_nothing_to_remove_asks_nothing(self):
        result = self.run_clean("large", self.root, "--clean", "--permanent")
        self.assertEqual((result.out, result.err), ("0 files deleted, 0 B freed.\n", ""))


class Large(CleanTest):
    def test_listed_files_go_and_others_stay(self):
        self.put("large a", size=11 * MIB)
        self.put("sub/large b", size=12 * MIB)
        self.put("sub/small", b"small")
        report = self.clean_json("large", self.root, "--clean", "--permanent")
        self.assertEqual(self.left(), ["sub/small"])
        self.assertEqual(self.outcomes(report), {"large a": ("deleted", None),
                                                 "sub/large b": ("deleted", None)})
        self.assertEqual(report["totals"]["bytes_freed"], 23 * MIB)
        self.assertTrue(os.path.isdir(os.path.join(self.folder, "sub")))

    def test_top_limits_the_clean_too(self):
        self.put("a", size=11 * MIB)
        self.put("b", size=12 * MIB)
        self.clean_json("large", self.root, "--clean", "--permanent", "--top", "1")
        self.assertEqual(self.left(), ["a"])

    def test_a_read_only_file_is_refused_with_its_reason(self):
        os.chmod(self.put("a", size=11 * MIB), 0o444)
        self.put("b", size=12 * MIB)
        result = self.run_clean("large", self.root, "--clean", "--permanent", "--yes", code=3)
        self.assertIn("a: it is read-only", result.out)
        self.assertIn("1 file deleted, 12.0 MiB freed.", result.out)
        self.assertIn("1 file was left alone", result.out)
        self.assertEqual(self.left(), ["a"])

    def test_recycled_files_lie_in_the_trash(self):
        self.put("a", b"precious", size=11 * MIB)
        report = self.clean_json("large", self.root, "--clean", "--recycle")
        self.assertEqual(self.outcomes(report), {"a": ("recycled", None)})
        self.assertEqual(self.left(), [])
        kept = [os.path.join(folder, name) for folder, _, names in os.walk(self.trash)
                for name in names if os.path.getsize(os.path.join(folder, name)) == 11 * MIB]
        self.assertEqual(len(kept), 1)
        with open(kept[0], "rb") as file:
            self.assertEqual(file.read(8), b"precious")


class DryRun(CleanTest):
    def test_it_changes_nothing_at_all(self):
        self.put("copies/a", b"same" * 1000)
        self.put("copies/b", b"same" * 1000)
        self.put("large", size=11 * MIB)
        home = self.put("home/AppData/Local/Temp/junk.tmp", b"junk")
        profile = self.place.windows_path("clean/home")
        rules = self.save_rules()
        before = self.state()
        for arguments in (
                ("large", self.root, "--clean", "--permanent"),
                ("large", self.root, "--clean", "--recycle"),
                ("duplicates", self.root, "--clean", "--permanent", "--keep", "first"),
                ("duplicates", self.root, "--clean", "--recycle", "--keep", "newest"),
                ("junk", "--rules", rules, "--user-home", profile, "--system-root",
                 self.place.windows_path(), "--clean", "--permanent")):
            result = self.run_clean(*arguments, "--dry-run", "--json")
            report = json.loads(result.out)
            outcomes = {row["outcome"] for row in report["rows"]}
            self.assertTrue(outcomes & {"would_delete", "would_recycle"}, (arguments, outcomes))
            self.assertFalse(outcomes & {"deleted", "recycled"}, arguments)
            self.assertTrue(report["options"]["dry_run"])
            self.assertEqual(self.state(), before, arguments)
        self.assertTrue(os.path.exists(home))

    def test_it_writes_no_hash_cache_and_scans_the_same(self):
        self.put("copies/a", b"same" * 1000)
        self.put("copies/b", b"same" * 1000)
        home = os.path.join(self.folder, "home")
        self.put("home/AppData/Local/c", b"same" * 1000)
        wine_home = self.place.windows_path("clean/home")
        done = subprocess.run(
            ["wine", "cmd", "/c", f"set USERPROFILE={wine_home}&& {self.windows_exe()} duplicates "
             f"{self.root} --clean --permanent --keep first --dry-run --json"],
            env=client_harness.environment({}), capture_output=True, timeout=120)
        report = json.loads(done.stdout.decode())
        self.assertEqual(self.outcomes(report), {"copies/a": ("kept", None),
                                                 "copies/b": ("would_delete", None)})
        self.assertEqual(os.listdir(os.path.join(home, "AppData", "Local")), ["c"])

    def windows_exe(self):
        return subprocess.run(["winepath", "-w", client_case.EXE], capture_output=True, check=True,
                              env=client_harness.environment({})).stdout.decode().strip()

    def test_it_foresees_refusals(self):
        os.chmod(self.put("a", size=11 * MIB), 0o444)
        result = self.run_clean("large", self.root, "--clean", "--permanent", "--dry-run", code=3)
        self.assertIn("it is read-only", result.out)
        self.assertIn("This was a dry run: nothing was changed.", result.out)

    def save_rules(self):
        path = os.path.join(self.place.folder, "rules.xml")
        with open(path, "w", encoding="utf-8") as file:
            file.write(RULES)
        return self.place.windows_path("rules.xml")


RULES = """<Root>
  <Category DisplayName="Temporary">
    <Folder Path="{UserHome}\\AppData\\Local\\Temp"/>
    <Folder Path="{UserHome}\\AppData\\Local\\Temp" Pattern="*.tmp"/>
  </Category>
  <Category DisplayName="Page_JunkFiles_Report_Category_Downloads">
    <Folder Path="{UserHome}\\Downloads"/>
  </Category>
</Root>
"""


class Junk(CleanTest):
    def setUp(self):
        super().setUp()
        self.put("Temp/a.tmp", b"1")
        self.put("Temp/deep/er/b.log", b"22")
        self.put("Downloads/wanted.zip", b"333")
        for name in ("Temp", "Downloads"):
            target = "AppData/Local/Temp" if name == "Temp" else name
            os.makedirs(os.path.join(self.folder, "home", os.path.dirname(target)), exist_ok=True)
            os.rename(os.path.join(self.folder, name), os.path.join(self.folder, "home", target))
        with open(os.path.join(self.place.folder, "rules.xml"), "w", encoding="utf-8") as file:
            file.write(RULES)
        self.scan = ("junk", "--rules", self.place.windows_path("rules.xml"), "--user-home",
                     self.place.windows_path("clean/home"), "--system-root",
                     self.place.windows_path())

    def test_selected_files_go_with_their_emptied_folders(self):
        report = self.clean_json(*self.scan, "--clean", "--permanent")
        self.assertEqual(self.left(), ["home/Downloads/wanted.zip"])
        temp = os.path.join(self.folder, "home/AppData/Local/Temp")
        self.assertEqual(os.listdir(temp), [], "the rule's own folder stays")
        self.assertEqual([plain(path)[-len("deep\\er"):] for path in report["removed_folders"]],
                         ["deep\\er", "mp\\deep"])
        self.assertEqual(report["totals"]["removed"], 2)
        self.assertEqual(report["totals"]["folders_removed"], 2)

    def test_a_file_that_two_rules_find_goes_once(self):
        report = self.clean_json(*self.scan, "--clean", "--permanent")
        outcomes = sorted(row["outcome"] for row in report["rows"])
        self.assertEqual(outcomes, ["deleted", "deleted", "repeated", "unselected"])

    def test_all_takes_the_unselected_too(self):
        self.clean_json(*self.scan, "--clean", "--permanent", "--all")
        self.assertEqual(self.left(), [])
        self.assertTrue(os.path.isdir(os.path.join(self.folder, "home/Downloads")))

    def test_the_unselected_are_told(self):
        result = self.run_clean(*self.scan, "--clean", "--permanent", "--yes")
        self.assertIn("1 file is not selected; --all takes them too.", result.out)

    def test_a_saved_report_cleans_the_same(self):
        saved = json.loads(self.run_clean(*self.scan, "--json").out)
        self.clean_json("clean", "--from", self.save(saved), "--permanent")
        self.assertEqual(self.left(), ["home/Downloads/wanted.zip"])
        self.assertEqual(os.listdir(os.path.join(self.folder, "home/AppData/Local/Temp")), [])


class Duplicates(CleanTest):
    def setUp(self):
        super().setUp()
        self.put("a long name", b"same" * 2000, modified=1_700_000_000)
        self.put("b", b"same" * 2000, modified=1_700_000_600)
        self.put("keep/c middle", b"same" * 2000, modified=1_600_000_000)

    def cleaned(self, *arguments, code=0):
        return self.outcomes(self.clean_json("duplicates", self.root, "--clean", "--permanent",
                                             *arguments, code=code))

    def test_keep_names_the_copy_that_stays(self):
        for rule, name in (("first", "a long name"), ("newest", "b"), ("oldest", "keep/c middle"),
                           ("shortest-path", "b")):
            self.tearDown()
            self.setUp()
            self.cleaned("--keep", rule)
            self.assertEqual(self.left(), [name], rule)

    def test_all_copies_below_keep_under_stay(self):
        self.put("keep/sub/d", b"same" * 2000)
        outcomes = self.cleaned("--keep-under", self.place.windows_path("clean/KEEP"))
        self.assertEqual(self.left(), ["keep/c middle", "keep/sub/d"])
        self.assertEqual(outcomes["keep/sub/d"], ("kept", None))

    def test_a_group_without_a_copy_there_is_left_alone(self):
        self.put("x", b"other")
        self.put("y", b"other")
        self.cleaned("--keep-under", self.place.windows_path("clean/keep"))
        self.assertEqual(self.left(), ["keep/c middle", "x", "y"])

    def test_hard_links_are_the_same_file(self):
        path = os.path.join(self.folder, "b")
        os.link(path, os.path.join(self.folder, "b link"))
        outcomes = self.cleaned("--keep", "shortest-path", code=3)
        self.assertEqual(outcomes["b link"], ("refused", "same_file"))
        self.assertEqual(self.left(), ["b", "b link"])

    def test_a_name_that_means_its_neighbour_is_left_alone(self):
        self.put("name/file", b"only here")
        self.put("name./file", b"elsewhere")
        self.put("other", b"only there")
        self.put("other.", b"somewhere ")
        outcomes = self.cleaned("--keep", "shortest-path", code=3)
        self.assertEqual({path: outcome for path, (outcome, _) in outcomes.items()
                          if path.startswith(("name", "other"))},
                         {"other": "kept", "other.": "refused"})
        self.assertEqual([name for name in self.left() if name.startswith(("name", "other"))],
                         ["name./file", "name/file", "other", "other."])

    def saved(self):
        return json.loads(self.run_clean("duplicates", self.root, "--json").out)

    def test_equal_size_and_time_are_not_enough(self):
        report = self.save(self.saved())
        path = os.path.join(self.folder, "b")
        with open(path, "r+b") as file:
            file.seek(4000)
            file.write(b"X")
        os.utime(path, (1_700_000_600, 1_700_000_600))
        result = self.clean_json("clean", "--from", report, "--permanent", "--keep", "first",
                                 code=3)
        self.assertEqual(self.outcomes(result)["b"], ("refused", "not_a_copy"))
        self.assertEqual(self.left(), ["a long name", "b"])

    def test_no_verify_says_so(self):
        result = self.run_clean("duplicates", self.root, "--clean", "--permanent", "--keep",
                                "first", "--no-verify", "--yes")
        self.assertIn("not compared", result.err)
        self.assertEqual(self.left(), ["a long name"])

    def test_without_its_survivor_a_copy_stays(self):
        report = self.save(self.saved())
        os.unlink(os.path.join(self.folder, "a long name"))
        result = self.clean_json("clean", "--from", report, "--permanent", "--keep", "first",
                                 code=3)
        self.assertEqual(set(self.outcomes(result).values()),
                         {("kept", None), ("refused", "survivor_gone")})
        self.assertEqual(self.left(), ["b", "keep/c middle"])

    def test_rows_may_be_taken_out(self):
        saved = self.saved()
        saved["rows"] = [row for row in saved["rows"] if not row["path"].endswith("\\b")]
        self.clean_json("clean", "--from", self.save(saved), "--permanent", "--keep", "first")
        self.assertEqual(self.left(), ["a long name", "b"])

    def test_a_group_with_one_row_left_loses_nothing(self):
        saved = self.saved()
        saved["rows"] = saved["rows"][1:2]
        self.clean_json("clean", "--from", self.save(saved), "--permanent", "--keep", "oldest")
        self.assertEqual(len(self.left()), 3)


class SavedReports(CleanTest):
    def setUp(self):
        super().setUp()
        self.put("a", size=11 * MIB)
        self.put("b", size=12 * MIB)
        self.report = json.loads(self.run_clean("large", self.root, "--json").out)

    def refuse(self, report, *texts):
        result = quastel("clean", "--from", self.save(report), "--permanent", "--yes")
        self.assert_refused(result, 1, "nothing was touched", *texts)
        self.assertEqual(self.left(), ["a", "b"])

    def test_a_whole_report_is_carried_out(self):
        result = self.clean_json("clean", "--from", self.save(self.report), "--permanent")
        self.assertEqual(self.left(), [])
        self.assertEqual(result["source"], "large")

    def test_times_survive_tools_that_round_numbers(self):
        for row in self.report["rows"]:
            row["modified_ticks"] = int(float(row["modified_ticks"]))
        self.clean_json("clean", "--from", self.save(self.report), "--permanent")
        self.assertEqual(self.left(), [])

    def test_a_changed_file_stays(self):
        os.utime(os.path.join(self.folder, "a"), (1_700_000_000, 1_700_000_000))
        os.unlink(os.path.join(self.folder, "b"))
        result = self.clean_json("clean", "--from", self.save(self.report), "--permanent", code=3)
        self.assertEqual(self.outcomes(result), {"a": ("refused", "changed"),
                                                 "b": ("refused", "gone")})
        self.assertEqual(self.left(), ["a"])

    def test_a_file_behind_a_link_stays(self):
        os.rename(self.folder, self.folder + "_moved")
        os.symlink("clean_moved", self.folder)
        try:
            result = self.clean_json("clean", "--from", self.save(self.report), "--permanent",
                                     code=3)
        finally:
            os.unlink(self.folder)
            os.rename(self.folder + "_moved", self.folder)
        self.assertEqual(set(self.outcomes(result).values()), {("refused", "link")})
        self.assertEqual(self.left(), ["a", "b"])

    def test_another_schema_version_is_refused(self):
        self.report["schema_version"] = 2
        self.refuse(self.report, "schema version 2")

    def test_a_text_that_breaks_off_is_refused(self):
        text = json.dumps(self.report)
        for length in (0, 1, len(text) // 3, len(text) // 2, len(text) - 1):
            self.refuse(text[:length], "no whole JSON text")

    def test_malformed_rows_are_refused(self):
        def with_row(**members):
            report = json.loads(json.dumps(self.report))
            for name, value in members.items():
                if value is None:
                    del report["rows"][1][name]
                else:
                    report["rows"][1][name] = value
            return report

        for members in ({"path": None}, {"path": "a"}, {"path": 7}, {"path": "C:\\Windows\\a"},
                        {"path": "\\\\?\\C:\\Windows\\a"}, {"size": -1}, {"size": "12"},
                        {"size": None}, {"item_id": None}, {"modified_ticks": None},
                        {"modified_ticks": "1"}, {"modified_ticks_text": "12x"},
                        {"modified_ticks_text": "12"}, {"path_utf16": "0041"},
                        {"item_id": self.report["rows"][0]["item_id"]}):
            self.refuse(with_row(**members), "row 2")

    def test_a_path_that_climbs_out_of_its_root_is_refused_or_left_alone(self):
        self.report["rows"][0]["path"] = self.root + "\\..\\small.txt"
        result = self.clean_json("clean", "--from", self.save(self.report), "--permanent", code=3)
        self.assertIn(("refused", "unclear_name"), self.outcomes(result).values())

    def test_other_commands_and_failed_scans_are_refused(self):
        self.refuse(dict(self.report, command="hash"), "hash")
        self.refuse(dict(self.report, status="failed"), "failed")
        self.refuse({"rows": []}, "schema_version")
        self.refuse([], "not an object")

    def test_a_report_that_is_not_there(self):
        result = quastel("clean", "--from", self.place.windows_path("nothing.json"), "--permanent")
        self.assert_refused(result, 1, "does not exist")


class List(CleanTest):
    def setUp(self):
        super().setUp()
        for name in ("a", "b", "c"):
            self.put(name, name.encode() * 3)

    def test_rows_have_their_index(self):
        report = json.loads(self.run_clean("list", self.root, "--json").out)
        self.assertEqual([(row["index"], row["name"], row["size"], row["deleted"])
                          for row in report["rows"]],
                         [(0, "a", 3, False), (1, "b", 3, False), (2, "c", 3, False)])
        self.assertIsNone(report["clean"])

    def test_large_lists_the_large_alone(self):
        self.put("d", size=10 * MIB)
        self.put("e", size=10 * MIB + 1)
        report = json.loads(self.run_clean("list", self.root, "--large", "--json").out)
        self.assertEqual([row["name"] for row in report["rows"]], ["e"])
        self.assertEqual(report["totals"]["files_visited"], 5)

    def test_named_rows_go(self):
        report = json.loads(self.run_clean("list", self.root, "--clean", "2,0", "--permanent",
                                           "--yes", "--json").out)
        self.assertEqual(self.left(), ["b"])
        self.assertEqual(report["clean"], {"indexes": [2, 0], "requested": 2, "processed": 2,
                                           "status": "ok"})

    def test_the_question_names_the_files(self):
        result = self.run_clean("list", self.root, "--clean", "1", "--permanent", answer="n",
                                code=5)
        self.assertIn(self.root + "\\b\nDelete 1 file for good? [y/N]", result.err)
        self.assertEqual(self.left(), ["a", "b", "c"])

    def test_inspect_refuses_a_clean(self):
        result = quastel("list", self.root, "--inspect", "--clean", "0", "--permanent", "--yes")
        self.assert_refused(result, 2, "--inspect")
        self.assertEqual(self.left(), ["a", "b", "c"])

    def test_wrong_rows_touch_nothing(self):
        for rows, code in (("3", 1), ("0,0", 2), ("0,99", 1)):
            result = quastel("list", self.root, "--clean", rows, "--permanent", "--yes")
            self.assert_refused(result, code, "nothing was touched")
        self.assert_refused(quastel("list", self.root, "--clean", "0", "--yes"), 2, "--permanent")
        self.assertEqual(self.left(), ["a", "b", "c"])

    def test_the_first_failure_ends_the_clean(self):
        os.chmod(os.path.join(self.folder, "b"), 0o444)
        result = self.run_clean("list", self.root, "--clean", "0,1,2", "--permanent", "--yes",
                                code=3)
        self.assertIn("1 of 3 files deleted.", result.out)
        self.assertEqual(self.left(), ["b", "c"])


if __name__ == "__main__":
    client_case.main()
