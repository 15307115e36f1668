"""A headless browser of its own, with an empty profile, and what the tests ask it."""

import shutil
import tempfile

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

from host import PATIENCE

FLAGS = [
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
    "--disable-component-update", "--disable-sync", "--disable-dev-shm-usage", "--hide-scrollbars",
]


class Browser:
    def __init__(self):
        self.profile = tempfile.mkdtemp(prefix="oko-page-")
        options = webdriver.ChromeOptions()
        for flag in FLAGS + ["--user-data-dir=" + self.profile]:
            options.add_argument(flag)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        self.driver.set_script_timeout(PATIENCE)
        self.resize(1280, 1400)
        self.prefer("light")

    def close(self):
        self.driver.quit()
        shutil.rmtree(self.profile, ignore_errors=True)

    def open(self, address):
        self.driver.get(address)

    def resize(self, width, height):
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 1, "mobile": width < 500})

    def prefer(self, scheme):
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "features": [{"name": "prefers-color-scheme", "value": scheme}]})

    def script(self, text, *arguments):
        return self.driver.execute_script(text, *arguments)

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def one(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def text(self, selector):
        return self.script("return document.querySelector(arguments[0]).textContent", selector)

    def wait(self, condition, what):
        """Until condition() holds; returns what it gave."""
        return WebDriverWait(self.driver, PATIENCE, poll_frequency=0.05).until(lambda _: condition(), what)

    def wait_text(self, selector, part):
        self.wait(lambda: part in self.text(selector), f"{selector} never said {part!r}")

    def console(self):
        """What the console said since it was asked last of the page: not of the browser's own first page, and but for its
        advice to inked()."""
        said = [entry["message"] for entry in self.driver.get_log("browser")]
        return [message for message in said if not message.startswith("chrome://") and "willReadFrequently" not in message]

    def windows(self):
        """The stretch of time that each chart shows."""
        return self.script("return oko.page.charts.charts.map((chart) => chart.graph.xAxisRange())")

    def plotted(self):
        """The times of the points that each chart plots, in milliseconds, with the value of its first line at each. The
        chart is asked: pixels say little, and the page's own rows nothing of what is drawn."""
        return self.script("""
            return oko.page.charts.charts.map(function ({graph}) {
                return Array.from({length: graph.numRows()}, (_, row) => [graph.getValue(row, 0), graph.getValue(row, 1)]);
            });""")

    def inked(self):
        """Of each chart, how many of its pixels have the colours of its lines: nearly, as edges are smoothed, but not the
        bands' thin ones."""
        return self.script("""
            return oko.page.charts.charts.map(function (chart) {
                const canvas = chart.plot.querySelector("canvas");
                if (!canvas) return 0;
                const pixels = canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height).data;
                const colors = chart.channels.map(function (channel, i) {
                    const color = oko.seriesColor(i);
                    return [1, 3, 5].map((at) => parseInt(color.slice(at, at + 2), 16));
                });
                const isLine = (i) => pixels[i + 3] > 150 && colors.some((color) =>
                    color.reduce((sum, part, at) => sum + Math.abs(part - pixels[i + at]), 0) < 30);
                let count = 0;
                for (let i = 0; i < pixels.length; i += 4) {
                    if (isLine(i)) ++count;
                }
                return count;
            });""")
