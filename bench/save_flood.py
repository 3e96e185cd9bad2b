#!/usr/bin/env python3
"""Flash writes under a flood of changes: for each oledd-sim given, a box in
a network namespace of its own takes --seconds of datagrams that each
change a setting (cpu=0 and cpu=1 in turn) at --rate a second from a peer;
the writes of /data/oled.ini are counted (inotify) until a second after the
flood. Needs root (namespaces); nothing leaves them.

Prints one line per build:
  PATH  writes-per-changing-datagram  writes  datagrams"""

import os
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "tests", "e2e"))
from bench_netns import BoxLink, argument_parser, parse_as_root  # noqa: E402
from fault_box import FileWrites  # noqa: E402
from harness import BOX, PORT, SAVED, SimBox  # noqa: E402


def measure(sim, seconds, rate):
    link = BoxLink()
    box = writes = None
    try:
        box = SimBox(netns=link.netns)
        box.program = sim
        box.start()
        box.wait_for(SAVED)
        writes = FileWrites(box.host("/data/oled.ini"))
        sender = link.peer.udp_socket()
        sent = 0
        start = time.monotonic()
        while time.monotonic() - start < seconds:
            for _ in range(int((time.monotonic() - start) * rate) + 1 - sent):
                sender.sendto(b"cpu=%d" % (sent % 2), (BOX, PORT))
                sent += 1
            writes.count()
            time.sleep(0.001)
        sender.close()
        until = time.monotonic() + 1.5  # the last pending save
        while time.monotonic() < until:
            writes.count()
            time.sleep(0.01)
        return writes.count(), sent
    finally:
        if writes is not None:
            writes.close()
        if box is not None:
            box.close()
        link.close()


def main():
    parser = argument_parser(__doc__)
    parser.add_argument("--sim", action="append", required=True, help="an oledd-sim to run (repeatable)")
    parser.add_argument("--seconds", type=float, default=5.0, help="length of the flood (default 5)")
    parser.add_argument("--rate", type=int, default=200, help="datagrams a second (default 200)")
    args = parse_as_root(parser, "save_flood.py")
    for sim in args.sim:
        written, sent = measure(sim, args.seconds, args.rate)
        print("%s %.3f %d %d" % (sim, written / sent, written, sent))


if __name__ == "__main__":
    main()
