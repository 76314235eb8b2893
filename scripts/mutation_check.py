#!/usr/bin/env python3
"""Makes small faults in src/, one at a time, and reports which of them the host tests catch.

    scripts/mutation_check.py [--count 200] [--seed 1] [--jobs 2] [--only FILE...] [--list]
    scripts/mutation_check.py --resume
    scripts/mutation_check.py --again build/mutants/result.json

The faults are those of mutation_operators.py, spread over the rooms by their lines of code; the same
seed makes the same ones. Those that change nothing are listed in mutation_equivalents.json. The tests
are built once, from a copy of the tree in build/mutants; for each fault only what it changes is
compiled, and linked in front of the rest. The working tree stays as it is. A fault is caught when a
test program fails, crashes or takes far longer than it does without the fault. One that does not
compile is replaced by the next.

--resume goes on with a run of the same count and seed that was ended. --again tries the survivors of
an earlier run, after tests for them were written.
Exit code 1 when fewer than 95 % are caught.
"""

import argparse
import collections
import filecmp
import json
import os
import pathlib
import queue
import random
import re
import shlex
import shutil
import signal
import subprocess
import sys
import threading
import time

sys.dont_write_bytecode = True  # the source tree stays as it is
from mutation_operators import (  # noqa: E402
    OPERATORS, Mutant, apply, code_lines, find_mutants, is_listed)

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutants"
# Faults that change nothing which could be observed, each with its reason. They are not chosen.
EQUIVALENTS = ROOT / "scripts" / "mutation_equivalents.json"
ENOUGH = 0.95
LIBRARY = "src/CMakeFiles/quastel_core_host.dir/"
# The programs that know most about a room go first, the others by the time that they take.
OWN_PROGRAMS = {
    "base": ["base_tests", "frame_tests", "fs_tests"],
    "platform": ["base_tests", "contract_tests", "fs_tests"],
    "frame": ["frame_tests", "scan_tests", "session_tests"],
    "fs": ["fs_tests", "scan_tests"],
    "scan": ["scan_tests", "clean_tests"],
    "junk": ["junk_tests", "rules_tests", "junk_fault_tests"],
    "duplicate": ["duplicate_scan_tests", "duplicate_unit_tests", "duplicate_fault_tests"],
    "session": ["session_tests", "session_fault_tests"],
}
# A mutant that never ends is stopped by the processor time or the memory that it takes; one that
# waits for something, by the clock, which other work on the machine slows down.
MEMORY_KIB = 6 * 1024 * 1024


def sources(root, only):
    """Name and text of each source above the seam."""
    for path in sorted(root.glob("src/**/*")):
        name = path.relative_to(root).as_posix()
        if path.suffix in (".cpp", ".h") and "/win32/" not in name:
            if is_meant(name, only):
                yield name, path.read_text(encoding="utf-8")


def is_meant(name, only):
    return not only or any(name == o or name.endswith("/" + o) for o in only)


def room_of(name):
    return name.split("/")[1]


class Choice:
    """The mutants in the order in which they are tried, for each room, and how many each room gets."""

    def __init__(self, files, count, seed, equivalents=()):
        chance = random.Random(seed)
        weights = collections.Counter()
        lines = collections.defaultdict(list)
        for name, text in files:
            # Much has to be compiled anew for a header, and little of its text can be wrong.
            weight = 0.5 if name.endswith(".h") else 1.0
            found = find_mutants(name, text)
            if found:
                weights[room_of(name)] += weight * sum(1 for _ in code_lines(text))
            for number in sorted(found):
                lines[room_of(name)].append((weight, text, found[number]))
        self.orders = {}
        for room in sorted(lines):
            # One fault for each line; which of the operators makes it is as likely as any other.
            order = []
            for weight, text, mutants in lines[room]:
                operator = chance.choice(sorted({m.operator for m in mutants}))
                mutant = chance.choice([m for m in mutants if m.operator == operator])
                place = chance.random() ** (1 / weight)
                if not is_listed(text, mutant, equivalents):
                    order.append((place, mutant))
            order.sort(key=lambda entry: -entry[0])
            self.orders[room] = [mutant for _, mutant in order]
        self.quotas = share(count, weights, {r: len(o) for r, o in self.orders.items()})

    def first(self):
        return [m for room, order in self.orders.items() for m in order[:self.quotas[room]]]


def share(count, weights, limits):
    """Whole numbers that are together `count` and as near to the weights as they can be."""
    shares = {room: 0 for room in weights}
    for _ in range(min(count, sum(limits.values()))):
        open_rooms = [r for r in shares if shares[r] < limits[r]]
        shares[max(open_rooms, key=lambda r: weights[r] / (shares[r] + 0.5))] += 1
    return shares


