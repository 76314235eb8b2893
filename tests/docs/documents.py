"""What the tests of the documents share: the blocks of code in them, and the pieces of sources that
they are cut from."""

import re
import textwrap
from dataclasses import dataclass
from pathlib import Path

FENCE = re.compile(r"^```(\w*)$")
# <!-- examples/window_worker.cpp: rows -->
ORIGIN = re.compile(r"^<!-- (\S+)(?:: (\S+))? -->$")


@dataclass
class Block:
    document: str  # path below the root
    line: int  # of its first line, from 1
    language: str  # of a fenced block; empty for an indented one
    origin: tuple  # (source, piece) of the comment above it, or None
    lines: list

    @property
    def text(self):
        return "\n".join(self.lines)

    @property
    def place(self):
        return f"{self.document}:{self.line}"


def documents_of(root):
    """The documents for people, by their path below the root."""
    return ["README.md", "CONTRIBUTING.md"] + sorted(
        path.relative_to(root).as_posix() for path in (root / "docs").glob("*.md"))


def blocks_of(root, document):
    """Fenced and indented blocks in order. A line of a list that goes on is no block."""
    lines = (root / document).read_text(encoding="utf-8").splitlines()
    blocks = []
    at = 0
    while at < len(lines):
        fence = FENCE.match(lines[at])
        if fence:
            end = lines.index("```", at + 1)
            origin = ORIGIN.match(lines[at - 1]) if at else None
            blocks.append(Block(document, at + 2, fence.group(1), origin and origin.groups(),
                                lines[at + 1:end]))
            at = end + 1
        elif lines[at].startswith("    ") and (at == 0 or not lines[at - 1].strip()):
            end = at
            while end < len(lines) and (lines[end].startswith("    ") or not lines[end].strip()):
                end += 1
            text = textwrap.dedent("\n".join(lines[at:end])).rstrip("\n").split("\n")
            blocks.append(Block(document, at + 1, "", None, text))
            at = end
        else:
            at += 1
    return blocks


def piece_of(root, source, piece):
    """What stands in a source between two lines `// [piece]`, without the common indentation."""
    lines = (Path(root) / source).read_text(encoding="utf-8").splitlines()
    marks = [number for number, line in enumerate(lines)
             if line.strip() in (f"// [{piece}]", f"# [{piece}]")]
    if len(marks) != 2:
        raise ValueError(f"{source} has {len(marks)} marks [{piece}] and not 2")
    return textwrap.dedent("\n".join(lines[marks[0] + 1:marks[1]]))
