#!/usr/bin/env python3
"""The code in the documents for people who use the library: each piece is cut from a source that is
compiled and run, or is a program that is compiled and run here.

usage: snippets_test.py --root ROOT --build BUILD --compiler CC, with WINEPREFIX set."""

import argparse
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).parent.parent / "callers"))
from documents import blocks_of, piece_of  # noqa: E402
from place import Place, run  # noqa: E402

parser = argparse.ArgumentParser()
parser.add_argument("--root", type=Path, required=True)
parser.add_argument("--build", type=Path, required=True)
parser.add_argument("--compiler", required=True)
OPTIONS = parser.parse_args()
ROOT = OPTIONS.root

DOCUMENTS = ["README.md", "docs/getting-started.md"]
CODE = {"c", "cpp", "cmake"}
# Sources whose pieces are shown, and the CMake file that builds them for a test.
BUILT_BY = {
    "examples/window_worker.cpp": "tests/callers/tests.cmake",
    "tests/package/consumer/CMakeLists.txt": "tests/package/tests.cmake",
}
README_ROOT = 'L"D:\\\\"'
MIB = 1024 * 1024


def code_blocks(document):
    return [block for block in blocks_of(ROOT, document) if block.language in CODE]


def readme_program():
    (program,) = [block.text for block in code_blocks("README.md") if block.language == "c"]
    return program + "\n"


class Pieces(unittest.TestCase):
    maxDiff = None

    def test_each_piece_of_code_is_the_one_in_its_source(self):
        compared = 0
        for document in DOCUMENTS:
            for block in code_blocks(document):
                if block.origin is None:
                    continue
                with self.subTest(block.place):
                    self.assertEqual(piece_of(ROOT, *block.origin), block.text)
                compared += 1
        self.assertGreaterEqual(compared, 8)

    def test_only_the_program_of_the_readme_has_no_source(self):
        without = [block for document in DOCUMENTS for block in code_blocks(document)
                   if block.origin is None]
        self.assertEqual([("README.md", "c")],
                         [(block.document, block.language) for block in without])

    def test_all_sources_are_built_for_a_test(self):
        sources = {block.origin[0] for document in DOCUMENTS for block in code_blocks(document)
                   if block.origin}
        self.assertEqual(set(BUILT_BY), sources)
        # By the name of the program, or of the folder of a project.
        for source, file in BUILT_BY.items():
            name = Path(source).stem if source.startswith("examples/") else "/consumer"
            self.assertIn(name, (ROOT / file).read_text(encoding="utf-8"))

    def test_no_piece_of_the_example_is_left_out(self):
        text = (ROOT / "examples/window_worker.cpp").read_text(encoding="utf-8")
        pieces = set(re.findall(r"^ *// \[(\w+)\]$", text, re.MULTILINE))
        shown = {block.origin[1] for block in code_blocks("docs/getting-started.md")
                 if block.origin and block.origin[0] == "examples/window_worker.cpp"}
        self.assertEqual(pieces, shown)

    def test_the_program_of_the_readme_is_short(self):
        lines = [line for line in readme_program().splitlines()
                 if line.strip() and not line.startswith("#include")]
        self.assertLessEqual(len(lines), 20)


class ReadmeProgram(unittest.TestCase):
    def setUp(self):
        self.place = Place()
        self.addCleanup(self.place.remove)
        work = tempfile.TemporaryDirectory(prefix="readme_", dir=OPTIONS.build)
        self.addCleanup(work.cleanup)
        self.work = Path(work.name)

    def compiled(self, source):
        """The program, built by the command that the documents show."""
        (command,) = {line for document in DOCUMENTS for block in blocks_of(ROOT, document)
                      for line in block.lines if line.startswith("x86_64-w64-mingw32-gcc")}
        (self.work / "program.c").write_text(source, encoding="utf-8")
        (self.work / "include").symlink_to(ROOT / "include")
        (self.work / "lib").symlink_to(OPTIONS.build / "lib")
        words = command.replace("PREFIX", ".").split()
        words[0] = OPTIONS.compiler
        done = subprocess.run(words + ["-Wall", "-Wextra", "-Werror"], cwd=self.work,
                              capture_output=True, text=True, stdin=subprocess.DEVNULL)
        self.assertEqual((0, ""), (done.returncode, done.stdout + done.stderr))
        (self.work / "quastel_core.dll").symlink_to(OPTIONS.build / "bin/quastel_core.dll")
        return self.work / "program.exe"

    def test_it_lists_the_large_files_of_its_folder(self):
        self.assertEqual(1, readme_program().count(README_ROOT))
        folder = '"' + self.place.windows_path.replace("\\", "\\\\") + '"'
        program = self.compiled(readme_program().replace(README_ROOT, "L" + folder))
        for name, size in (("film.mkv", 30 * MIB), ("below/disk.iso", 10 * MIB + 1),
                           ("small.txt", 10 * MIB)):
            with open(self.place.put(name, b""), "wb") as file:
                file.truncate(size)
        code, output = run(program)
        self.assertEqual(0, code, output)
        found = {path: int(size) for size, path in
                 (line.split(maxsplit=1) for line in output.splitlines())}
        self.assertEqual({self.place.windows_path + "\\film.mkv": 30 * MIB,
                          self.place.windows_path + "\\below\\disk.iso": 10 * MIB + 1}, found)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
