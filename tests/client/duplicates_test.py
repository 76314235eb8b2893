#!/usr/bin/env python3
"""quastel duplicates from end to end.

Usage: duplicates_test.py CLIENT [TEST...], with WINEPREFIX set."""

import glob
import json
import os
import shutil

import client_case
import client_harness
from client_case import ClientTest, plain, quastel

# Content -> the files below "copies" that have it.
SETS = {
    b"": ["empty a", "sub/empty b", "sub/empty c"],
    b"a note": ["note.txt", "sub/Note.txt"],
    b"x" * 5000: ["five.bin", "sub/five.bin", "sub/\u6587\u4ef6/f\u00fcnf.bin", "sub/zz.bin"],
    b"y" * 3_000_000: ["big.iso", "/".join(["a folder with a long name"] * 11) + "/big.iso"],
}
# Each shares its size, and two of them head and tail as well, with a file that has other content.
SINGLE = {
    "alone.txt": b"alone!",
    "sub/five and one.bin": b"x" * 4999 + b"z",
    "middle a": b"m" * 10_000,
    "middle b": b"m" * 5000 + b"n" + b"m" * 4999,
}
KEYS = ["reclaimable", "size", "count", "path"]
CACHE = "AppData/Local/Vantrelloc/Ferrowynd/cache/duplicate-hashes-v1.bin"


def setUpModule():
    client_case.setUpModule()
    place = client_case.PLACE
    files = [(name, content) for content, names in SETS.items() for name in names]
    for name, content in files + list(SINGLE.items()):
        path = os.path.join(place.folder, "copies", name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content)


def tearDownModule():
    client_case.tearDownModule()


def caches():
    """Every hash cache on the system's drive."""
    drive = os.path.join(client_case.PLACE.prefix, "drive_c")
    return glob.glob(os.path.join(drive, "**", "duplicate-hashes-v1.bin*"), recursive=True)


def remove_caches():
    for path in caches():
        os.unlink(path)


class DuplicatesTest(ClientTest):
    @property
    def root(self):
        return self.place.windows_path("copies")

    def expected(self):
        """The sets as the report should have them: paths -> size."""
        return {tuple(sorted(self.place.windows_path("copies/" + name) for name in names)):
                len(content) for content, names in SETS.items()}

    def found(self, report):
        sets = {}
        for row in report["rows"]:
            sets.setdefault((row["group_id"], row["size"]), []).append(plain(row["path"]))
        self.assertEqual(len(sets), len({group for group, _ in sets}), "a group with two sizes")
        return {tuple(sorted(paths)): size for (_, size), paths in sets.items()}


