#!/usr/bin/env python3
"""The command-line client from end to end, as a person or a script calls it: quastel large, and
what all commands have in common.

Usage: client_test.py CLIENT [TEST...], with WINEPREFIX set."""

import datetime
import json
import os
import re
import shutil
import unicodedata

import client_case
import client_harness
from client_case import ClientTest, plain, quastel, setUpModule, tearDownModule
from client_harness import CATEGORIES, FILES, FIRST_TIME, TICKS_TO_1970

def cells(text):
    """The columns that a text takes."""
    return sum(2 if unicodedata.east_asian_width(c) in "WF" else 1 for c in text)


class Json(ClientTest):
    def test_rows_equal_what_find_lists(self):
        report = self.report("large", self.place.windows_path("tree"))
        expected = self.place.find_large("tree")
        self.assertEqual(len(expected), len(CATEGORIES))
        self.assert_same_files(report["rows"], expected)

        modified = {self.place.windows_path("tree/" + name): FIRST_TIME + 3600 * number
                    for number, name in enumerate(FILES)}
        rows = {plain(row["path"]): row for row in report["rows"]}
        titles = {group["id"]: group["title"] for group in report["groups"]}
        for path, row in rows.items():
            location, name = path.rsplit("\\", 1)
            self.assertEqual(row["name"], name)
            self.assertEqual(plain(row["location"]), location)
            self.assertEqual(row["category"], CATEGORIES[name])
            self.assertEqual(row["category"], titles[row["group_id"]])
            self.assertEqual(row["large_class"], row["group_id"] - 1)
            self.assertEqual(row["modified_ticks"], modified[path] * 10_000_000 + TICKS_TO_1970)
            utc = datetime.datetime.fromtimestamp(modified[path], datetime.timezone.utc)
            self.assertEqual(row["modified"], utc.strftime("%Y-%m-%dT%H:%M:%S"))
            self.assertNotIn("path_utf16", row)
        self.assertEqual(sorted(row["item_id"] for row in rows.values()), list(range(len(rows))))

    def test_a_long_path_keeps_the_prefix_that_makes_it_usable(self):
        rows = self.report("large", self.place.windows_path("tree"))["rows"]
        deep = [row["path"] for row in rows if row["name"] == "deep.iso"]
        self.assertEqual([path[:7] for path in deep], ["\\\\?\\" + self.place.drive + "\\"])
        self.assertEqual([row["path"][:3] for row in rows if row["name"] == "holiday.mp4"],
                         [self.place.drive + "\\"])

    def test_the_object_has_the_documented_members(self):
        root = self.place.windows_path("tree")
        before = datetime.datetime.now(datetime.timezone.utc)
        report = self.report("large", root, "--sort", "name", "--top", "3")
        self.assertEqual(list(report), [
            "schema_version", "library_version", "command", "roots", "options", "start_time",
            "status", "cancelled", "rows", "groups", "totals", "performance"])
        self.assertEqual(report["schema_version"], 1)
        self.assertRegex(report["library_version"], r"^\d+\.\d+\.\d+$")
        self.assertEqual(report["command"], "large")
        self.assertEqual(report["roots"], [root])
        options = report["options"]
        home = options.pop("user_home")
        self.assertTrue(home.lower().startswith("c:\\users\\"), home)
        self.assertEqual(options, {
            "sort": "name", "top": 3, "protect": True, "system_root": "C:\\"})
        started = datetime.datetime.strptime(report["start_time"], "%Y-%m-%dT%H:%M:%S.%fZ")
        started = started.replace(tzinfo=datetime.timezone.utc)
        self.assertLess(abs((started - before).total_seconds()), client_harness.TIME_LIMIT)
        self.assertEqual((report["status"], report["cancelled"]), ("ok", False))

        # --top shortens the list and nothing else.
        found = self.place.find_large("tree")
        self.assertEqual(len(report["rows"]), 3)
        self.assertEqual(report["totals"], {
            "files_visited": len(FILES), "bytes_visited": sum(FILES.values()),
            "item_count": len(found), "total_bytes": sum(found.values())})
        groups = {}
        for path, size in found.items():
            title = CATEGORIES[path.rsplit("\\", 1)[1]]
            count, total = groups.get(title, (0, 0))
            groups[title] = (count + 1, total + size)
        self.assertEqual({g["title"]: (g["count"], g["bytes"]) for g in report["groups"]}, groups)
        self.assertEqual([g["id"] for g in report["groups"]],
                         sorted(g["id"] for g in report["groups"]))
        self.assertEqual(list(report["performance"]),
                         ["elapsed_us", "filter_roots_us", "walk_us"])
        self.assertGreaterEqual(report["performance"]["elapsed_us"],
                                report["performance"]["walk_us"])

    def test_thousands_of_rows_arrive_whole(self):
        report = self.report("large", self.place.windows_path("many"))
        self.assert_same_files(report["rows"], self.place.find_large("many"))
        for row, number in zip(report["rows"], range(1999, -1, -1)):
            self.assertEqual(row["name"], f"{number:05}.iso")

    def test_nothing_found_is_an_empty_list(self):
        report = self.report("large", self.place.windows_path("tree/nothing in here"),
                             "--no-protect")
        self.assertEqual((report["rows"], report["groups"]), ([], []))
        options = report["options"]
        self.assertEqual((options["protect"], options["system_root"], options["user_home"]),
                         (False, None, None))


