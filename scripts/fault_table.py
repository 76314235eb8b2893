#!/usr/bin/env python3
"""Keeps the table of the fault sweeps in docs/testing.md.

scripts/fault_table.py [BUILD_TREE]      builds the fault tests of the preset host, runs them, and
                                         writes the table; BUILD_TREE is a tree of that preset in
                                         another place than build/host
scripts/fault_table.py --check FOLDER    runs nothing: fails unless the table is what the records in
                                         FOLDER give, which the fault tests have left there

A sweep records its counts when everything that it checks has held. It is an error if a program
fails, if a scenario that is named here is missing or incomplete, or if there is one that is not
named here. Every export of the library has its place in a row.
"""

import collections
import json
import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
DOCUMENT = ROOT / "docs" / "testing.md"
EXPORTS = ROOT / "src" / "frame" / "quastel_core.def"
BEGIN = "<!-- fault sweeps: begin -->"
END = "<!-- fault sweeps: end -->"
PROGRAMS = ["clean_fault_tests", "duplicate_fault_tests", "fault_tests", "junk_fault_tests",
            "session_fault_tests"]
COUNTS = ["calls", "single_faults", "lasting_faults", "memory_failures", "crash_points"]
MEMORY = COUNTS.index("memory_failures")

# What a file or folder to delete may be like.
SITUATIONS = ["File", "EmptyFolder", "LongPath", "Share", "ExtendedShare", "LongPathOnAShare",
              "RelativePath", "OperationWithoutEffect", "OperationAborted", "OtherApartment",
              "ComInitialisedBefore"]


class Row:
    def __init__(self, title, scenarios, *exports):
        self.title = title
        self.scenarios = [scenarios] if isinstance(scenarios, str) else scenarios
        self.exports = exports


def deletion(name, export):
    return Row(f"`{export}`, {len(SITUATIONS)} situations",
               [f"{name}_{situation}" for situation in SITUATIONS], export)


def building_block(name, export, remark=""):
    return Row(f"`{export}`{remark}", name, export)


WITHOUT_FAULTS = [
    "qs_version", "qs_path_contains", "qs_is_ignored", "qs_matches_size", "qs_large_file_classify",
    "qs_large_file_included", "qs_summary_bucket", "qs_xxhash32_hex", "qs_product_scan_destroy",
    "qs_product_scan_cancel", "qs_product_scan_poll", "qs_product_scan_current_group",
    "qs_product_scan_current_path", "qs_product_scan_get_performance",
    "qs_product_scan_report_count", "qs_product_scan_report_row",
    "qs_product_scan_report_row_parent_group_id", "qs_product_scan_poll_clean",
    "qs_product_scan_poll_clean_detailed", "qs_product_scan_cancel_clean", "qs_session_destroy",
    "qs_session_poll_scan", "qs_session_cancel_scan", "qs_session_scan_current_path",
    "qs_session_report_count", "qs_session_report_row", "qs_session_poll_clean",
    "qs_session_cancel_clean"]

