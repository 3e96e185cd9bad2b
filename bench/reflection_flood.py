#!/usr/bin/env python3
"""Reply amplification under a reflection flood: for each oledd-sim given,
a box in a network namespace of its own takes --seconds of
replyoled=THIRD:PORT datagrams at --rate a second from a peer, while an
operator polls it every 0.3 s; the bytes that reach the third host are
divided by the bytes sent. With --prime the peer first sends 1000-byte
texts for the 14 keys that take text, as a stranger would to make every
reply big. Needs root (namespaces); nothing leaves them.

Prints one line per build:
  PATH  factor  bytes-sent  bytes-at-third  polls-answered/polls"""

import os
import socket
import sys
import threading
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "tests", "e2e"))
from bench_netns import argument_parser, parse_as_root  # noqa: E402
from fault_box import Process  # noqa: E402
from harness import BOX, PEER, PORT, SAVED, Netns, SimBox, link, run  # noqa: E402

THIRD = "10.0.0.5"
THIRD_PORT = 9999
ATTACK = ("replyoled=%s:%d" % (THIRD, THIRD_PORT)).encode()
QUERY = b"replyoled"
# The keys that take text: the custom line and the pins.
TEXT_KEYS = ["oled_string", "sda", "scl", "cs", "dc", "res", "sml_sda", "sml_scl", "vcc", "gnd", "pwr_led",
             "cpu_led", "eth_led", "hdmi_led"]
POLL_EVERY = 0.3
# A poll's answer comes within milliseconds; this only bounds a lost one.
ANSWER_WAIT = 1.0


class ThirdHost:
    """A namespace at THIRD behind the peer, which routes between it and
    the box, with a socket on THIRD_PORT that has room for every datagram
    of a flood."""

    def __init__(self, box_ns, peer_ns):
        self.netns = Netns("third")
        try:
            link(peer_ns, "veth1", "10.0.0.1/24", self.netns, "eth0", [THIRD + "/24"], group_route=False)
            run(*peer_ns.exec_args(["sysctl", "-qw", "net.ipv4.ip_forward=1"]))
            box_ns.ip("route", "add", "10.0.0.0/24", "via", PEER)
            self.netns.ip("route", "add", "default", "via", "10.0.0.1")
            self.sock = self.netns.udp_socket(THIRD, THIRD_PORT)
        except Exception:
            self.netns.close()
            raise
        self.sock.setsockopt(socket.SOL_SOCKET, 33, 32 << 20)  # SO_RCVBUFFORCE: root may pass rmem_max

    def drops(self):
        """Datagrams the kernel dropped for want of room in the socket: the
        count of bytes is whole only when this is 0."""
        with self.netns.entered():
            return Process(threading.get_native_id()).socket_queue(THIRD_PORT)[1]

    def close(self):
        self.sock.close()
        self.netns.close()


def ask(sock, wait):
    """Sends the operator's query, late answers to earlier ones dropped;
    the seconds its answer took, or None."""
    sock.setblocking(False)
    try:
        while True:
            sock.recvfrom(65536)
    except BlockingIOError:
        pass
    asked = time.monotonic()
    sock.sendto(QUERY, (BOX, PORT))
    sock.settimeout(wait)
    try:
        sock.recvfrom(65536)
        return time.monotonic() - asked
    except socket.timeout:
        return None


def _count(sock, stop, figures):
    sock.settimeout(0.1)
    while not stop.is_set():
        try:
            data, _ = sock.recvfrom(65536)
        except socket.timeout:
            continue
        if figures["third_datagrams"] == 0:
            figures["first_at_third"] = data
        figures["third_datagrams"] += 1
        figures["third_bytes"] += len(data)


def _poll(sock, until, figures):
    """One query every POLL_EVERY s; each must be answered before the next."""
    next_at = time.monotonic()
    while next_at < until:
        time.sleep(max(0.0, next_at - time.monotonic()))
        took = ask(sock, ANSWER_WAIT)
        figures["polls"] += 1
        if took is not None:
            figures["answered"] += 1
            figures["slowest_answer"] = max(figures["slowest_answer"], took)
        next_at += POLL_EVERY


def flood(attacker, operator, third, seconds=5.0, rate=1000, after=1.5):
    """Sends ATTACK from the attacker's socket to the box at rate datagrams
    a second for seconds; the operator's socket polls from the start until
    after seconds past the flood; third is the ThirdHost. Returns the figures (datagrams and bytes
    sent and at the third host, polls and answers)."""
    figures = {"sent_datagrams": 0, "sent_bytes": 0, "third_datagrams": 0, "third_bytes": 0,
               "first_at_third": None, "polls": 0, "answered": 0, "slowest_answer": 0.0}
    stop = threading.Event()
    counter = threading.Thread(target=_count, args=(third.sock, stop, figures))
    counter.start()
    start = time.monotonic()
    poller = threading.Thread(target=_poll, args=(operator, start + seconds + after, figures))
    poller.start()
    try:
        sent = 0
        while True:
            elapsed = time.monotonic() - start
            if elapsed >= seconds:
                break
            for _ in range(int(elapsed * rate) + 1 - sent):
                attacker.sendto(ATTACK, (BOX, PORT))
                sent += 1
            time.sleep(0.001)
        figures["sent_datagrams"], figures["sent_bytes"] = sent, sent * len(ATTACK)
        figures["rate"] = sent / (time.monotonic() - start)
    finally:
        poller.join()
        stop.set()
        counter.join()
    figures["third_drops"] = third.drops()
    return figures


def measure(sim, seconds, rate, prime):
    box_ns, peer = Netns("bench"), Netns("bench-peer")
    box = third = None
    sockets = []
    try:
        link(box_ns, "eth0", BOX + "/24", peer, "veth0", [PEER + "/24"])
        third = ThirdHost(box_ns, peer)
        box = SimBox(netns=box_ns)
        box.program = sim
        box.start()
        box.wait_for(SAVED)
        attacker, operator = peer.udp_socket(), peer.udp_socket()
        sockets += [attacker, operator]
        if not any(ask(operator, 0.2) is not None for _ in range(50)):  # it has just started
            sys.exit("reflection_flood.py: %s never answered" % sim)
        for key in TEXT_KEYS if prime else []:
            attacker.sendto(("%s=%s" % (key, "A" * 1000)).encode(), (BOX, PORT))
        ask(operator, ANSWER_WAIT)  # after the priming, in order
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
    parser.add_argument("--prime", action="store_true", help="1000-byte texts in the text keys first")
    args = parse_as_root(parser, "reflection_flood.py")
    for sim in args.sim:
        f = measure(sim, args.seconds, args.rate, args.prime)
        print("%s %.2f %d %d %d/%d" % (sim, f["third_bytes"] / f["sent_bytes"], f["sent_bytes"], f["third_bytes"],
                                       f["answered"], f["polls"]))


if __name__ == "__main__":
    main()
