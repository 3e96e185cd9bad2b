#!/usr/bin/env python3
"""Reply amplification under a reflection flood: for each oledd-sim given,
a box in a network namespace of its own takes --seconds of
replyoled=THIRD:PORT datagrams at --rate a second from a peer, while an
operator polls it every 0.3 s; the bytes that reach the third host are
divided by the bytes sent. Needs root (namespaces); nothing leaves them.

Prints one line per build:
  PATH  factor  bytes-sent  bytes-at-third  polls-answered/polls"""

import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "tests", "e2e"))
from bench_netns import argument_parser, parse_as_root  # noqa: E402
from harness import BOX, PEER, SAVED, Netns, SimBox, link  # noqa: E402
from reflection_flood import ThirdHost, ask, flood  # noqa: E402


def measure(sim, seconds, rate):
    box_ns, peer = Netns("bench"), Netns("bench-peer")
    box = third = None
    sockets = []
    try:
        link(box_ns, "eth0", BOX + "/24", peer, "veth0", [PEER + "/24"])
        third = ThirdHost(box_ns, peer)
        box = SimBox(netns=box_ns, program=sim).start()
        box.wait_for(SAVED)
        attacker, operator = peer.udp_socket(), peer.udp_socket()
        sockets += [attacker, operator]
        if not any(ask(operator, 0.2) is not None for _ in range(50)):  # it has just started
            sys.exit("reflection_flood.py: %s never answered" % sim)
        figures = flood(attacker, operator, third, seconds=seconds, rate=rate)
    finally:
        for sock in sockets:
            sock.close()
        for thing in (box, third, peer, box_ns):
            if thing is not None:
                thing.close()
    if figures["third_drops"]:
        sys.exit("reflection_flood.py: the third host dropped %d datagrams" % figures["third_drops"])
    return figures


def main():
    parser = argument_parser(__doc__)
    parser.add_argument("--sim", action="append", required=True, help="an oledd-sim to run (repeatable)")
    parser.add_argument("--seconds", type=float, default=5.0, help="length of the flood (default 5)")
    parser.add_argument("--rate", type=int, default=1000, help="datagrams a second (default 1000)")
    args = parse_as_root(parser, "reflection_flood.py")
    for sim in args.sim:
        f = measure(sim, args.seconds, args.rate)
        print("%s %.2f %d %d %d/%d" % (sim, f["third_bytes"] / f["sent_bytes"], f["sent_bytes"], f["third_bytes"],
                                       f["answered"], f["polls"]))


if __name__ == "__main__":
    main()
