#!/usr/bin/env python3
"""Shows that check_layering.py finds each kind of breach, on small trees made for it."""

import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True  # the source tree stays as it is
import check_layering  # noqa: E402


class Layering(unittest.TestCase):
    def complaints(self, files):
        with tempfile.TemporaryDirectory() as folder:
            root = Path(folder).resolve()
            names = " ".join(Path(name).name for name in files if name.endswith(".cpp"))
            for name, text in {"src/CMakeLists.txt": names, **files}.items():
                path = root / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text, encoding="utf-8")
            return check_layering.check(root)

    def assert_breach(self, files, words):
        found = self.complaints(files)
        self.assertTrue(any(words in line for line in found), found)

    def test_a_house_in_order_has_no_complaint(self):
        self.assertEqual([], self.complaints({
            "src/base/text.h": "#include <string>\n",
            "src/fs/walk.cpp": '#include "base/text.h"\n#include "quastel_core.h"\n',
            "src/platform/win32/file.cpp": "#include <windows.h>\nint e = GetLastError();\n",
            "src/junk/run.h": "", "src/duplicate/run.h": "",
            "src/scan/product_scan_exports.cpp":
                '#include "junk/run.h"\n#include "duplicate/run.h"\n',
            "apps/quastel/main.cpp": '#include "quastel_core.h"\n#include "table.h"\n',
            "apps/quastel/table.h": "",
            "apps/quastel/json.cpp": "#include <nlohmann/json.hpp>\n"}))

    def test_base_includes_no_other_room(self):
        self.assert_breach({"src/fs/a.h": "", "src/base/b.h": '#include "fs/a.h"\n'},
                           "base must not include")

    def test_junk_and_duplicate_never_include_each_other(self):
        self.assert_breach({"src/junk/a.h": "", "src/duplicate/b.h": '#include "junk/a.h"\n'},
                           "duplicate must not include")
        self.assert_breach({"src/duplicate/a.h": "", "src/junk/b.h": '#include "duplicate/a.h"\n'},
                           "junk must not include")

    def test_the_scan_object_knows_no_kind(self):
        self.assert_breach({"src/junk/a.h": "", "src/scan/product_scan.cpp": '#include "junk/a.h"\n'},
                           "scan must not include")

    def test_only_the_backend_includes_system_headers(self):
        self.assert_breach({"src/fs/a.h": "#include <windows.h>\n"}, "system header")
        self.assert_breach({"src/platform/a.h": "#include <sys/stat.h>\n"}, "system header")

    def test_nobody_includes_the_backend(self):
        self.assert_breach({"src/platform/win32/a.h": "",
                            "src/platform/b.h": '#include "platform/win32/a.h"\n'},
                           "belongs to the backend alone")

    def test_the_last_error_is_asked_in_the_backend_alone(self):
        self.assert_breach({"src/fs/a.cpp": "int e = GetLastError();\n"}, "GetLastError")
        self.assertEqual([], self.complaints({"src/fs/a.cpp": "// not GetLastError\n"}))

    def test_loops_are_found(self):
        self.assert_breach({"src/fs/a.h": '#include "fs/b.h"\n', "src/fs/b.h": '#include "fs/a.h"\n'},
                           "in a loop")

    def test_long_files_are_found(self):
        self.assert_breach({"src/fs/a.h": "\n" * 501}, "501 lines")

    def test_the_client_sees_the_public_header_only(self):
        self.assert_breach({"src/fs/a.h": "", "apps/quastel/main.cpp": '#include "fs/a.h"\n'},
                           "neither the public header")
        self.assert_breach({"src/fs/a.h": "", "tests/dll/x_test.cpp": '#include "../../src/fs/a.h"\n'},
                           "neither the public header")

    def test_headers_that_take_long_to_compile_stay_behind_their_modules(self):
        self.assert_breach({"apps/quastel/table.h": "#include <nlohmann/json.hpp>\n"},
                           "takes long to compile")
        self.assert_breach({"apps/quastel/json.cpp": "#include <CLI/CLI.hpp>\n"},
                           "takes long to compile")

    def test_a_source_that_no_list_names_is_found(self):
        self.assert_breach({"src/CMakeLists.txt": "", "tests/fs/a_test.cpp": ""},
                           "named in no CMake file")


if __name__ == "__main__":
    unittest.main()
