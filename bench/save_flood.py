#!/usr/bin/env python3
"""Flash writes under a flood of changes: for each oledd-sim given, a box in
a network namespace of its own takes --seconds of datagrams that each
change a setting (cpu=0 and cpu=1 in turn) at --rate a second from a peer;
the writes of /data/oled.ini are counted (inotify) until a second after the
flood. Needs root (namespaces); nothing leaves them.

Prints one line per build:
  PATH  writes-per-changing-datagram  writes  datagrams"""

import ctypes
import os
import struct
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "tests", "e2e"))
from bench_netns import BoxLink, argument_parser, parse_as_root  # noqa: E402
from harness import BOX, PORT, SAVED, SimBox  # noqa: E402


class FileWrites:
    """Counts the writes of one file through inotify: a replacement by
    rename (the daemon's durable save) or a rewrite in place."""

    _IN_CLOSE_WRITE, _IN_MOVED_TO = 0x8, 0x80

    def __init__(self, path):
        libc = ctypes.CDLL(None, use_errno=True)
        self.fd = libc.inotify_init1(os.O_NONBLOCK | os.O_CLOEXEC)
        folder = os.path.dirname(path).encode()
        if self.fd < 0 or libc.inotify_add_watch(self.fd, folder, self._IN_CLOSE_WRITE | self._IN_MOVED_TO) < 0:
            raise OSError(ctypes.get_errno(), "inotify on " + path)
        self.name = os.path.basename(path).encode()
        self.writes = 0

    def count(self):
        """Writes seen so far; call it often during a flood of writes."""
        while True:
            try:
                data = os.read(self.fd, 1 << 16)
            except BlockingIOError:
                return self.writes
            at = 0
            while at < len(data):
                length = struct.unpack_from("iIII", data, at)[3]
                self.writes += data[at + 16:at + 16 + length].rstrip(b"\0") == self.name
                at += 16 + length

    def close(self):
        os.close(self.fd)


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
