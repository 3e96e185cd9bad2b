#!/usr/bin/env python3
"""Makes the README's pictures: the sample box on each panel kind, run for a
while in network namespaces of its own, then its panel.png copied to
docs/panels/. Needs root (namespaces) and a host build (build/bin)."""

import os
import shutil
import signal
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "tests", "e2e"))
from harness import Netns, SimBox, link, needs_root  # noqa: E402

KINDS = {"big": (0, 24), "0.96": (4, 11), "1.29": (6, 11), "old": (1, 15)}  # kind, seconds to run


def main():
    needs_root()
    target = os.path.join(HERE, "..", "docs", "panels")
    os.makedirs(target, exist_ok=True)
    sample = os.path.join(HERE, "..", "sim", "sample-root")
    running = []
    for name, (kind, seconds) in KINDS.items():
        box_ns, peer_ns = Netns("pic"), Netns("peer")
        link(box_ns, "eth0", "192.168.1.20/24", peer_ns, "veth0", ["192.168.1.1/24"])
        box = SimBox(netns=box_ns)
        shutil.copytree(sample, box.root, dirs_exist_ok=True, symlinks=True)
        settings = box.read("/data/oled.ini").replace("OLed_a_kind_start=4", "OLed_a_kind_start=%d" % kind)
        box.write("/data/oled.ini", settings)
        box.start()
        running.append((name, seconds, box, box_ns, peer_ns))
    start = time.time()
    for name, seconds, box, box_ns, peer_ns in sorted(running, key=lambda r: r[1]):
        time.sleep(max(0, start + seconds - time.time()))
        box.signal(signal.SIGTERM)
        box.wait()
        shutil.copy(os.path.join(box.out, "panel.png"), os.path.join(target, name + ".png"))
        print("docs/panels/%s.png" % name)
        box.close()
        box_ns.close()
        peer_ns.close()


if __name__ == "__main__":
    main()