class Order(ClientTest):
    KEYS = {
        "size": lambda row: -row["size"],
        "modified": lambda row: -row["modified_ticks"],
        "path": lambda row: plain(row["path"]).upper(),
        "name": lambda row: row["name"].upper(),
        "category": lambda row: (row["category"].upper(), -row["size"]),
    }

    def test_each_key_sorts(self):
        root = self.place.windows_path("tree")
        orders = set()
        for key, function in self.KEYS.items():
            with self.subTest(key):
                rows = self.report("large", root, "--sort", key)["rows"]
                self.assertEqual(rows, sorted(rows, key=function))
                orders.add(tuple(row["name"] for row in rows))
        self.assertEqual(len(orders), len(self.KEYS), "two keys gave the same order")

    def test_size_is_the_default(self):
        root = self.place.windows_path("tree")
        self.assertEqual(self.report("large", root)["rows"],
                         self.report("large", root, "--sort=size")["rows"])


class Table(ClientTest):
    def test_people_get_aligned_columns_a_summary_and_totals(self):
        result = quastel("large", self.place.windows_path("tree"))
        self.assert_done(result)
        self.assertNotIn("\r", result.out)
        lines = result.out.split("\n")
        place = lines[0].index("Path")
        self.assertEqual(lines[0].split(), ["Size", "Modified", "Category", "Path"])
        found = self.place.find_large("tree")
        rows = lines[1:1 + len(found)]
        self.assertEqual([line[place:] for line in rows],
                         sorted(found, key=found.get, reverse=True))
        self.assertTrue(all(line[place - 1] == " " and line[10] == " " for line in rows))
        time = datetime.datetime.fromtimestamp(FIRST_TIME, datetime.timezone.utc)
        self.assertEqual(rows[0].split()[:4],
                         ["1.5", "GiB"] + time.strftime("%Y-%m-%d %H:%M").split())
        summary = lines[2 + len(found):]
        self.assertEqual(summary[0].split(), ["Category", "Files", "Size"])
        self.assertEqual(summary[1].split(), ["Archives", "3", "62.0", "MiB"])
        self.assertEqual(summary[5].split()[:2], ["Other", "1"])
        self.assertEqual(summary[6].split()[:3], ["Total", str(len(found)), "1.6"])
        self.assertRegex(result.out,
                         rf"\n\n{len(FILES)} files seen \(1\.7 GiB\) in [\d.]+ m?s\.\n$")

    def test_top_says_how_much_it_left_out(self):
        result = quastel("large", self.place.windows_path("many"), "--top", "2")
        self.assert_done(result)
        self.assertEqual(result.out.count(".iso\n"), 2)
        self.assertIn("\nShowing 2 of 2,000 rows.\n", result.out)
        self.assertRegex(result.out, r"\nTotal +2,000 +19\.5 GiB\n")

    def test_nothing_found_is_said_kindly(self):
        result = quastel("large", self.place.windows_path("tree/nothing in here"))
        self.assert_done(result)
        self.assertRegex(result.out, r"^No large files here: none is above 10 MiB\.\n0 files")