class Json(DuplicatesTest):
    def test_groups_are_the_files_with_equal_content(self):
        report = self.report("duplicates", self.root)
        self.assertEqual(self.found(report), self.expected())
        self.assertEqual(list(report), [
            "schema_version", "library_version", "command", "roots", "options", "start_time",
            "status", "cancelled", "rows", "groups", "totals", "performance"])
        self.assertEqual((report["schema_version"], report["command"]), (1, "duplicates"))
        self.assertEqual((report["status"], report["cancelled"]), ("ok", False))
        home = report["options"].pop("user_home")
        self.assertTrue(home.lower().startswith("c:\\users\\"), home)
        self.assertEqual(report["options"], {
            "sort": "reclaimable", "top": None, "min_size": None, "protect": True,
            "system_root": "C:\\"})

        sizes = {len(content): len(names) for content, names in SETS.items()}
        self.assertEqual([(g["size"], g["count"], g["bytes"], g["reclaimable"])
                          for g in report["groups"]],
                         [(size, sizes[size], size * sizes[size], size * (sizes[size] - 1))
                          for size in (3_000_000, 5000, 6, 0)])
        everything = [content for content, names in SETS.items() for _ in names]
        everything_seen = everything + list(SINGLE.values())
        self.assertEqual(report["totals"], {
            "files_visited": len(everything_seen), "bytes_visited": sum(map(len, everything_seen)),
            "item_count": len(everything), "total_bytes": sum(map(len, everything)),
            "group_count": len(SETS), "reclaimable": 3_000_000 + 3 * 5000 + 6})

        performance = report["performance"]
        self.assertEqual(list(performance), [
            "elapsed_us", "filter_roots_us", "walk_us", "group_by_size_us", "sample_us",
            "sample_keys_us", "plan_hashes_us", "hash_us", "group_by_hash_us", "candidates",
            "sampled_items", "hashed_items", "unhashed_groups"])
        # Each file shares its size; those of more than 150 bytes that agree in their samples are
        # hashed.
        self.assertEqual({key: performance[key] for key in
                          ("candidates", "sampled_items", "hashed_items", "unhashed_groups")},
                         {"candidates": len(everything_seen), "sampled_items": len(everything_seen),
                          "hashed_items": 4 + 2 + 2, "unhashed_groups": 2})

    def test_rows_follow_their_groups_and_carry_the_key(self):
        report = self.report("duplicates", self.root)
        order = list(dict.fromkeys(row["group_id"] for row in report["rows"]))
        self.assertEqual(order, [group["id"] for group in report["groups"]])
        for group in report["groups"]:
            rows = [row for row in report["rows"] if row["group_id"] == group["id"]]
            paths = [row["path"] for row in rows]
            self.assertEqual(len(paths), group["count"])
            self.assertEqual(paths, sorted(paths, key=lambda path: plain(path).upper()))
            self.assertIn(group["title"], [row["name"] for row in rows])
            self.assertEqual(len({row["group_key"] for row in rows}), 1)
            self.assertTrue(rows[0]["group_key"].startswith(f"{group['size']} "))
            for row in rows:
                self.assertEqual(row["location"] + "\\" + row["name"], row["path"])
                self.assertEqual(list(row), [
                    "item_id", "group_id", "path", "name", "location", "group_key", "size",
                    "modified_ticks", "modified_ticks_text", "modified"])
        self.assertEqual(sorted(row["item_id"] for row in report["rows"]),
                         list(range(len(report["rows"]))))

    def test_top_and_min_size_shorten_the_list_and_nothing_else(self):
        whole = self.report("duplicates", self.root)
        first = self.report("duplicates", self.root, "--top", "2", "--min-size", "4K")
        self.assertEqual([group["size"] for group in first["groups"]], [3_000_000, 5000])
        self.assertEqual(first["rows"], whole["rows"][:2 + 4])
        self.assertEqual(first["totals"], whole["totals"])
        self.assertEqual((first["options"]["top"], first["options"]["min_size"]), (2, 4096))
        exact = self.report("duplicates", self.root, "--min-size", "5000")
        self.assertEqual([group["size"] for group in exact["groups"]], [3_000_000, 5000])
        above = self.report("duplicates", self.root, "--min-size", "5001", "--top", "9")
        self.assertEqual([group["size"] for group in above["groups"]], [3_000_000])
        self.assertEqual(above["rows"], whole["rows"][:2])

    def test_each_key_sorts_the_groups(self):
        orders = {}
        for key in KEYS:
            groups = self.report("duplicates", self.root, "--sort", key)["groups"]
            orders[key] = [group["size"] for group in groups]
        # The first paths in their order: a folder with..., empty a, five.bin, note.txt.
        self.assertEqual(orders, {
            "reclaimable": [3_000_000, 5000, 6, 0], "size": [3_000_000, 5000, 6, 0],
            "count": [5000, 0, 3_000_000, 6], "path": [3_000_000, 0, 5000, 6]})

    def test_copies_in_two_roots_are_one_group(self):
        roots = [self.place.windows_path("copies/sub/\u6587\u4ef6"),
                 self.place.windows_path("copies/sub")]
        report = self.report("duplicates", *roots, "--min-size", "1")
        self.assertEqual([group["count"] for group in report["groups"]], [3])
        self.assertEqual(report["roots"], roots)

    def test_two_names_of_one_file_count_as_copies(self):
        folder = os.path.join(self.place.folder, "linked")
        os.mkdir(folder)
        with open(os.path.join(folder, "a"), "wb") as file:
            file.write(b"one file")
        os.link(os.path.join(folder, "a"), os.path.join(folder, "b"))
        report = self.report("duplicates", self.place.windows_path("linked"))
        self.assertEqual([row["name"] for row in report["rows"]], ["a", "b"])


class Table(DuplicatesTest):
    def test_people_get_each_group_with_its_paths_and_totals(self):
        result = quastel("duplicates", self.root, "--min-size", "1")
        self.assert_done(result)
        copies = self.root + "\\"
        deep = copies + "a folder with a long name\\" * 11
        expected = ("2 copies of 2.9 MiB, 2.9 MiB reclaimable\n"
                    f"  {deep}big.iso\n  {copies}big.iso\n\n"
                    "4 copies of 4.9 KiB, 14.6 KiB reclaimable\n"
                    f"  {copies}five.bin\n  {copies}sub\\five.bin\n  {copies}sub\\zz.bin\n"
                    f"  {copies}sub\\\u6587\u4ef6\\f\u00fcnf.bin\n\n"
                    "2 copies of 6 B, 6 B reclaimable\n"
                    f"  {copies}note.txt\n  {copies}sub\\Note.txt\n\n"
                    "Showing 3 of 4 groups.\n\n"
                    "4 groups, 11 files, 5.7 MiB; 2.9 MiB reclaimable by keeping one file of each "
                    "group.\n\n15 files seen (5.8 MiB) in ")
        self.assertEqual(result.out[:len(expected)], expected)

    def test_nothing_found_is_said_kindly(self):
        result = quastel("duplicates", self.place.windows_path("outside"))
        self.assert_done(result)
        self.assertRegex(result.out,
                         r"^No duplicates here: no two files have the same content\.\n1 file seen")


