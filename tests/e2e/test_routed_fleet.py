"""Boxes in two subnets joined by a router namespace, the operator's PC in
one of them: discovery across the router, and a real Prometheus scraping
`oledctl serve` with the scrape config and alerting rule of the README."""

import json
import os
import shutil
import subprocess
import tempfile
import urllib.parse
import urllib.request

import yaml

from harness import BIN_DIR, Netns, eventually, main, run
from segment import OperatorSegment, Segment

DOCS = os.path.join(os.path.dirname(__file__), "..", "..", "docs", "prometheus")
README = os.path.join(os.path.dirname(__file__), "..", "..", "README.md")
REMOTE_SUBNET = "10.1.0.0/24"
# No panel and no LEDs: four boxes on two shared cores stay idle.
LIGHT = {"/data/oled.ini": "OLed_a_kind_start=2\nOLed_a_led_start=0\nkLed_onboard=0\n"}


class RoutedSubnets(OperatorSegment):

    def setUp(self):
        super().setUp()
        self.remote = Segment()
        self.addCleanup(self.remote.close)
        router = Netns("router")
        self.addCleanup(router.close)
        self.segment.attach(router, "eth0", "10.0.0.1/24", group_route=False)
        self.remote.attach(router, "eth1", "10.1.0.1/24", group_route=False)
        run(*router.exec_args(["sysctl", "-qw", "net.ipv4.ip_forward=1"]))
        self.netns.ip("route", "add", REMOTE_SUBNET, "via", "10.0.0.1")

    def remote_box(self, addr):
        ns = Netns("box")
        self.addCleanup(ns.close)
        self.remote.attach(ns, "eth0", addr + "/24")
        ns.ip("route", "add", "default", "via", "10.1.0.1")
        return self.serving_box(addr, files=LIGHT, netns=ns)

    def test_discovery_reaches_listed_subnets_asking_each_box_once(self):
        boxes = {addr: self.serving_box(addr, files=LIGHT) for addr in ("10.0.0.5", "10.0.0.6")}
        boxes.update({addr: self.remote_box(addr) for addr in ("10.1.0.5", "10.1.0.6")})
        def printed():  # a box prints its settings once per question
            return {a: sum(line.startswith("OLed_a_kind_start=") for line in b.output()) for a, b in boxes.items()}

        before = printed()
        # Too wide a sweep is refused (the reasons are the unit test's).
        self.assertEqual(self.oledctl("discover", "--subnet", "10.0.0.0/8").returncode, 2)

        def listed(*extra):
            found = self.oledctl("discover", "--timeout", "1", *extra)
            self.assertEqual(found.returncode, 0, found.stderr)
            return [line.split()[0] for line in found.stdout.splitlines()]

        self.assertEqual(listed(), ["10.0.0.5", "10.0.0.6"])
        self.assertEqual(listed("--subnet", REMOTE_SUBNET), ["10.0.0.5", "10.0.0.6", "10.1.0.5", "10.1.0.6"])
        # The refused sweep sent nothing; the group stayed on its segment.
        expected = {addr: before[addr] + (2 if addr.startswith("10.0.") else 1) for addr in boxes}
        eventually(lambda: printed() == expected, 2, lambda: "settings printed %r, expected %r" % (printed(), expected))

    def test_prometheus_scrapes_the_boxes_and_the_rule_finds_a_silent_one(self):
        boxes = {"10.0.0.5": self.serving_box("10.0.0.5", files=LIGHT)}
        boxes.update({addr: self.remote_box(addr) for addr in ("10.1.0.5", "10.1.0.6")})
        work = tempfile.mkdtemp(prefix="oledt-prometheus-")
        self.addCleanup(shutil.rmtree, work, ignore_errors=True)
        config = self.scrape_config(work)
        for check in (("config", config), ("rules", os.path.join(DOCS, "oled-alerts.yml"))):
            checked = run("promtool", "check", *check, check=False)
            self.assertEqual(checked.returncode, 0, checked.stdout + checked.stderr)

        for argv in ([os.path.join(BIN_DIR, "oledctl"), "serve", "--subnet", REMOTE_SUBNET,
                      "--token-file", os.path.join(work, "token"), "--timeout", "0.5"],
                     ["prometheus", "--config.file=" + config, "--web.listen-address=127.0.0.1:9090",
                      "--storage.tsdb.path=" + os.path.join(work, "data")]):
            process = subprocess.Popen(self.netns.exec_args(argv), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            self.addCleanup(process.wait)
            self.addCleanup(process.kill)

        def values(query):
            return {r["metric"].get("address"): r["value"][1] for r in self.query(query)}

        eventually(lambda: values("oled_box_up") == dict.fromkeys(boxes, "1"), 30,
                   lambda: "all boxes up; got %r" % values("oled_box_up"), every=0.5)
        boxes["10.1.0.6"].stop()
        eventually(lambda: values('oled_box_up{address="10.1.0.6"}') == {"10.1.0.6": "0"}, 20,
                   lambda: "10.1.0.6 down; got %r" % values("oled_box_up"), every=0.5)
        with open(os.path.join(DOCS, "oled-alerts.yml")) as f:
            rule = next(r for r in yaml.safe_load(f)["groups"][0]["rules"] if r["alert"] == "OledBoxSilent")
        self.assertEqual(list(values(rule["expr"])), ["10.1.0.6"])
        # The job without the token was refused every time and stored nothing.
        self.assertEqual([r["value"][1] for r in self.query('up{job="oled-no-token"}')], ["0"])
        self.assertEqual(self.query('{job="oled-no-token", __name__=~"oled_.+"}'), [])

    def scrape_config(self, work):
        """The README's, scraping every 2 s, plus a job without the token."""
        with open(README) as f:
            readme = f.read()
        for name in ("oled-alerts.yml", "prometheus.yml"):
            with open(os.path.join(DOCS, name)) as f:
                text = f.read()
            self.assertIn(text, readme)
        config = yaml.safe_load(text)
        job = config["scrape_configs"][0]
        job.update(scrape_interval="2s", scrape_timeout="2s")
        job["authorization"]["credentials_file"] = os.path.join(work, "token")
        with open(job["authorization"]["credentials_file"], "w") as f:
            f.write(os.urandom(16).hex() + "\n")
        stranger = {key: value for key, value in job.items() if key != "authorization"}
        config["scrape_configs"].append(dict(stranger, job_name="oled-no-token"))
        config["global"]["evaluation_interval"] = "1s"
        config["rule_files"] = [os.path.abspath(os.path.join(DOCS, name)) for name in config["rule_files"]]
        path = os.path.join(work, "prometheus.yml")
        with open(path, "w") as f:
            yaml.safe_dump(config, f)
        return path

    def query(self, expr):
        url = "http://127.0.0.1:9090/api/v1/query?" + urllib.parse.urlencode({"query": expr})
        with self.netns.entered():
            with urllib.request.urlopen(url, timeout=5) as answer:
                return json.load(answer)["data"]["result"]


if __name__ == "__main__":
    main()
