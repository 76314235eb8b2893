#!/usr/bin/env python3
"""Measures the library against its yardsticks and prints the table; scripts/bench.sh calls it.

Both sides of a ratio are done in turn, round by round, by one program under Wine, which is pinned to
one processor together with Wine's server. What counts is the processor time of both: what else runs
on the machine does not. One row alone is of wall time and of all processors; when others use them it
is not measured. With --write the tables of docs/performance.md are written anew.
"""

import argparse
import json
import os
import random
import re
import shutil
import statistics
import subprocess
import sys
import time

from machine_load import Watch, process_nanoseconds, thread_nanoseconds, use_all_processors

LARGE = 10 * 1024 * 1024 + 1
HUGE = 10 * 1024 * 1024 * 1024
SEED = 20240229
FILES_IN_CACHE = 200_000  # a second scan reads what is beyond them again
GROWTH_ROUNDS = 3         # each takes one to two minutes
MOMENTS = 20              # at which a scan is cancelled
QUIET = 0.1               # of one processor: what others may take where wall time is measured


# ---- The corpora. Each is made once, below the build folder, and is the same for the same numbers.

def path_of(root, number):
    """A path with a folder of 100 files, in a folder of 100 folders."""
    folder = os.path.join(root, f"section-{number // 10000:03}", f"collection-{number // 100:05}")
    return os.path.join(folder, f"photograph-{number:07}-edited.jpeg")


def put(path, content, size=None):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as out:
        out.write(content)
        if size is not None:
            out.truncate(size)  # takes no room


def make_small(root, files):
    """0 to 64 KiB; every tenth file copies the one before, and one in ten is a near copy."""
    dice = random.Random(SEED)
    content = b""
    for number in range(files):
        if number % 10 == 7 and content:
            middle = len(content) // 2
            content = content[:middle] + bytes([content[middle] ^ 1]) + content[middle + 1:]
        elif number % 10 != 9:
            content = dice.randbytes(dice.randint(0, 65536))
        put(path_of(root, number), content)


def make_empty(root, files):
    for number in range(files):
        put(path_of(root, number), b"")


def make_large(root, files):
    for number in range(files):
        put(path_of(root, number), b"", LARGE + number)


