"""How many boxes answering at the same instant `oledctl discover` lists.
One namespace plays N boxes (N addresses on its eth0) that all answer the
query at once; the operator's PC sits on the same bridged segment. Needs
root (network namespaces); nothing leaves them.

    sudo python3 bench/discover_burst.py [N ...]     (default 50 200 500 1000)
    sudo python3 bench/discover_burst.py --sweep     how long --subnet takes for a /22 and a /20
"""

import os
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "e2e"))
from harness import Netns, link, needs_root, run_tool  # noqa: E402
from segment import Segment  # noqa: E402

RESPONDER = r"""
import socket, struct, sys
count = int(sys.argv[1])
listen = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
listen.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
listen.bind(("", 16124))
listen.setsockopt(socket.IPPROTO_IP, socket.IP_ADD_MEMBERSHIP,
                  struct.pack("4s4s", socket.inet_aton("224.168.1.1"), socket.inet_aton("10.9.0.1")))
boxes = []
for i in range(count):
    s = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    s.bind(("10.9.%d.%d" % (i // 250, i % 250 + 1), 0))
    boxes.append(s)
reply = ("[oled]\n" + "".join("key%02d=value%02d\n" % (k, k) for k in range(38))).encode()
print("ready", flush=True)
while True:
    data, source = listen.recvfrom(2048)
    if data == b"replyoled":
        for s in boxes:
            s.sendto(reply, source)
"""


def measure(count):
    import subprocess
    segment = Segment()
    operator, boxes = Netns("op"), Netns("box")
    proc = None
    try:
        segment.attach(operator, "eth0", "10.9.255.254/16")
        segment.attach(boxes, "eth0", "10.9.0.1/16")
        for i in range(1, count):
            boxes.ip("addr", "add", "10.9.%d.%d/16" % (i // 250, i % 250 + 1), "dev", "eth0")
        proc = subprocess.Popen(boxes.exec_args([sys.executable, "-c", RESPONDER, str(count)]),
                                stdout=subprocess.PIPE, text=True)
        assert proc.stdout.readline().strip() == "ready"
        began = time.time()
        found = run_tool(operator, "oledctl", "discover", "--timeout", "2")
        took = time.time() - began
        listed = len(found.stdout.splitlines())
        print("%5d boxes answering at once: %5d listed (%s), discover took %.2f s"
              % (count, listed, "all" if listed == count else "LOST %d" % (count - listed), took))
    finally:
        if proc is not None:
            proc.kill()
            proc.wait()
        for ns in (operator, boxes):
            ns.close()
        segment.close()


def sweep():
    """Every address of a subnet on the operator's own link, none holding a
    box: the pace of the questions, with the kernel seeking each address."""
    operator, peer = Netns("op"), Netns("peer")
    try:
        link(operator, "eth0", "10.9.0.1/16", peer, "eth0", [])
        for subnet in ("10.9.4.0/22", "10.9.16.0/20"):
            began = time.time()
            run_tool(operator, "oledctl", "discover", "--subnet", subnet, "--timeout", "0.1")
            print("discover --subnet %s --timeout 0.1: %.2f s" % (subnet, time.time() - began))
    finally:
        operator.close()
        peer.close()


if __name__ == "__main__":
    needs_root()
    if sys.argv[1:] == ["--sweep"]:
        sweep()
        sys.exit(0)
    for n in [int(a) for a in sys.argv[1:]] or [50, 200, 500, 1000]:
        measure(n)
