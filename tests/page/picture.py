#!/usr/bin/python3
"""Takes a picture of a live page: picture.py ADDRESS FILE.png [WIDTH [HEIGHT [light|dark]]]."""

import sys
import time

from browser import Browser

SECONDS = 12  # until the charts have something to show


def main(address, file, width="1280", height="1500", scheme="light"):
    browser = Browser()
    try:
        browser.resize(int(width), int(height))
        browser.prefer(scheme)
        browser.open(address)
        browser.wait(lambda: browser.text("#status").startswith("Live"), "the page never became live")
        time.sleep(SECONDS)
        browser.script("oko.page.charts.show(oko.page.snapshot.timeMs - 60000, oko.page.snapshot.timeMs)")
        browser.wait(lambda: min(browser.inked(), default=0) > 0, "no lines were drawn")
        browser.driver.save_screenshot(file)
    finally:
        browser.close()


if __name__ == "__main__":
    main(*sys.argv[1:])
