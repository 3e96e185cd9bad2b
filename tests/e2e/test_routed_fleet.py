"""Boxes in two subnets joined by a router namespace, the operator's PC in
one of them: discovery across the router, and a real Prometheus probing
each box of its inventory through `oledctl serve` with the scrape config
and alerting rule of the README."""

import json
import os
import shutil
import subprocess
import tempfile
import time
import urllib.error
import urllib.parse
import urllib.request

import yaml

from harness import BIN_DIR, Netns, eventually, main, run
from segment import OperatorSegment, Segment

DOCS = os.path.join(os.path.dirname(__file__), "..", "..", "docs", "prometheus")
README = os.path.join(os.path.dirname(__file__), "..", "..", "README.md")
REMOTE_SUBNET = "10.1.0.0/24"
NOBODY = "10.1.0.9"  # in the inventory, but no box answers there
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

        def settled():  # a readiness query that timed out may still be handled late
            first = printed()
            time.sleep(1)
            return first == printed() and first

        before = eventually(settled, 10, "the boxes' start-up queries handled")
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

    def test_prometheus_probes_its_inventory_and_the_rule_finds_silent_boxes(self):
        boxes = {addr: self.serving_box(addr, files=LIGHT) for addr in ("10.0.0.5", "10.0.0.6")}
        boxes.update({addr: self.remote_box(addr) for addr in ("10.1.0.5", "10.1.0.6")})
        work = tempfile.mkdtemp(prefix="oledt-prometheus-")
        self.addCleanup(shutil.rmtree, work, ignore_errors=True)
        config, token = self.scrape_config(work)
        # The inventory starts with an address where no box answers; what
        # discovery finds is added to it.
        with open(os.path.join(work, "oled-boxes.json"), "w") as f:
            json.dump([{"targets": [NOBODY], "labels": {"site": "north"}}], f)
        found = self.oledctl("discover", "--subnet", REMOTE_SUBNET, "--timeout", "1", "--format", "prometheus-sd",
                             "--output", os.path.join(work, "oled-boxes.json"))
        self.assertEqual(found.returncode, 0, found.stderr)
        for check in (("config", config), ("rules", os.path.join(DOCS, "oled-alerts.yml"))):
            checked = run("promtool", "check", *check, check=False)
            self.assertEqual(checked.returncode, 0, checked.stdout + checked.stderr)

        serve = [os.path.join(BIN_DIR, "oledctl"), "serve", "--token-file", token, "--timeout", "0.5"]
        server = self.start(serve)
        self.start(["prometheus", "--config.file=" + config, "--web.listen-address=127.0.0.1:9090",
                    "--storage.tsdb.path=" + os.path.join(work, "data")])

        def values(query):
            return {r["metric"].get("instance"): r["value"][1] for r in self.query(query)}

        expected = dict(dict.fromkeys(boxes, "1"), **{NOBODY: "0"})
        eventually(lambda: values("oled_probe_success") == expected, 30,
                   lambda: "every box probed; got %r" % values("oled_probe_success"), every=0.5)
        # A box's own series are named by the target alone.
        info = self.query("oled_box_info")
        self.assertEqual(sorted(r["metric"]["instance"] for r in info), sorted(boxes))
        self.assertNotIn("address", info[0]["metric"])
        self.assertEqual(self.get("/probe?target=224.168.1.1"),
                         (400, "target '224.168.1.1': a multicast group; a probe asks one box\n"))
        self.assertIn('oled_box_up{address="10.0.0.5"} 1\n', self.get("/metrics")[1])

        # What a box refused reaches Prometheus through its probe, and the
        # alert on it holds for that box alone.
        with open(os.path.join(DOCS, "oled-alerts.yml")) as f:
            refusing = next(r for r in yaml.safe_load(f)["groups"][0]["rules"] if r["alert"] == "OledBoxRefusing")
        sock = self.netns.udp_socket()
        for _ in range(3):
            sock.sendto(b"bogus=1|replyoled=127.0.0.1:9", ("10.0.0.5", 16124))
        sock.close()
        eventually(lambda: values('oled_box_items_refused_total{reason="unknown_key"}').get("10.0.0.5") == "3"
                   and sorted(values(refusing["expr"])) == ["10.0.0.5"], 20,
                   lambda: "the refusals of 10.0.0.5; got %r" % values(refusing["expr"]), every=0.5)

        # A box falls silent while oledctl serve is down; the new one knows
        # nothing of it, but the inventory does.
        server.kill()
        server.wait()
        boxes["10.1.0.6"].stop()
        eventually(lambda: set(values('up{job="oled"}').values()) == {"0"}, 10,
                   lambda: "probes failing; got %r" % values('up{job="oled"}'), every=0.5)
        self.start(serve)
        expected["10.1.0.6"] = "0"
        eventually(lambda: values("oled_probe_success") == expected, 20,
                   lambda: "10.1.0.6 silent; got %r" % values("oled_probe_success"), every=0.5)
        with open(os.path.join(DOCS, "oled-alerts.yml")) as f:
            rule = next(r for r in yaml.safe_load(f)["groups"][0]["rules"] if r["alert"] == "OledBoxSilent")
        self.assertEqual(sorted(values(rule["expr"])), ["10.1.0.6", NOBODY])
        # The job without the token was refused every time and stored nothing.
        self.assertEqual(set(values('up{job="oled-no-token"}').values()), {"0"})
        self.assertEqual(self.query('{job="oled-no-token", __name__=~"oled_.+"}'), [])

    def start(self, argv):
        process = subprocess.Popen(self.netns.exec_args(argv), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def scrape_config(self, work):
        """The README's, probing every 2 s, plus a job without the token."""
        with open(README) as f:
            readme = f.read()
        for name in ("oled-alerts.yml", "prometheus-sharded.yml", "prometheus.yml"):
            with open(os.path.join(DOCS, name)) as f:
                text = f.read()
            self.assertTrue(text in readme, "the README quotes " + name + " as it stands")
        config = yaml.safe_load(text)
        job = config["scrape_configs"][0]
        job.update(scrape_interval="2s", scrape_timeout="2s")
        job["file_sd_configs"][0]["files"] = [os.path.join(work, "oled-boxes.json")]
        token = job["authorization"]["credentials_file"] = os.path.join(work, "token")
        self.secret = os.urandom(16).hex()
        with open(token, "w") as f:
            f.write(self.secret + "\n")
        stranger = {key: value for key, value in job.items() if key != "authorization"}
        config["scrape_configs"].append(dict(stranger, job_name="oled-no-token"))
        config["global"]["evaluation_interval"] = "1s"
        config["rule_files"] = [os.path.abspath(os.path.join(DOCS, name)) for name in config["rule_files"]]
        path = os.path.join(work, "prometheus.yml")
        with open(path, "w") as f:
            yaml.safe_dump(config, f)
        return path, token

    def get(self, path):
        """Status and text of a request to oledctl serve with the token."""
        request = urllib.request.Request("http://127.0.0.1:16180" + path, headers={"Authorization": "Bearer " + self.secret})
        with self.netns.entered():
            try:
                with urllib.request.urlopen(request, timeout=5) as answer:
                    return answer.status, answer.read().decode()
            except urllib.error.HTTPError as refusal:
                return refusal.code, refusal.read().decode()

    def query(self, expr):
        url = "http://127.0.0.1:9090/api/v1/query?" + urllib.parse.urlencode({"query": expr})
        with self.netns.entered():
            with urllib.request.urlopen(url, timeout=5) as answer:
                return json.load(answer)["data"]["result"]


if __name__ == "__main__":
    main()
