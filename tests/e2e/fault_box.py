"""A simulated box for the fault tests: eth0 at 192.168.1.20 on a veth
pair to a peer namespace at 192.168.1.1, the status pages of the good
fixture box, the loops running, and the daemon's process watched through
/proc (memory, descriptors, children, threads, socket queue)."""

import os
import re
import shutil
import time

import psutil
from harness import PORT, SAVED, PeerTest, SimBox, eventually
from test_startup import CANONICAL_DEFAULTS, settings_text

KEYS = [line.split("=")[0] for line in CANONICAL_DEFAULTS.splitlines()]
FIXTURE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "fixtures", "good")

# The settings the daemon prints after every handled datagram: counted,
# not kept, so that a flood does not fill the test's memory.
_SETTING_LINE = re.compile(r"^[A-Za-z_]+=")
_READ_LINE = "[ReadConfig]-221: read_config: /data/oled.ini"


class QuietSimBox(SimBox):
    """A SimBox that keeps every output line but the settings listings."""

    def __init__(self, **kw):
        super().__init__(**kw)
        self.saves = 0

    def _collect(self):
        for line in self.proc.stdout:
            line = line.rstrip("\n")
            if _SETTING_LINE.match(line) or line == _READ_LINE:
                continue
            with self._lock:
                self.lines.append(line)
                if line == SAVED:
                    self.saves += 1


class Process(psutil.Process):
    """The running daemon as /proc shows it; psutil reads memory, threads
    and children (of every thread), this adds descriptors and the socket."""

    def _read(self, name):
        with open("/proc/%d/%s" % (self.pid, name)) as f:
            return f.read()

    def sanitized(self):
        """Whether the daemon runs with AddressSanitizer, whose quarantine
        keeps freed memory resident on purpose."""
        return "asan" in self._read("maps")

    def rss_kb(self):
        return self.memory_info().rss // 1024

    def descriptors(self):
        """Sorted (number, target) of the open descriptors."""
        found = []
        folder = "/proc/%d/fd" % self.pid
        for name in os.listdir(folder):
            try:
                found.append((int(name), os.readlink(os.path.join(folder, name))))
            except FileNotFoundError:
                pass  # closed while listed
        return sorted(found)

    def socket_queue(self, port=PORT):
        """(bytes waiting, datagrams dropped) of the UDP socket on port, as
        the daemon's own network namespace sees it."""
        for line in self._read("net/udp").splitlines()[1:]:
            fields = line.split()
            if int(fields[1].split(":")[1], 16) == port:
                return int(fields[4].split(":")[1], 16), int(fields[-1])
        return 0, 0

    def lasting_descriptors(self, seconds=1.0):
        """The descriptors open all through a while: those the probes open
        for a moment are left out."""
        lasting = set(self.descriptors())
        deadline = time.time() + seconds
        while time.time() < deadline:
            lasting &= set(self.descriptors())
            time.sleep(0.003)
        return sorted(lasting)

    def quiet(self, descriptors, timeout=10.0):
        """Waits for a moment when the probes have no shell and no file
        open: no child and the given descriptors."""
        eventually(lambda: not self.children() and self.descriptors() == descriptors, timeout,
                   lambda: "children %s, descriptors %s" % (self.children(), self.descriptors()), every=0.003)


class FaultTest(PeerTest):
    """A box with the good fixture's status pages and given settings."""

    def start_box(self, settings, board="BRD25", wrapper=()):
        box = QuietSimBox(netns=self.netns, board=board)
        self.addCleanup(box.close)
        shutil.copytree(FIXTURE, box.root, dirs_exist_ok=True, symlinks=True)
        box.write("/data/oled.ini", settings_text(settings))
        self.sim = box
        box.start(wrapper=wrapper)
        box.wait_for(SAVED)
        self.settle()
        self.process = Process(box.proc.pid)
        return box

    def restart(self):
        self.sim.stop()
        self.sim.start()
        self.settle()
        self.process = Process(self.sim.proc.pid)

    def assert_whole_file(self):
        data = self.sim.read("/data/oled.ini", binary=True)
        # A whole file: every key once, in order, the last line ended too.
        self.assertEqual([line.split(b"=", 1)[0].decode("latin-1") for line in data.split(b"\n")], KEYS + [""], data)
        return data

    def assert_answers(self):
        """The daemon is alive and replies with the file it holds."""
        self.assertIsNone(self.sim.proc.poll(), "the daemon died")
        reply = self.settle()
        self.assertEqual(reply, b"[oled]\n" + self.assert_whole_file())
