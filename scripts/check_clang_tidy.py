#!/usr/bin/env python3
"""Runs clang-tidy with the checks of .clang-tidy over the sources that a build tree compiles.

usage: check_clang_tidy.py ROOT BUILD FOLDER[=LEFT_OUT]...

FOLDERs are seen from ROOT; what lies in LEFT_OUT is not looked at. A source that passed is not
looked at again until it, a file of ours that it includes, its command or the checks have changed;
what passed is kept in BUILD.

Nearly all of the time goes into the headers of other libraries, once for each source that includes
them. So several sources are looked at as one, in a file that includes them. Only the analysis of
paths, which leaves out what is included, and a check that takes what is included for a header look
at each alone. Where there is anything to complain about, all checks look at that source alone, and
what is found then counts. (Two sources may have a name of their own in common, which is nothing to
complain about.)
"""

import concurrent.futures
import hashlib
import json
import re
import shlex
import shutil
import subprocess
import sys
from pathlib import Path

JOBS = 2
JOINED = 20  # At most; the tool keeps in memory all that one file includes.
INCLUDE = re.compile(rb'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)
LIBRARY = re.compile(rb"^\s*#\s*include\s*<[^>]+/", re.MULTILINE)
FINDING = re.compile(r"^(?=(\S+):\d+:\d+: (?:warning|error): )", re.MULTILINE)
EACH_ALONE = ("clang-analyzer-*", "google-global-names-in-headers")
COUNTS = re.compile(r"^(\d+ warnings?|Suppressed|Use -header-filter|.*treated as errors?$)")


def find_tool():
    """The checks were chosen for version 14; later ones know more of them."""
    for name in ("clang-tidy-14", "clang-tidy"):
        if shutil.which(name):
            return name
    sys.exit("clang-tidy is not installed")


def output_of(command):
    return subprocess.run(command, capture_output=True, text=True, check=False,
                          stdin=subprocess.DEVNULL)


def options_for(compiler):
    """What clang has to be told to read what another compiler compiles."""
    options = ["--extra-arg=-Wno-unknown-warning-option"]
    if "mingw32" not in compiler:
        return options
    shown = output_of([compiler, "-E", "-x", "c++", "-v", "-"]).stderr
    folders = re.findall(r"^ (\S*/c\+\+\S*)$", shown, re.MULTILINE)
    if not folders:
        sys.exit(f"{compiler} does not say where its headers are")
    return (["--extra-arg-before=--target=x86_64-w64-mingw32"] + options +
            [f"--extra-arg=-isystem{Path(folder).resolve()}" for folder in folders])


def sources(root, build, folders):
    """Path, command and folder of each source below the folders, once each."""
    commands = json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))
    found = {}
    for entry in commands:
        path = Path(entry["directory"], entry["file"]).resolve()
        for folder in folders:
            name, _, left_out = folder.partition("=")
            if path.is_relative_to(root / name) and not (
                    left_out and path.is_relative_to(root / left_out)):
                found[path] = entry["command"]
    return sorted(found.items())


class Contents:
    """A digest of a file and of all files of ours that it includes, directly or not."""

    def __init__(self, root):
        self.root = root
        self.known = {}

    def included(self, path):
        if path not in self.known:
            data = path.read_bytes()
            nearby = [path.parent, self.root / "src", self.root / "include"]
            names = [name.decode() for name in INCLUDE.findall(data)]
            files = [next((p for p in (folder / name for folder in nearby) if p.is_file()), None)
                     for name in names]
            self.known[path] = (hashlib.sha256(data).hexdigest(),
                                [p.resolve() for p in files if p is not None],
                                LIBRARY.search(data) is not None)
        return self.known[path]

    def all_of(self, path):
        todo, seen = [path], {}
        while todo:
            each = todo.pop()
            if each not in seen:
                seen[each] = self.included(each)
                todo += seen[each][1]
        return seen.values()

    def digests(self, path):
        return sorted(digest for digest, _, _ in self.all_of(path))

    def includes_a_library(self, path):
        return any(library for _, _, library in self.all_of(path))


def tidy(tool, build, path, options):
    """What there is to complain about in one source."""
    done = output_of([tool, "-p", str(build), "--quiet", *options, str(path)])
    lines = done.stdout.splitlines()
    if done.returncode != 0 or any(": warning: " in line for line in lines):
        lines += [line for line in done.stderr.splitlines() if not COUNTS.match(line)]
        return "\n".join(lines) or f"{path}: clang-tidy ended with {done.returncode}"
    return ""