class Cache(DuplicatesTest):
    def test_a_second_run_reports_the_same_and_the_cache_is_the_only_trace(self):
        remove_caches()
        self.report("large", self.root)
        self.assertEqual(caches(), [])
        cold = self.report("duplicates", self.root)
        home = cold["options"]["user_home"]
        drive = os.path.join(self.place.prefix, "drive_c")
        cache = os.path.join(drive, home[3:].replace("\\", "/"), CACHE)
        self.assertEqual(len(caches()), 1)
        self.assertTrue(os.path.samefile(caches()[0], cache))
        with open(cache, "rb") as file:
            self.assertEqual(file.read(8), b"FWDCACH3")
        warm = self.report("duplicates", self.root)
        for report in (cold, warm):
            del report["start_time"]
            report["performance"] = {key: value for key, value in report["performance"].items()
                                     if not key.endswith("_us")}
        self.assertEqual(warm, cold)

    def test_without_protection_the_cache_still_works(self):
        remove_caches()
        report = self.report("duplicates", self.root, "--no-protect")
        self.assertEqual(len(caches()), 1)
        options = report["options"]
        self.assertEqual((options["protect"], options["system_root"]), (False, None))
        self.assertTrue(options["user_home"].lower().startswith("c:\\users\\"))

    def test_without_a_profile_there_is_no_cache(self):
        remove_caches()
        exe = "Z:" + client_case.EXE.replace("/", "\\")
        command = f"set USERPROFILE=&{exe} duplicates --json --no-protect {self.root}"
        result = client_harness.run("cmd", "/c", command)
        self.assert_done(result)
        report = json.loads(result.out)
        self.assertIsNone(report["options"]["user_home"])
        self.assertEqual(self.found(report), self.expected())
        self.assertEqual(caches(), [])

    def test_a_changed_file_is_looked_at_again(self):
        folder = os.path.join(self.place.folder, "changing")
        shutil.copytree(os.path.join(self.place.folder, "copies", "sub"), folder)
        root = self.place.windows_path("changing")
        before = self.report("duplicates", root, "--min-size", "1")
        self.assertEqual([group["count"] for group in before["groups"]], [3])
        path = os.path.join(folder, "zz.bin")
        with open(path, "wb") as file:
            file.write(b"x" * 4000 + b"!" + b"x" * 999)
        os.utime(path, (client_harness.FIRST_TIME, client_harness.FIRST_TIME))
        after = self.report("duplicates", root, "--min-size", "1")
        self.assertEqual([group["count"] for group in after["groups"]], [2])


class Protection(DuplicatesTest):
    def test_a_protected_root_is_pointed_out(self):
        name = os.path.basename(self.place.system_protected)
        root = "C:\\ProgramData\\" + name
        shutil.copy(os.path.join(self.place.system_protected, "protected.iso"),
                    os.path.join(self.place.system_protected, "copy.iso"))
        result = quastel("duplicates", root)
        self.assertEqual(result.code, 0)
        self.assertIn(f'"{root}" is protected: nothing below it is scanned', result.err)
        self.assertIn("No duplicates here", result.out)
        report = self.report("duplicates", root, "--no-protect")
        self.assertEqual([group["count"] for group in report["groups"]], [2])


class Usage(DuplicatesTest):
    def test_mistakes_are_named_with_a_hint(self):
        for arguments, texts in (
                (["duplicate", self.root], ["did you mean duplicates?"]),
                (["duplicates"], ["ROOT", "see quastel duplicates --help"]),
                (["duplicates", self.root, "--min-size", "big"], ["big is not a size"]),
                (["duplicates", self.root, "--min-size", ""], [" is not a size"]),
                (["duplicates", self.root, "--top", "-1"], ["-1 is not a number of groups"]),
                (["duplicates", self.root, "--sort", "modified"], ["modified"])):
            with self.subTest(arguments):
                self.assert_refused(quastel(*arguments), 2, *texts)

    def test_a_root_that_is_no_folder_is_an_error(self):
        self.assert_refused(quastel("duplicates", self.root, self.root + "\\big.iso"), 1,
                            'big.iso" is a file, not a folder')


class Terminal(DuplicatesTest):
    def test_ctrl_c_keeps_the_report_and_says_so(self):
        result, screen, took = client_harness.run_at_terminal(
            client_case.EXE, "duplicates", self.root, "--json",
            env={"QUASTEL_SCAN_HOLD_MS": "5000"}, interrupt_after="Walking")
        self.assertEqual(result.code, 5)
        self.assertLess(took, 4)
        report = json.loads(result.out)
        self.assertEqual((report["status"], report["cancelled"]), ("cancelled", True))
        self.assertIn("note: cancelled", result.err)

    def test_the_line_names_the_stage_in_which_files_are_read(self):
        # So large that hashing them does not end by itself.
        for name in ("a", "b"):
            client_harness.sparse_file(os.path.join(self.place.folder, "huge", name), 1 << 38)
        result, screen, took = client_harness.run_at_terminal(
            client_case.EXE, "duplicates", self.place.windows_path("huge"), "--json", columns=100,
            interrupt_after="Hashing")
        self.assertEqual(result.code, 5)
        self.assertLess(took, 4)
        drawn = [line for line in screen.drawings if line.startswith("Hashing")]
        self.assertRegex(drawn[-1],
                         r"^Hashing  2 files  512\.0 GiB  [\d.]+ m?s  .:\\huge\\[ab](\^C)?$")
        self.assertEqual(json.loads(result.out)["rows"], [])


if __name__ == "__main__":
    client_case.main()