class Roots(ClientTest):
    def test_a_drive_root_gives_paths_with_single_separators(self):
        report = self.report("large", self.place.windows_path())
        self.assertEqual(report["roots"], [self.place.drive + "\\"])
        expected = {}
        for folder in ("tree", "many", "outside"):
            expected.update(self.place.find_large(folder))
        self.assert_same_files(report["rows"], expected)

    def test_relative_roots_are_made_absolute(self):
        # Wine takes this folder for the current one of its drive.
        report = self.report("large", "[draft]", "..\\videos\\",
                             cwd=os.path.join(self.place.folder, "tree/work"))
        self.assertEqual([root.rsplit("\\tree\\")[1] for root in report["roots"]],
                         ["work\\[draft]", "videos"])
        self.assertTrue(all(root[1:3] == ":\\" for root in report["roots"]), report["roots"])
        self.assertEqual([row["name"] for row in report["rows"]],
                         ["holiday.mp4", "Short.MOV", "plan.psd"])

    def test_a_bare_drive_letter_is_its_current_folder(self):
        report = self.report("large", self.place.drive, "--top", "0")
        self.assertEqual(report["roots"], [self.place.drive + "\\"])
        self.assertEqual(report["totals"]["item_count"], len(self.place.find_large("")))

    def test_a_missing_root_is_told_from_an_empty_one(self):
        missing = self.place.windows_path("no such folder")
        self.assert_refused(quastel("large", missing), 1, f'"{missing}" does not exist')

    def test_every_wrong_root_is_named(self):
        tree = self.place.windows_path("tree")
        result = quastel("large", "--json", tree, tree + "\\gone", tree + "\\small.txt",
                         tree + "\\*.mp4", tree + "\\link", tree + '\\videos"')
        self.assert_refused(result, 1, 'gone" does not exist', 'small.txt" is a file, not a folder',
                            '*.mp4" does not exist', "wildcards are not expanded",
                            'link" is a junction or a link', "holds a quotation mark")

    def test_a_link_below_a_root_is_not_entered(self):
        rows = self.report("large", self.place.windows_path("tree"))["rows"]
        self.assertNotIn("linked.iso", [row["name"] for row in rows])


class Protection(ClientTest):
    def names(self, folder):
        """The large files of the system's drive below one of its folders."""
        return f"C:\\{os.path.relpath(folder, self.place.prefix + '/drive_c')}\\".replace("/", "\\")

    def test_the_systems_folders_are_left_alone_unless_told(self):
        opened = self.names(self.place.system_open) + "open.iso"
        protected = self.names(self.place.system_protected) + "protected.iso"
        paths = [row["path"] for row in self.report("large", "C:\\")["rows"]]
        self.assertIn(opened, paths)
        guarded = ("c:\\windows", "c:\\program files", "c:\\programdata")
        self.assertEqual([path for path in paths if path.lower().startswith(guarded)], [])

        paths = [row["path"] for row in self.report("large", "C:\\", "--no-protect")["rows"]]
        self.assertIn(opened, paths)
        self.assertIn(protected, paths)

    def test_a_protected_root_is_pointed_out(self):
        root = self.names(self.place.system_protected).rstrip("\\")
        result = quastel("large", root)
        self.assertEqual(result.code, 0)
        self.assertIn(f'"{root}" is protected: nothing below it is scanned; use --no-protect',
                      result.err)
        self.assertIn("No large files here", result.out)
        result = quastel("large", root, "--no-protect")
        self.assert_done(result)
        self.assertIn("protected.iso", result.out)

    def test_an_unknown_system_is_an_error(self):
        exe = "Z:" + client_case.EXE.replace("/", "\\")
        # Wine sets the variable for the first program of a run, so that a second one is started.
        # %SystemDrive% it sets for each: that this one may be missing is not seen here.
        without = f"set USERPROFILE=&{exe} large " + self.place.windows_path("tree\\videos")
        result = client_harness.run("cmd", "/c", without)
        self.assert_refused(result, 1, "USERPROFILE is not set", "--no-protect")
        result = client_harness.run("cmd", "/c", without + " --no-protect")
        self.assert_done(result)
        self.assertIn("holiday.mp4", result.out)


