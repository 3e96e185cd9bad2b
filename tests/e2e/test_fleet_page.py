"""The fleet page in a real browser: oledctl serve and headless Chromium on
the operator's PC, three simulated boxes on its segment. Set
OLEDD_FLEET_SCREENSHOT=FILE to keep a picture of the page."""

import os
import re
import shutil
import socket
import subprocess
import tempfile
import time
import urllib.error
import urllib.request

from harness import BIN_DIR, eventually, main
from segment import OperatorSegment

BOXES = ("10.0.0.5", "10.0.0.6", "10.0.0.7")
KEY = b"the key of the middle box"  # the others hold none, and ignore signatures
SAVED = "save config succeed"


def chromium(profile):
    """Headless Chromium that reaches out for nothing (sync, updates...)."""
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service

    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for flag in ("--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
                 "--disable-background-networking", "--disable-component-update", "--disable-sync",
                 "--no-proxy-server", "--user-data-dir=" + profile):
        options.add_argument(flag)
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


class FleetPage(OperatorSegment):
    def setUp(self):
        super().setUp()
        keyed = {"/data/oled.key": KEY, "/data/oled.counter": "1\n"}
        self.boxes = [self.serving_box(a, files=keyed if a == BOXES[1] else None) for a in BOXES]
        key_file = self.boxes[1].host("/data/oled.key")
        os.chmod(key_file, 0o600)
        self.oledctl("set", "cpu=0", "--box", BOXES[1], "--no-check")  # unsigned: the keyed box refuses it
        self.boxes[1].wait_for("not signed")
        run_dir = tempfile.mkdtemp(prefix="oledt-run-")
        self.addCleanup(shutil.rmtree, run_dir)
        token_file = os.path.join(run_dir, "oledctl-serve-16180.token")
        with open(os.open(token_file, os.O_CREAT | os.O_WRONLY, 0o644), "w") as old:  # an earlier start's
            old.write("an older and longer token, readable by all\n")
        self.server = subprocess.Popen(
            self.netns.exec_args([os.path.join(BIN_DIR, "oledctl"), "serve", "--timeout", "1", "--subnet", "127.0.0.1/32",
                                  "--key-file", key_file]),
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, env=dict(os.environ, XDG_RUNTIME_DIR=run_dir))
        self.addCleanup(self.stop_server)
        self.assertEqual(self.server.stdout.readline(),
                         "fleet page: http://127.0.0.1:16180/?token=TOKEN (the token in %s)\n" % token_file)
        self.assertEqual(os.stat(token_file).st_mode & 0o777, 0o600)
        with open(token_file) as file:
            self.token = file.read().strip()
        self.url = "http://127.0.0.1:16180/?token=" + self.token

    def stop_server(self):
        if self.server.poll() is None:
            self.server.send_signal(subprocess.signal.SIGINT)
        out, err = self.server.communicate(timeout=10)
        self.assertEqual((self.server.returncode, out.splitlines()[-1:], err), (0, ["stopped"], ""))

    def files(self):
        return [box.read("/data/oled.ini") for box in self.boxes]

    def saves(self):
        return [sum(SAVED in line for line in box.output()) for box in self.boxes]

    def test_the_page_shows_and_sets_the_boxes(self):
        profile = tempfile.mkdtemp(prefix="oledt-chromium-")
        self.addCleanup(shutil.rmtree, profile, ignore_errors=True)
        with self.netns.entered():
            browser = chromium(profile)
            try:
                self.drive(browser)
                self.refuse_without_token()
            finally:
                browser.quit()

    def drive(self, browser):
        from selenium.webdriver.common.by import By
        from selenium.webdriver.common.keys import Keys
        from selenium.webdriver.support.ui import Select

        def until(what):
            eventually(what, 10, lambda: "the page says %r" % message())

        def row(addr):
            return browser.find_element(By.CSS_SELECTOR, 'tr[data-address="%s"]' % addr)

        def field(addr, key):
            return row(addr).find_element(By.CSS_SELECTOR, '[data-key="%s"]' % key)

        def message():
            return browser.find_element(By.ID, "message").text

        def bulk(key, value):
            Select(browser.find_element(By.ID, "bulk-key")).select_by_value(key)
            browser.find_element(By.ID, "bulk-value").clear()
            browser.find_element(By.ID, "bulk-value").send_keys(value)
            browser.find_element(By.ID, "bulk-apply").click()

        browser.set_window_size(1600, 440)
        browser.get(self.url)
        until(lambda: [r.get_attribute("data-address") for r in browser.find_elements(By.CSS_SELECTOR, "tbody tr")]
              == list(BOXES))
        self.assertEqual([row(a).find_element(By.CLASS_NAME, "state").text for a in BOXES],
                         ["answers", "answers; refused 1 since its start", "answers"])
        self.assertIn("refusing", row(BOXES[1]).get_attribute("class"))
        self.assertEqual(browser.current_url, "http://127.0.0.1:16180/")  # the token left the address bar
        browser.find_element(By.ID, "auto").click()  # no round but those asked for: the saves below are counted
        self.assertEqual(Select(field(BOXES[0], "oled_type")).first_selected_option.text, "1 old-small")
        # One switch of one box: that box's file changes, the others' do not.
        before = self.files()
        field(BOXES[1], "cpu").click()
        until(lambda: message() == "cpu=0 sent to 10.0.0.6; settings as the boxes sent them back")
        self.wait_for_setting(self.boxes[1], "OLed_a_cpu=0")
        self.assertFalse(field(BOXES[1], "cpu").is_selected())
        self.assertEqual([f for i, f in enumerate(self.files()) if i != 1], [before[0], before[2]])

        # A custom text for every selected box.
        browser.find_element(By.ID, "select-all").click()
        bulk("oled_string", "FLEET 16")
        until(lambda: message().startswith("oled_string=FLEET 16 sent to 10.0.0.5, 10.0.0.6, 10.0.0.7;"))
        for box in self.boxes:
            self.wait_for_setting(box, "OLed_a_small_n_buf=FLEET 16")
        self.assertEqual([field(a, "oled_string").get_attribute("value") for a in BOXES], ["FLEET 16"] * 3)
        picture = os.environ.get("OLEDD_FLEET_SCREENSHOT")
        if picture:
            browser.execute_script("window.scrollTo(0, 0)")
            browser.save_screenshot(picture)

        # Bad input, in a row or for all, is refused with oledctl set's
        # reason (the fleet API unit test has the cases), and nothing leaves.
        before, saved = self.files(), self.saves()
        sleep = field(BOXES[0], "sleep")
        sleep.clear()
        sleep.send_keys("abc", Keys.RETURN)
        until(lambda: message() == "sleep: 'abc' is not a decimal integer")
        self.assertIn("refused", sleep.get_attribute("class"))
        bulk("pwr_led", "25_9")
        until(lambda: message().startswith("pwr_led: '25_9' is not a pin"))
        time.sleep(0.3)  # what was sent would have arrived by now
        self.assertEqual((self.files(), self.saves()), (before, saved))

        # A box that stops answering stays listed, marked.
        self.boxes[2].stop()
        browser.find_element(By.ID, "refresh").click()
        state = row(BOXES[2]).find_element(By.CLASS_NAME, "state")
        until(lambda: re.fullmatch(r"no answer since \d\d:\d\d:\d\d", state.text))
        self.assertEqual([row(a).find_element(By.CLASS_NAME, "state").text for a in BOXES[:2]],
                         ["answers", "answers; refused 1 since its start"])

    def refuse_without_token(self):
        direct = urllib.request.build_opener(urllib.request.ProxyHandler({}))

        def post(headers, item, box="10.0.0.5"):
            body = ('{"boxes": ["%s"], "items": ["%s"]}' % (box, item)).encode()
            return direct.open(urllib.request.Request("http://127.0.0.1:16180/api/set", data=body, headers=headers),
                               timeout=5)

        before = self.boxes[0].read("/data/oled.ini")
        # Which tokens, origins and hosts pass is the guard's unit test.
        for headers in ({}, {"X-Fleet-Token": self.token[:-1]},
                        {"X-Fleet-Token": self.token, "Origin": "http://evil.example"},
                        {"X-Fleet-Token": self.token, "Host": "evil.example:16180"}):
            with self.assertRaises(urllib.error.HTTPError) as refused:
                post(headers, "vi=0")  # had it left, the file below would show it
            self.assertEqual(refused.exception.code, 403, headers)
        for box in ("224.168.1.1", "127.0.0.1", "10.0.0.99"):  # only boxes of the page (loopback never) are sent to
            with self.assertRaises(urllib.error.HTTPError) as refused:
                post({"X-Fleet-Token": self.token}, "vi=0", box)
            self.assertEqual(refused.exception.code, 400, box)
        with post({"X-Fleet-Token": self.token}, "cpu=0") as done:
            self.assertEqual(done.status, 200)
        self.wait_for_setting(self.boxes[0], "OLed_a_cpu=0")
        self.assertEqual(self.boxes[0].read("/data/oled.ini"), before.replace("OLed_a_cpu=1", "OLed_a_cpu=0"))

    def test_a_stranger_cannot_fill_the_servers_memory(self):
        for path, answer in (("/", b"405"), ("/api/set", b"413")):
            with self.netns.entered():
                sock = socket.create_connection(("127.0.0.1", 16180))
            sock.sendall(b"POST %s HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Length: 150000000\r\n\r\n" % path.encode())
            self.assertEqual(sock.recv(12), b"HTTP/1.1 " + answer)  # before the body was sent
            with self.assertRaises(OSError):  # the server ends the connection rather than read on
                for _ in range(150):
                    sock.sendall(bytes(1 << 20))
            sock.close()
        with open("/proc/%d/status" % self.server.pid) as status:  # the peak, not what is left after it
            peak_kb = int(re.search(r"VmHWM:\s+(\d+) kB", status.read()).group(1))
        self.assertLess(peak_kb, 64 * 1024)


if __name__ == "__main__":
    main()