def make_junk(root, files):
    """A hundred folders, each with a rule of its own."""
    rules = []
    for folder in range(100):
        for number in range(files // 100):
            put(os.path.join(root, f"cache-{folder:03}", f"entry-{number:05}.tmp"), b"x")
        rules.append(f'<Folder Path="{{UserHome}}\\cache-{folder:03}" DisplayName="Cache {folder}"/>')
    put(os.path.join(root, "rules.xml"),
        ('<?xml version="1.0"?>\n<Root><Category DisplayName="Caches">\n' + "\n".join(rules) +
         "\n</Category></Root>\n").encode())


def make_big(root, files):
    """Pairs of equal files of 5 to 200 MiB, whose content is what a hole reads as."""
    for number in range(files):
        step = (number // 2) / max(files // 2 - 1, 1)
        put(os.path.join(root, f"film-{number:03}.mkv"), b"", int((5 + 195 * step) * 1024 * 1024))


def make_deep(root, files):
    for number in range(files):
        folder = os.path.join(root, "one", "two", "three", "four", f"five-{number // 1000:02}",
                              f"six-{number // 100:03}")
        put(os.path.join(folder, f"file-{number:05}.bin"), b"", LARGE)


def make_huge(root, files):
    for number in range(files):
        put(os.path.join(root, f"disk-{number}.vhd"), b"", HUGE)


class Corpora:
    def __init__(self, root):
        self.root = root

    def make(self, name, maker, files):
        """The folder of a corpus, as Wine names it."""
        folder = os.path.join(self.root, name, str(files))
        done = os.path.join(self.root, name, f"{files}.complete")
        if not os.path.exists(done):
            print(f"making {files} files for {name} ...", file=sys.stderr, flush=True)
            shutil.rmtree(folder, ignore_errors=True)
            maker(folder, files)
            with open(done, "w", encoding="utf-8"):
                pass
        return "Y:\\" + name + "\\" + str(files)

    def remake(self, name, maker, files):
        done = os.path.join(self.root, name, f"{files}.complete")
        if os.path.exists(done):
            os.remove(done)
        return self.make(name, maker, files)

    def remove(self, name):
        shutil.rmtree(os.path.join(self.root, name), ignore_errors=True)


# ---- The program under Wine.

class Bench:
    """The program, kept running; each piece of work is one line to it and one line back."""

    def __init__(self, command, server):
        self.server = server
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        text=True)
        if not self.process.stdout.readline():
            sys.exit("the program did not start")

    def close(self):
        self.process.stdin.close()
        self.process.wait()

    def run(self, work, folder, profile=""):
        begin = (process_nanoseconds(self.process.pid), thread_nanoseconds(self.server))
        start = time.monotonic()
        self.process.stdin.write(f"{work} {folder} {profile}\n")
        self.process.stdin.flush()
        line = self.process.stdout.readline()
        if not line:
            sys.exit(f"{work} of {folder} ended the program")
        answer = json.loads(line)
        answer["wall"] = time.monotonic() - start
        answer["client"] = process_nanoseconds(self.process.pid) - begin[0]
        answer["total"] = answer["client"] + thread_nanoseconds(self.server) - begin[1]
        return answer


# ---- Rows of the table.

class Row:
    def __init__(self, name, must, aim, unit="times the yardstick"):
        self.name, self.must, self.aim, self.unit = name, must, aim, unit
        self.values = []
        self.reason = ""  # why there are none

    def add(self, value):
        self.values.append(value)

    def line(self):
        goal = "" if self.must is None else f"{abs(self.must):g} / {abs(self.aim):g}"
        if self.reason:
            return f"| {self.name} | {self.unit} | | | {goal} | not measured: {self.reason} |"
        middle = statistics.median(self.values)
        spread = f"{min(self.values):.2f} to {max(self.values):.2f}" if len(self.values) > 1 else ""
        if self.must is None:
            verdict = ""
        elif self.must < 0:  # the more the better
            verdict = "met" if middle >= -self.must else "not met"
        else:
            verdict = "met" if middle <= self.must else "not met"
        return f"| {self.name} | {self.unit} | {middle:.2f} | {spread} | {goal} | {verdict} |"


class Rows:
    """All of them; each is shown as soon as it is there."""

    def __init__(self):
        self.all = []
        self.begin = time.monotonic()

    def add(self, rows):
        for row in rows:
            seconds = time.monotonic() - self.begin
            print(f"{seconds:5.0f} s {row.line()}", file=sys.stderr, flush=True)
        self.all += rows


def repeated(bench, repeats, *work):
    """The cost of the work done some times over: what is short varies the most."""
    answers = [bench.run(*work) for _ in range(repeats)]
    return {**answers[-1], "client": sum(answer["client"] for answer in answers),
            "total": sum(answer["total"] for answer in answers)}


def repeats_for(files):
    return max(1, 200_000 // files)


def measure_walks(bench, corpora, options):
    small = corpora.make("small", make_small, options.files)
    large = corpora.make("large", make_large, options.files)
    junk_files = min(options.files, 20_000)
    junk = corpora.make("junk", make_junk, junk_files)
    rows = [Row("qs_enumerate_files, callback that counts", 1.10, 1.05),
            Row("large-file scan that finds nothing, protection on", 1.15, 1.05),
            Row("large-file scan, every file a row, read back", 1.45, 1.25),
            Row("junk scan by 100 rules", 1.30, 1.15)]
    for folder in (small, large, junk):
        bench.run("bare", folder)  # no side has to fill the page cache for the other
    for _ in range(options.rounds):
        bare = repeated(bench, options.repeats, "bare", small)["total"]
        rows[0].add(repeated(bench, options.repeats, "walk", small)["total"] / bare)
        rows[1].add(repeated(bench, options.repeats, "large", small)["total"] / bare)
        bare = repeated(bench, options.repeats, "bare", large)["total"]
        rows[2].add(repeated(bench, options.repeats, "large", large)["total"] / bare)
        bare = repeated(bench, repeats_for(junk_files), "bare", junk)["total"]
        rows[3].add(repeated(bench, repeats_for(junk_files), "junk", junk)["total"] / bare)
    return rows


def measure_duplicates(bench, corpora, options):
    small = corpora.make("small", make_small, options.files)
    bench.run("stages", small)
    profile = "Y:\\profile"
    cache = os.path.join(corpora.root, "profile", "AppData")
    rows = [Row("duplicate scan without a cache, small files, 1 worker", 1.10, 1.03),
            Row("the same, default workers on one processor", None, None),
            Row("the probe of the three stages", None, None, "times the bare loop"),
            Row("second duplicate scan, nothing changed: in the process", 1.40, 1.25),
            Row("the same, Wine's server included", None, None),
            Row("cache read and written: of the first scan", 0.04, 0.04, "share of the time"),
            Row("progress polled every 10 ms against not polled", 1.03, 1.03, "times the same")]
    for _ in range(options.rounds):
        bare = repeated(bench, options.repeats, "bare", small)
        stages = bench.run("stages", small)
        rows[0].add(bench.run("duplicates-by-1", small)["total"] / stages["total"])
        plain = bench.run("duplicates", small)
        rows[1].add(plain["total"] / stages["total"])
        rows[2].add(stages["total"] * options.repeats / bare["total"])
        shutil.rmtree(cache, ignore_errors=True)
        os.makedirs(os.path.join(corpora.root, "profile"), exist_ok=True)
        first = bench.run("duplicates", small, profile)
        rows[5].add((first["elapsed_us"] - first["stages_us"]) / first["elapsed_us"])
        second = repeated(bench, options.repeats, "duplicates", small, profile)
        rows[3].add(second["client"] / bare["client"])
        rows[4].add(second["total"] / bare["total"])
        rows[6].add(bench.run("polled", small)["total"] / plain["total"])
        if stages["opens"] < plain["hashed"] or first["rows"] != second["rows"]:
            sys.exit("the scans disagree with each other")
    return rows


def measure_big(bench, corpora, options):
    big = corpora.make("big", make_big, options.big)
    row = Row(f"duplicate scan of {options.big} files of 5 to 200 MiB, 1 worker", 1.50, 1.36,
              "times reading the bytes")
    bench.run("bytes", big)
    for _ in range(options.rounds):
        read = bench.run("bytes", big)
        row.add(bench.run("duplicates-by-1", big)["total"] / read["total"])
    return [row]


def measure_workers(bench, corpora, options):
    small = corpora.make("small", make_small, options.files)
    row = Row("duplicate scan of small files, 2 workers on one processor", 1.15, 1.15,
              "times the same with 1")
    for _ in range(options.rounds):
        alone = bench.run("duplicates-by-1", small)
        both = bench.run("duplicates-by-2", small)
        if alone["rows"] != both["rows"]:
            sys.exit("the scans disagree with each other")
        row.add(both["total"] / alone["total"])
    return [row]


def measure_walks_growth(bench, corpora, options):
    counts = (options.most // 100, options.most)
    folders = [corpora.make("empty", make_empty, files) for files in counts]
    works = {"walk": "walk", "large": "large-file scan without findings"}
    rows = {work: Row(f"{name}: {counts[0]:,} to {counts[1]:,} files", 1.15, 1.05,
                      "growth of the time for each file") for work, name in works.items()}
    for folder in folders:
        bench.run("bare", folder)
    for _ in range(min(options.rounds, GROWTH_ROUNDS)):
        for work, row in rows.items():
            few = repeated(bench, repeats_for(counts[0]), work, folders[0])["total"]
            few /= repeats_for(counts[0]) * counts[0]
            row.add(bench.run(work, folders[1])["total"] / counts[1] / few)
    return list(rows.values())


def measure_clean(bench, corpora, options):
    files = min(options.files, 10_000)
    row = Row(f"clean of {files} rows, 6 folders deep", 1.15, 1.05)
    for _ in range(options.rounds):
        deep = corpora.remake("deep", make_deep, files)
        scan = bench.run("large", deep)["total"]
        deleted = bench.run("delete", deep)
        deep = corpora.remake("deep", make_deep, files)
        bare = bench.run("bare", deep)["total"]
        cleaned = bench.run("clean", deep)
        if cleaned["files"] != files or deleted["files"] != files:
            sys.exit("not every file went")
        row.add((cleaned["total"] - scan) / (deleted["total"] - bare))
    return [row]


def measure_cancels(bench, corpora, options):
    small = corpora.make("small", make_small, options.files)
    junk = corpora.make("junk", make_junk, min(options.files, 20_000))
    rows = []
    for kind, folder in (("large", small), ("duplicates", small), ("junk", junk),
                         ("session", small)):
        rows.append(cancel_row(bench, f"cancel of a scan ({kind})", f"cancel-{kind}", folder))
    try:
        huge = corpora.make("huge", make_huge, 2)
        rows.append(cancel_row(bench, "cancel in the reading of a file of 10 GiB", "cancel-huge",
                               huge))
    finally:
        corpora.remove("huge")
    return rows


def cancel_row(bench, name, work, folder):
    row = Row(f"{name} at {MOMENTS} random moments", 50, 50, "longest wait in ms")
    latencies = bench.run(work, folder)["latencies_ms"]
    if len(latencies) == MOMENTS:
        row.add(max(latencies))
    else:
        row.reason = "the scan ends too soon"
    return row


def measure_all_processors(bench, corpora, options):
    """By wall time, on all processors, the server as well. A round beside which others ran is done
    again, but not for ever."""
    row = Row("duplicate scan of large files on all processors", 0.62, 0.54,
              "wall time, times that of 1 worker")
    if len(os.sched_getaffinity(0)) == 1:
        row.reason = "one processor"
        return [row]
    big = corpora.make("big", make_big, options.big)
    use_all_processors(bench.server)
    bench.run("all-processors", "-")
    bench.run("bytes", big)
    for _ in range(2 * options.rounds):
        watch = Watch(bench.process.pid, bench.server)
        alone = bench.run("duplicates-by-1", big)
        together = bench.run("duplicates", big)
        if alone["rows"] != together["rows"]:
            sys.exit("the scans disagree with each other")
        others = watch.share_of_others()
        print(f"{together['wall'] / alone['wall']:.2f} on all processors, others had {others:.2f}",
              file=sys.stderr, flush=True)
        if others <= QUIET:
            row.add(together["wall"] / alone["wall"])
        if len(row.values) == options.rounds:
            return [row]
    row.reason = "machine busy"
    return [row]


# ---- What runs on the host.

def host_lines(program, *arguments):
    done = subprocess.run([program, *map(str, arguments)], stdout=subprocess.PIPE, text=True,
                          check=True)
    return [json.loads(line) for line in done.stdout.splitlines()]


def growth_lines(options):
    """One line for each work and number of files: the medians of some rounds."""
    rounds = [host_lines(os.path.join(options.host, "scan_growth"), options.most)
              for _ in range(min(options.rounds, GROWTH_ROUNDS))]
    for lines in zip(*rounds):
        yield {**lines[0], "times": [line["ns_per_file"] for line in lines],
               "ns_per_file": statistics.median(line["ns_per_file"] for line in lines),
               "peak_bytes": statistics.median(line["peak_bytes"] for line in lines)}


def growth_row(name, must, aim, unit, few, many):
    row = Row(name, must, aim, unit)
    for small, large in zip(few["times"], many["times"]):
        row.add(large / small)
    return row


def measure_growth(options):
    """On the simulated Windows: growth, memory, and trees of an awkward shape."""
    lines = list(growth_lines(options))
    by_work = {}
    for line in lines:
        by_work.setdefault(line["work"], {})[line["files"]] = line
    goals = {"walk": (None, None, 32), "large-file scan without findings": (None, None, 32),
             "first duplicate scan": (1.30, 1.15, (300, 200)),
             "second duplicate scan": (1.30, 1.15, (450, 300))}
    rows = []
    for work, (must, aim, memory) in goals.items():
        sizes = sorted(by_work[work])
        few, some, many = (by_work[work][files] for files in (sizes[0], sizes[1], sizes[-1]))
        most = many
        if work == "second duplicate scan":
            most = by_work[work][max(files for files in sizes if files <= FILES_IN_CACHE)]
        if must is not None:  # a walk of the simulated disk is quicker than its memory
            rows.append(growth_row(f"{work}: {few['files']:,} to {most['files']:,} files", must, aim,
                                   "growth of the time for each file", few, most))
        must, aim = memory if isinstance(memory, tuple) else (memory, memory)
        row = Row(f"{work}: memory for each further file", must, aim, "bytes")
        row.add((many["peak_bytes"] - some["peak_bytes"]) / (many["files"] - some["files"]))
        rows.append(row)
    for work in ("files of one size", "one folder", "equal files"):
        few, many = (by_work[work][files] for files in sorted(by_work[work]))
        rows.append(growth_row(f"{many['files']:,} files, {work}", 1.3, 1.3,
                               "growth from a tenth of them", few, many))
    return rows, lines


def measure_opens(options):
    """On the simulated Windows, against what the tree says."""
    answer, = host_lines(os.path.join(options.host, "count_opens"))
    rows = [Row(f"duplicate scan of {answer['files']:,} files: opens, of {answer['due']:,} due", 0, 0,
                "too many and too few"),
            Row("the same: opens of files alone with their size", 0, 0, "counted"),
            Row("the same for the second time: opens of files", 0, 0, "counted")]
    for row, name in zip(rows, ("wrong", "alone", "again")):
        row.add(answer[name])
    return rows


def measure_hashes(options):
    rows = [Row(f"XXH32 of {size} in memory", -1.30, -1.45, "times the rate of the reference")
            for size in ("4 KiB", "1 MiB")]
    for _ in range(options.rounds):
        for row, line in zip(rows, host_lines(os.path.join(options.host, "hash_rate"))):
            row.add(line["ours"] / line["reference"])
    return rows


# ---- The document.

def table(rows):
    return "\n".join(["| Work | Measured as | Median | Spread | Must / aim | |",
                      "|---|---|---|---|---|---|", *[row.line() for row in rows]])


def growth_table(lines):
    out = ["| Work | Files | Compared | us/file | Peak, bytes/file |", "|---|---|---|---|---|"]
    for line in lines:
        compared = f"{line['compared'] / line['files']:.0%}" if line["compared"] else ""
        out.append(f"| {line['work']} | {line['files']:,} | {compared} | "
                   f"{line['ns_per_file'] / 1000:.2f} | {line['peak_bytes'] / line['files']:.0f} |")
    return "\n".join(out)


def write_between(path, mark, text):
    with open(path, encoding="utf-8") as document:
        old = document.read()
    begin, end = f"<!-- {mark}: begin -->", f"<!-- {mark}: end -->"
    new, found = re.subn(f"{begin}.*?{end}", lambda _: f"{begin}\n{text}\n{end}", old, flags=re.S)
    if found != 1:
        sys.exit(f"{path} has no place for {mark}")
    with open(path, "w", encoding="utf-8") as document:
        document.write(new)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--corpora", required=True, help="the folder that Wine calls Y:")
    parser.add_argument("--host", required=True, help="the folder of the host's programs")
    parser.add_argument("--server", type=int, required=True, help="the process of Wine's server")
    parser.add_argument("--command", required=True, nargs="+", help="the program under Wine")
    parser.add_argument("--files", type=int, default=100_000)
    parser.add_argument("--big", type=int, default=60)
    parser.add_argument("--most", type=int, default=1_000_000)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--write", help="the document to write the tables into")
    options = parser.parse_args()
    options.repeats = repeats_for(options.files)

    shown = Rows()
    corpora = Corpora(options.corpora)
    bench = Bench(options.command, options.server)
    for measure in (measure_walks, measure_duplicates, measure_big, measure_workers,
                    measure_walks_growth, measure_clean, measure_cancels, measure_all_processors):
        shown.add(measure(bench, corpora, options))
    bench.close()
    shown.add(measure_hashes(options))
    shown.add(measure_opens(options))
    growth, lines = measure_growth(options)
    shown.add(growth)
    rows = shown.all

    print(table(rows))
    print()
    print(growth_table(lines))
    if options.write:
        write_between(options.write, "ratios", table(rows))
        write_between(options.write, "growth", growth_table(lines))
    return 1 if any(row.line().endswith("| not met |") for row in rows) else 0


if __name__ == "__main__":
    sys.exit(main())