ROWS = [
    Row("large-file scan", "LargeFileScan", "qs_product_scan_start"),
    Row("large-file scan, cancelled on the way", "CancelledScan"),
    Row("duplicate scan, cold (no cache)", "DuplicateScan_cold"),
    Row("duplicate scan, warm (all files in the cache)", "DuplicateScan_warm"),
    Row("duplicate scan, partly warm", "DuplicateScan_partly_warm"),
    Row("junk scan", "JunkScan"),
    Row("junk scan, a bad rule behind the good ones", "JunkScanWithABadRule"),
    Row("junk scan, cancelled on the way", "CancelledJunkScan"),
    Row("clean of large files, for good", "Clean_LargeFiles", "qs_product_scan_start_clean"),
    Row("clean of duplicates, for good", "Clean_Duplicates"),
    Row("clean of junk with its folders, for good", "Clean_Junk"),
    Row("clean of large files, to the Recycle Bin", "Recycle_LargeFiles"),
    Row("clean of duplicates, to the Recycle Bin", "Recycle_Duplicates"),
    Row("clean of junk, to the Recycle Bin", "Recycle_Junk"),
    Row("session scan, all files", "SessionScan", "qs_session_start_scan"),
    Row("session scan, large files", "SessionScanOfLargeFiles"),
    Row("session scan, to inspect", "SessionScanForInspection"),
    Row("session scan, cancelled on the way", "CancelledSessionScan"),
    Row("session clean", "SessionClean", "qs_session_start_clean"),
    deletion("DeletePermanently", "qs_delete_permanently"),
    deletion("MoveToRecycleBin", "qs_move_to_recycle_bin"),
    deletion("FileMatchesSnapshot", "qs_file_matches_snapshot"),
    deletion("DeleteSnapshotPermanently", "qs_delete_snapshot_permanently"),
    deletion("MoveSnapshotToRecycleBin", "qs_move_snapshot_to_recycle_bin"),
    building_block("EnumeratePlainFiles", "qs_enumerate_files"),
    building_block("EnumerateAllFiles", "qs_enumerate_files_ex", ", all files"),
    building_block("EnumerateLogFiles", "qs_enumerate_files_ex", ", with a pattern"),
    building_block("EnumerateUnprotectedFiles", "qs_enumerate_files_ex", ", with protection"),
    building_block("EnumerateDirectories", "qs_enumerate_directories"),
    building_block("EmptyDirectory", "qs_empty_directory_eligible"),
    building_block("ExpandJunkPath", "qs_expand_junk_path"),
    building_block("HashFile", "qs_xxhash32_file"),
    building_block("FirstHashOfAThread", "qs_xxhash32_file", ", first call of a thread"),
    building_block("HashFileCancelable", "qs_xxhash32_file_cancelable"),
    building_block("SampleFile", "qs_duplicate_sample_hex"),
    building_block("SampleGroupKey", "qs_duplicate_sample_group_key"),
    building_block("HashGroupKey", "qs_duplicate_hash_group_key"),
    building_block("DuplicateScanInclude", "qs_duplicate_scan_include"),
    building_block("LargeScanInclude", "qs_large_scan_include"),
    building_block("FilterDir", "qs_filter_dir"),
    building_block("NormalizePath", "qs_normalize_path"),
    building_block("CombinePaths", "qs_path_combine"),
    building_block("DirectoryExists", "qs_directory_exists"),
    building_block("SameDirectory", "qs_is_in_same_directory"),
    building_block("Whitelist", "qs_is_in_whitelist"),
    building_block("MatchesDate", "qs_matches_date"),
    building_block("CreateProductScan", "qs_product_scan_create"),
    building_block("CreateSession", "qs_session_create"),
    Row(f"the other {len(WITHOUT_FAULTS)} exports", WITHOUT_FAULTS, *WITHOUT_FAULTS),
]


def read_records(folder):
    """The counts of every scenario, and the compilers that built the programs."""
    scenarios = collections.defaultdict(collections.Counter)
    compilers = set()
    for program in PROGRAMS:
        path = folder / f"{program}.jsonl"
        if not path.is_file():
            sys.exit(f"{program} has left no record: {path}")
        for line in path.read_text(encoding="utf-8").splitlines():
            record = json.loads(line)
            if "compiler" in record:
                compilers.add(record["compiler"])
            else:
                scenarios[record["scenario"]][record["what"]] += record["count"]
    return scenarios, " and ".join(sorted(compilers))


def problems_of(scenarios, exports):
    expected = [name for row in ROWS for name in row.scenarios]
    for name in sorted(set(expected) - set(scenarios)):
        yield f"no sweep has recorded the scenario {name}"
    for name in sorted(set(scenarios) - set(expected)):
        yield f"the scenario {name} stands in no row of the table"
    for name in sorted(set(expected) & set(scenarios)):
        counts = scenarios[name]
        for what in COUNTS:
            if what not in counts:
                yield f"{name}: a sweep has not recorded its {what}, or has failed"
        if counts["crash_points"] != counts["calls"]:
            yield f"{name}: {counts['crash_points']} crash points for {counts['calls']} calls"
        for what in ("single_faults", "lasting_faults"):
            if counts[what] < counts["calls"]:
                yield f"{name}: {counts[what]} {what} for {counts['calls']} calls"
    covered = {name for row in ROWS for name in row.exports}
    for name in sorted(set(exports) ^ covered):
        yield f"{name}: the exports of the library and those of the rows differ"


def exports_of(text):
    return [line.strip() for line in text.splitlines() if line.strip().startswith("qs_")]


def number(value):
    return f"{value:,}"


