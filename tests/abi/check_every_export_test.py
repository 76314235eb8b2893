#!/usr/bin/env python3
"""Shows that check_every_export.py misses nothing, on small interfaces made for it."""

import sys
import unittest

sys.dont_write_bytecode = True  # the source tree stays as it is
from check_every_export import complaints  # noqa: E402

HEADER = """
typedef uint32_t qs_status;
typedef void (*qs_callback)(void* user);
QS_API qs_status qs_walk(const char* root, qs_callback callback, uint64_t count);
QS_API int32_t qs_fits(int64_t size);
"""
LISTED = ["qs_walk", "qs_fits"]
GOOD = """
void f(void) {
  EXPECT(QS_OK, qs_walk("a", hear, 1));
  EXPECT(QS_INVALID_ARGUMENT, qs_walk(NULL, hear, 1));
  EXPECT(QS_INVALID_ARGUMENT, qs_walk("a", NULL, g(1, 2)));
  EXPECT(1, qs_fits(5));
}
"""


class EveryExport(unittest.TestCase):
    def assert_complaint(self, source, words):
        found = list(complaints(HEADER, LISTED, [source]))
        self.assertTrue(any(words in text for text in found), found)

    def test_a_complete_program_has_no_complaint(self):
        self.assertEqual([], list(complaints(HEADER, LISTED, [GOOD])))

    def test_a_missing_function_is_found(self):
        self.assert_complaint(GOOD.replace("EXPECT(1, qs_fits(5));", ""), "qs_fits is never called")

    def test_a_call_in_a_comment_is_none(self):
        self.assert_complaint(GOOD.replace("EXPECT(1", "// EXPECT(1"), "qs_fits is never called")
        self.assert_complaint(GOOD.replace("EXPECT(1, qs_fits(5));", "/* EXPECT(1, qs_fits(5)); */"),
                              "qs_fits is never called")

    def test_a_call_in_a_text_is_none(self):
        self.assert_complaint(GOOD.replace("EXPECT(1, qs_fits(5));", 'puts("EXPECT(1, qs_fits(5))");'),
                              "qs_fits is never called")

    def test_a_failure_alone_does_not_do(self):
        self.assert_complaint(GOOD.replace("EXPECT(1, qs", "EXPECT(0, qs"),
                              "qs_fits is never called with success")
        self.assert_complaint(GOOD.replace("EXPECT(QS_OK", "EXPECT(QS_BUSY"),
                              "qs_walk is never called with success")

    def test_a_missing_null_is_found(self):
        self.assert_complaint(GOOD.replace('qs_walk("a", NULL', 'qs_walk("a", hear'),
                              "null callback")
        self.assert_complaint(GOOD.replace("qs_walk(NULL", 'qs_walk("b"'), "null root")

    def test_an_answer_that_is_thrown_away_is_found(self):
        self.assert_complaint(GOOD.replace("EXPECT(1", "qs_fits(6); EXPECT(1"), "not looked at")
        self.assert_complaint(GOOD.replace("EXPECT(1, qs_fits(5))", "EXPECT(1, qs_fits(5) | 1)"),
                              "not looked at")

    def test_a_list_with_another_name_is_found(self):
        self.assertEqual(["the .def file and the header name different functions"],
                         list(complaints(HEADER, ["qs_walk", "qs_other"], [GOOD])))


if __name__ == "__main__":
    unittest.main()
