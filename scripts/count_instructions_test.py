#!/usr/bin/env python3
"""Tests of count_instructions.py: what it complains about, and what it lets through."""

import unittest

from count_instructions import compare


class Complaints(unittest.TestCase):
    def test_equal_counts_are_let_through(self):
        self.assertEqual(compare({"walk": 1000}, {"walk": 1000}, 0.05), [])

    def test_fewer_instructions_are_let_through(self):
        self.assertEqual(compare({"walk": 1000}, {"walk": 1}, 0.05), [])

    def test_growth_up_to_the_tolerance_is_let_through(self):
        self.assertEqual(compare({"walk": 1000}, {"walk": 1050}, 0.05), [])

    def test_growth_above_the_tolerance_is_named_with_its_share(self):
        complaints = compare({"walk": 1000, "scan": 10}, {"walk": 1051, "scan": 10}, 0.05)
        self.assertEqual(complaints, ["walk: 1051 instructions, +5.1% against 1000"])

    def test_a_scenario_without_a_count_is_named(self):
        self.assertEqual(len(compare({}, {"walk": 1000}, 0.05)), 1)

    def test_a_count_without_a_scenario_is_named(self):
        self.assertEqual(len(compare({"walk": 1000}, {}, 0.05)), 1)


if __name__ == "__main__":
    unittest.main()
