#!/usr/bin/python3
"""page_tests.py PAGE_OF_RUN: whether the page of HUB report can be read and used in a browser.
PAGE_OF_RUN prints the page of a run that is written as in tests/support/RunText.h."""

import base64
import hashlib
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from selenium import webdriver
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.select import Select

PAGE_OF_RUN = sys.argv.pop(1)

DIAMOND = """
    base:
    slow: base
    fast: base
    top: slow fast
    alone:
    start 0 800
    base start 1 2 2 40 41
    alone start 1 3 3 30 31 failed its Init returned false
    slow start 200 203 203 340 341
    fast start 200 202 202 210 211
    top start 400 401 401 700 701
    stop 1000 1600
    top stop 1000 1001 1001 1010 1011
    slow stop 1200 1201 1201 1210 1211
    fast stop 1200 1202 1202 1210 1213
    base stop 1400 1401 1401 1410 1411
"""


def open_browser():
    options = webdriver.ChromeOptions()
    # CI runs as root, where the browser has no sandbox, and in containers with a small /dev/shm.
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                     "--window-size=1300,1000", "--force-device-scale-factor=1"):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    service = webdriver.chrome.service.Service("/usr/bin/chromedriver")
    return webdriver.Chrome(service=service, options=options)


def page_of(run):
    return subprocess.run([PAGE_OF_RUN], input=run.encode(), stdout=subprocess.PIPE, check=True,
                          timeout=60).stdout


def setUpModule():
    Page.browser = open_browser()
    unittest.addModuleCleanup(Page.browser.quit)


class Page(unittest.TestCase):
    browser = None

    def tearDown(self):
        errors = [entry["message"] for entry in self.browser.get_log("browser")]
        self.browser.execute_cdp_cmd("Emulation.setScriptExecutionDisabled", {"value": False})
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": "", "features": []})
        self.assertEqual([], errors)

    def open(self, run=DIAMOND, target=""):
        folder = self.enterContext(tempfile.TemporaryDirectory())
        file = Path(folder, "page.html")
        file.write_bytes(page_of(run))
        self.browser.get(file.as_uri() + target)

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def shown(self, selector):
        """The texts of the elements that are displayed, in their order on the page."""
        return [found.text for found in self.browser.find_elements(By.CSS_SELECTOR, selector)
                if found.is_displayed()]

    def names(self, phase="start"):
        return self.shown(f"#{phase}-plugins tbody bdi")

    def choose(self, field, value):
        Select(self.find(f"#{field}")).select_by_value(value)

    def keys(self, *keys):
        ActionChains(self.browser).send_keys(*keys).perform()

    def point_at(self, selector):
        """Moves the pointer to the element; first away from all rows."""
        found = self.find(selector)
        ActionChains(self.browser).move_to_element(self.find("nav")).perform()
        self.browser.execute_script("arguments[0].scrollIntoView({block: 'center'})", found)
        ActionChains(self.browser).move_to_element(found).perform()

    def click(self, selector):
        self.point_at(selector)
        self.find(selector).click()

    def box(self, selector):
        return self.browser.execute_script(
            "return document.querySelector(arguments[0]).getBoundingClientRect().toJSON()", selector)

    def edges(self, row):
        """Where the edges begin and end that are drawn at a row: the row's number, the percentage
        of the time."""
        return self.browser.execute_script("""
            const rows = [...document.querySelectorAll('#start-plugins tbody tr')];
            const names = (y) => rows.filter((tr) => {
              const box = tr.getBoundingClientRect();
              return box.top < y && y < box.bottom;
            }).map((tr) => tr.querySelector('bdi').textContent).join();
            return [...document.querySelectorAll(`#start-${arguments[0]} .b line`)].map((line) => {
              if (getComputedStyle(line).display === 'none') return 'hidden';
              const svg = line.ownerSVGElement.getBoundingClientRect();
              const y = (name) => svg.top + line[name].baseVal.value;
              return `${names(y('y1'))} > ${names(y('y2'))} at ${line.getAttribute('x1')}`;
            });""", row)


