#!/usr/bin/env python3
"""Finds words that have no place in the tree: folders of one machine, hosts that packages come from,
notes about work that is left, and references to documents and conversations that a reader of the
tree does not have.

usage: check_words.py [ROOT]
"""

import re
import sys
from pathlib import Path

# What is built, or belongs to tools, and not part of the tree.
LEFT_OUT = {".git", "build", "node_modules", "__pycache__"}
# Inputs that a machine made.
LEFT_OUT_FOLDERS = {"tests/fuzz/corpus"}

# In pieces: this file is searched like all others.
FORBIDDEN = [
    ((r"\b(issues?|ticket|pull re", r"quest) *#? *[0-9]+"), "a conversation that is not here"),
    ((r"\b(fix(es)?|clos", r"es|see) #[0-9]+"), "a conversation that is not here"),
    # After a letter and a colon it is a path of Windows.
    ((r"(?-i:(?<![\w.*/<-])(?<![A-Za-z]:)/(wo", r"rk|tm", r"p|ro", r"ot|ho", r"me)\b(?!-))"),
     "a folder of one machine"),
    (("py", r"pi\.org|regis", r"try\.npm|npm", r"js\.(com|org)|crat", r"es\.io|proxy\.go", r"lang",
      r"|rubyg", r"ems\.org|nu", r"get\.org|deb\.deb", r"ian\.org|archive\.ubu", r"ntu\.com"),
     "a host that packages come from"),
    ((r"(?-i:\b(TO", r"DO|FIX", r"ME|XX", r"X)\b)"), "a note about work that is left"),
]
# A document is named with its ending, wherever it lies.
DOCUMENT = re.compile(r"[\w-]+\.md\b")
PATTERNS = [(re.compile("".join(pieces), re.IGNORECASE), meaning) for pieces, meaning in FORBIDDEN]


def files_of(root, folder):
    for path in sorted(folder.iterdir()):
        if path.name in LEFT_OUT or path.is_symlink():
            continue
        if not path.is_dir():
            yield path
        elif path.relative_to(root).as_posix() not in LEFT_OUT_FOLDERS:
            yield from files_of(root, path)


def findings_in(line, documents):
    """(what was found, what it is) for each word of a line that has no place here."""
    for pattern, meaning in PATTERNS:
        match = pattern.search(line)
        if match:
            yield match.group(0).strip(), meaning
    for name in DOCUMENT.findall(line):
        if name not in documents:
            yield name, "a document that is not here"


def check(root):
    """The complaints, and how many files were read."""
    complaints = []
    files = list(files_of(root, root))
    documents = {path.name for path in files}
    for path in files:
        name = path.relative_to(root).as_posix()
        lines = path.read_bytes().decode("utf-8", errors="replace").splitlines()
        places = [(name, name)]
        places += [(f"{name}:{number}", line) for number, line in enumerate(lines, 1)]
        for place, line in places:
            complaints += [f'{place}: "{word}" is {meaning}'
                           for word, meaning in findings_in(line, documents)]
    return complaints, len(files)


def main():
    root = Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).parent.parent).resolve()
    complaints, count = check(root)
    if count == 0:
        sys.exit(f"no files below {root}")
    for complaint in complaints:
        print(complaint)
    if complaints:
        sys.exit(1)
    print(f"{count} files, none with a word that has no place here")


if __name__ == "__main__":
    main()
