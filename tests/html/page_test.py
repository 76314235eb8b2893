#!/usr/bin/env python3
"""The client's page in a browser: sorting, filtering, the map, many rows, both kinds of light.

Usage: page_test.py PAGES [TEST...]; PAGES is a folder of pages that the client made."""

import glob
import hashlib
import os
import pathlib
import re
import sys
import unittest

from selenium.webdriver.common.keys import Keys

import assemble
import sample_reports
from browser import Browser

PAGES = ""
BROWSER = None
MANY = 100_000
TALL = 250_000  # their rows are taller than a browser lets an element be


def setUpModule():
    global BROWSER
    BROWSER = Browser()
    BROWSER.profile = BROWSER.write("profile.html", assemble.assemble(sample_reports.profile()))
    BROWSER.many = BROWSER.write("many.html", assemble.assemble(sample_reports.many(MANY)))


def tearDownModule():
    BROWSER.close()


def rows_of(report):
    """The rows as the table shows them: name, folder, category, bytes, time."""
    return [{"name": name, "folder": report["folders"][folder], "size": size, "modified": modified,
             "category": report["groups"][group]["title"]}
            for folder, name, size, modified, group in report["rows"]]


class PageTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        BROWSER.resize(1280, 1000)
        BROWSER.emulate(prefers_color_scheme="light", prefers_reduced_motion="reduce")

    def tearDown(self):
        self.assertEqual(BROWSER.console(), [])

    def open(self, path):
        page = BROWSER.open(path)
        page.settle()
        return page


class Sorting(PageTest):
    def setUp(self):
        super().setUp()
        self.page = self.open(BROWSER.profile)
        self.rows = rows_of(sample_reports.profile())

    def names(self, key, reverse=False):
        return [row["name"] for row in sorted(self.rows, key=key, reverse=reverse)]

    def assert_shows(self, names):
        shown = self.page.cells("name")
        self.assertGreater(len(shown), 15)
        self.assertEqual(shown, names[:len(shown)])

    def test_the_reports_order_is_the_first(self):
        self.assert_shows(self.names(lambda row: -row["size"]))
        self.assertEqual(self.page.sort_of("size"), "descending")
        self.assertEqual(self.page.sort_of("name"), "none")

    def test_each_column_sorts_both_ways(self):
        keys = {"name": (lambda row: row["name"].upper(), "ascending"),
                "folder": (lambda row: row["folder"].upper(), "ascending"),
                "category": (lambda row: row["category"].upper(), "ascending"),
                "modified": (lambda row: row["modified"], "descending")}
        for column, (key, first) in keys.items():
            with self.subTest(column):
                self.page.sort_by(column)
                self.assertEqual(self.page.sort_of(column), first)
                # Equal ones keep the order of the report, which is that of these rows.
                ascending = sorted(self.rows, key=key)
                descending = sorted(self.rows, key=key, reverse=True)
                orders = {"ascending": [row["name"] for row in ascending],
                          "descending": [row["name"] for row in descending]}
                self.assert_shows(orders[first])
                self.page.sort_by(column)
                second = "ascending" if first == "descending" else "descending"
                self.assertEqual(self.page.sort_of(column), second)
                self.assert_shows(orders[second])

    def test_the_keyboard_sorts_too(self):
        self.page.run("document.querySelector('.headrow .c-name button').focus()")
        self.page.press(Keys.ENTER)
        self.assertEqual(self.page.sort_of("name"), "ascending")
        self.page.press(Keys.SPACE)
        self.assertEqual(self.page.sort_of("name"), "descending")
        self.page.press(Keys.TAB, Keys.ENTER)
        self.assertEqual((self.page.sort_of("name"), self.page.sort_of("folder")), ("none", "ascending"))


