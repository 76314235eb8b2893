#!/usr/bin/env python3
"""Prepares the header for Doxygen, line for line, so that the header itself can stay plain.

usage: reference_filter.py HEADER

- The comments that begin with a title in capitals become pages: the conventions, to which the
  functions refer, are the first page, and the rule documents another one.
- The headings between the functions become those of the lists, with the text that follows them.
- Each name of the interface in a comment becomes a link. Doxygen warns of a link that leads nowhere, so
  no comment can name a function that there is not.
"""

import re
import sys
from pathlib import Path

TITLE = re.compile(r"^ \* ([A-Z][A-Z, ]+)$")
HEADING = re.compile(r"^/\* ---- (.*?) -*\*/$")
# Not the beginning of a family of names, as in qs_session_... and QS_STATE_...
NAME = re.compile(r"(?<![\w#])((?:qs|QS)_\w*[A-Za-z0-9])(?![\w.]*\.\.)(?!\w)")
CONVENTION = re.compile(r"\b(convention \d+)\b")
ITEM = re.compile(r"^ \* {1,2}(\d+\.) ")
OUTLINE = re.compile(r"^ \* {3,}\S")
EXAMPLE = re.compile(r"^ \* {7,}\S+$")
BACKSLASH = re.compile(r"\\(?!(?:param|return|file)\b)")
# The macro that marks a function is nothing to link to.
UNLINKED = {"QS_API"}


def prepared(line):
    """A line of a comment: all of it is text but for the commands \\param, \\return and \\file."""
    line = BACKSLASH.sub(r"\\\\", line)
    line = line.replace("&", "&amp;").replace("<", "&lt;").replace('"', "&quot;")
    line = NAME.sub(lambda name: name[0] if name[1] in UNLINKED else "#" + name[1], line)
    return CONVENTION.sub(r'\\ref index "\1"', line)


class Filter:
    """One pass over the lines. `part` is what the line stands in: code, a comment for Doxygen, or a
    page, and there a text, a list or an outline, which keeps its layout."""

    def __init__(self, lines):
        self.lines = lines
        self.part = "code"
        self.group_is_open = False
        self.heading = ""  # of the comment that comes next

    def run(self):
        return [self.line(number, line) for number, line in enumerate(self.lines)]

    def following(self, number):
        return next((line for line in self.lines[number + 1:] if line), "")

    def line(self, number, line):
        return self.code(number, line) if self.part == "code" else self.comment(number, line)

    def code(self, number, line):
        heading = HEADING.match(line)
        if heading:
            end = "/**@}*/ " if self.group_is_open else ""
            self.group_is_open = True
            text = self.lines.index("/*", number) if self.following(number) == "/*" else None
            if text is None or TITLE.match(self.lines[text + 1]):
                return f"{end}/** \\name {heading[1]} */ /**@{{*/"
            self.heading = heading[1]
            return end
        if line == "/*":
            self.part = "text"
            return "/** \\name " + self.heading if self.heading else "/**"
        if line.lstrip().startswith("/**"):
            self.part = "code" if "*/" in line else "comment"
            return prepared(line)
        is_end = self.group_is_open and number + 1 == len(self.lines)
        return "/**@}*/" if is_end else line

    def comment(self, number, line):
        if "*/" in line:
            begin = " /**@{*/" if self.heading else ""
            end = " \\endverbatim" if self.part == "outline" else ""
            self.part, self.heading = "code", ""
            return end + line + begin
        title = TITLE.match(line)
        if title and self.part != "comment":
            self.part = "text"
            return f" * {self.command_for(number, title[1])} {title[1].capitalize()}"
        if self.part == "outline":
            if line == " *":
                self.part = "text"
                return "   \\endverbatim"
            return line.replace(" *", "", 1)
        if self.part == "text" and line == " *" and OUTLINE.match(self.lines[number + 1]):
            if not ITEM.match(self.lines[number + 1]):
                self.part = "outline"
                return " * \\verbatim"
        item = ITEM.match(line)
        if item:
            self.part = "list"
            # The numbers of one list have to begin in one column.
            line = f" * {item[1]:<3} " + line[item.end():]
        if self.part == "list" and EXAMPLE.match(line):
            return " *     <br>`" + line.lstrip("* ") + "`<br>"
        return prepared(line)

    def command_for(self, number, title):
        name = re.sub(r"\W+", "_", title.lower())
        if name == "conventions":
            return "\\mainpage"
        return f"\\page {name}" if self.lines[number - 1] == "/*" else f"\\section {name}"


def main():
    text = Path(sys.argv[1]).read_text(encoding="utf-8")
    sys.stdout.write("\n".join(Filter(text.split("\n")).run()))


if __name__ == "__main__":
    main()