def findings_in(answer):
    ends = sorted({0, len(answer), *(match.start() for match in FINDING.finditer(answer))})
    parts = (answer[start:end].rstrip() for start, end in zip(ends, ends[1:]))
    return [part for part in parts if part]


def command_without_source(path, command):
    """What has to be equal for two sources to be looked at as one."""
    words = shlex.split(command)
    if "-o" in words:
        del words[words.index("-o"):words.index("-o") + 2]
    return tuple(word for word in words if word != "-c" and Path(word).name != path.name)


def groups(contents, items):
    """Sources to be looked at as one, and what they are compiled with: those with equal commands,
    and of these the ones that include headers of other libraries for themselves."""
    alike = {}
    for path, command in items:
        key = command_without_source(path, command), contents.includes_a_library(path)
        alike.setdefault(key, []).append(path)
    for (words, _), paths in alike.items():
        count = -(-len(paths) // JOINED)
        for part in (paths[i::count] for i in range(count)):
            yield words, part


def complaint_of_joined(tool, folder, words, paths, options):
    """Those of the sources that there may be something to complain about."""
    name = hashlib.sha256("\0".join(map(str, paths)).encode()).hexdigest()[:16]
    file = folder / f"{name}.cpp"
    file.write_text("".join(
        f'#include "{path}"  // NOLINT(bugprone-suspicious-include)\n' for path in paths),
        encoding="utf-8")
    done = output_of([tool, "--quiet", *options, "--checks=-" + ",-".join(EACH_ALONE), str(file),
                      "--", *words[1:]])
    if done.returncode == 0 and ": warning: " not in done.stdout:
        return set()
    # Where two have a name of their own in common, the second only is in the way of the others.
    named = set(FINDING.findall(done.stdout))
    second = [path for path in paths if str(path) in named]
    rest = [path for path in paths if str(path) not in named]
    if not second or not rest:
        return set(paths)
    return (complaint_of_joined(tool, folder, words, rest, options) |
            complaint_of_joined(tool, folder, words, second, options))


def check(root, build, folders):
    """The complaints, how many sources there are, and how many were looked at now."""
    tool = find_tool()
    chosen = sources(root, build, folders)
    common = [output_of([tool, "--version"]).stdout,
              (root / ".clang-tidy").read_text(encoding="utf-8")]
    memory = build / f"clang_tidy_passed_{'_'.join(re.findall(r'[a-z0-9]+', ' '.join(folders)))}.json"
    passed = set(json.loads(memory.read_text(encoding="utf-8"))) if memory.exists() else set()
    contents = Contents(root)
    options, keys = {}, {}
    for path, command in chosen:
        compiler = shlex.split(command)[0]
        if compiler not in options:
            options[compiler] = options_for(compiler)
        parts = [*common, command, *options[compiler], *contents.digests(path)]
        keys[path] = hashlib.sha256("\0".join(parts).encode()).hexdigest()
    due = [(path, command) for path, command in chosen if keys[path] not in passed]

    compilers = {path: shlex.split(command)[0] for path, command in due}
    folder = build / f"{memory.stem}_now"
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)

    def alone(path, *checks):
        return tidy(tool, build, path, options[compilers[path]] + list(checks))

    def analysed(path):
        return alone(path, "--checks=-*," + ",".join(EACH_ALONE))

    def together(group):
        words, paths = group
        return complaint_of_joined(tool, folder, words, paths, options[compilers[paths[0]]])

    with concurrent.futures.ThreadPoolExecutor(JOBS) as pool:
        suspects = set().union(*pool.map(together, groups(contents, due)))
        suspects |= {path for path, answer in zip(compilers, pool.map(analysed, compilers)) if answer}
        answers = dict(zip(sorted(suspects), pool.map(alone, sorted(suspects))))
    failed = {path for path, answer in answers.items() if answer}
    memory.write_text(json.dumps(sorted(keys[p] for p, _ in chosen if p not in failed)),
                      encoding="utf-8")
    # What stands in a header is found by every source that includes it.
    complaints = {finding: None for answer in answers.values() for finding in findings_in(answer)}
    return list(complaints), len(chosen), len(due)


def main():
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    root, build = (Path(argument).resolve() for argument in sys.argv[1:3])
    complaints, count, looked_at = check(root, build, sys.argv[3:])
    if count == 0:
        sys.exit(f"{build} compiles nothing of {' '.join(sys.argv[3:])}")
    for complaint in complaints:
        print(complaint)
    if complaints:
        sys.exit(1)
    print(f"{count} sources have nothing that clang-tidy complains about ({looked_at} looked at now)")


if __name__ == "__main__":
    main()