class Filtering(PageTest):
    def setUp(self):
        super().setUp()
        self.page = self.open(BROWSER.profile)
        self.rows = rows_of(sample_reports.profile())

    def assert_shown(self, expected):
        size = self.page.run("return format.size(arguments[0])", sum(row["size"] for row in expected))
        self.assertEqual(self.page.count(), f"{len(expected)} of {len(self.rows)} shown, {size}")
        self.assertEqual(self.page.row_count(), len(expected))
        shown = self.page.cells("name") if expected else []
        self.assertEqual(shown, [row["name"] for row in expected][:len(shown)])

    def test_a_part_of_the_path_in_any_capitals(self):
        for text in ("vIRTUAL machines\\deb", "capture", ".ISO", "ann\\down"):
            with self.subTest(text):
                self.page.filter(text)
                expected = [row for row in self.rows
                            if text.lower() in (row["folder"] + "\\" + row["name"]).lower()]
                self.assertGreater(len(expected), 0)
                self.assertLess(len(expected), len(self.rows))
                self.assert_shown(expected)
        self.page.filter("")
        self.assert_shown(self.rows)

    def test_chips_choose_categories(self):
        self.page.chip("Images")
        self.assert_shown([row for row in self.rows if row["category"] == "Images"])
        self.page.chip("Archives")
        self.assert_shown([row for row in self.rows if row["category"] in ("Images", "Archives")])
        pressed = [chip.text.split("\n")[0] for chip in self.page.all(".chip[aria-pressed=true]")]
        self.assertEqual(sorted(text.split(" ")[0] for text in pressed), ["Archives", "Images"])
        self.page.filter("camera")
        self.assert_shown([row for row in self.rows
                           if row["category"] == "Images" and "Camera" in row["folder"]])
        self.page.click("#clear")
        self.assert_shown(self.rows)
        self.assertFalse(self.page.one("#clear").is_displayed())

    def test_nothing_that_passes_is_said(self):
        self.page.filter("no such name")
        self.assert_shown([])
        self.assertIn("No row passes the filters", self.page.text(".rows"))
        self.assertIn("Nothing here passes", self.page.text("#map"))

    def test_the_map_follows_the_filters(self):
        self.page.chip("Images")
        self.assertEqual([label.split(",")[0] for label in self.page.tiles()], ["Posters", "Camera"]
                         if self.page.trail()[-1].endswith("Pictures") else ["Pictures"])