class Usage(ClientTest):
    def test_no_arguments_print_the_help_to_standard_error(self):
        result = quastel()
        self.assertEqual((result.code, result.out), (2, ""))
        self.assertIn("Usage: quastel", result.err)

    def test_help_is_data_and_no_error(self):
        for arguments, text in ((["--help"], "Usage: quastel [OPTIONS] SUBCOMMAND"),
                                (["large", "--help"], "Usage: quastel large [OPTIONS] ROOT...")):
            with self.subTest(arguments):
                result = quastel(*arguments)
                self.assert_done(result)
                self.assertIn(text, result.out)
                self.assertTrue(result.out.endswith("\n"))

    def test_every_help_fits_80_columns_and_has_examples_of_its_own(self):
        footers = set()
        for command in (["large"], ["duplicates"], ["junk"], ["empty"], ["list"], ["clean"], ["hash"],
                        ["rules"], ["rules", "check"], ["version"], []):
            with self.subTest(command):
                result = quastel(*command, "--help")
                self.assert_done(result)
                lines = result.out.split("\n")
                self.assertEqual([line for line in lines if len(line) > 80], [])
                self.assertNotIn("\n\n\n", result.out)
                self.assertIn("\nExit codes: 0 done", result.out)
                footer = result.out.split("\nExamples:\n")[1].split("\n\n")[0]
                footers.add(footer)
                if not command:
                    continue
                examples = footer.split("\n")
                self.assertIn(len(examples), (2, 3, 4))
                for example in examples:
                    self.assertRegex(example, "^  " + " ".join(["quastel", *command]) + r"\b")
                    # What "rules" can do, "rules check" explains.
                    if command != ["rules"]:
                        for option in re.findall(r"--[a-z-]+", example):
                            self.assertRegex(result.out, rf"\n  {option}[ =\n]")
        self.assertEqual(len(footers), 11)

    def test_the_help_fits_the_terminal(self):
        for columns in (60, 120):
            with self.subTest(columns):
                result, _, _ = client_harness.run_at_terminal(
                    client_case.EXE, "large", "--help", columns=columns, out_at_terminal=True)
                self.assertEqual(result.code, 0)
                longest = max(map(len, client_harness.terminal_lines(result.err)))
                self.assertLess(longest, columns)
                self.assertGreater(longest, columns - 20)

    def test_mistakes_are_named_with_a_hint(self):
        tree = self.place.windows_path("tree")
        for arguments, texts in (
                (["larg", tree], ['no command "larg"', "did you mean large?"]),
                (["tidy", tree], ['no command "tidy"', "see quastel --help"]),
                (["large"], ["ROOT", "see quastel large --help"]),
                (["large", ""], ["name is empty"]),
                (["large", tree, "--jsn"], ['no option "--jsn"', "did you mean --json?"]),
                (["large", tree, "--sort", "colour"], ["colour"]),
                (["large", tree, "--top", "-1"], ["-1 is not a number of rows"]),
                (["large", tree, "--top", "many"], ["many is not a number of rows"]),
                (["large", tree, "--top"], ["--top"])):
            with self.subTest(arguments):
                self.assert_refused(quastel(*arguments), 2, *texts)

    def test_a_folder_may_be_called_like_a_command(self):
        self.assert_refused(quastel("large", "version"), 1, 'version" does not exist')

    def test_version(self):
        result = quastel("version")
        self.assert_done(result)
        self.assertRegex(result.out, r"^quastel (\d+\.\d+\.\d+) \(library \1\)\n$")
        as_json = quastel("version", "--json")
        self.assert_done(as_json)
        members = json.loads(as_json.out)
        self.assertEqual(list(members),
                         ["schema_version", "library_version", "command", "client_version"])
        self.assertEqual(f"quastel {members['client_version']} (library "
                         f"{members['library_version']})\n", result.out)


class Outputs(ClientTest):
    def test_a_reader_that_went_away_ends_it_quietly(self):
        reading, writing = os.pipe()
        os.close(reading)
        with os.fdopen(writing, "wb") as pipe:
            result = quastel("large", self.place.windows_path("many"), "--json", stdout=pipe)
        self.assert_done(result)

    def test_a_full_disk_is_an_error(self):
        with open("/dev/full", "wb") as full:
            result = quastel("large", self.place.windows_path("tree"), stdout=full)
        self.assertEqual(result.code, 1)
        self.assertIn("the output could not be written", result.err)


