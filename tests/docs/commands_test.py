#!/usr/bin/env python3
"""The commands in the documents. Those of the client and of ./run are run here, on folders made for
them; for every other one a test or script of the project is named that goes through it, and looked
up. A command that is none of these is a failure, unless its block is introduced as "Windows only".

usage: commands_test.py --root ROOT --build BUILD, with WINEPREFIX set."""

import argparse
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).parent.parent / "client"))
import client_harness  # noqa: E402
from documents import blocks_of, documents_of  # noqa: E402

parser = argparse.ArgumentParser()
parser.add_argument("--root", type=Path, required=True)
parser.add_argument("--build", type=Path, required=True)
OPTIONS = parser.parse_args()
ROOT = OPTIONS.root.resolve()
CLIENT = OPTIONS.build / "bin/quastel.exe"
MIB = 1024 * 1024
LIMIT = 500

COMMAND = re.compile(r"^(> )?(quastel |\./(run|test)\b|scripts/|cmake |ctest |build/|python3 "
                     r"|window_worker |x86_64-w64-mingw32-)")
COMMENT = re.compile(r"\s{2,}#.*$")


def test(name):
    """There is a test of this name."""
    return lambda match: name in TESTS


def line(file, text):
    """A script that the tests go through has this in it."""
    return lambda match: text in (ROOT / file).read_text(encoding="utf-8")


def preset(match):
    return match[1] in PRESETS and line("scripts/build_env.sh", '--preset "$preset"')(match)


def built(match):
    """The preset's target, if there is one, is built by a CMake file."""
    target = match["target"]
    return match["preset"] in PRESETS and (target is None or target in TESTS or target in TARGETS)


def gtest_filter(match):
    """The program is a test, and the filter finds something in the sources."""
    return match[1] in TESTS and any(
        re.search(rf"^TEST(_F)?\({match[2]},", source.read_text(encoding="utf-8"), re.MULTILINE)
        for source in (ROOT / "tests").rglob("*_test.cpp"))


# What goes through the commands that are not run here.
COVERED = [
    (r"\./test( -\w.*)?", line(".ci/run", "/../test")),
    (r"cmake --preset ([\w-]+)", preset),
    (r"cmake --build --preset windows --target package", test("package_archive")),
    # That target is CPack's, and no CMake file names it.
    (r"cmake --build --preset (?P<preset>[\w-]+)( --target (?!package$)(?P<target>\w+))?", built),
    (r"cmake --build build/host --target reference", test("reference")),
    (r"cmake --install build/windows --prefix \w+",
     line("tests/package/check_package.cmake", "--install")),
    (r"cmake -S \. -B build -DCMAKE_PREFIX_PATH=\S+",
     line("tests/package/check_package.cmake", "-DCMAKE_PREFIX_PATH")),
    (r"cmake --build build", line("tests/package/check_package.cmake", "--build ${WORK}")),
    (r"ctest --test-dir build/(host|windows)", line("test", "ctest --test-dir")),
    (r"build/host/bin/(\w+_tests) --gtest_filter='(\w+)\.\*'", gtest_filter),
    (r"build/host-fuzz/bin/call_sequences_fuzz .*", test("fuzz_tests")),
    (r"x86_64-w64-mingw32-gcc-posix .*", test("doc_snippets")),
    (r"window_worker .*", test("examples")),
    # What they run for minutes is run for seconds.
    (r"scripts/stress\.sh", test("handles_stress")),
    (r"scripts/long_run\.sh", test("long_run")),
    (r"scripts/kill_test\.sh", test("kill_test")),
    (r"scripts/fuzz\.sh( \d+ call_sequences)?", test("fuzz_tests")),
    (r"scripts/fault_table\.py", test("fault_table")),
    (r"scripts/mutation_check\.py( .*)?", test("mutation_check_finds_breaches")),
    (r"python3 tests/abi/interface_snapshot\.py --root \. --accept",
     test("abi_interface_check_sees_changes")),
]


