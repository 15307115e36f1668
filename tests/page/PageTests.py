#!/usr/bin/python3
"""The live page and the report, in a real browser: PageTests.py BUILD [TEST...]. BUILD is a native build's folder."""

import contextlib
import csv
import datetime
import pathlib
import re
import shutil
import socket
import sys
import tempfile
import unittest

from selenium.webdriver import ActionChains
from selenium.webdriver.common.keys import Keys

from browser import Browser
from host import Host, TOKEN

BUILD = None
browser = None
host = None
folder = None


def free_port():
    with contextlib.closing(socket.socket()) as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def setUpModule():
    global browser, host, folder
    folder = pathlib.Path(tempfile.mkdtemp(prefix="oko-page-host-"))
    try:
        host = Host(BUILD, folder, free_port())
        host.start()
        browser = Browser()
    except BaseException:
        tearDownModule()
        raise


def tearDownModule():
    if browser is not None:
        browser.close()
    if host is not None:
        host.stop()
    shutil.rmtree(folder, ignore_errors=True)


class PageCase(unittest.TestCase):
    """Every test begins with a fresh page of a well device, and ends without a word on the browser's console."""

    expected_on_console = r"(?!)"  # nothing

    def setUp(self):
        host.steer()
        browser.resize(1280, 1400)
        browser.open(host.address)
        browser.wait(lambda: browser.text("#status").startswith("Live"), "the page never became live")
        browser.wait(lambda: min(browser.inked(), default=0) > 0, "no lines were drawn")

    def tearDown(self):
        said = [line for line in browser.console() if not re.search(self.expected_on_console, line)]
        self.assertEqual(said, [])

    def drag(self, plot, from_x, by, shift=False):
        actions = ActionChains(browser.driver, duration=0)
        if shift:
            actions.key_down(Keys.SHIFT)
        actions.move_to_element_with_offset(plot, from_x, 0).click_and_hold().move_by_offset(by // 2, 3)
        actions.move_by_offset(by - by // 2, 3).release()
        if shift:
            actions.key_up(Keys.SHIFT)
        actions.perform()

    def assertInStep(self):
        windows = browser.windows()
        self.assertGreater(len(windows), 1)
        self.assertTrue(all(window == windows[0] for window in windows), windows)
        return windows[0]


class Live(PageCase):
    def test_page_names_the_device_and_says_that_it_is_simulated(self):
        self.assertIn("simulator", browser.text("#device"))
        self.assertTrue(browser.one("#simulated").is_displayed())
        self.assertIn("(simulated)", browser.driver.title)

    def test_each_channel_has_a_row_with_value_target_band_state_and_age(self):
        channels = browser.script("return oko.page.snapshot.channels")
        rows = browser.all("#channels tbody tr")
        self.assertEqual([row.get_attribute("data-key") for row in rows], [channel["key"] for channel in channels])
        co2 = browser.one("#channels tr[data-key=CO2]").text
        self.assertRegex(co2, r"CO2 gas \d+\.\d\d.% \d+\.\d\d.% \d+\.\d\d … \d+\.\d\d ✓ ok \d+ s")

    def test_values_follow_the_device(self):
        host.steer("value CO2 5.25")
        browser.wait_text("tr[data-key=CO2] .value", "5.25")

    def test_every_quantity_has_a_chart_with_lines(self):
        kinds = [chart.get_attribute("data-kind") for chart in browser.all(".chart")]
        self.assertEqual(kinds, ["temperature", "gas", "humidity"])
        browser.wait(lambda: min(browser.inked()) > 40, "the lines do not grow")

    def test_rows_that_arrive_are_plotted_up_to_the_newest(self):
        before = browser.plotted()
        browser.wait(lambda: all(len(now) >= len(was) + 5 and now[-1][0] > was[-1][0]
                                 for now, was in zip(browser.plotted(), before)), "rows that arrive are not plotted")
        host.steer("value CO2 5.25")
        browser.wait(lambda: browser.plotted()[1][-1][1] == 5.25, "the newest value is not plotted")
        for points in browser.plotted():
            self.assertEqual([time for time, _ in points], sorted({time for time, _ in points}))

    def test_zoom_and_pan_by_pointer_keep_the_charts_in_step(self):
        before = self.assertInStep()
        plot = browser.all(".plot")[1]
        self.drag(plot, -200, 400)
        zoomed = self.assertInStep()
        self.assertLess(zoomed[1] - zoomed[0], (before[1] - before[0]) / 2)
        self.drag(browser.all(".plot")[0], 100, -200, shift=True)
        panned = self.assertInStep()
        self.assertAlmostEqual(panned[1] - panned[0], zoomed[1] - zoomed[0], delta=1)
        self.assertGreater(panned[0], zoomed[0])
        ActionChains(browser.driver, duration=0).double_click(plot).perform()
        back = self.assertInStep()
        self.assertGreaterEqual(back[1] - back[0], before[1] - before[0])

    def test_charts_are_moved_by_keys(self):
        plot = browser.one(".plot")
        before = self.assertInStep()
        plot.send_keys("+")
        zoomed = self.assertInStep()
        self.assertAlmostEqual(zoomed[1] - zoomed[0], (before[1] - before[0]) / 2, delta=1)
        plot.send_keys(Keys.ARROW_LEFT)
        self.assertLess(self.assertInStep()[1], zoomed[1])
        plot.send_keys(Keys.END)
        self.assertAlmostEqual(self.assertInStep()[1] - before[1], 0, delta=60000)

    def test_range_buttons_choose_how_much_is_shown(self):
        # As if the watch had gone on for days: one that has just begun shows the minutes that it has.
        browser.script("oko.page.charts.beginOfRange = function (to) { return to - this.range; }")
        for hours, button in zip((1, 6, 24, 72), browser.all("#ranges button")):
            button.click()
            window = self.assertInStep()
            self.assertAlmostEqual(window[1] - window[0], hours * 3600000, delta=1)
            self.assertEqual(button.get_attribute("aria-pressed"), "true")

    def test_labels_of_the_time_axis_never_repeat(self):
        for seconds in (10, 60, 120, 600, 3600, 86400, 3 * 86400):
            browser.script("const now = oko.page.snapshot.timeMs; oko.page.charts.show(now - arguments[0] * 1000, now)", seconds)
            for labels in browser.script("""
                    return oko.page.charts.charts.map((chart) =>
                        Array.from(chart.plot.querySelectorAll(".dygraph-axis-label-x"), (label) => label.textContent));"""):
                self.assertGreater(len(labels), 1, seconds)
                self.assertEqual(len(labels), len(set(labels)), f"{seconds} s: {labels}")

    def test_line_is_hidden_and_shown_again(self):
        gas = browser.one(".chart[data-kind=gas]")
        chips = gas.find_elements("css selector", ".chip")
        for chip in chips:
            chip.click()
        browser.wait(lambda: browser.inked()[1] == 0, "the lines of the hidden channels stay")
        chips[0].click()
        browser.wait(lambda: browser.inked()[1] > 0, "the line does not come back")

    def test_title_tells_the_worst_state(self):
        browser.wait(lambda: browser.driver.title.startswith("ok - oko-host"), "the title is not ok")
        host.steer("value O2 19")
        browser.wait(lambda: browser.driver.title.startswith("! O2 out of band - oko-host"), "the title stays")

    def test_alarm_is_shown_with_its_reason_and_goes(self):
        host.steer("value CO2 9")
        browser.wait(lambda: browser.all("#alarms li.on"), "no alarm came on")
        self.assertIn("CO2", browser.text("#alarms li.on"))
        self.assertIn("alarmed", browser.one("tr[data-key=CO2]").get_attribute("class"))
        self.assertTrue(browser.driver.title.startswith("! ALARM CO2"), browser.driver.title)
        browser.wait_text("#announcer", "alarm on")
        browser.wait(lambda: browser.all("#events tr.alarm-on"), "the alarm is no event")
        host.steer()
        browser.wait(lambda: not browser.all("#alarms li.on"), "the alarm stays on")

    def test_channel_that_refuses_has_no_answer_and_no_old_value(self):
        host.steer("fail CO2")
        browser.wait_text("tr[data-key=CO2]", "no answer")
        self.assertEqual(browser.text("tr[data-key=CO2] .value"), "–")
        self.assertTrue(browser.driver.title.startswith("! CO2 no answer"), browser.driver.title)

    def test_banner_comes_when_the_device_falls_silent_and_goes_when_it_returns(self):
        self.assertFalse(browser.one("#banner").is_displayed())
        host.steer("silent")
        browser.wait(lambda: browser.one("#banner").is_displayed(), "no banner came")
        self.assertIn("Not live", browser.text("#banner"))
        self.assertTrue(browser.driver.title.startswith("! no live data"), browser.driver.title)
        states = [cell.text for cell in browser.all("#channels .state")]
        self.assertEqual(set(states), {"✕ stale"})
        host.steer()
        browser.wait(lambda: not browser.one("#banner").is_displayed(), "the banner stays")
        self.assertNotIn("stale", browser.text("#channels tbody"))
        browser.wait(lambda: None in browser.script("return oko.page.charts.history.channels[0].current"),
                     "the gap is not in the chart")

    def test_page_is_dark_or_light_as_the_system_and_as_chosen(self):
        ground = lambda: browser.script("return getComputedStyle(document.body).backgroundColor")
        light = ground()
        browser.prefer("dark")
        dark = ground()
        self.assertNotEqual(light, dark)
        browser.one("#theme").click()
        self.assertEqual(ground(), light)
        browser.open(host.address)
        self.assertEqual(ground(), light)
        browser.script("localStorage.clear()")
        browser.prefer("light")

    def test_narrow_page_does_not_scroll_sideways(self):
        for width in (320, 390, 760):
            browser.resize(width, 900)
            # The charts follow the window a moment later.
            browser.wait(lambda: browser.script("return [document.documentElement.scrollWidth, innerWidth]") == [width, width],
                         f"the page is {width} wide")

    def test_everything_that_is_operated_has_a_name(self):
        tree = browser.driver.execute_cdp_cmd("Accessibility.getFullAXTree", {})["nodes"]
        operated = [node for node in tree if not node.get("ignored") and
                    node.get("role", {}).get("value") in ("button", "textbox", "checkbox")]
        self.assertGreater(len(operated), 10)
        self.assertEqual([node for node in operated if not node.get("name", {}).get("value")], [])


class Setting(PageCase):
    expected_on_console = r"401 \(Unauthorized\)"  # the browser's own note about the reply

    def setUp(self):
        super().setUp()
        browser.script("sessionStorage.clear()")

    def ask(self, key, text):
        field = browser.one(f"tr[data-key={key}] .set input")
        field.clear()
        field.send_keys(text + Keys.ENTER)

    def give_token(self, token):
        browser.wait(lambda: browser.one("#token").is_displayed(), "no token was asked for")
        browser.one("#token").send_keys(token + Keys.ENTER)

    def test_without_a_token_nothing_is_set(self):
        before = browser.script("return oko.page.snapshot.channels.find((one) => one.key === 'CO2').target")
        self.ask("CO2", "7")
        browser.wait(lambda: browser.one("#token").is_displayed(), "no token was asked for")
        browser.one("#token-dialog button[value=cancel]").click()
        browser.wait_text("tr[data-key=CO2] output", "not set: no token was given")
        self.assertEqual(browser.script("return oko.page.snapshot.channels.find((one) => one.key === 'CO2').target"), before)

    def test_wrong_token_is_asked_for_again_and_the_right_one_sets_and_is_kept(self):
        self.ask("CO2", "5,5")
        self.give_token("wrong")
        browser.wait_text("#token-problem", "does not know this token")
        self.give_token(TOKEN)
        browser.wait_text("tr[data-key=CO2] output", "set to 5.5")
        self.ask("CO2", "5")
        browser.wait_text("tr[data-key=CO2] output", "set to 5")
        self.assertFalse(browser.one("#token-dialog").is_displayed())

    def test_target_that_the_device_changes_is_told(self):
        browser.script("sessionStorage.setItem('oko-token', arguments[0])", TOKEN)
        self.ask("CO2", "99")
        browser.wait_text("tr[data-key=CO2] output", "asked 99, the device took 20")

    def test_what_is_no_number_is_not_sent(self):
        self.ask("CO2", "warm")
        browser.wait_text("tr[data-key=CO2] output", "type a number, 0 to ")


class Restart(PageCase):
    expected_on_console = r"ERR_CONNECTION_REFUSED|ERR_INCOMPLETE_CHUNKED_ENCODING|ERR_EMPTY_RESPONSE|ERR_CONNECTION_RESET"

    def test_page_says_when_oko_host_is_gone_and_finds_it_again(self):
        host.stop()
        browser.wait(lambda: browser.one("#banner").is_displayed(), "no banner came")
        self.assertIn("Not live", browser.text("#banner"))
        host.start()
        browser.wait(lambda: not browser.one("#banner").is_displayed(), "the banner stays")
        browser.wait(lambda: min(browser.inked()) > 0, "the charts stay empty")


def read_log(file):
    """Times, and of each channel its values, as a spreadsheet would read them."""
    lines = [line for line in file.read_text(encoding="utf-8").splitlines() if not line.startswith("#")]
    rows = list(csv.DictReader(lines))
    samples = [row for row in rows if row["row"] == "sample" and row[list(row)[-1]]]
    samples.sort(key=lambda row: row["time"])  # as the report has them
    keys = [name[:-len(" valid")] for name in rows[0] if name.endswith(" valid")]
    current = {key: next(name for name in rows[0] if name.startswith(key + " current")) for key in keys}
    values = {key: [float(row[current[key]]) if row[current[key]] else None for row in samples] for key in keys}
    return [row["time"] for row in samples], values


def write_long_log(short, file, rows, seconds):
    """A log of that many rows, like the first one of a short log. Gives its first time, and all times in milliseconds."""
    lines = short.read_text(encoding="utf-8").splitlines()
    header = next(i for i, line in enumerate(lines) if not line.startswith("#"))
    names = next(csv.reader([lines[header]]))
    first = next(line for line in lines[header + 1:] if ",sample," in line)
    begin = datetime.datetime(2026, 11, 1, tzinfo=datetime.timezone.utc)
    times = [begin + datetime.timedelta(seconds=seconds * row) for row in range(rows)]
    with open(file, "w", encoding="utf-8") as out:
        print(*(re.sub(r"^# interval: .*", f"# interval: {seconds}", line) for line in lines[:header + 1]), sep="\n", file=out)
        for row, time in enumerate(times):
            cells = first.split(",")
            cells[names.index("time")] = time.strftime("%Y-%m-%dT%H:%M:%S.000Z")
            cells[names.index("seconds")] = f"{seconds * row}.000"
            print(*cells, sep=",", file=out)
    return begin, [time.timestamp() * 1000 for time in times]


class Report(PageCase):
    def setUp(self):
        browser.wait(lambda: host.log.read_text(encoding="utf-8").count(",sample,") > 25, "the log does not grow")
        log = folder / "copy.csv"
        shutil.copy(host.log, log)  # it still grows
        report = folder / "night.html"
        self.said = host.report(log, report).stdout
        self.times, self.values = read_log(log)
        browser.resize(1280, 1400)
        browser.open(report.as_uri())
        browser.wait(lambda: min(browser.inked(), default=0) > 0, "no lines were drawn")

    def test_report_opens_from_disk_and_names_device_and_log(self):
        self.assertIn("simulator", browser.text("#device"))
        self.assertTrue(browser.one("#simulated").is_displayed())
        self.assertIn(f"{len(self.times)} rows of copy.csv", browser.text("#summary-about"))
        self.assertIn(f"{len(self.times)} rows of", self.said)
        self.assertTrue(browser.driver.title.startswith("Report: "), browser.driver.title)
        self.assertTrue(browser.all("#events tbody tr"))

    def test_values_in_the_report_are_those_of_the_log(self):
        data = browser.script("""
            const source = oko.reportSource();
            return source.channels.map((one) => [one.key, Array.from(one.current, (x) => Number.isNaN(x) ? null : x)]);""")
        self.assertEqual([key for key, _ in data], list(self.values))
        for key, values in data:
            self.assertEqual(len(values), len(self.values[key]))
            for told, logged in zip(values, self.values[key]):
                if logged is None:
                    self.assertIsNone(told)
                else:
                    self.assertAlmostEqual(told, logged, delta=1e-6)

    def test_summary_has_least_mean_and_greatest(self):
        values = [value for value in self.values["CO2"] if value is not None]
        row = browser.one("#summary tr[data-key=CO2]").text
        for number in (min(values), sum(values) / len(values), max(values)):
            self.assertIn(f"{number:.2f}", row)
        self.assertIn(str(len(self.times)), row)

    def test_zoom_keeps_the_charts_in_step(self):
        before = self.assertInStep()
        self.drag(browser.all(".plot")[0], -200, 300)
        zoomed = self.assertInStep()
        self.assertLess(zoomed[1] - zoomed[0], before[1] - before[0])

    def test_zoomed_to_seven_minutes_each_row_of_a_day_is_plotted(self):
        report = folder / "day.html"
        begin, rows = write_long_log(host.log, folder / "day.csv", rows=17280, seconds=5)
        host.report(folder / "day.csv", report)
        browser.open(report.as_uri())
        browser.wait(lambda: min(browser.inked(), default=0) > 0, "no lines were drawn")
        since, until = (begin.timestamp() * 1000 + 1000 * second for second in (43200, 43200 + 7 * 60))
        expected = [time for time in rows if since <= time <= until]
        self.assertEqual(len(expected), 85)
        browser.script("oko.page.charts.show(arguments[0], arguments[1])", since, until)
        inside = lambda points: [time for time, _ in points if since <= time <= until]
        browser.wait(lambda: all(inside(points) == expected for points in browser.plotted()),
                     f"not each of {len(expected)} rows is plotted")

    def test_report_does_not_scroll_sideways(self):
        browser.resize(360, 900)
        self.assertEqual(browser.script("return document.documentElement.scrollWidth"), 360)


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    BUILD = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main(verbosity=2)