class Map(PageTest):
    def setUp(self):
        super().setUp()
        self.page = self.open(BROWSER.profile)
        self.rows = rows_of(sample_reports.profile())

    def below(self, folder):
        return [row for row in self.rows if (row["folder"] + "\\").startswith(f"C:\\Users\\ann\\{folder}\\")]

    def assert_open(self, *names):
        self.assertEqual(self.page.trail(), ["C:\\Users\\ann", *names])
        expected = self.below("\\".join(names)) if names else self.rows
        self.assertEqual(self.page.row_count(), len(expected))
        shown = self.page.cells("name")
        self.assertEqual(shown, [row["name"] for row in expected][:len(shown)])

    def test_tiles_are_the_folders_with_their_sums(self):
        sizes = {}
        for row in self.rows:
            top = row["folder"].split("\\")[3]
            sizes[top] = sizes.get(top, 0) + row["size"]
        areas = {}
        for tile in self.page.all("#map button.tile"):
            label = tile.get_attribute("aria-label")
            name = label.split(",")[0].split("\\")[0]
            self.assertIn(self.page.run("return format.size(arguments[0])", sizes[name]), label)
            areas[name] = tile.size["width"] * tile.size["height"]
        self.assertEqual(sorted(areas), sorted(sizes))
        whole = sum(sizes.values())
        for name, area in areas.items():
            self.assertAlmostEqual(area / sum(areas.values()), sizes[name] / whole, delta=0.02)

    def test_tiles_lie_beside_each_other_within_the_map(self):
        box = self.page.one("#map").rect
        tiles = [tile.rect for tile in self.page.all("#map button.tile")]
        for tile in tiles:
            self.assertGreaterEqual(tile["x"], box["x"] - 0.5)
            self.assertLessEqual(tile["x"] + tile["width"], box["x"] + box["width"] + 0.5)
            self.assertLessEqual(tile["y"] + tile["height"], box["y"] + box["height"] + 0.5)
        for i, a in enumerate(tiles):
            for b in tiles[:i]:
                self.assertFalse(a["x"] + 1 < b["x"] + b["width"] and b["x"] + 1 < a["x"] + a["width"] and
                                 a["y"] + 1 < b["y"] + b["height"] and b["y"] + 1 < a["y"] + a["height"],
                                 (a, b))

    def head_of(self, name):
        """Clicks the name on a folder's tile: there are other tiles in its middle."""
        self.page.run("""
            const tile = [...document.querySelectorAll("#map .tile.open")]
              .find((tile) => tile.querySelector(".label").textContent === arguments[0]);
            tile.querySelector(".label").click()""", name)
        self.page.settle()

    def test_the_mouse_opens_a_folder_and_goes_back(self):
        self.head_of("Documents")
        self.assert_open("Documents")
        # Also one further down, at once.
        self.head_of("Debian")
        self.assert_open("Documents", "Virtual machines", "Debian")
        self.page.run("document.querySelectorAll('#trail button')[1].click()")
        self.page.settle()
        self.assert_open("Documents")
        self.page.run("document.querySelector('#trail button').click()")
        self.page.settle()
        self.assert_open()

    def test_a_real_click_hits_what_is_seen(self):
        tile = self.page.tile("Videos")
        label = tile.find_element("css selector", ".label")
        label.click()
        self.page.settle()
        self.assert_open("Videos")

    def test_the_keyboard_opens_a_folder_and_goes_back(self):
        self.page.run("document.querySelector('#map button.tile[tabindex=\"0\"]').focus()")
        self.assertTrue(self.page.focused().startswith("Videos, folder,"), self.page.focused())
        self.page.press(Keys.ENTER)
        self.assert_open("Videos")
        # The largest folder in it comes first.
        sums = {}
        for row in self.below("Videos"):
            sums[row["folder"]] = sums.get(row["folder"], 0) + row["size"]
        largest = max(sums, key=sums.get).rsplit("\\", 1)[1]
        self.assertTrue(self.page.focused().startswith(largest + ", folder,"), self.page.focused())
        self.page.press(Keys.BACKSPACE)
        self.assert_open()
        self.assertTrue(self.page.focused().startswith("Videos, folder,"), self.page.focused())
        self.page.press(Keys.ENTER)
        self.page.press(Keys.ESCAPE)
        self.assert_open()
        # At the top there is no way up.
        self.page.press(Keys.ESCAPE)
        self.assert_open()

    def test_arrow_keys_reach_every_tile(self):
        self.page.run("document.querySelector('#map button.tile').focus()")
        everything = set(self.page.tiles())
        self.assertGreater(len(everything), 5)
        reached = set()

        def walk(index):
            label = self.page.tiles()[index]
            if label in reached:
                return
            reached.add(label)
            for key in (Keys.ARROW_RIGHT, Keys.ARROW_DOWN, Keys.ARROW_LEFT, Keys.ARROW_UP):
                self.page.run("document.querySelectorAll('#map button.tile')[arguments[0]].focus()", index)
                self.page.press(key)
                walk(self.page.tiles().index(self.page.focused()))

        walk(0)
        self.assertEqual(reached, everything)
        # And one tile alone is a stop of the tabulator.
        self.assertEqual(len(self.page.all("#map button.tile[tabindex='0']")), 1)

    def test_a_step_goes_where_the_arrow_points(self):
        self.page.run("document.querySelector('#map button.tile').focus()")
        before = self.page.run("return document.activeElement.getBoundingClientRect().left")
        self.page.press(Keys.ARROW_RIGHT)
        after = self.page.run("return document.activeElement.getBoundingClientRect().left")
        self.assertGreater(after, before)
        self.assertTrue(self.page.one("#map .frame").is_displayed())

    def test_a_file_is_shown_in_the_table(self):
        self.head_of("Films")
        self.assert_open("Videos", "Films")
        self.page.run("document.querySelector('#map button.tile').click()")
        self.page.settle()
        self.assertEqual(self.page.text("#detail .path"),
                         self.rows_path(self.below("Videos\\Films")[0]))
        self.assertEqual(self.page.focused(), "grid")

    def rows_path(self, row):
        return row["folder"] + "\\" + row["name"]

    def test_a_tile_tells_more_when_pointed_at(self):
        self.page.point_at("#map button.tile .label")
        self.assertTrue(self.page.one("#tip").is_displayed())
        self.assertIn("Videos", self.page.text("#tip"))
        self.assertRegex(self.page.text("#tip"), r"GiB in \d+ files, \d+ % of this folder")


