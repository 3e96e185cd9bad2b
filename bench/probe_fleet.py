#!/usr/bin/env python3
"""A fleet of 10,000 boxes (or --boxes) in Prometheus's file-based
inventory, probed every 30 s by one Prometheus through two `oledctl serve`
sharded with hashmod (docs/prometheus/prometheus-sharded.yml). One
responder in a network namespace answers `replyoled` for every box: a
local route for a whole /18 lets one socket take every address, and each
answer leaves from the address asked. After one round to warm up, it
measures for --seconds and prints whether every target was up at every
scrape, the 99th percentile of scrape_duration_seconds, and the CPU and
memory of each oledctl serve (and of Prometheus, for scale).

    sudo python3 bench/probe_fleet.py              10,000 boxes, 5 minutes
    sudo python3 bench/probe_fleet.py --quick      1,000 boxes, 1 minute
    sudo python3 bench/probe_fleet.py --silent 1000    of them 1,000 never answer

Needs root (namespaces) and Debian's prometheus; nothing leaves them."""

import json
import os
import shutil
import subprocess
import sys
import tempfile
import time
import urllib.parse
import urllib.request

import yaml

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "tests", "e2e"))
from bench_netns import BoxLink, argument_parser, parse_as_root, rss_kb  # noqa: E402
from harness import BIN_DIR, eventually  # noqa: E402
from sim_minute import cpu_seconds  # noqa: E402

DOCS = os.path.join(HERE, "..", "docs", "prometheus")
SETTINGS = os.path.join(HERE, "..", "sim", "sample-root", "data", "oled.ini")
PREFIX = "10.64.0.0/18"
INTERVAL = 30
SERVERS = ("127.0.0.1:16180", "127.0.0.1:16181")

RESPONDER = r"""
import socket, struct, sys
IP_PKTINFO = 8  # not in Python's socket module
reply = b"[oled]\n" + open(sys.argv[1], "rb").read()
silent = int(sys.argv[2])  # the first this many boxes never answer
s = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
s.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4 << 20)
s.setsockopt(socket.IPPROTO_IP, IP_PKTINFO, 1)
s.bind(("0.0.0.0", 16124))
print("ready", flush=True)
while True:
    data, ancillary, _, source = s.recvmsg(2048, socket.CMSG_SPACE(12))
    for level, kind, info in ancillary:
        if data == b"replyoled" and level == socket.IPPROTO_IP and kind == IP_PKTINFO and \
                info[10] * 250 + info[11] - 1 >= silent:
            # struct in_pktinfo: interface, local address, header destination
            answer_from = struct.pack("i4s4s", 0, info[8:12], bytes(4))
            s.sendmsg([reply], [(socket.IPPROTO_IP, IP_PKTINFO, answer_from)], 0, source)
"""


