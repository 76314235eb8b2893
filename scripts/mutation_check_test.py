#!/usr/bin/env python3
"""Shows that the operators of mutation_check.py do what they say, on sample lines."""

import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True  # the source tree stays as it is
from mutation_check import Choice, Run, copy_tree, is_caught, share  # noqa: E402
from mutation_operators import OPERATORS, apply, find_mutants  # noqa: E402


def changes(text, operator=None, file="src/fs/a.cpp"):
    """What becomes of the text, for each mutant of this operator."""
    found = [m for mutants in find_mutants(file, text).values() for m in mutants]
    return [apply(text, m) for m in found if operator in (None, m.operator)]


class Operators(unittest.TestCase):
    def check(self, operator, before, *after):
        self.assertIn(operator, OPERATORS)
        self.assertEqual(sorted(after), sorted(changes(before, operator)))

    def test_comparisons_are_turned(self):
        for old, new in (("<", "<="), ("<=", "<"), (">", ">="), (">=", ">"), ("==", "!="),
                         ("!=", "==")):
            self.check("comparison turned", f"  x = a {old} b;", f"  x = a {new} b;")

    def test_templates_shifts_and_arrows_are_no_comparisons(self):
        for line in ("  std::vector<int> a;", "  b = a << 2;", "  a->b();", "template <class T>"):
            self.check("comparison turned", line)

    def test_a_comparison_at_the_end_of_a_line_is_turned(self):
        self.check("comparison turned", "  return first ==", "  return first !=")

    def test_conditions_are_negated_as_a_whole(self):
        self.check("condition negated", "  if (a && b) {", "  if (!(a && b)) {")
        self.check("condition negated", "  } else if (Holds(a)) {", "  } else if (!(Holds(a))) {")
        self.check("condition negated", "  while (a < b) {", "  while (!(a < b)) {")

    def test_behind_a_declaration_only_the_condition_is_negated(self):
        self.check("condition negated", "  if (int a = f(); a > 0) {",
                   "  if (int a = f(); !(a > 0)) {")
        self.check("condition negated", "  if (auto a = f()) {")

    def test_constants_are_off_by_one(self):
        self.check("constant off by one", "  x = y[0];", "  x = y[1];")
        self.check("constant off by one", "  x = 20'000u;", "  x = 20001u;", "  x = 19999u;")
        self.check("constant off by one", "  x = 0x1F;", "  x = 0x20;", "  x = 0x1E;")

    def test_truth_values_are_constants(self):
        self.check("constant off by one", "  bool a = true;", "  bool a = false;")
        self.check("constant off by one", "  f(a, false);", "  f(a, true);")

    def test_digits_in_names_are_no_constants(self):
        self.check("constant off by one", "  std::uint32_t a2 = kPrime3;")

    def test_calls_assignments_and_steps_are_dropped(self):
        for statement in ("Clear(a);", "a.b()->c(d);", "a = b;", "*a += b;", "++a;", "return;",
                          "continue;", "break;"):
            self.check("statement dropped", f"  {statement}", "  ;")

    def test_declarations_and_answers_are_not_dropped(self):
        for statement in ("const MutexLock lock(mutex_);", "int a = 2;", "return a;", "if (a) b();",
                          "using A = B;"):
            self.check("statement dropped", f"  {statement}")

    def test_the_rest_of_a_longer_statement_is_not_dropped(self):
        self.check("statement dropped", "  const int a =\n      f(b);")

    def test_and_becomes_or(self):
        self.check("and/or turned", "  x = a && b;", "  x = a || b;")
        self.check("and/or turned", "  if (a ||", "  if (a &&")
        self.check("and/or turned", "  void F(T&& a);")

    def test_signs_are_turned(self):
        self.check("sign turned", "  x = a + b;", "  x = a - b;")
        self.check("sign turned", "  x -= b;", "  x += b;")
        self.check("sign turned", "  ++x;", "  --x;")
        self.check("sign turned", "  f(-1);")

    def test_negations_are_dropped(self):
        self.check("negation dropped", "  x = !a;", "  x = a;")
        self.check("negation dropped", "  x = a != b;")

    def test_answers_are_changed(self):
        for old, new in (("true", "false"), ("false", "true"), ("QS_OK", "QS_FAILED"),
                         ("QS_BUSY", "QS_OK")):
            self.check("answer changed", f"  return {old};", f"  return {new};")
        self.check("answer changed", "  return a ? b : c;", "  return a ? c : b;")

    def test_statements_are_swapped(self):
        self.check("statements swapped", "  f(a);\n  g(a);", "  g(a);\n  f(a);")
        self.check("statements swapped", "  a = b;\n  b = c;", "  b = c;\n  a = b;")

    def test_assignments_that_have_nothing_to_do_with_each_other_stay(self):
        self.check("statements swapped", "  a.x = b;\n  a.y = c;")
        self.check("statements swapped", "  ++a;\n  ++b;")

    def test_statements_of_different_blocks_are_not_swapped(self):
        self.check("statements swapped", "    f(a);\n  }\n  g(a);")


