#!/usr/bin/env python3
"""Shows that check_interface.py sees each kind of change, on copies of the header.

usage: check_interface_test.py ROOT COMPILER
"""

import shutil
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True  # the source tree stays as it is
import check_interface  # noqa: E402
import interface_snapshot  # noqa: E402

root = Path(sys.argv[1])
compiler = sys.argv[2]

HEADER = "include/quastel_core.h"
FILES = (HEADER, interface_snapshot.SNAPSHOT, "CHANGELOG.md")


class Interface(unittest.TestCase):
    def complaints(self, file, old, new):
        """The complaints after `old` was replaced by `new` in a copy of `file`."""
        with tempfile.TemporaryDirectory() as folder:
            copy = Path(folder)
            for name in FILES:
                (copy / name).parent.mkdir(parents=True, exist_ok=True)
                shutil.copyfile(root / name, copy / name)
            text = (copy / file).read_text(encoding="utf-8")
            self.assertIn(old, text, "the text to change is no longer there")
            (copy / file).write_text(text.replace(old, new, 1), encoding="utf-8")
            return list(check_interface.complaints(copy, compiler))

    def assert_seen(self, old, new, line):
        found = self.complaints(HEADER, old, new)
        self.assertEqual(1, len(found), found)
        self.assertIn("differs from the accepted interface", found[0])
        self.assertIn(line, found[0])

    def test_the_tree_as_it_is_has_no_complaint(self):
        self.assertEqual([], self.complaints(HEADER, "qs_", "qs_"))

    def test_a_comment_is_no_change(self):
        self.assertEqual([], self.complaints(HEADER, "/** Success. */", "/** All went well. */"))

    def test_a_line_break_is_no_change(self):
        self.assertEqual([], self.complaints(HEADER, "qs_product_scan_start(qs_product_scan* scan,",
                                             "qs_product_scan_start(qs_product_scan *scan,\n"))

    def test_a_constant_with_another_value_is_seen(self):
        self.assert_seen("QS_BUSY ((qs_status)7)", "QS_BUSY ((qs_status)8)",
                         "+constant QS_BUSY = 8")

    def test_a_new_constant_is_seen(self):
        self.assert_seen("#define QS_BUSY", "#define QS_TIRED ((qs_status)8)\n#define QS_BUSY",
                         "+constant QS_TIRED = 8")

    def test_a_wider_field_is_seen(self):
        self.assert_seen("uint32_t deleted;\n} qs_session_row", "uint64_t deleted;\n} qs_session_row",
                         "+record qs_session_row of 24 bytes")

    def test_a_renamed_field_is_seen(self):
        self.assert_seen("uint64_t item_id;", "uint64_t id;", "+  at 0: uint64_t id")

    def test_fields_that_change_places_are_seen(self):
        comment = "/** The file's last-write time in ticks (convention 10). */"
        self.assert_seen(f"uint64_t size;\n  {comment}\n  uint64_t modified;",
                         f"uint64_t modified;\n  {comment}\n  uint64_t size;",
                         "+  at 0: uint64_t modified")

    def test_another_sign_is_seen(self):
        self.assert_seen("  int64_t size;", "  uint64_t size;", "+  at 24: uint64_t size")

    def test_another_packing_is_seen(self):
        self.assert_seen("#pragma pack(push, 4)", "#pragma pack(push, 8)",
                         "+record qs_session_scan_status of 40 bytes, aligned to 8")

    def test_a_missing_function_is_seen(self):
        self.assert_seen("QS_API const char* qs_version(void);", "",
                         "-function const char* qs_version(void)")

    def test_a_new_function_is_seen(self):
        self.assert_seen("QS_API const char* qs_version(void);",
                         "QS_API const char* qs_version(void);\nQS_API int32_t qs_more(void);",
                         "+function int32_t qs_more(void)")

    def test_another_parameter_is_seen(self):
        self.assert_seen("qs_large_file_included(int64_t size)",
                         "qs_large_file_included(int64_t size, uint32_t mode)",
                         "+function int32_t qs_large_file_included(int64_t size, uint32_t mode)")

    def test_parameters_that_change_places_are_seen(self):
        self.assert_seen("qs_path_contains(const qs_char* haystack, const qs_char* needle)",
                         "qs_path_contains(const qs_char* needle, const qs_char* haystack)",
                         "+function int32_t qs_path_contains(const qs_char* needle")

    def test_another_callback_is_seen(self):
        self.assert_seen("(*qs_directory_callback)(void* user, const qs_char* path)",
                         "(*qs_directory_callback)(const qs_char* path, void* user)",
                         "+callback void qs_directory_callback(const qs_char* path")

    def test_another_status_type_is_seen(self):
        self.assert_seen("typedef uint32_t qs_status", "typedef int32_t qs_status",
                         "+type qs_status is int32_t of 4 bytes")

    def test_what_is_not_understood_is_refused(self):
        for text in ("static inline int qs_more(void) { return 1; }", "#define QS_TWICE(x) (2 * (x))"):
            with self.assertRaises(SystemExit):
                self.complaints(HEADER, "QS_API const char* qs_version(void);",
                                "QS_API const char* qs_version(void);\n" + text)

    def test_an_accepted_change_needs_its_digest_in_the_changelog(self):
        found = self.complaints(interface_snapshot.SNAPSHOT, "QS_BUSY = 7", "QS_BUSY = 8")
        self.assertEqual(2, len(found), found)
        self.assertIn("CHANGELOG.md gives the digest", found[1])

    def test_a_section_without_the_digest_is_seen(self):
        found = self.complaints("CHANGELOG.md", "igest of the interface", "igest of something")
        self.assertEqual(1, len(found), found)
        self.assertIn("CHANGELOG.md gives the digest []", found[0])

    def test_a_new_version_without_a_section_of_its_own_keeps_the_older_one(self):
        # Its interface is then the older one's, which the digest proves.
        self.assertEqual([], self.complaints("CHANGELOG.md", "\n## [", "\n## [9.9.9]\n\n## ["))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