def names_in_cmake(*patterns):
    files = [*(ROOT / "tests").rglob("*.cmake"), *(ROOT / "cmake").glob("*.cmake"),
             ROOT / "scripts/static_checks.cmake", *(ROOT / "tests").rglob("CMakeLists.txt")]
    text = "\n".join(file.read_text(encoding="utf-8") for file in files)
    return {name for pattern in patterns for name in re.findall(pattern, text)}


TESTS = names_in_cmake(r"\bNAME (\w+)", r"quastel_(?:host|windows)_test\(\s*(\w+)",
                       r"quastel_static_check\(\s*(\w+)")
TARGETS = names_in_cmake(r"add_(?:custom_target|executable|library)\(\s*(\w+)")
PRESETS = {entry["name"] for entry in
           json.loads((ROOT / "CMakePresets.json").read_text())["configurePresets"]}


def commands():
    """(place, command) of each line that is one, without the prompt and what explains it."""
    for document in documents_of(ROOT):
        lines = (ROOT / document).read_text(encoding="utf-8").splitlines()
        for block in blocks_of(ROOT, document):
            before = [text for text in lines[:block.line - 1] if text.strip() and text != "```"]
            if before and "Windows only" in before[-1]:
                continue
            for number, text in enumerate(block.lines):
                if not COMMAND.match(text):
                    continue
                # What a synopsis has no room for stands below it.
                for more in block.lines[number + 1:]:
                    if not re.match(r" +\[", more):
                        break
                    text += " " + more.strip()
                for part in COMMENT.sub("", text).removeprefix("> ").split(" && "):
                    yield f"{document}:{block.line + number}", part.strip()


def is_synopsis(command):
    return command.startswith("quastel ") and bool(re.search(r"\[|\.\.\.| \| ", command))


ALL = list(commands())
OF_CLIENT = [(place, command) for place, command in ALL
             if command.startswith("quastel ") and not is_synopsis(command)]
SYNOPSES = [(place, command) for place, command in ALL if is_synopsis(command)]
OF_RUN = [(place, command) for place, command in ALL if command.split()[0] == "./run"]
OTHERS = [(place, command) for place, command in ALL
          if command.split()[0] not in ("quastel", "./run")]


def put(folder, name, content=b"", size=None):
    path = Path(folder) / name
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content)
    if size is not None:
        os.truncate(path, size)
    os.utime(path, (client_harness.FIRST_TIME,) * 2)


class Drive:
    """A folder with a drive letter of its own, for the drives that the documents speak of."""

    def __init__(self):
        self.temporary = tempfile.TemporaryDirectory(prefix="doc_commands_", dir=OPTIONS.build)
        self.folder = self.temporary.name
        for letter in "uvwxyt":
            self.link = Path(os.environ["WINEPREFIX"]) / "dosdevices" / f"{letter}:"
            try:
                self.link.symlink_to(self.folder)
            except FileExistsError:
                continue
            self.letter = letter.upper()
            return
        raise RuntimeError("no drive letter is free")

    def remove(self):
        self.link.unlink()
        self.temporary.cleanup()


class Commands(unittest.TestCase):
    def test_the_documents_have_commands_of_each_kind(self):
        for kind, least in ((OF_CLIENT, 8), (SYNOPSES, 9), (OF_RUN, 6), (OTHERS, 10)):
            self.assertGreaterEqual(len(kind), least)

    def test_every_other_command_is_gone_through_by_a_test(self):
        for place, command in OTHERS:
            with self.subTest(f"{place}: {command}"):
                matches = [(match, check) for pattern, check in COVERED
                           if (match := re.fullmatch(pattern, command))]
                self.assertTrue(matches, "no test is known to go through it")
                self.assertTrue(all(check(match) for match, check in matches),
                                "what was to go through it is not there")
                script = ROOT / command.split()[0]
                if command.startswith("scripts/"):
                    self.assertTrue(os.access(script, os.X_OK), f"{script} is not executable")

    def test_the_check_knows_what_is_not_covered(self):
        for command in ("scripts/none.sh", "cmake --preset none", "./test; ls",
                        "build/host/bin/fs_tests --gtest_filter='None.*'"):
            self.assertFalse(any((match := re.fullmatch(pattern, command)) and check(match)
                                 for pattern, check in COVERED), command)