class Table(PageTest):
    def setUp(self):
        super().setUp()
        self.page = self.open(BROWSER.profile)
        self.rows = rows_of(sample_reports.profile())

    def test_the_keyboard_moves_from_row_to_row(self):
        self.page.run("document.getElementById('grid').focus()")
        self.page.press(Keys.ARROW_DOWN, Keys.ARROW_DOWN, Keys.ARROW_DOWN)
        active = self.page.one("#grid").get_attribute("aria-activedescendant")
        row = self.page.one("#" + active)
        self.assertEqual(row.get_attribute("aria-selected"), "true")
        self.assertEqual(row.get_attribute("aria-rowindex"), "4")
        self.assertTrue(self.page.text("#detail .path").endswith("\\" + self.rows[2]["name"]))
        self.page.press(Keys.END)
        self.assertTrue(self.page.text("#detail .path").endswith("\\" + self.rows[-1]["name"]))
        self.assertTrue(self.visible(self.rows[-1]["name"]))
        self.page.press(Keys.PAGE_UP)
        self.page.press(Keys.HOME)
        self.assertTrue(self.page.text("#detail .path").endswith("\\" + self.rows[0]["name"]))
        self.assertTrue(self.visible(self.rows[0]["name"]))

    def visible(self, name):
        return self.page.run("""
            const grid = document.getElementById("grid").getBoundingClientRect();
            const top = grid.top + document.querySelector(".headgroup").offsetHeight;
            return [...document.querySelectorAll(".rows > .row")].some((row) => {
              const area = row.getBoundingClientRect();
              return row.querySelector(".c-name").textContent === arguments[0] && area.top >= top - 1 &&
                area.bottom <= grid.bottom + 1;
            })""", name)

    def test_a_click_chooses_a_row(self):
        self.page.click("#row-4 .c-name")
        self.assertTrue(self.page.text("#detail .path").endswith("\\" + self.rows[4]["name"]))
        folder = self.rows[4]["folder"]
        self.page.run("""[...document.querySelectorAll("#detail button")]
            .find((button) => button.textContent === "Show its folder").click()""")
        self.page.settle()
        self.assertEqual("\\".join(self.page.trail()), folder)

    def test_on_paper_there_are_all_rows(self):
        self.page.run("dispatchEvent(new Event('beforeprint'))")
        self.assertEqual(len(self.page.all(".rows > .row")), len(self.rows))
        self.page.run("dispatchEvent(new Event('afterprint'))")
        self.assertLess(len(self.page.all(".rows > .row")), 80)