class Build:
    """A copy of the tree and a host build of it, in which nothing is changed."""

    def __init__(self, work):
        self.work = work
        self.tree = work / "tree"
        self.folder = work / "build"
        self.folder.mkdir(parents=True, exist_ok=True)

    def run(self, command):
        return subprocess.run(command, cwd=self.folder, check=False, capture_output=True, text=True,
                              errors="replace", stdin=subprocess.DEVNULL)

    def must(self, command):
        done = self.run(command)
        if done.returncode != 0:
            raise RuntimeError(f"{shlex.join(command)}\n{done.stdout[-4000:]}{done.stderr[-4000:]}")
        return done.stdout

    def prepare(self):
        print(f"building {self.folder}", flush=True)
        copy_tree(ROOT, self.tree)
        self.must(["cmake", "-S", str(self.tree), "-B", str(self.folder), "-G", "Ninja",
                   "-DCMAKE_BUILD_TYPE=", "-DCMAKE_CXX_FLAGS=-w -O1",
                   "-DCMAKE_EXE_LINKER_FLAGS=" + linker_flags(),
                   "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON"])
        targets = self.must(["ninja", "-t", "targets", "all"])
        self.programs = sorted(re.findall(r"^bin/(\w+_tests):", targets, re.MULTILINE))
        self.must(["ninja", "-j2", *self.programs])
        self.compile_commands = {}
        for entry in json.loads((self.folder / "compile_commands.json").read_text()):
            command = shlex.split(entry["command"])
            self.compile_commands[command[command.index("-o") + 1]] = command
        self.link_commands = {p: self.link_command(p) for p in self.programs}
        self.read_dependencies()
        self.measure()

    def link_command(self, program):
        text = self.must(["ninja", "-t", "commands", "-s", f"bin/{program}"])
        return shlex.split(text.strip().removeprefix(": && ").removesuffix(" && :"))

    def read_dependencies(self):
        """Which objects are made from which of our sources."""
        self.objects_of = collections.defaultdict(list)
        current = None
        prefix = str(self.tree) + "/"
        for line in self.must(["ninja", "-t", "deps"]).splitlines():
            if line.startswith("    "):
                name = line.strip()
                if name.startswith(prefix):
                    self.objects_of[name.removeprefix(prefix)].append(current)
            elif line:
                current = line.split(": #deps")[0]

    def measure(self):
        """The time that each program takes as it is; all have to pass."""
        print("running the tests without any fault", flush=True)
        self.times = {}
        for program in self.programs:
            before = time.monotonic()
            outcome = Tests(self).run(self.folder / "bin" / program, 900, 900)
            if outcome != "passed":
                raise RuntimeError(f"{program} without any fault: {outcome}")
            self.times[program] = time.monotonic() - before

    def order_for(self, name):
        own = [p for p in OWN_PROGRAMS[room_of(name)] if p in self.times]
        return own + sorted((p for p in self.programs if p not in own), key=self.times.get)


class Tests:
    """One test program at a time, which can be stopped from outside."""

    def __init__(self, build):
        self.build = build
        self.running = None

    def run(self, path, seconds, processor_seconds):
        """"passed", or what failed."""
        limits = f"ulimit -c 0 -v {MEMORY_KIB} -t {processor_seconds:.0f}; exec \"$@\""
        process = subprocess.Popen(
            ["sh", "-c", limits, "sh", str(path), "--gtest_fail_fast", "--gtest_brief=1"],
            cwd=self.build.folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT, start_new_session=True, errors="replace", text=True)
        self.running = process
        try:
            output, _ = process.communicate(timeout=seconds)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.communicate()
            return "took too long"
        finally:
            self.running = None
        if process.returncode == 0:
            return "passed"
        failed = re.search(r"\[  FAILED  \] ([\w/.]+)", output)
        if failed:
            return failed.group(1)
        if process.returncode in (-signal.SIGXCPU, -signal.SIGKILL):
            return "took too long"
        return f"ended with {process.returncode}"

    def stop(self):
        process = self.running
        if process is not None and process.poll() is None:
            os.killpg(process.pid, signal.SIGKILL)


