#!/usr/bin/env python3
"""Makes docs/html-report.png: the page of a made-up report, as a browser shows it.

usage: html_screenshot.py [--dark] [--width PIXELS] [--height PIXELS] [--page FILE] [OUT.png]

Needs Chromium, its driver and selenium, as the tests in tests/html do."""

import argparse
import os
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "tests/html"))

import assemble
import sample_reports
from browser import Browser


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("out", nargs="?", default=os.path.join(ROOT, "docs/html-report.png"))
    parser.add_argument("--dark", action="store_true")
    parser.add_argument("--width", type=int, default=1280)
    parser.add_argument("--height", type=int, default=1080)
    parser.add_argument("--page", help="a page that the client made, instead of the made-up one")
    arguments = parser.parse_args()
    browser = Browser()
    try:
        browser.resize(arguments.width, arguments.height)
        browser.emulate(prefers_color_scheme="dark" if arguments.dark else "light",
                        prefers_reduced_motion="reduce")
        path = arguments.page or browser.write("page.html", assemble.assemble(sample_reports.profile()))
        page = browser.open(os.path.abspath(path))
        page.settle()
        browser.driver.save_screenshot(arguments.out)
        complaints = browser.console()
    finally:
        browser.close()
    if complaints:
        sys.exit("\n".join(complaints))
    print(f"{arguments.out}: {os.path.getsize(arguments.out):,} bytes")


if __name__ == "__main__":
    main()
