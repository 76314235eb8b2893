#!/usr/bin/env python3
"""Quastel.cs: compiled, compared with the header, and run on the built DLL.

usage: csharp_test.py --root ROOT --compiler CC --work FOLDER --dll DLL --packages FOLDER, with
WINEPREFIX set

Compiled and compared with the header by the compiler and the runtime of this machine; then a runtime
for Windows, of those that fetch_packages.py fetched, does the same under Wine and calls the DLL."""

import argparse
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "abi"))
import interface_snapshot  # noqa: E402
from place import Place, run, windows_path_of  # noqa: E402

RUNTIME = "dotnet-2.0.0-win"
CONFIG = '{"runtimeOptions":{"framework":{"name":"Microsoft.NETCore.App","version":"2.0.0"}}}'
LARGE = 10485761

parser = argparse.ArgumentParser()
parser.add_argument("--root", type=Path, required=True)
parser.add_argument("--compiler", required=True)
parser.add_argument("--work", type=Path, required=True)
parser.add_argument("--dll", type=Path, required=True)
parser.add_argument("--packages", type=Path, required=True)
args = parser.parse_args()


def compile_program(name, source, flags=()):
    done = subprocess.run(
        ["mcs", "-langversion:7", "-warn:4", "-warnaserror", "-platform:x64", *flags,
         f"-out:{args.work / name}", str(args.root / "bindings/csharp/Quastel.cs"), str(source)],
        capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"{source} does not compile:\n{done.stdout}{done.stderr}")
    (args.work / name).with_suffix(".runtimeconfig.json").write_text(CONFIG)


def setUpModule():
    args.work.mkdir(parents=True, exist_ok=True)
    tests = args.root / "tests/callers/csharp"
    compile_program("InterfaceCheck.exe", tests / "InterfaceCheck.cs")
    compile_program("DllTest.exe", tests / "DllTest.cs")
    # With -doc the compiler complains about every public name without a description.
    compile_program("Sample.exe", args.root / "bindings/csharp/Sample.cs",
                    [f"-doc:{args.work / 'Quastel.xml'}"])
    snapshot = interface_snapshot.snapshot(args.root / "include/quastel_core.h", args.compiler)
    (args.work / "interface.txt").write_text(snapshot, encoding="utf-8")


class OnThisMachine(unittest.TestCase):
    def check(self, snapshot):
        done = subprocess.run(["mono", str(args.work / "InterfaceCheck.exe"), str(snapshot)],
                              capture_output=True, text=True)
        return done.returncode, done.stdout + done.stderr

    def test_records_constants_and_functions_are_those_of_the_header(self):
        code, output = self.check(args.work / "interface.txt")
        self.assertEqual(0, code, output)
        self.assertRegex(output, r"^58 functions, 9 records, 29 constants: \d{3} comparisons, 0 failed")

    def assert_seen(self, old, new, words):
        text = (args.work / "interface.txt").read_text(encoding="utf-8")
        self.assertIn(old, text, "the text to change is no longer there")
        changed = args.work / "changed.txt"
        changed.write_text(text.replace(old, new, 1), encoding="utf-8")
        code, output = self.check(changed)
        self.assertEqual(1, code, output)
        self.assertIn(f"FAIL {words}", output)

    def test_each_kind_of_difference_is_seen(self):
        self.assert_seen("QS_BUSY = 7", "QS_BUSY = 8", "QS_BUSY is")
        self.assert_seen("QS_NO_ITEM_ID = 1844", "QS_NO_ITEM_ID = 844", "QS_NO_ITEM_ID")
        self.assert_seen("record qs_session_row of 20 bytes", "record qs_session_row of 24 bytes",
                         "qs_session_row has 24 bytes")
        self.assert_seen("of 36 bytes, aligned to 4", "of 36 bytes, aligned to 8",
                         "qs_session_scan_status is packed to 8")
        self.assert_seen("at 32: uint64_t modified", "at 40: uint64_t modified",
                         "Quastel.ProductScanRow.modified offset")
        self.assert_seen("at 24: int64_t size", "at 24: uint64_t size",
                         "Quastel.ProductScanRow.size is a uint64_t")
        self.assert_seen("qs_version", "qs_revision", "qs_revision is declared")
        self.assert_seen("(int64_t size, uint32_t mode)", "(int64_t size, int64_t mode)",
                         "qs_matches_size: int64_t mode")
        self.assert_seen("function int32_t qs_is_ignored(const qs_char* path)\n", "",
                         "58 functions are declared, of 57")


class OnTheDll(unittest.TestCase):
    def setUp(self):
        # The runtime looks for the DLL beside the program alone.
        shutil.copyfile(args.dll, args.work / "quastel_core.dll")
        self.place = Place()
        self.addCleanup(self.place.remove)

    def run_program(self, name, *arguments):
        return run(args.packages / "node_modules" / RUNTIME / "dotnet.exe",
                   windows_path_of(args.work / name), *arguments,
                   env={"DOTNET_CLI_TELEMETRY_OPTOUT": "1"})

    def test_a_runtime_for_windows_sees_the_same_interface(self):
        code, output = self.run_program("InterfaceCheck.exe",
                                        windows_path_of(args.work / "interface.txt"))
        self.assertEqual(0, code, output)
        self.assertRegex(output, r"^58 functions, 9 records, 29 constants: \d{3} comparisons, 0 failed")

    def test_the_classes_work(self):
        code, output = self.run_program("DllTest.exe", self.place.windows_path)
        self.assertEqual(0, code, output)
        self.assertIn("\n8 tests, 0 failed\n", output)

    def test_the_sample_lists_large_files(self):
        film = self.place.put("sub/film.mkv", b"")
        with open(film, "ab") as file:
            file.truncate(LARGE)
        self.place.put("small.mkv", b"x")
        code, output = self.run_program("Sample.exe", self.place.windows_path)
        self.assertEqual(0, code, output)
        self.assertRegex(output, r"10.485.761  20\d\d-\d\d-\d\d  ")
        self.assertIn(self.place.windows_path + "\\sub\\film.mkv\n", output)
        self.assertRegex(output, r"10.485.761 bytes in 1 files")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