def box_address(i):
    return "10.64.%d.%d" % (i // 250, i % 250 + 1)


def write_config(work, token):
    with open(os.path.join(DOCS, "prometheus-sharded.yml")) as f:
        config = yaml.safe_load(f)
    job = config["scrape_configs"][0]
    assert [r["replacement"] for r in job["relabel_configs"] if r.get("target_label") == "__address__"] == list(SERVERS)
    job["authorization"]["credentials_file"] = token
    job["file_sd_configs"][0]["files"] = [os.path.join(work, "oled-boxes.json")]
    config["rule_files"] = [os.path.abspath(os.path.join(DOCS, name)) for name in config["rule_files"]]
    path = os.path.join(work, "prometheus.yml")
    with open(path, "w") as f:
        yaml.safe_dump(config, f)
    return path


def query(netns, expr):
    url = "http://127.0.0.1:9090/api/v1/query?" + urllib.parse.urlencode({"query": expr})
    with netns.entered():
        with urllib.request.urlopen(url, timeout=60) as answer:
            return json.load(answer)["data"]["result"]


def percentile(values, share):
    values = sorted(values)
    return values[min(len(values) - 1, int(share * len(values)))] if values else float("nan")


def main():
    parser = argument_parser(__doc__)
    parser.add_argument("--boxes", type=int, default=10000, help="at most 16,000 (default 10,000)")
    parser.add_argument("--seconds", type=int, default=300, help="measured after the first round (default 300)")
    parser.add_argument("--silent", type=int, default=0, help="how many of the boxes never answer (default 0)")
    parser.add_argument("--quick", action="store_true", help="1,000 boxes for 60 s")
    args = parse_as_root(parser, "probe_fleet.py")
    if args.quick:
        args.boxes, args.seconds = 1000, 60
    work = tempfile.mkdtemp(prefix="oled-probe-fleet-")
    net = BoxLink()  # the responder in net.netns, serve and Prometheus in net.peer
    processes = []

    def start(netns, argv, stderr=subprocess.DEVNULL, **kw):
        processes.append(subprocess.Popen(netns.exec_args(argv), stderr=stderr, **kw))
        return processes[-1]

    try:
        net.netns.ip("route", "add", "local", PREFIX, "dev", "lo")
        net.peer.ip("route", "add", PREFIX, "via", "192.168.1.20")
        responder = start(net.netns, [sys.executable, "-c", RESPONDER, SETTINGS, str(args.silent)],
                          stdout=subprocess.PIPE, text=True)
        assert responder.stdout.readline().strip() == "ready"
        with open(os.path.join(work, "oled-boxes.json"), "w") as f:
            json.dump([{"targets": [box_address(i) for i in range(args.boxes)], "labels": {}}], f)
        token = os.path.join(work, "token")
        with open(token, "w") as f:
            f.write(os.urandom(16).hex() + "\n")
        servers = [start(net.peer, [os.path.join(BIN_DIR, "oledctl"), "serve", "--listen", listen,
                                    "--token-file", token, "--timeout", "2"], stdout=subprocess.DEVNULL)
                   for listen in SERVERS]
        log = open(os.path.join(work, "prometheus.log"), "w")
        prometheus = start(net.peer, ["prometheus", "--config.file=" + write_config(work, token),
                                      "--web.listen-address=127.0.0.1:9090", "--log.level=debug",
                                      "--storage.tsdb.path=" + os.path.join(work, "data")],
                           stdout=subprocess.DEVNULL, stderr=log)
        watched = [("oledctl serve " + listen, process) for listen, process in zip(SERVERS, servers)]
        watched.append(("prometheus", prometheus))

        print("%d boxes (%d silent), probed every %d s; one round to warm up ..." % (args.boxes, args.silent, INTERVAL),
              file=sys.stderr)
        eventually(lambda: len(query(net.peer, 'up{job="oled"}')) == args.boxes, 120, "every target known", every=2)
        time.sleep(INTERVAL + 5)
        began = {name: cpu_seconds(p.pid) for name, p in watched}
        start_time = time.time()
        print("measuring for %d s ..." % args.seconds, file=sys.stderr)
        time.sleep(args.seconds)
        took = time.time() - start_time
        cpu = {name: cpu_seconds(p.pid) - began[name] for name, p in watched}

        def samples(expr):
            return {series["metric"]["instance"]: [float(v) for _, v in series["values"]]
                    for series in query(net.peer, expr + "[%ds]" % args.seconds)}

        ups = samples('up{job="oled"}')
        succeeded = samples("oled_probe_success")
        durations = [v for values in samples('scrape_duration_seconds{job="oled"}').values() for v in values]
        every = sum(1 for values in ups.values() if min(values) == 1)
        print("targets in the inventory               %d" % args.boxes)
        print("targets scraped in %4d s               %d" % (args.seconds, len(ups)))
        print("targets up at every scrape             %d (%s)" % (every, "all" if every == args.boxes else "NOT ALL"))
        print("targets whose every probe succeeded    %d of %d answering" %
              (sum(1 for v in succeeded.values() if min(v) == 1), args.boxes - args.silent))
        print("scrapes                                %d, %d failed" % (len(durations), sum(v.count(0) for v in ups.values())))
        print("scrape_duration_seconds p50 / p99 / max  %.4f / %.4f / %.4f" %
              (percentile(durations, 0.5), percentile(durations, 0.99), max(durations or [float("nan")])))
        with open(log.name) as f:
            # The reason, without the request's URL
            failed = [line.split(" err=", 1)[-1].strip().split('\\": ')[-1].rstrip('"') for line in f if "Scrape failed" in line]
        print("failed scrapes (whole run, warm-up too) %d%s" % (len(failed), "".join(
            "\n  %5d x %s" % (failed.count(err), err) for err in sorted(set(failed)))))
        for name, process in watched:
            print("%-30s CPU %5.1f%% of a core, resident %d kB" % (name, 100 * cpu[name] / took, rss_kb(process.pid)))
    finally:
        for process in processes:
            process.kill()
            process.wait()
        net.close()
        shutil.rmtree(work, ignore_errors=True)


if __name__ == "__main__":
    main()