class Many(PageTest):
    def test_a_hundred_thousand_rows_draw_no_more_than_can_be_seen(self):
        page = self.open(BROWSER.many)
        self.assertEqual(page.row_count(), MANY)
        self.assertLess(page.run("return document.querySelectorAll('*').length"), 3000)
        drawn = set()
        for share in (0, 0.013, 0.25, 0.5, 0.77, 1):
            page.run("""
                const grid = document.getElementById("grid");
                grid.scrollTop = arguments[0] * (grid.scrollHeight - grid.clientHeight)""", share)
            page.settle()
            self.assertLess(len(page.all(".rows > .row")), 80)
            drawn.update(page.cells("name"))
            self.assert_filled(page)
        self.assertIn("file 000000.bin", drawn)  # the smallest comes last
        self.assertIn("file 099999.bin", drawn)

    def assert_filled(self, page):
        """No part of the table is blank."""
        self.assertTrue(page.run("""
            const grid = document.getElementById("grid").getBoundingClientRect();
            const top = grid.top + document.querySelector(".headgroup").offsetHeight;
            const x = grid.left + 60;
            for (let y = top + 4; y < Math.min(grid.bottom, innerHeight) - 4; y += 20) {
              if (!document.elementFromPoint(x, y).closest(".rows > .row")) {
                return false;
              }
            }
            return true"""))

    def test_they_are_sorted_and_filtered_all(self):
        page = self.open(BROWSER.many)
        page.sort_by("name")
        self.assertEqual(page.cells("name")[:3], [f"file {i:06}.bin" for i in range(3)])
        page.filter("0777")
        expected = [i for i in range(MANY) if "0777" in f"{i:06}"]
        self.assertEqual(page.row_count(), len(expected))
        self.assertEqual(page.cells("name")[0], f"file {expected[0]:06}.bin")
        page.filter("d:\\data\\07\\")
        self.assertEqual(page.row_count(), MANY // 20)
        self.assertIn("5,000 of 100,000 shown", page.count())

    def test_the_map_stays_small(self):
        page = self.open(BROWSER.many)
        self.assertLess(len(page.all("#map .tile")), 600)
        self.assertEqual(len(page.tiles()), 20)

    def test_rows_taller_than_an_element_may_be_are_all_reached(self):
        path = BROWSER.write("tall.html", assemble.assemble(sample_reports.many(TALL)))
        page = self.open(path)
        self.assertLess(page.run("return document.querySelector('.rows').offsetHeight"), TALL * 34)
        page.run("document.getElementById('grid').focus()")
        page.press(Keys.END)
        self.assertEqual(page.cells("name")[-1], "file 000000.bin")
        self.assert_filled(page)
        page.press(Keys.ARROW_UP, Keys.ARROW_UP)
        self.assertTrue(page.text("#detail .path").endswith("file 000002.bin"))
        page.run("document.getElementById('grid').scrollTop = 4e6")
        page.settle()
        self.assert_filled(page)
        page.run("document.getElementById('grid').focus()")
        page.press(Keys.HOME)
        self.assertEqual(page.cells("name")[0], f"file {TALL - 1:06}.bin")


class Light(PageTest):
    def assert_readable(self, scheme):
        BROWSER.emulate(prefers_color_scheme=scheme, prefers_reduced_motion="reduce")
        page = self.open(BROWSER.profile)
        dark = page.run("return getComputedStyle(document.body).backgroundColor")
        self.assertEqual(sum(map(int, re.findall(r"\d+", dark))) < 150, scheme == "dark")
        self.assertEqual(page.low_contrasts(), [])
        page.chip("Images")
        page.click("#row-2 .c-name")
        page.point_at("#map button.tile .label")
        self.assertEqual(page.low_contrasts(), [])
        page.filter("no such name")
        self.assertEqual(page.low_contrasts(), [])

    def test_every_text_stands_out_in_light(self):
        self.assert_readable("light")

    def test_every_text_stands_out_in_the_dark(self):
        self.assert_readable("dark")

    def test_all_colours_of_tiles_carry_their_text(self):
        for scheme in ("light", "dark"):
            BROWSER.emulate(prefers_color_scheme=scheme)
            page = self.open(BROWSER.profile)
            page.run("""
                document.querySelectorAll("#map .tile:not(.open)").forEach((tile, i) => {
                  tile.className = tile.className.replace(/hue\\d/, "hue" + i % 10);
                })""")
            self.assertEqual(page.low_contrasts(), [], scheme)

    def test_nothing_moves_for_who_asked_for_that(self):
        page = self.open(BROWSER.profile)
        page.run("document.querySelector('#map button.tile').click()")
        self.assertEqual(page.run("return document.getAnimations().length"), 0)


class Narrow(PageTest):
    def test_a_telephone_shows_all_of_it(self):
        BROWSER.resize(360, 740)
        page = self.open(BROWSER.profile)
        self.assertEqual(page.run("return document.documentElement.scrollWidth"), 360)
        self.assertEqual(page.run("return document.querySelector('.rows > .row').offsetHeight"), 54)
        self.assertEqual(page.low_contrasts(), [])
        texts = page.run("""
            return [...document.querySelectorAll("#row-0 .cell")].filter((cell) => cell.offsetWidth > 0)
              .map((cell) => cell.textContent)""")
        self.assertEqual(len(texts), 3)
        page.run("document.getElementById('grid').focus()")
        page.press(Keys.END)
        self.assertEqual(page.cells("name")[-1], sample_reports.profile()["rows"][-1][1])


class ClientPages(PageTest):
    """What the client itself wrote."""

    def page(self, name):
        path = os.path.join(PAGES, name + ".html")
        self.assertTrue(os.path.exists(path), path)
        with open(path, encoding="utf-8", newline="") as file:
            return self.open(path), assemble.report_in(file.read())

    def test_each_page_shows_all_its_rows_and_asks_nobody(self):
        paths = sorted(glob.glob(os.path.join(PAGES, "*.html")))
        self.assertGreaterEqual(len(paths), 8)
        for path in paths:
            with self.subTest(os.path.basename(path)):
                page, report = self.page(os.path.basename(path)[:-5])
                self.assertEqual(page.row_count(), len(report["rows"]))
                self.assertTrue(page.count().startswith(f"{len(report['rows']):,} of "), page.count())
                for head in page.all(".headrow button"):
                    head.click()
                    page.settle()
                self.assertEqual(BROWSER.console(), [])
                asked = BROWSER.addresses()
                self.assertIn(pathlib.Path(path).as_uri(), asked)
                self.assertEqual([address for address in asked
                                  if not address.startswith(("file:", "data:", "about:"))], [])

    def test_the_policy_lets_nothing_else_run(self):
        page, _ = self.page("large")
        page.run("""
            const script = document.createElement("script");
            script.textContent = "window.intruder = true";
            document.body.append(script);
            document.body.insertAdjacentHTML("beforeend", "<img src='x.png'>")""")
        page.settle()
        self.assertIsNone(page.run("return window.intruder ?? null"))
        refused = BROWSER.console()
        self.assertGreaterEqual(len(refused), 2)
        self.assertTrue(all("Content Security Policy" in text for text in refused), refused)

    def test_a_hostile_name_is_only_a_name(self):
        page, report = self.page("junk")
        self.assertIn("</script><img src=x onerror=alert(1)><!--", page.text("#chips"))
        self.assertEqual(len(page.all("img")), 0)
        # A character that turns the ones behind it round is not shown.
        turned = [row[1] for row in report["rows"] if "\u202e" in row[1]]
        self.assertEqual(len(turned), 1)
        page.filter(turned[0])
        self.assertEqual(page.cells("name"), [turned[0].replace("\u202e", "\ufffd")])

    def test_names_of_other_scripts_keep_to_themselves(self):
        page, _ = self.page("junk")
        page.filter("\u05e9\u05dc\u05d5\u05dd")
        self.assertEqual(page.cells("name"), ["\u05e9\u05dc\u05d5\u05dd.zip"])
        self.assertEqual(page.run("return document.querySelector('.rows .c-name').firstChild.tagName"), "BDI")

    def test_a_group_of_duplicates_can_be_shown_alone(self):
        page, report = self.page("duplicates")
        page.click("#row-0 .c-name")
        page.run("""[...document.querySelectorAll("#detail button")]
            .find((button) => button.textContent === "Only this group").click()""")
        page.settle()
        self.assertEqual(page.row_count(), report["groups"][0]["count"])
        page.click(".chip[aria-label^='Group 1']")
        self.assertEqual(page.row_count(), len(report["rows"]))

    def test_a_shortened_report_says_so(self):
        page, _ = self.page("top")
        self.assertIn("This page has 3 of the", page.text("#notices"))


class Vendor(unittest.TestCase):
    def test_the_library_is_the_one_that_was_fetched(self):
        folder = os.path.join(assemble.FOLDER, "vendor")
        with open(os.path.join(folder, "d3-hierarchy.min.js"), "rb") as file:
            digest = hashlib.sha256(file.read()).hexdigest()
        with open(os.path.join(folder, "README.md"), encoding="utf-8") as file:
            self.assertIn(digest, file.read())


if __name__ == "__main__":
    PAGES = sys.argv.pop(1)
    unittest.main(verbosity=2)