class Bench:
    """Tries mutants one after the other, in a folder of its own."""

    def __init__(self, build, number):
        self.build = build
        self.folder = build.work / f"job-{number}"
        self.changed = self.folder / "src"
        self.program = self.folder / "program"
        self.tests = Tests(build)
        self.folder.mkdir(parents=True, exist_ok=True)

    def try_mutant(self, mutant):
        """What became of it: what caught it, "survived" or "does not compile"."""
        text = apply((self.build.tree / mutant.file).read_text(encoding="utf-8"), mutant)
        shutil.rmtree(self.changed, ignore_errors=True)
        path = self.folder / mutant.file
        path.parent.mkdir(parents=True)
        path.write_text(text, encoding="utf-8")
        dependent = self.build.objects_of[mutant.file]
        # What stands first on the command line of the linker wins. So the library's objects with the
        # fault replace those of the archive. The inline functions of a header replace those in the
        # tests as well, provided that none was inlined; a test that includes the header itself is
        # compiled anew, for what only it makes of a template.
        in_header = mutant.file.endswith(".h")
        made = self.compile([o for o in dependent if o.startswith(LIBRARY)], mutant)
        if made is None:
            return "does not compile"
        for program in self.build.order_for(mutant.file):
            own = made
            command = list(self.build.link_commands[program])
            command[command.index("-o") + 1] = str(self.program)
            if in_header:
                direct = [o for o in dependent if f"/{program}.dir/" in o and
                          self.includes(o, mutant.file)]
                compiled = self.compile(direct, mutant)
                if compiled is None:
                    return "does not compile"
                command = [c for c in command if c not in direct]
                own = compiled + made
            if self.build.run([command[0], *own, *command[1:]]).returncode != 0:
                return "does not compile"
            took = self.build.times[program]
            outcome = self.tests.run(self.program, 60 + 10 * took, 10 + 3 * took)
            if outcome != "passed":
                return f"{program}: {outcome}"
        return "survived"

    def compile(self, objects, mutant):
        """The objects with the fault in them, or None when one does not compile."""
        made = []
        for name in objects:
            command = list(self.build.compile_commands[name])
            target = self.folder / name.replace("/", "_")
            command[command.index("-o") + 1] = str(target)
            if mutant.file.endswith(".h"):
                # It is found before the one in the tree: nothing is included by its bare name.
                command[1:1] = [f"-I{self.changed}"]
                command.append("-O0")
            else:
                command[-1] = str(self.folder / mutant.file)
            if self.build.run(command).returncode != 0:
                return None
            made.append(str(target))
        return made

    def includes(self, name, header):
        source = self.build.compile_commands[name][-1]
        wanted = f'#include "{header.removeprefix("src/")}"'
        return wanted in pathlib.Path(source).read_text(encoding="utf-8")

    def stop(self):
        self.tests.stop()


def linker_flags():
    flags = "-Wl,--strip-debug"
    return ("-fuse-ld=lld " if shutil.which("ld.lld") or shutil.which("lld") else "") + flags


def copy_tree(source, target):
    """Makes `target` the same as the tree, and leaves what is the same already as it is."""
    wanted = set()
    for folder, folders, files in os.walk(source):
        here = pathlib.Path(folder)
        if here == source:
            folders[:] = [f for f in folders if f not in ("build", ".git")]
        for name in files:
            path = here / name
            relative = path.relative_to(source)
            if path.is_symlink() or not path.is_file():
                continue
            wanted.add(relative)
            copy = target / relative
            # A copy gets the time of the copying: what was built from the old one is older.
            if copy.is_file() and filecmp.cmp(path, copy, shallow=False):
                continue
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(path, copy)
            shutil.copymode(path, copy)
    for path in sorted(target.rglob("*")):
        if path.is_file() and path.relative_to(target) not in wanted:
            path.unlink()


class Run:
    """Tries mutants on several benches at once until each room has had its share."""

    def __init__(self, orders, quotas, benches, report_progress, known=()):
        self.orders = orders
        self.quotas = quotas
        self.benches = benches
        self.known = {mutant_of(result): result for result in known}
        self.results = []
        self.lock = threading.Lock()
        self.report_progress = report_progress
        self.work = queue.Queue()
        self.error = None

    def execute(self):
        self.next = dict(self.quotas)
        chosen = [m for room, order in self.orders.items() for m in order[:self.quotas[room]]]
        # Headers last: much has to be compiled for them.
        for mutant in sorted(chosen, key=lambda m: m.file.endswith(".h")):
            if mutant in self.known:
                self.results.append(self.known[mutant])
            else:
                self.work.put(mutant)
        self.left = self.work.qsize()
        self.wanted = self.left + len(self.results)
        threads = [threading.Thread(target=self.serve, args=(b,), daemon=True)
                   for b in self.benches]
        for thread in threads:
            thread.start()
        try:
            for thread in threads:
                thread.join()
        finally:
            for bench in self.benches:
                bench.stop()
        if self.error:
            raise self.error
        return sorted(self.results, key=lambda r: (r["file"], r["line"], r["operator"]))

    def serve(self, bench):
        while True:
            with self.lock:
                if self.left == 0 or self.error:
                    return
            try:
                mutant = self.work.get(timeout=1)
            except queue.Empty:
                continue
            try:
                before = time.monotonic()
                outcome = bench.try_mutant(mutant)
                self.record(mutant, outcome, time.monotonic() - before)
            except Exception as error:  # the other benches have to hear of it
                with self.lock:
                    self.error = error
                return

    def record(self, mutant, outcome, seconds):
        with self.lock:
            if outcome == "does not compile":
                room = room_of(mutant.file)
                if self.next[room] < len(self.orders[room]):
                    replacement = self.orders[room][self.next[room]]
                    self.next[room] += 1
                    if replacement in self.known:
                        self.left -= 1
                        self.results.append(self.known[replacement])
                    else:
                        self.work.put(replacement)
                else:
                    self.left -= 1
            else:
                self.left -= 1
                self.results.append({
                    "file": mutant.file, "line": mutant.line, "operator": mutant.operator,
                    "before": list(mutant.before), "after": list(mutant.after),
                    "outcome": outcome, "seconds": round(seconds, 1)})
            self.report_progress(self.wanted - self.left, self.wanted, mutant, outcome, seconds,
                                 self.results)