def table_of(scenarios, compiler):
    lines = [
        "| Scenario | System calls | Faults, once | Faults, from then on | Allocation failures |"
        " Crash points | Invariants |",
        "|---|---|---|---|---|---|---|",
    ]
    totals = collections.Counter()
    for row in ROWS:
        counts = [scenarios[name] for name in row.scenarios]
        sums = {what: sum(each[what] for each in counts) for what in COUNTS}
        totals.update(sums)
        calls = sorted(each["calls"] for each in counts)
        cells = [row.title, number(calls[0]) if calls[0] == calls[-1]
                 else f"{number(calls[0])} to {number(calls[-1])}"]
        cells += [number(sums[what]) for what in COUNTS[1:]]
        lines.append("| " + " | ".join(cells + ["held"]) + " |")
    cells = ["all", ""] + [number(totals[what]) for what in COUNTS[1:]] + ["held"]
    lines.append("| " + " | ".join(cells) + " |")
    lines += ["", f"Allocations as {compiler} makes them."]
    return lines


def split(document):
    """What stands before the table, the table, and what stands behind it."""
    lines = document.splitlines()
    if lines.count(BEGIN) != 1 or lines.count(END) != 1 or lines.index(BEGIN) > lines.index(END):
        sys.exit(f"the document needs one line {BEGIN} and, behind it, one line {END}")
    begin, end = lines.index(BEGIN) + 1, lines.index(END)
    return lines[:begin], lines[begin:end], lines[end:]


def without_allocations(lines):
    """What does not depend on the compiler."""
    for line in lines:
        cells = line.split("|")
        if len(cells) > MEMORY + 2:
            del cells[MEMORY + 2]
        if not line.startswith("Allocations as "):
            yield "|".join(cells)


def differences(written, made):
    """Empty when the written table says what the records say."""
    last = written[-1] if written else ""
    if last.startswith("Allocations as ") and last != made[-1]:
        # Another compiler, another standard library: their allocations are their own.
        written, made = list(without_allocations(written)), list(without_allocations(made))
    old, new = collections.Counter(written), collections.Counter(made)
    lines = [f"- {line}" for line in (old - new)] + [f"+ {line}" for line in (new - old)]
    return lines if lines or written == made else ["the rows stand in another order"]


def build_programs(build):
    if not (build / "build.ninja").is_file():
        subprocess.run(["cmake", "-S", ROOT, "--preset", "host", "-B", build], cwd=ROOT, check=True,
                       stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", build, "--target", *PROGRAMS], cwd=ROOT, check=True)


def run_programs(build):
    """Answers the folder of the records."""
    folder = build / "fault_sweeps"
    folder.mkdir(exist_ok=True)
    for program in PROGRAMS:
        print(f"running {program} ...", flush=True)
        done = subprocess.run([build / "bin" / program, "--gtest_brief=1"], text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              env={**os.environ,
                                   "QUASTEL_SWEEP_RECORD": str(folder / f"{program}.jsonl")})
        if done.returncode != 0:
            sys.exit(f"{done.stdout}\n{program} has failed; the table stays as it is")
    return folder


def main():
    arguments = sys.argv[1:]
    checking = arguments[:1] == ["--check"]
    if (len(arguments) != 2 if checking else len(arguments) > 1 or arguments[:1] == ["--help"]):
        sys.exit(__doc__)
    if checking:
        folder = pathlib.Path(arguments[1])
    else:
        build = pathlib.Path(*arguments).resolve() if arguments else ROOT / "build" / "host"
        build_programs(build)
        folder = run_programs(build)
    scenarios, compiler = read_records(folder)
    problems = list(problems_of(scenarios, exports_of(EXPORTS.read_text(encoding="utf-8"))))
    if problems:
        sys.exit("\n".join(problems))
    before, written, behind = split(DOCUMENT.read_text(encoding="utf-8"))
    made = table_of(scenarios, compiler)
    if checking:
        wrong = differences(written, made)
        if wrong:
            sys.exit("\n".join(wrong + [f"{DOCUMENT.relative_to(ROOT)} does not say what the sweeps"
                                        " do: run scripts/fault_table.py"]))
    else:
        DOCUMENT.write_text("\n".join(before + made + behind) + "\n", encoding="utf-8")
    print(f"{len(ROWS)} rows, {len(scenarios)} scenarios")


if __name__ == "__main__":
    main()