class OnWine(unittest.TestCase):
    def setUp(self):
        self.drive = Drive()
        self.addCleanup(self.drive.remove)

    def fill(self):
        """What the examples of the documents are about."""
        folder = self.drive.folder
        put(folder, "Users/demo/Videos/film.mkv", size=30 * MIB)
        put(folder, "Users/demo/AppData/Local/Temp/a.tmp", b"temporary")
        put(folder, "Windows/Temp/update.log", b"log")
        for name in ("photos/beach.jpg", "photos/copies/beach (1).jpg",
                     "Users/demo/Pictures/beach.jpg"):
            put(folder, name, b"beach" * 1000)
        put(folder, "empty.txt")
        (sample,) = [block.text for block in blocks_of(ROOT, "docs/rule-format.md")
                     if block.text.startswith("<?xml")]
        put(folder, "fabrikam.xml", sample.encode())
        os.makedirs(os.path.join(folder, "Users/demo/Music/old"), exist_ok=True)

    def test_the_commands_of_the_client_work(self):
        for place, command in OF_CLIENT:
            with self.subTest(f"{place}: {command}"):
                self.fill()  # again, since some of them remove
                here = re.sub(r"\b[DQ]:\\", lambda _: self.drive.letter + ":\\", command)
                here, _, target = here.partition(" > ")
                words = [word.strip('"') for word in re.findall(r'"[^"]*"|\S+', here)]
                result = client_harness.run(str(CLIENT), *words[1:], cwd=self.drive.folder)
                # A clean that asks gets no answer here, which is a no.
                asks = "--clean" in words and not {"--dry-run", "--yes"} & set(words)
                self.assertEqual(5 if asks else 0, result.code, result.err)
                self.assertTrue(result.err if asks else result.out)
                if target:
                    put(self.drive.folder, target, result.out.encode())

    def test_the_options_of_the_synopses_are_those_of_the_help(self):
        for place, command in SYNOPSES:
            if "COMMAND" in command:
                continue
            with self.subTest(f"{place}: {command}"):
                name = re.match(r"quastel ((?:[a-z]+ )*[a-z]+)(?= |$)", command)[1].split()
                result = client_harness.run(str(CLIENT), *name, "--help")
                self.assertEqual(0, result.code, result.err)
                for option in re.findall(r"--[a-z-]+", command):
                    self.assertRegex(result.out, rf"{option}\b")

    def test_the_commands_of_run_work(self):
        home = Path(self.drive.folder) / "home"
        put(home, "Downloads/disk.iso", size=20 * MIB)
        put(home, "Documents/letter.txt", b"Dear reader")
        put(home, "Pictures/one.jpg", b"picture")
        put(home, "Pictures/two.jpg", b"picture")
        os.makedirs(home / "Documents/nothing")
        env = dict(os.environ, HOME=str(home), QUASTEL_TREE=str(OPTIONS.build),
                   QUASTEL_WINEPREFIX=os.environ["WINEPREFIX"])
        for place, command in OF_RUN:
            with self.subTest(f"{place}: {command}"):
                # A script that ends is not waited for by those that it leaves: they have no pipe.
                with tempfile.TemporaryFile() as output:
                    done = subprocess.run(["bash", "-c", command], cwd=ROOT, env=env, timeout=LIMIT,
                                          stdin=subprocess.DEVNULL, stdout=output,
                                          stderr=subprocess.STDOUT)
                    output.seek(0)
                    text = output.read().decode(errors="replace")
                self.assertEqual(0, done.returncode, text)
                for folder, found in (("Downloads", "disk.iso"), ("Pictures", "two.jpg"),
                                      ("Documents", "nothing")):
                    if folder in command:
                        self.assertIn(found, text)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
