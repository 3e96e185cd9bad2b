"""A reflection flood, as an attacker on the segment would send it: for some
seconds, datagrams that name a third host (replyoled=THIRD:PORT) go to a
box at a steady rate while an operator polls the box every 0.3 s. Counts
the bytes that reach the third host against the bytes sent, and the polls
answered. Used by the end-to-end test and by the benchmark."""

import socket
import threading
import time

from fault_box import Process
from harness import BOX, PEER, PORT, Netns, link, run

THIRD = "10.0.0.5"
THIRD_PORT = 9999
ATTACK = ("replyoled=%s:%d" % (THIRD, THIRD_PORT)).encode()
QUERY = b"replyoled"
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


def describe(figures):
    return ("%(sent_datagrams)d datagrams (%(sent_bytes)d bytes, %(rate).0f/s) sent, %(third_datagrams)d replies "
            "(%(third_bytes)d bytes) at the third host; %(answered)d of %(polls)d polls answered, slowest in "
            "%(slowest_answer).3f s" % figures)