def is_caught(result):
    return result["outcome"] != "survived"


def report(results):
    print(f"\n{'operator':24} {'caught':>8} {'survived':>9}")
    for operator in OPERATORS:
        mine = [r for r in results if r["operator"] == operator]
        caught = sum(map(is_caught, mine))
        print(f"{operator:24} {caught:8} {len(mine) - caught:9}")
    caught = sum(map(is_caught, results))
    print(f"{'all':24} {caught:8} {len(results) - caught:9}"
          f"   {caught / max(len(results), 1):.1%} caught")
    print(f"\n{'room':24} {'caught':>8} {'survived':>9}")
    for room in sorted({room_of(r["file"]) for r in results}):
        mine = [r for r in results if room_of(r["file"]) == room]
        caught = sum(map(is_caught, mine))
        print(f"{room:24} {caught:8} {len(mine) - caught:9}")
    for result in results:
        if not is_caught(result):
            print(f"\nsurvived: {result['file']}:{result['line']} {result['operator']}")
            for sign, lines in (("-", result["before"]), ("+", result["after"])):
                for line in lines:
                    print(f"  {sign} {line}")


def print_progress(done, wanted, mutant, outcome, seconds, _):
    print(f"{done}/{wanted} {mutant.name()} {outcome} ({seconds:.1f} s)", flush=True)


def save(path, results):
    path.parent.mkdir(parents=True, exist_ok=True)
    whole = path.with_suffix(".new")
    whole.write_text(json.dumps(results, indent=1) + "\n", encoding="utf-8")
    whole.replace(path)


def load(path):
    return json.loads(path.read_text(encoding="utf-8"))


def mutant_of(result):
    return Mutant(result["file"], result["line"], result["operator"], tuple(result["before"]),
                  tuple(result["after"]))


def make_benches(arguments):
    build = Build(arguments.work.resolve())
    build.prepare()
    return [Bench(build, number + 1) for number in range(arguments.jobs)]


def try_again(path, only, benches):
    """The earlier results with the new outcomes of those that survived, in those files or in all."""
    earlier = load(path)
    orders = collections.defaultdict(list)
    for result in earlier:
        if not is_caught(result) and is_meant(result["file"], only):
            orders[room_of(result["file"])].append(mutant_of(result))
    quotas = {room: len(order) for room, order in orders.items()}
    results = Run(orders, quotas, benches, print_progress).execute()
    outcome_of = {mutant_of(r): r for r in results}
    return [outcome_of.get(mutant_of(r), r) for r in earlier]


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=200)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--only", nargs="+", default=[], metavar="FILE")
    parser.add_argument("--list", action="store_true", help="print the mutants and try none")
    parser.add_argument("--resume", action="store_true")
    parser.add_argument("--again", type=pathlib.Path, metavar="JSON")
    parser.add_argument("--work", type=pathlib.Path, default=WORK)
    parser.add_argument("--result", type=pathlib.Path, default=WORK / "result.json")
    arguments = parser.parse_args()

    # Ended from outside, the test programs that run are ended all the same.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    if arguments.again:
        results = try_again(arguments.again, arguments.only, make_benches(arguments))
    else:
        choice = Choice(sources(ROOT, arguments.only), arguments.count, arguments.seed,
                        load(EQUIVALENTS))
        if arguments.list:
            for mutant in choice.first():
                print(mutant.name(), *(f"\n  - {line}" for line in mutant.before),
                      *(f"\n  + {line}" for line in mutant.after), sep="")
            return

        def keep(*progress):
            print_progress(*progress)
            save(arguments.result, progress[-1])

        known = load(arguments.result) if arguments.resume else []
        results = Run(choice.orders, choice.quotas, make_benches(arguments), keep, known).execute()
    save(arguments.result, results)
    report(results)
    if not results or sum(map(is_caught, results)) < ENOUGH * len(results):
        sys.exit(1)


if __name__ == "__main__":
    main()
