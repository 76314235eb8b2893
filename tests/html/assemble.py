"""Puts a page of the client together as the build and the client do it, around any report: for reports
that would take long to make on real files."""

import base64
import hashlib
import json
import os
import re

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
FOLDER = os.path.join(ROOT, "apps/quastel/html")


def read(name):
    with open(os.path.join(FOLDER, name), encoding="utf-8", newline="") as file:
        return file.read().replace("\r\n", "\n")


def scripts():
    """Their names in the order of the build."""
    with open(os.path.join(ROOT, "cmake/embed_page.cmake"), encoding="utf-8") as file:
        return re.search(r"set\(embed_page_scripts ([^)]*)\)", file.read()).group(1).split()


def policy_hash(text):
    digest = hashlib.sha256(text.encode()).digest()
    return f"'sha256-{base64.b64encode(digest).decode()}'"


def pieces():
    """The page before and after its report."""
    style = read("report.css")
    library = read("vendor/d3-hierarchy.min.js")
    script = '"use strict";\n' + "".join(read(name + ".js") for name in scripts())
    page = read("report.html")
    for mark, text in (("style_hash", policy_hash(style)), ("library_hash", policy_hash(library)),
                       ("script_hash", policy_hash(script)),
                       ("library_license", read("vendor/d3-hierarchy.LICENSE")),
                       ("style", style), ("library", library), ("script", script)):
        page = page.replace(f"@{mark}@", text)
    before, after = page.split("@report@")
    return before, after


def assemble(report):
    before, after = pieces()
    text = json.dumps(report, ensure_ascii=False, separators=(",", ":"))
    for character in "<>&\u2028\u2029":
        text = text.replace(character, f"\\u{ord(character):04x}")
    return before + text + after


def report_in(page):
    """The report that a page holds."""
    text = page.split('<script type="application/json" id="report">', 1)[1]
    return json.loads(text.split("</script>", 1)[0])