class Terminal(ClientTest):
    def test_a_progress_line_is_drawn_and_erased(self):
        result, screen, _ = client_harness.run_at_terminal(
            client_case.EXE, "large", self.place.windows_path("tree"),
            env={"QUASTEL_SCAN_HOLD_MS": "1500"}, columns=60)
        self.assertEqual(result.code, 0)
        self.assertIn("holiday.mp4", result.out)
        self.assertNotIn("Scanning", result.out)
        self.assertGreaterEqual(len(screen.drawings), 5, screen.drawings)
        self.assertLessEqual(len(screen.drawings), 20, "more than ten a second")
        for line in screen.drawings:
            self.assertRegex(line, r"^Scanning  [\d,]+ files?  [\d.]+ \w+  [\d.]+ m?s")
            self.assertLess(len(line), 60)
        self.assertEqual(screen.text(), "")

    def test_colours_are_for_terminals_and_can_be_turned_off(self):
        colour = re.compile(r"\x1b\[\d[\d;]*m")
        tree = self.place.windows_path("tree")
        for arguments, words in ((["larg"], ["error:", "hint:"]), (["large", tree], ["Size", "Path"])):
            for env in ({"NO_COLOR": ""}, {"NO_COLOR": "1"}, {"NO_COLOR": "0"},
                        {"NO_COLOR": "", "TERM": "dumb"}):
                with self.subTest(arguments=arguments, env=env):
                    result, _, _ = client_harness.run_at_terminal(
                        client_case.EXE, *arguments, env={"TERM": "xterm", **env},
                        out_at_terminal=True)
                    wanted = env == {"NO_COLOR": ""}
                    self.assertEqual(bool(colour.search(result.err)), wanted, repr(result.err))
                    text = "\n".join(client_harness.terminal_lines(result.err))
                    for word in words:
                        self.assertIn(word, text)
            result = quastel(*arguments, env={"NO_COLOR": "", "TERM": "xterm"})
            self.assertNotIn("\x1b", result.out + result.err)

    def test_an_error_is_red_and_what_stands_behind_it_is_not(self):
        result, _, _ = client_harness.run_at_terminal(
            client_case.EXE, "larg", env={"NO_COLOR": "", "TERM": "xterm"}, out_at_terminal=True)
        self.assertRegex(result.err, r"\x1b\[91merror:(\x1b\[\?25[hl])*\x1b\[0?m there is no")
        self.assertRegex(result.err, r"\x1b\[96mhint:(\x1b\[\?25[hl])*\x1b\[0?m did you mean")

    def test_a_row_fits_the_terminal_by_the_middle_of_its_path(self):
        folder = "fits/" + "/".join(["\u6587\u4ef6 and a long name"] * 12)
        for name in ("one.iso", "two.iso"):
            client_harness.sparse_file(
                os.path.join(self.place.folder, folder, name), client_harness.LARGE + 1)
        os.makedirs(os.path.join(self.place.folder, folder, "empty"))
        self.addCleanup(shutil.rmtree, os.path.join(self.place.folder, "fits"))
        root = self.place.windows_path("fits")
        for command, ends in (("large", ["one.iso", "two.iso"]), ("list", ["one.iso", "two.iso"]),
                              ("duplicates", ["one.iso", "two.iso"]), ("empty", ["empty"])):
            for columns in (80, 200):
                with self.subTest(command=command, columns=columns):
                    result, _, _ = client_harness.run_at_terminal(
                        client_case.EXE, command, root, columns=columns, out_at_terminal=True)
                    self.assertEqual(result.code, 0)
                    lines = client_harness.terminal_lines(result.err)
                    for end in ends:
                        rows = [line for line in lines if line.endswith("\\" + end)]
                        self.assertEqual(len(rows), 1, lines)
                        self.assertIn("...", rows[0])
                        self.assertIn(self.place.drive + "\\fits\\", rows[0])
                        self.assertLess(cells(rows[0]), columns)
                        self.assertGreater(cells(rows[0]), columns - 6)
            piped = quastel(command, root).out
            self.assertEqual(piped.count(self.place.windows_path(folder)), len(ends))

    def test_nothing_is_drawn_into_a_pipe(self):
        result = quastel("large", self.place.windows_path("tree"),
                         env={"QUASTEL_SCAN_HOLD_MS": "800"})
        self.assert_done(result)

    def test_ctrl_c_keeps_the_report_and_says_so(self):
        for arguments in (["--json"], []):
            with self.subTest(arguments):
                result, screen, took = client_harness.run_at_terminal(
                    client_case.EXE, "large", self.place.windows_path("tree"), *arguments,
                    env={"QUASTEL_SCAN_HOLD_MS": "5000"}, interrupt_after="Scanning")
                self.assertEqual(result.code, 5)
                self.assertLess(took, 4)
                if arguments:
                    report = json.loads(result.out)
                    self.assertEqual((report["status"], report["cancelled"]), ("cancelled", True))
                    self.assertIn("note: cancelled", result.err)
                else:
                    self.assertIn("The scan was cancelled", result.out)


if __name__ == "__main__":
    client_case.main()
