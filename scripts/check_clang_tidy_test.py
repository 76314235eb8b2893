#!/usr/bin/env python3
"""Shows that check_clang_tidy.py finds what is planted, on small trees made for it, and that what it
remembers does not hide anything.

usage: check_clang_tidy_test.py [COMPILER]

COMPILER is the one that the sources are said to be built with, c++ when none is named.
"""

import json
import shutil
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True  # the source tree stays as it is
import check_clang_tidy  # noqa: E402

PROJECT = Path(__file__).resolve().parent.parent
COMPILER = "c++"

# Without a header of the system: each run of the tool takes a fraction of a second.
FINE = "int* Nothing() {\n  return nullptr;\n}\n"
# No compiler warns of it.
FLAWED = "int* Nothing() {\n  return 0;\n}\n"
FLAW = "modernize-use-nullptr"


class ClangTidy(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.root = Path(self.folder.name).resolve() / "tree"
        self.build = self.root / "build"
        self.build.mkdir(parents=True)
        shutil.copy(PROJECT / ".clang-tidy", self.root)
        self.built = {}

    def tearDown(self):
        self.folder.cleanup()

    def put(self, name, text, options="-std=c++20"):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")
        if path.suffix == ".cpp":
            self.built[name] = options
        entries = [{"directory": str(self.build), "file": str(self.root / built),
                    "command": f"{COMPILER} -I{self.root / 'src'} {options} -c {self.root / built}"}
                   for built, options in self.built.items()]
        (self.build / "compile_commands.json").write_text(json.dumps(entries), encoding="utf-8")

    def check(self, *folders):
        found, self.count, self.looked_at = check_clang_tidy.check(
            self.root, self.build, list(folders) or ["src"])
        return "\n".join(found)

    def test_a_source_in_order_has_no_complaint(self):
        self.put("src/fs/a.cpp", FINE)
        self.assertEqual("", self.check())
        self.assertEqual((1, 1), (self.count, self.looked_at))

    def test_a_flaw_is_found(self):
        self.put("src/fs/a.cpp", FLAWED)
        self.assertIn(FLAW, self.check())

    def test_a_flaw_in_one_of_several_sources_is_found(self):
        self.put("src/fs/a.cpp", FINE)
        self.put("src/fs/b.cpp", FLAWED.replace("Nothing", "NothingElse"))
        found = self.check()
        self.assertIn(FLAW, found)
        self.assertIn("src/fs/b.cpp", found)
        self.put("src/fs/b.cpp", "")
        self.assertEqual("", self.check())
        self.assertEqual((2, 1), (self.count, self.looked_at))

    def test_what_only_an_analysis_of_paths_shows_is_found_in_several_sources(self):
        self.put("src/fs/a.cpp", FINE)
        self.put("src/fs/b.cpp",
                 "int Value(const int* p) {\n  if (p == nullptr) {\n    return *p;\n  }\n"
                 "  return 0;\n}\n")
        self.assertIn("clang-analyzer-core.NullDereference", self.check())

    def test_what_only_a_header_must_not_have_is_found_there_and_nowhere_else(self):
        using = "namespace n {\nint F();\n}  // namespace n\nusing n::F;\n"
        self.put("src/fs/a.cpp", using)
        self.put("src/fs/b.cpp", "int G();\n")
        self.assertEqual("", self.check())
        self.put("src/fs/a.h", using)
        self.put("src/fs/b.cpp", '#include "fs/a.h"\nint G();\n')
        self.assertIn("google-global-names-in-headers", self.check())

    def test_sources_may_have_names_of_their_own_in_common(self):
        own = "namespace {\nint* Nothing() {\n  return nullptr;\n}\n}  // namespace\n"
        self.put("src/fs/a.cpp", own + "int* A() {\n  return Nothing();\n}\n")
        self.put("src/fs/b.cpp", own + "int* B() {\n  return Nothing();\n}\n")
        self.assertEqual("", self.check())
        self.assertEqual((2, 2), (self.count, self.looked_at))

    def test_sources_with_commands_of_their_own_are_found(self):
        self.put("src/fs/a.cpp", f"#if defined(MORE)\n{FLAWED}#endif\n")
        self.put("src/fs/b.cpp", FINE)
        self.assertEqual("", self.check())
        self.put("src/fs/a.cpp", f"#if defined(MORE)\n{FLAWED}#endif\n", "-std=c++20 -DMORE")
        self.assertIn(FLAW, self.check())

    def test_a_source_that_does_not_compile_is_found(self):
        self.put("src/fs/a.cpp", "int f() { return nothing; }\n")
        self.assertIn("nothing", self.check())

    def test_headers_of_ours_are_looked_at(self):
        self.put("src/fs/a.h", FLAWED.replace("int*", "inline int*"))
        self.put("src/fs/a.cpp", '#include "fs/a.h"\n')
        self.assertIn(FLAW, self.check())

    def test_the_client_is_looked_at(self):
        self.put("apps/quastel/a.cpp", FLAWED)
        self.assertIn(FLAW, self.check("apps/quastel"))

    def test_folders_that_were_not_named_or_are_left_out_are_not(self):
        self.put("src/fs/a.cpp", FINE)
        self.put("src/platform/win32/b.cpp", FLAWED)
        self.put("tests/fs/c.cpp", FLAWED)
        self.assertEqual("", self.check("src=src/platform/win32"))
        self.assertEqual(1, self.count)

    def test_what_passed_is_not_looked_at_again(self):
        self.put("src/fs/a.cpp", FINE)
        self.check()
        self.assertEqual("", self.check())
        self.assertEqual((1, 0), (self.count, self.looked_at))

    def test_what_did_not_pass_is_looked_at_again(self):
        self.put("src/fs/a.cpp", FLAWED)
        self.check()
        self.assertIn(FLAW, self.check())

    def test_a_change_is_looked_at(self):
        self.put("src/fs/a.cpp", FINE)
        self.check()
        self.put("src/fs/a.cpp", FLAWED)
        self.assertIn(FLAW, self.check())

    def test_a_change_of_a_header_that_is_included_by_another_one_is_looked_at(self):
        self.put("src/base/b.h", "")
        self.put("src/fs/a.h", '#include "base/b.h"\n')
        self.put("src/fs/a.cpp", '#include "fs/a.h"\n')
        self.assertEqual("", self.check())
        self.put("src/base/b.h", FLAWED.replace("int*", "inline int*"))
        self.assertIn(FLAW, self.check())

    def test_a_change_of_the_command_or_of_the_checks_is_looked_at(self):
        changing = f"#if defined(MORE)\n{FLAWED}#endif\n"
        self.put("src/fs/a.cpp", changing)
        self.assertEqual("", self.check())
        self.put("src/fs/a.cpp", changing, "-std=c++20 -DMORE")
        self.assertIn(FLAW, self.check())
        with open(self.root / ".clang-tidy", "a", encoding="utf-8") as checks:
            checks.write("# another reason\n")
        self.put("src/fs/b.cpp", FINE)
        self.check()
        self.assertEqual((2, 2), (self.count, self.looked_at))

    def test_code_is_read_as_the_named_compiler_reads_it(self):
        self.put("src/fs/a.cpp", "#if defined(_WIN32)\n#include <windows.h>\n"
                 "int Bits() {\n  return MAXDWORD == 0 ? 1 : 0;\n}\n#endif\n")
        self.assertEqual("", self.check())
        self.put("src/fs/a.cpp", f"#if defined(_WIN32)\n#include <windows.h>\n{FLAWED}#endif\n")
        self.assertEqual("mingw32" in COMPILER, FLAW in self.check())


if __name__ == "__main__":
    if len(sys.argv) > 1:
        COMPILER = sys.argv.pop(1)
    unittest.main()
