#!/usr/bin/python3
"""report_test.py CAPTURE CAPTURES OUT: the page of --html in headless Chromium, as people use it.

Needs Debian's chromium, chromium-driver and python3-selenium.
"""
import pathlib
import shutil
import struct
import subprocess
import sys
import time
import unittest

from selenium import webdriver
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

PROGRAM, CAPTURES, OUT = (pathlib.Path(path).resolve() for path in sys.argv[1:4])
CALL, TERMINAL = bytes.fromhex("c0fef93ecd9ed6119ab2000476222017"), bytes([17, 2, 0, 124])


def chromium():
    options = webdriver.ChromeOptions()
    options.binary_location = shutil.which("chromium")
    for argument in ("headless=new", "no-sandbox", "window-size=1400,1000", "disable-gpu"):
        options.add_argument(f"--{argument}")
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    service = webdriver.chrome.service.Service(shutil.which("chromedriver"))
    return webdriver.Chrome(service=service, options=options)


def many_calls(path, count):
    """The sample call once a second, each time with another identifier and caller."""
    octets = (CAPTURES / "call.pcap").read_bytes()
    records, at = [], 24
    while at < len(octets):
        seconds, micros, size, length = struct.unpack_from("<IIII", octets, at)
        records.append((seconds, micros, length, octets[at + 16:at + 16 + size]))
        at += 16 + size
    with open(path, "wb") as file:
        file.write(octets[:24])
        for i in range(count):
            for seconds, micros, length, frame in records:
                frame = frame.replace(CALL, struct.pack(">I", i + 1) + CALL[4:])
                frame = frame.replace(TERMINAL, struct.pack(">BBH", 10, 1, i))
                file.write(struct.pack("<IIII", seconds + i, micros, len(frame), length) + frame)


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        shutil.rmtree(OUT, ignore_errors=True)
        OUT.mkdir(parents=True)
        cls.browser = chromium()

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()

    def tearDown(self):
        self.assertEqual(self.browser.get_log("browser"), [], "the console stays empty")

    def report(self, capture):
        """Writes the page of a capture. Returns its address."""
        page = OUT / f"{capture.stem}.html"
        result = subprocess.run([PROGRAM, "--modules", "1998", "--html", page, capture.name], cwd=capture.parent,
                                stderr=subprocess.PIPE, check=False)
        self.assertLess(result.returncode, 2, result.stderr)
        return page.as_uri()

    def open(self, address):
        self.browser.get("about:blank")
        self.browser.get(address)
        self.until(lambda: self.script("return document.body.dataset.ready"), seconds=60)

    def until(self, condition, seconds=10):
        end = time.monotonic() + seconds
        while not condition():
            self.assertLess(time.monotonic(), end, "in time")
            time.sleep(0.02)

    def script(self, text, *arguments):
        return self.browser.execute_script(text, *arguments)

    def all(self, selector):
        return self.browser.find_elements(By.CSS_SELECTOR, selector)

    def texts(self, selector):
        return self.script("return [...document.querySelectorAll(arguments[0])]"
                           ".map((element) => element.textContent)", selector)

    def text(self, selector):
        return " ".join(self.texts(selector))

    def press(self, *keys):
        for key in keys:
            self.browser.switch_to.active_element.send_keys(key)

    def link(self):
        return self.script("return location.hash")

    def shows(self, name):
        self.until(lambda: self.text("#message h2") == name)

    def test_a_click_shows_facts_dump_and_bits(self):
        self.open(self.report(CAPTURES / "call.pcap"))
        self.assertEqual(len(self.all(".call")), 1)
        self.assertEqual(self.texts(".host-name strong"), ["17.2.0.124", "17.2.0.1", "17.2.0.122"])
        self.all(".step.ui")[0].click()
        self.shows("setup")
        self.assertEqual(self.link(), "#1/4")
        self.assertIn("1234", self.text(".facts"))
        node = next(n for n in self.all(".node") if "protocolIdentifier" in n.text)
        node.click()
        hits = self.texts("#octets .hit")
        self.assertEqual(hits[-6:], ["00", "08", "91", "4a", "00", "02"])
        self.assertIn("ObjectID", self.text("#bits"))
        self.all("#octets .cells span")[5].click()  # back from an octet to its field
        self.assertIn("protocolIdentifier", self.text(".node[aria-selected=true]"))
        lines = len(self.all(".node"))
        self.press("a")
        self.assertGreater(len(self.all(".node")), lines, "all lines of the dump")
        self.open(self.browser.current_url)  # the permalink
        self.shows("setup")

    def test_keys_alone(self):
        self.open(self.report(CAPTURES / "call.pcap"))
        self.press("/", "c0fe", Keys.ENTER, Keys.ENTER, Keys.ARROW_DOWN)
        self.shows("admissionConfirm")
        self.press(Keys.END)
        self.shows("releaseComplete")
        self.press("k", Keys.ENTER, Keys.ARROW_DOWN, Keys.ARROW_DOWN)
        self.shows("infoRequest")
        opened = len(self.all(".node"))
        self.press(Keys.ARROW_LEFT, Keys.ARROW_LEFT, Keys.ARROW_LEFT)
        self.assertLess(len(self.all(".node")), opened, "a branch was closed")
        self.press(Keys.ESCAPE, Keys.ESCAPE)
        self.until(lambda: self.link() == "#1" and not self.all("#message h2"))

    def test_families_losses_and_refusals(self):
        self.open(self.report(CAPTURES / "odd.pcap") + "#all")
        self.assertIn("missing in the capture", self.text(".step.loss"))
        next(r for r in self.all(".step.refused") if "unknown" in r.text).click()
        self.until(lambda: "Refused:" in self.text("#message .refusal"))
        self.assertIn("Decoding stopped at bit", self.text("#bits"))
        self.assertEqual(len(self.all("#octets .failed")), 1)
        self.all(".family.loss")[0].click()
        self.assertEqual(self.all(".step.loss"), [])
        self.all("#filter")[0].send_keys("setAck")
        self.assertTrue(self.all(".step"))
        self.assertLessEqual(set(self.texts(".label .name")), {"terminalCapabilitySetAck"})

    def test_dark_mode_and_paper(self):
        self.open(self.report(CAPTURES / "call.pcap"))
        colour = "return getComputedStyle(document.body).backgroundColor"
        light = self.script(colour)
        features = [{"name": "prefers-color-scheme", "value": "dark"}]
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": features})
        self.assertNotEqual(self.script(colour), light)
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": []})
        self.script("dispatchEvent(new Event('beforeprint'))")
        self.assertEqual(len(self.all(".step")), 18)
        self.script("dispatchEvent(new Event('afterprint'))")

    def test_hostile_text_stays_text(self):
        named = OUT / "<img src=x onerror=alert(1)><script>alert(2)<!--.pcap"
        shutil.copy(CAPTURES / "hostile.pcap", named)
        self.open(self.report(named) + "#all")
        last = None
        while self.link() != last:
            last = self.link()
            self.press("j")
            self.until(lambda: self.text(".permalink") == self.link())
            self.script("document.getElementById('open-all')?.click()")
        self.assertGreater(int(last.split("/")[1]), 5)
        self.assertIn("<img src=x onerror=alert(1)>", self.text("#title"))
        self.script("document.getElementById('tab-call').click()")
        self.assertIn("<script>alert(1)", self.text(".call"))
        self.assertEqual(self.all("img"), [])
        scripts = self.texts("script:not([type='application/json'])")
        self.assertEqual(len(scripts), 1, "the page's own")
        self.assertNotRegex(self.text("body > :not(script)"), "[\x00-\x09\x0b-\x1f\x7f-\x9f\u202e]")

    def test_the_policy_stops_what_gets_in_all_the_same(self):
        self.open(self.report(CAPTURES / "call.pcap"))
        for attempt in ("document.body.innerHTML = '<img src=x onerror=ran=1>'",
                        "const made = document.createElement('script'); made.text = 'ran = 1';"
                        "document.body.append(made)",
                        "document.body.setAttribute('onclick', 'ran = 1'); document.body.click()"):
            self.script(f"try {{ {attempt} }} catch {{}}")
            self.assertTrue(self.script("return typeof ran === 'undefined'"), attempt)
        self.assertTrue(self.browser.get_log("browser"), "each attempt is reported")

    def test_ten_thousand_messages(self):
        many_calls(OUT / "many.pcap", 560)
        self.open(self.report(OUT / "many.pcap"))
        self.assertIn("560 calls", self.text("#totals"))
        self.assertLess(len(self.all(".call")), 60, "only those in view exist")
        self.all("#search")[0].send_keys("00000100")
        self.assertEqual(len(self.all(".call")), 1)
        self.all(".call")[0].click()
        self.assertEqual(self.link(), "#256")
        self.script("document.getElementById('tab-all').click()")
        self.all("#diagram")[0].send_keys(Keys.END)
        self.shows("releaseComplete")
        self.assertGreater(int(self.link().split("/")[1]), 10000)
        self.assertLess(len(self.all(".step")), 100)
        self.all("#search")[0].clear()
        self.script("document.getElementById('tab-call').click()")
        for _ in range(2):  # the second time, downwards
            next(h for h in self.all("#table-head button") if h.text == "Start").click()
        self.assertTrue(self.texts(".call")[0].startswith("560"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