class Reading(Page):
    def test_needs_no_script(self):
        self.browser.execute_cdp_cmd("Emulation.setScriptExecutionDisabled", {"value": True})
        self.open()
        self.assertEqual(["Plugins", "Threads", "Plugins", "Threads"], self.shown("h3"))
        self.assertEqual(["base", "alone", "fast", "slow", "top"], self.names())
        self.assertEqual(["top", "slow", "fast", "base", "alone"], self.names("stop"))
        self.assertEqual([], self.shown("#tools, #details"))

    def test_without_script_shows_all_times_when_asked(self):
        self.browser.execute_cdp_cmd("Emulation.setScriptExecutionDisabled", {"value": True})
        self.open()
        titles = "#start-plugins thead th.n, #start-plugins thead th.t"
        self.assertEqual(["Begin", "Took", "Slack"], self.shown(titles))
        self.find("label[for=all-times]").click()
        self.assertEqual(["Begin", "Took", "Slack", "Waited for others", "Last waited for",
                          "Waited for the look", "In queue", "Loading", "Init, by the frame",
                          "Thread", "Reason"], self.shown(titles))

    def test_policy_allows_its_own_style_and_script_alone(self):
        page = page_of(DIAMOND).decode()
        policy = re.search('<meta http-equiv="Content-Security-Policy" content="([^"]*)"', page)[1]

        def source(name):
            text, = re.findall(f"<{name}>(.*?)</{name}>", page, re.DOTALL)
            digest = hashlib.sha256(text.encode()).digest()
            return f"'sha256-{base64.b64encode(digest).decode()}'"
        self.assertEqual(f"default-src 'none'; style-src {source('style')}; "
                         f"script-src {source('script')}; base-uri 'none'; form-action 'none'", policy)

    def test_loads_nothing(self):
        self.open()
        self.assertEqual([], self.browser.execute_script(
            "return performance.getEntriesByType('resource').map((entry) => entry.name)"))

    def test_names_are_text(self):
        evil = ["<img/src=x/onerror=document.title='evil'>",
                "</script><script>document.title='evil'</script>",
                "'\"><svg/onload=document.title='evil'>", "<!--", "&lt;b&gt;"]
        lines = [f"{name}: {' '.join(evil[:i])}" for i, name in enumerate(evil)]
        self.open("\n".join(lines + ["start 0 200"] + [
            f"{name} start 0 {i} {i} 9 10 failed {name}" for i, name in enumerate(evil)]))
        self.point_at("#start-2")
        self.assertEqual(evil, self.names())
        self.assertEqual(evil[:2] + evil[3:], self.shown("#details p button"))
        self.assertEqual("Product: where the time went", self.browser.title.replace(
            "run.jsonl", "Product"))
        self.assertEqual([], self.browser.find_elements(By.CSS_SELECTOR, "img, td script, [onload]"))

    def test_is_dark_where_the_system_is(self):
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "features": [{"name": "prefers-color-scheme", "value": "dark"}]})
        self.open()
        self.assertEqual("rgba(20, 24, 28, 1)",
                         self.find("body").value_of_css_property("background-color"))

    def test_prints_every_part(self):
        self.open()
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": "print"})
        self.assertEqual(["Plugins", "Threads", "Plugins", "Threads"], self.shown("h3"))
        self.assertEqual([], self.shown("#bar, #details"))

    def test_every_control_has_a_name(self):
        self.open()
        self.keys(Keys.TAB)
        controls = self.browser.find_elements(By.CSS_SELECTOR, "a, button, input, select, summary")
        self.assertEqual([], [control.get_attribute("outerHTML") for control in controls
                              if control.is_displayed() and not control.accessible_name])


