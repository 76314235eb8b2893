#!/usr/bin/env python3
"""Shows that fetch_packages.py takes nothing that the lock file does not promise. Nothing is fetched:
packages are made here."""

import io
import sys
import tarfile
import tempfile
import unittest
from pathlib import Path
from unittest import mock

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts"))
import fetch_packages  # noqa: E402


def package(files):
    data = io.BytesIO()
    with tarfile.open(fileobj=data, mode="w:gz") as archive:
        for name, content in files.items():
            member = tarfile.TarInfo(name)
            member.size = len(content)
            archive.addfile(member, io.BytesIO(content))
        link = tarfile.TarInfo("package/link")
        link.type = tarfile.SYMTYPE
        link.linkname = "/etc/passwd"
        archive.addfile(link)
    return data.getvalue()


class Fetching(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name) / "into"
        self.target = self.folder / "node_modules" / "some"

    def install(self, data, integrity):
        with mock.patch.object(fetch_packages, "fetched", return_value=(data, "some.tgz")) as fetch:
            fetch_packages.install("some", {"version": "1.0.0", "integrity": integrity}, self.folder)
        return fetch.call_count

    def test_a_package_is_taken_once(self):
        data = package({"package/index.js": b"1", "package/lib/a.js": b"2"})
        integrity = fetch_packages.integrity_of(data)
        self.assertEqual(1, self.install(data, integrity))
        self.assertEqual(b"2", (self.target / "lib/a.js").read_bytes())
        self.assertEqual(0, self.install(data, integrity))

    def test_another_version_replaces_it(self):
        old, new = package({"package/old.js": b"1"}), package({"package/new.js": b"2"})
        self.install(old, fetch_packages.integrity_of(old))
        self.assertEqual(1, self.install(new, fetch_packages.integrity_of(new)))
        self.assertFalse((self.target / "old.js").exists())
        self.assertTrue((self.target / "new.js").exists())

    def test_another_content_is_refused(self):
        data = package({"package/index.js": b"1"})
        other = package({"package/index.js": b"2"})
        with self.assertRaises(SystemExit):
            self.install(other, fetch_packages.integrity_of(data))
        self.assertFalse(self.target.exists())

    def test_nothing_lands_outside(self):
        data = package({"package/../../out.js": b"1", "/package/absolute.js": b"2",
                        "package/in.js": b"3"})
        self.install(data, fetch_packages.integrity_of(data))
        found = sorted(path.relative_to(self.folder).as_posix()
                       for path in self.folder.rglob("*") if not path.is_dir())
        self.assertEqual(["node_modules/some/.quastel-integrity", "node_modules/some/in.js"], found)
        self.assertFalse((self.folder.parent / "out.js").exists())


if __name__ == "__main__":
    unittest.main()
