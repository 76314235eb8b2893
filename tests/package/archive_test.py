"""The archive holds everything that it should and nothing else, and its client does its three scans
where nothing else is. WINEPREFIX names an empty Wine prefix."""

import hashlib
import json
import os
import subprocess
import sys
import unittest
import zipfile
from pathlib import Path

BUILD = Path(sys.argv[1]).resolve()
VERSION = sys.argv[2]
NAME = f"quastel-{VERSION}-windows-x64"
ROOT = Path(__file__).resolve().parent.parent.parent
PREFIX = Path(os.environ["WINEPREFIX"])

DOCUMENTS = "share/doc/quastel/"
# Folders that are there as they are in the sources.
FOLDERS = ["docs", "examples", "bindings"]
# What a person or a program looks for by its name.
NAMED = {
    "bin/quastel.exe",
    "bin/quastel_core.dll",
    "include/quastel_core.h",
    "lib/libquastel_core.dll.a",
    "lib/cmake/quastel_core/quastel_core-config.cmake",
    "lib/cmake/quastel_core/quastel_core-config-version.cmake",
    "lib/cmake/quastel_core/quastel_core_targets.cmake",
    "lib/cmake/quastel_core/quastel_core_targets-release.cmake",
    "lib/pkgconfig/quastel_core.pc",
    "share/quastel/rules/standard.xml",
    "share/quastel/rules/extended.xml",
    DOCUMENTS + "README.md",
    DOCUMENTS + "LICENSE",
    DOCUMENTS + "THIRD_PARTY.md",
    DOCUMENTS + "CHANGELOG.md",
}


class Archive(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        subprocess.run(["cmake", "--build", str(BUILD), "--target", "package"], check=True,
                       stdout=subprocess.DEVNULL)
        cls.file = BUILD / f"{NAME}.zip"
        cls.place = PREFIX / "drive_c" / "unpacked"
        with zipfile.ZipFile(cls.file) as archive:
            cls.names = [name for name in archive.namelist() if not name.endswith("/")]
            archive.extractall(cls.place)
        home = PREFIX / "drive_c" / "data" / "home"
        for name, size in {"a.mkv": 11 << 20, "b/a copy.mkv": 11 << 20, "small.txt": 7}.items():
            path = home / name
            path.parent.mkdir(parents=True, exist_ok=True)
            with open(path, "wb") as file:
                file.truncate(size)
        temporary = home / "AppData" / "Local" / "Temp"
        temporary.mkdir(parents=True)
        (temporary / "left over.tmp").write_text("junk")

    def run_client(self, *arguments):
        client = self.place / NAME / "bin" / "quastel.exe"
        done = subprocess.run(["wine", str(client), *arguments], capture_output=True, timeout=120,
                              stdin=subprocess.DEVNULL, check=False)
        self.assertEqual(done.returncode, 0, done.stderr.decode())
        return done.stdout.decode()

    def test_holds_every_file_and_no_other(self):
        documents = {DOCUMENTS + path.relative_to(ROOT).as_posix()
                     for folder in FOLDERS for path in (ROOT / folder).rglob("*")
                     if path.is_file() and "node_modules" not in path.parts}
        for name in ("docs/security.md", "examples/duplicates.c", "bindings/node/index.js"):
            self.assertIn(DOCUMENTS + name, documents)
        self.assertEqual({f"{NAME}/{name}" for name in NAMED | documents}, set(self.names))
        self.assertEqual(len(self.names), len(set(self.names)))

    def test_has_its_sha_256_beside_it(self):
        digest, name = (BUILD / f"{NAME}.zip.sha256").read_text().split()
        self.assertEqual(name, f"{NAME}.zip")
        self.assertEqual(digest, hashlib.sha256(self.file.read_bytes()).hexdigest())

    def test_large_files_are_found_by_what_it_holds(self):
        report = json.loads(self.run_client("large", "C:\\data", "--json"))
        self.assertEqual({row["path"] for row in report["rows"]},
                         {"C:\\data\\home\\a.mkv", "C:\\data\\home\\b\\a copy.mkv"})

    def test_duplicates_are_found_by_what_it_holds(self):
        report = json.loads(self.run_client("duplicates", "C:\\data", "--json"))
        self.assertEqual({row["path"] for row in report["rows"] if not row.get("is_header")},
                         {"C:\\data\\home\\a.mkv", "C:\\data\\home\\b\\a copy.mkv"})

    def test_junk_is_found_by_its_own_rules(self):
        report = json.loads(self.run_client("junk", "--user-home", "C:\\data\\home",
                                            "--system-root", "C:\\data", "--files", "--json"))
        paths = [row["path"] for row in report["rows"]]
        self.assertIn("C:\\data\\home\\AppData\\Local\\Temp\\left over.tmp", paths)

    def test_help_needs_nothing_else(self):
        self.assertIn("duplicates", self.run_client("--help"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