class Using(Page):
    def test_links_show_one_part(self):
        self.open()
        self.assertEqual(["Start of the plugins"], self.shown("h2:not(aside h2)"))
        self.assertEqual(["Plugins"], self.shown("h3"))
        self.find("nav a[href='#stop-threads']").click()
        self.assertEqual(["Stop of the plugins"], self.shown("h2:not(aside h2)"))
        self.assertEqual(["Threads"], self.shown("h3"))
        self.assertEqual(["threads"], self.shown("nav a[aria-current]"))

    def test_sorts(self):
        self.open()
        for order, names in (("model", ["base", "slow", "fast", "top", "alone"]),
                             ("begin", ["base", "alone", "fast", "slow", "top"]),
                             ("duration", ["top", "slow", "base", "alone", "fast"]),
                             ("slack", ["base", "slow", "top", "fast", "alone"]),
                             ("name", ["alone", "base", "fast", "slow", "top"])):
            self.choose("sort", order)
            self.assertEqual(names, self.names(), order)

    def test_titles_sort(self):
        self.open()
        self.find("#start th[data-sort=duration] button").click()
        self.assertEqual(["top", "slow", "base", "alone", "fast"], self.names())
        self.assertEqual(["Took"], self.shown("th[aria-sort=descending]"))
        self.find("#start th[data-sort=duration] button").click()
        self.assertEqual(["base", "alone", "fast", "slow", "top"], self.names())

    def test_filters_by_name_and_by_result(self):
        self.open()
        self.find("#filter").send_keys("A")
        self.assertEqual((["base", "alone", "fast"], "3 of 5 plugins"),
                         (self.names(), self.find("#count").text))
        self.choose("result", "failed")
        self.assertEqual((["alone"], "1 of 5 plugins"), (self.names(), self.find("#count").text))
        self.find("#filter").clear()
        self.choose("result", "path")
        self.assertEqual(["base", "slow", "top"], self.names())

    def test_edges_of_the_path_follow_their_rows(self):
        self.open()
        self.assertEqual((["base > slow at 5.125%"], ["slow > top at 42.625%"]),
                         (self.edges(1), self.edges(3)))
        self.choose("sort", "duration")
        self.assertEqual((["base > slow at 5.125%"], ["slow > top at 42.625%"]),
                         (self.edges(1), self.edges(3)))
        self.find("#filter").send_keys("o")
        self.assertEqual((["hidden"], ["slow > top at 42.625%"]), (self.edges(1), self.edges(3)))

    def test_pointer_draws_the_edges_of_its_plugin(self):
        self.open()
        self.point_at("#start-2")
        self.assertEqual(["base > fast at 5.125%", "top > fast at 26.375%"], self.edges(2))
        self.assertEqual(["base", "top"], self.shown("#details p button"))
        self.assertEqual("fast: started", self.find("#details h2").text)
        self.point_at("#start-0")
        self.assertEqual([], self.edges(2))

    def test_click_keeps_a_plugin_until_it_is_released(self):
        self.open()
        self.click("#start-2")
        self.point_at("#start-0")
        self.assertEqual("fast: started", self.find("#details h2").text)
        self.find("#details .close").click()
        self.point_at("#start-0")
        self.assertEqual("base: started", self.find("#details h2").text)

    def test_keys_reach_every_plugin(self):
        self.open()
        self.browser.execute_script("document.querySelector('[data-sort=slack] button').focus()")
        self.keys(Keys.TAB)
        self.assertEqual("base: started", self.find("#details h2").text)
        self.keys(Keys.ARROW_DOWN)
        self.assertEqual("alone: Init failed", self.find("#details h2").text)
        self.keys(Keys.END)
        self.assertEqual("top: started", self.find("#details h2").text)
        self.keys(Keys.ESCAPE)
        self.assertEqual([], self.shown("#details h2"))

    def test_details_have_all_times_and_the_reason(self):
        self.open()
        self.point_at("#start-4")
        self.assertEqual("alone: Init failed\nBegin 3.0 ms Took 28.0 ms Slack 670.0 ms "
                         "Waited for others 0.0 ms Last waited for – Waited for the look 1.0 ms "
                         "In queue 2.0 ms Loading 0.0 ms Init, by the frame 27 ms Thread 2 "
                         "Reason its Init returned false\nWaits for: none\nWaited for by: none",
                         re.sub(r"\n(?!Waits|Waited for by|Begin)", " ",
                                self.find("#details").text))

    def test_zooms(self):
        self.open()
        bar = "#start-3 .r"
        whole = self.box(bar)
        self.find("#zoom-in").click()
        self.assertAlmostEqual(2 * whole["width"], self.box(bar)["width"], delta=4)
        self.find("#later").click()
        self.assertLess(self.box(bar)["left"], whole["left"])
        self.keys("0")
        self.assertEqual(whole, self.box(bar))

    def test_axis_follows_the_zoom(self):
        self.open()
        self.assertEqual(["0", "100", "200", "300", "400", "500", "600", "700", "800"],
                         self.shown("#start-plugins .axis text"))
        self.find("#zoom-in").click()
        self.find("#zoom-in").click()
        self.assertEqual(["300", "350", "400", "450", "500"],
                         self.shown("#start-plugins .axis text"))

    def test_bar_of_a_lane_leads_to_its_plugin(self):
        self.open(target="#start-threads")
        self.click("#start-threads svg[data-p='3']")
        self.assertEqual(["Plugins"], self.shown("h3"))
        self.assertEqual("top: started", self.find("#details h2").text)
        self.assertEqual("start-3", self.browser.switch_to.active_element.get_attribute("id"))

    def test_link_to_a_plugin_shows_it_though_it_is_filtered_out(self):
        self.open()
        self.find("#filter").send_keys("alone")
        self.find(".path a[href='#start-3']").click()
        self.assertEqual("top: started", self.find("#details h2").text)
        self.assertEqual(5, len(self.names()))

    def test_nine_hundred_plugins_are_sorted_and_filtered(self):
        ids = [f"vendor.component{i:03}.server" for i in range(900)]
        spans = [f"{name} start 0 {i} {i} {i + 1000 - i % 100} {i + 1001 - i % 100}"
                 for i, name in enumerate(ids)]
        self.open("\n".join([f"{ids[0]}:"] + [f"{a}: {b}" for a, b in zip(ids[1:], ids)] +
                            ["start 0 2000"] + spans))
        self.choose("sort", "duration")
        self.find("#filter").send_keys("45")
        self.assertEqual("19 of 900 plugins", self.find("#count").text)
        self.assertEqual([ids[145], ids[245], ids[345]], self.names()[-19:][1:4])


if __name__ == "__main__":
    unittest.main()