class Places(unittest.TestCase):
    def test_what_is_no_code_stays_as_it_is(self):
        for text in ("// a < b", "#include <a>", "#define A(b) \\\n  (b + 1)",
                     "static_assert(a == 32);", "static_assert(a ==\n              32);",
                     'x = "a < 1";', "x = 'a';", "/* a == b\n   c == d */"):
            self.assertEqual([], [c for c in changes(text) if c != ";"], text)

    def test_a_comment_behind_code_stays_as_it_is(self):
        self.assertEqual(["  x = a - b;  // a + b"],
                         changes("  x = a + b;  // a + b", "sign turned"))

    def test_what_a_test_cannot_see_stays_as_it_is(self):
        self.assertEqual([], changes("  list.reserve(count + 1);"))
        self.assertEqual([], changes("  A(const A&) = delete;"))

    def test_numbers_of_the_system_are_left_to_the_system(self):
        line = "  kAccessDenied = 5,"
        self.assertEqual([], changes(line, file="src/platform/error.h"))
        self.assertNotEqual([], changes(line))

    def test_a_fault_is_not_put_into_another_source(self):
        mutant = find_mutants("src/fs/a.cpp", "  f(a);")[1][0]
        with self.assertRaises(ValueError):
            apply("  g(a);", mutant)


class Choices(unittest.TestCase):
    FILES = [("src/fs/a.cpp", "  ++a;\n" * 60), ("src/fs/b.h", "  ++a;\n" * 60),
             ("src/junk/c.cpp", "  ++a;\n" * 30)]

    def test_the_same_seed_makes_the_same_choice_and_another_one_another(self):
        first, same, other = (Choice(self.FILES, 20, s).first() for s in (1, 1, 2))
        self.assertEqual(first, same)
        self.assertNotEqual(first, other)

    def test_rooms_have_their_share_and_a_line_has_one_fault(self):
        chosen = Choice(self.FILES, 24, 1).first()
        places = {(m.file, m.line) for m in chosen}
        self.assertEqual(24, len(places))
        self.assertEqual(6, sum(m.file.startswith("src/junk/") for m in chosen))

    def test_what_is_listed_as_equivalent_is_not_chosen(self):
        files = [("src/fs/a.cpp", "  if (a) {\n    ++b;\n  }\n  if (c) {\n    ++b;\n  }\n")]
        entry = {"file": "src/fs/a.cpp", "behind": "  if (c) {", "before": ["    ++b;"]}
        entries = [dict(entry, after=[f"    {after};"]) for after in ("--b", "")]
        places = {m.line for seed in range(20) for m in Choice(files, 4, seed, entries).first()}
        self.assertEqual({1, 2, 4}, places)

    def test_shares_are_whole_and_within_their_limits(self):
        self.assertEqual({"a": 3, "b": 1}, share(4, {"a": 30, "b": 10}, {"a": 9, "b": 9}))
        self.assertEqual({"a": 1, "b": 2}, share(9, {"a": 30, "b": 10}, {"a": 1, "b": 2}))


class FakeBench:
    """Answers for each line what the line says."""

    def try_mutant(self, mutant):
        return mutant.before[0].strip("+; ").replace("_", " ")

    def stop(self):
        pass


class Runs(unittest.TestCase):
    def run_all(self, words, count):
        files = [("src/fs/a.cpp", "".join(f"  ++{word};\n" for word in words))]
        choice = Choice(files, count, 1)
        run = Run(choice.orders, choice.quotas, [FakeBench(), FakeBench()], lambda *_: None)
        return run.execute()

    def test_what_does_not_compile_is_replaced_by_the_next(self):
        results = self.run_all(["does_not_compile", "a_test"] * 20, 15)
        self.assertEqual(["a test"] * 15, [r["outcome"] for r in results])

    def test_what_an_earlier_run_tried_is_not_tried_again(self):
        files = [("src/fs/a.cpp", "  ++survived;\n" * 20)]
        choice = Choice(files, 10, 1)
        first = Run(choice.orders, choice.quotas, [FakeBench()], lambda *_: None).execute()
        known = [dict(result, outcome="known") for result in first[:7]]
        again = Run(choice.orders, choice.quotas, [FakeBench()], lambda *_: None, known).execute()
        self.assertEqual(["known"] * 7 + ["survived"] * 3, sorted(r["outcome"] for r in again))

    def test_a_room_that_runs_out_of_faults_ends(self):
        results = self.run_all(["does_not_compile"] * 20 + ["survived"] * 3, 15)
        self.assertEqual([False] * 3, [is_caught(r) for r in results])


class Copies(unittest.TestCase):
    def test_a_copy_follows_the_tree_and_has_no_build_folder(self):
        with tempfile.TemporaryDirectory() as folder:
            tree, copy = Path(folder) / "tree", Path(folder) / "copy"
            for name in ("src/a.cpp", "src/b.cpp", "build/c", ".git/d"):
                (tree / name).parent.mkdir(parents=True, exist_ok=True)
                (tree / name).write_text(name, encoding="utf-8")
            copy_tree(tree, copy)
            (copy / "src/a.cpp").write_text("a fault", encoding="utf-8")
            unchanged = (copy / "src/b.cpp").stat().st_mtime_ns
            (tree / "src/new.cpp").write_text("new", encoding="utf-8")
            copy_tree(tree, copy)
            found = {p.relative_to(copy).as_posix(): p.read_text(encoding="utf-8")
                     for p in copy.rglob("*") if p.is_file()}
            self.assertEqual({"src/a.cpp": "src/a.cpp", "src/b.cpp": "src/b.cpp",
                              "src/new.cpp": "new"}, found)
            self.assertEqual(unchanged, (copy / "src/b.cpp").stat().st_mtime_ns)
            (tree / "src/new.cpp").unlink()
            copy_tree(tree, copy)
            self.assertFalse((copy / "src/new.cpp").exists())


if __name__ == "__main__":
    unittest.main()
