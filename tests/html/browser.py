"""A page in a browser without a window, and the ways in which a test looks at it and touches it."""

import json
import os
import pathlib
import shutil
import tempfile
import time

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

PATIENCE = 60  # seconds until something that must come is given up


class Browser:
    """One browser for all tests of a run."""

    def __init__(self):
        self.folder = tempfile.mkdtemp(prefix="html_page_")
        options = webdriver.ChromeOptions()
        options.binary_location = shutil.which("chromium")
        for argument in ("--headless=new", "--disable-gpu", "--hide-scrollbars", "--window-size=1280,1000",
                         "--force-color-profile=srgb", "--disable-background-networking",
                         "--user-data-dir=" + os.path.join(self.folder, "profile")):
            options.add_argument(argument)
        if os.geteuid() == 0:
            # The browser's own cage asks for another user.
            options.add_argument("--no-sandbox")
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        self.driver = webdriver.Chrome(service=Service(shutil.which("chromedriver")), options=options)
        self.driver.set_script_timeout(PATIENCE)

    def close(self):
        self.driver.quit()
        shutil.rmtree(self.folder, ignore_errors=True)

    def write(self, name, text):
        path = os.path.join(self.folder, name)
        with open(path, "w", encoding="utf-8", newline="") as file:
            file.write(text)
        return path

    def emulate(self, **features):
        """prefers_color_scheme="dark" and the like."""
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [
            {"name": name.replace("_", "-"), "value": value} for name, value in features.items()]})

    def resize(self, width, height):
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})

    def open(self, path):
        self.driver.get("about:blank")
        self.driver.get_log("browser")
        self.driver.get_log("performance")
        self.driver.get(pathlib.Path(path).as_uri())
        return Page(self.driver)

    def console(self):
        return [entry["message"] for entry in self.driver.get_log("browser")]

    def addresses(self):
        """All that was asked for since the page was opened."""
        found = []
        for entry in self.driver.get_log("performance"):
            message = json.loads(entry["message"])["message"]
            if message["method"] in ("Network.requestWillBeSent", "Network.webSocketCreated"):
                parameters = message["params"]
                found.append(parameters.get("request", parameters)["url"])
        return found


class Page:
    def __init__(self, driver):
        self.driver = driver

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def settle(self):
        """Until what was asked for is drawn."""
        self.driver.execute_async_script(
            "const done = arguments[0]; requestAnimationFrame(() => requestAnimationFrame(() => done()))")

    def wait(self, condition, what):
        end = time.monotonic() + PATIENCE
        while not condition():
            if time.monotonic() > end:
                raise AssertionError("waited in vain for " + what)
            time.sleep(0.02)

    def one(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def text(self, selector):
        return self.run("return document.querySelector(arguments[0]).textContent", selector)

    def press(self, *keys):
        ActionChains(self.driver).send_keys(*keys).perform()
        self.settle()

    def click(self, selector):
        self.one(selector).click()
        self.settle()

    def point_at(self, selector):
        ActionChains(self.driver).move_to_element(self.one(selector)).perform()
        self.settle()

    def count(self):
        return self.text("#count")

    def cells(self, column):
        """The texts of a column, of the rows in the document, from above to below."""
        return self.run("""
            return [...document.querySelectorAll(".rows > .row")]
              .sort((a, b) => a.dataset.i - b.dataset.i)
              .map((row) => row.querySelector(".c-" + arguments[0]).textContent)""", column)

    def row_count(self):
        return int(self.one("#grid").get_attribute("aria-rowcount")) - 1

    def sort_of(self, column):
        return self.one(f".headrow .c-{column}").get_attribute("aria-sort")

    def sort_by(self, column):
        self.click(f".headrow .c-{column} button")

    def filter(self, text):
        """What the table shows changes in a moment."""
        field = self.one("#filter")
        field.send_keys(Keys.CONTROL + "a", Keys.DELETE)
        if text:
            field.send_keys(text)
        self.wait(lambda: self.run("return selection.state.text") == text.lower(), "the filter")
        self.settle()

    def chip(self, label):
        self.run("""
            [...document.querySelectorAll(".chip")].find((chip) => chip.textContent.startsWith(arguments[0])).click()""",
                 label)
        self.settle()

    def tiles(self):
        """The labels of the tiles directly in the open folder."""
        return [tile.get_attribute("aria-label") for tile in self.all("#map button.tile")]

    def trail(self):
        return self.run("return [...document.querySelectorAll('#trail button')].map((b) => b.textContent)")

    def tile(self, name):
        for tile in self.all("#map button.tile"):
            if tile.get_attribute("aria-label").split(",")[0] == name:
                return tile
        raise AssertionError(f"no tile {name} among {self.tiles()}")

    def focused(self):
        return self.run("const a = document.activeElement; return a.getAttribute('aria-label') || a.id || a.tagName")

    def low_contrasts(self, least=4.5):
        """The visible texts that do not stand out from what is behind them."""
        return self.run(CONTRAST, least)


CONTRAST = r"""
const least = arguments[0];
const parse = (color) => color.match(/[\d.]+/g).map(Number);
const light = ([r, g, b]) => [r, g, b].map((v) => v / 255)
  .map((v) => v <= 0.03928 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4)
  .reduce((sum, v, i) => sum + v * [0.2126, 0.7152, 0.0722][i], 0);
const found = [];
let seen = 0;
for (const element of document.querySelectorAll("body *")) {
  const own = [...element.childNodes].some((node) => node.nodeType === 3 && node.data.trim() !== "");
  const area = element.getBoundingClientRect();
  const style = getComputedStyle(element);
  if (!own || area.width < 2 || area.height < 2 || style.visibility === "hidden" || /^(SCRIPT|STYLE)$/.test(element.tagName)) {
    continue;
  }
  let behind = [255, 255, 255];
  for (let at = element; at !== null; at = at.parentElement) {
    const color = parse(getComputedStyle(at).backgroundColor);
    if (color.length < 4 || color[3] === 1) {
      behind = color;
      break;
    }
    if (color[3] !== 0) {
      throw new Error("a background shines through: " + at.className);
    }
  }
  const values = [light(parse(style.color)), light(behind)].sort((a, b) => b - a);
  const ratio = (values[0] + 0.05) / (values[1] + 0.05);
  seen += 1;
  if (ratio < least) {
    found.push(element.className + " " + ratio.toFixed(2) + ": " + element.textContent.slice(0, 30));
  }
}
if (seen < 20) {
  throw new Error("only " + seen + " texts were seen");
}
return found;
"""
