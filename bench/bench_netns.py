"""What the benchmarks that run a whole daemon share: a box namespace whose
eth0 is one end of a veth pair, its peer in a second namespace, and the
daemon's resident memory."""

import argparse
import os
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "e2e"))
from harness import Netns, link  # noqa: E402


class BoxLink:
    """self.netns holds eth0 at 192.168.1.20, self.peer the other end."""

    def __init__(self):
        self.netns = Netns("bench")
        self.peer = Netns("bench-peer")
        try:
            link(self.netns, "eth0", "192.168.1.20/24", self.peer, "veth0", ["192.168.1.1/24"])
        except Exception:
            self.close()
            raise

    def close(self):
        self.netns.close()
        self.peer.close()


def kill(proc):
    """Ends a daemon started for a reading, if it has not ended itself."""
    if proc is not None:
        if proc.poll() is None:
            proc.kill()
        proc.wait()


def cpu_seconds(pid):
    """utime + stime + cutime + cstime of pid."""
    with open("/proc/%d/stat" % pid) as f:
        fields = f.read().rsplit(")", 1)[1].split()
    return sum(int(v) for v in fields[11:15]) / os.sysconf("SC_CLK_TCK")


def rss_kb(pid):
    with open("/proc/%d/status" % pid) as f:
        for line in f:
            if line.startswith("VmRSS:"):
                return int(line.split()[1])
    return 0


def parse_as_root(parser, program):
    """The arguments, once it is sure the namespaces can be made."""
    args = parser.parse_args()
    if os.geteuid() != 0:
        sys.exit("%s: needs root for the namespaces" % program)
    return args


def argument_parser(doc):
    return argparse.ArgumentParser(description=doc, formatter_class=argparse.RawDescriptionHelpFormatter)


def side_by_side(start, warm_up, seconds):
    """The runs that start(runs) appends, each begun (run.begin()) after
    warm_up seconds and handed out for its reading after seconds more;
    every run is closed at the end, or when a start fails."""
    runs = []
    try:
        start(runs)
        time.sleep(warm_up)
        for r in runs:
            r.begin()
        time.sleep(seconds)
        yield from runs
    finally:
        for r in runs:
            r.close()
