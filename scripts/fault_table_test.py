#!/usr/bin/env python3
"""Shows that fault_table.py refuses records that are not whole, and a table that is not theirs."""

import collections
import json
import pathlib
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True  # the source tree stays as it is
import fault_table  # noqa: E402

EXPORTS = fault_table.exports_of(fault_table.EXPORTS.read_text(encoding="utf-8"))


def whole():
    counts = dict(calls=4, single_faults=9, lasting_faults=9, memory_failures=3, crash_points=4)
    return {name: collections.Counter(counts) for row in fault_table.ROWS for name in row.scenarios}


class FaultTable(unittest.TestCase):
    def problems(self, scenarios, exports=None):
        return list(fault_table.problems_of(scenarios, EXPORTS if exports is None else exports))

    def assert_problem(self, text, scenarios, exports=None):
        found = self.problems(scenarios, exports)
        self.assertEqual(1, len(found), found)
        self.assertIn(text, found[0])

    def changed(self, scenario, **counts):
        scenarios = whole()
        scenarios[scenario].update(counts)
        return scenarios

    def test_whole_records_are_fine(self):
        self.assertEqual([], self.problems(whole()))

    def test_a_missing_scenario_is_found(self):
        scenarios = whole()
        del scenarios["JunkScan"]
        self.assert_problem("JunkScan", scenarios)

    def test_a_scenario_without_a_row_is_found(self):
        scenarios = whole()
        scenarios["Unheard"] = scenarios["JunkScan"]
        self.assert_problem("Unheard", scenarios)

    def test_each_kind_of_count_that_a_failed_sweep_leaves_out_is_found(self):
        for what in fault_table.COUNTS:
            scenarios = whole()
            del scenarios["JunkScan"][what]
            found = self.problems(scenarios)
            self.assertIn(f"JunkScan: a sweep has not recorded its {what}, or has failed", found)

    def test_a_call_without_its_fault_or_its_crash_is_found(self):
        self.assert_problem("crash points", self.changed("JunkScan", crash_points=-1))
        self.assert_problem("single_faults", self.changed("JunkScan", single_faults=-6))
        self.assert_problem("lasting_faults", self.changed("JunkScan", lasting_faults=-6))

    def test_an_export_without_a_row_is_found(self):
        self.assert_problem("qs_new", whole(), EXPORTS + ["qs_new"])
        self.assert_problem("qs_version", whole(), [e for e in EXPORTS if e != "qs_version"])

    def test_a_changed_count_is_found_in_the_table(self):
        made = fault_table.table_of(whole(), "gcc 1")
        self.assertEqual([], fault_table.differences(made, made))
        for what in fault_table.COUNTS:
            other = fault_table.table_of(self.changed("JunkScan", **{what: 1}), "gcc 1")
            self.assertNotEqual([], fault_table.differences(made, other), what)

    def test_an_empty_table_and_other_orders_are_found(self):
        made = fault_table.table_of(whole(), "gcc 1")
        self.assertNotEqual([], fault_table.differences([], made))
        self.assertNotEqual([], fault_table.differences(made[:2] + made[:1:-1], made))
        self.assertNotEqual([], fault_table.differences([made[1], made[0]] + made[2:], made))

    def test_with_another_compiler_everything_but_the_allocations_counts(self):
        written = fault_table.table_of(whole(), "gcc 1")
        other = fault_table.table_of(self.changed("JunkScan", memory_failures=1), "gcc 2")
        self.assertEqual([], fault_table.differences(written, other))
        for what in ("calls", "single_faults", "lasting_faults", "crash_points"):
            other = fault_table.table_of(self.changed("JunkScan", **{what: 1}), "gcc 2")
            self.assertNotEqual([], fault_table.differences(written, other), what)

    def test_records_of_all_programs_add_up(self):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            for program in fault_table.PROGRAMS:
                lines = [{"compiler": "gcc 1"}, {"scenario": "A", "what": "calls", "count": 2}]
                (folder / f"{program}.jsonl").write_text(
                    "".join(json.dumps(line) + "\n" for line in lines), encoding="utf-8")
            scenarios, compiler = fault_table.read_records(folder)
            self.assertEqual("gcc 1", compiler)
            self.assertEqual(2 * len(fault_table.PROGRAMS), scenarios["A"]["calls"])
            (folder / f"{fault_table.PROGRAMS[0]}.jsonl").unlink()
            with self.assertRaises(SystemExit):
                fault_table.read_records(folder)

    def test_a_program_that_fails_ends_everything(self):
        with tempfile.TemporaryDirectory() as name:
            build = pathlib.Path(name)
            (build / "bin").mkdir()
            for program in fault_table.PROGRAMS:
                self.write_program(build / "bin" / program, "echo '{}' >\"$QUASTEL_SWEEP_RECORD\"")
            folder = fault_table.run_programs(build)
            self.assertEqual(len(fault_table.PROGRAMS), len(list(folder.iterdir())))
            self.write_program(build / "bin" / fault_table.PROGRAMS[-1], "exit 1")
            with self.assertRaises(SystemExit):
                fault_table.run_programs(build)

    def write_program(self, path, line):
        path.write_text(f"#!/bin/sh\n{line}\n", encoding="utf-8")
        path.chmod(0o755)

    def test_a_document_without_its_markers_is_refused(self):
        for text in ("", fault_table.BEGIN, f"{fault_table.END}\n{fault_table.BEGIN}\n"):
            with self.assertRaises(SystemExit):
                fault_table.split(text)
        self.assertEqual((["a", fault_table.BEGIN], ["b"], [fault_table.END, "c"]),
                         fault_table.split(f"a\n{fault_table.BEGIN}\nb\n{fault_table.END}\nc\n"))


if __name__ == "__main__":
    unittest.main()
