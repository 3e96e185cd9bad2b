"""Runs oledd-sim as a whole program inside network namespaces that the
test makes itself, so that no packet ever leaves them."""

import contextlib
import ctypes
import os
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import uuid

SKIP = 77  # ctest's SKIP_RETURN_CODE

_libc = ctypes.CDLL(None, use_errno=True)
_CLONE_NEWNET = 0x40000000

BIN_DIR = os.environ.get("OLEDD_BIN_DIR", os.path.join(os.path.dirname(__file__), "..", "..", "build", "bin"))
# Runs the built daemon programs, e.g. "qemu-arm-static -L /" for the ARM build.
EMULATOR = os.environ.get("OLEDD_EMULATOR", "").split()


def needs_root():
    """End the program as skipped when namespaces cannot be made."""
    if os.geteuid() != 0:
        print("SKIPPED: this test needs root to make network namespaces (CI runs it as root)")
        sys.exit(SKIP)


def run(*args, check=True, **kw):
    return subprocess.run(list(args), check=check, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, **kw)


class Netns:
    """A network namespace with its loopback up; removed on close."""

    def __init__(self, tag="box"):
        self.name = "oledt-%s-%s" % (tag, uuid.uuid4().hex[:8])
        run("ip", "netns", "add", self.name)
        self.ip("link", "set", "lo", "up")

    def ip(self, *args):
        return run("ip", "-n", self.name, *args)

    def exec_args(self, argv):
        return ["ip", "netns", "exec", self.name] + list(argv)

    def udp_socket(self, address="0.0.0.0", port=0):
        """A UDP socket bound in this namespace (the socket keeps it)."""
        with self.entered():
            sock = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        sock.bind((address, port))
        return sock

    @contextlib.contextmanager
    def entered(self):
        """The calling thread works inside this namespace meanwhile: its
        sockets and the processes it starts (a browser) live there."""
        home = os.open("/proc/thread-self/ns/net", os.O_RDONLY)
        there = os.open("/var/run/netns/" + self.name, os.O_RDONLY)
        try:
            if _libc.setns(there, _CLONE_NEWNET) != 0:
                raise OSError(ctypes.get_errno(), "setns into " + self.name)
            try:
                yield
            finally:
                if _libc.setns(home, _CLONE_NEWNET) != 0:
                    raise OSError(ctypes.get_errno(), "setns back home")
        finally:
            os.close(there)
            os.close(home)

    def close(self):
        run("ip", "netns", "del", self.name, check=False)


def link(box_ns, box_if, box_addr, peer_ns, peer_if, peer_addrs, group_route=True):
    """A veth pair between two namespaces, each end with its addresses
    (CIDR); with group_route, multicast routed through it."""
    tmp = "v" + uuid.uuid4().hex[:10]
    run("ip", "link", "add", tmp, "netns", box_ns.name, "type", "veth", "peer", "name", tmp + "p", "netns", peer_ns.name)
    box_ns.ip("link", "set", tmp, "name", box_if)
    peer_ns.ip("link", "set", tmp + "p", "name", peer_if)
    for ns, ifname, addrs in ((box_ns, box_if, [box_addr] if box_addr else []), (peer_ns, peer_if, peer_addrs)):
        for addr in addrs:
            ns.ip("addr", "add", addr, "dev", ifname)
        ns.ip("link", "set", ifname, "up")
        if group_route:
            ns.ip("route", "add", "224.0.0.0/4", "dev", ifname)
    wait_until_carrying(box_ns, box_if)
    wait_until_carrying(peer_ns, peer_if)


class SimBox:
    """One simulated appliance: a root folder, an output folder and an
    oledd-sim process whose standard output is collected."""

    def __init__(self, netns=None, files=None, board=None):
        self.netns = netns
        self.program = os.path.join(BIN_DIR, "oledd-sim")
        self.root = tempfile.mkdtemp(prefix="oledt-root-")
        self.out = tempfile.mkdtemp(prefix="oledt-out-")
        self.proc = None
        self._stream = None
        self.lines = []
        self._lock = threading.Lock()
        self._reader = None
        if board is not None:
            self.write("/version/hardware_info", '{"board":"%s"}\n' % board)
        for path, content in (files or {}).items():
            self.write(path, content)

    def host(self, box_path):
        return self.root + box_path

    def write(self, box_path, content):
        path = self.host(box_path)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb" if isinstance(content, bytes) else "w") as f:
            f.write(content)

    def read(self, box_path, binary=False):
        with open(self.host(box_path), "rb" if binary else "r") as f:
            return f.read()

    def start(self, *extra, cwd=None, wrapper=()):
        argv = EMULATOR + list(wrapper) + [self.program, "--root", self.root, "--out", self.out] + list(extra)
        if self.netns is not None:
            argv = self.netns.exec_args(argv)
        self.proc = subprocess.Popen(argv, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                                     errors="replace", bufsize=1, cwd=cwd)
        self._stream = self.proc.stdout
        self._reader = threading.Thread(target=self._collect, daemon=True)
        self._reader.start()
        return self

    def _collect(self):
        try:
            for line in self._stream:
                with self._lock:
                    self.lines.append(line.rstrip("\n"))
        except OSError:
            pass  # a terminal's reader gets EIO once the program has ended

    def output(self):
        with self._lock:
            return list(self.lines)

    def wait_for(self, text, timeout=10.0, after=0):
        """Index of the first output line from `after` on that contains text."""
        deadline = time.time() + timeout
        while time.time() < deadline:
            lines = self.output()
            for i in range(after, len(lines)):
                if text in lines[i]:
                    return i
            if self.proc.poll() is not None and self._reader is not None and not self._reader.is_alive():
                break
            time.sleep(0.02)
        raise AssertionError("no line with %r in output:\n%s" % (text, "\n".join(self.output()[-60:])))

    def signal(self, sig=signal.SIGTERM):
        self.proc.send_signal(sig)  # ip netns exec execs: the pid is the daemon's

    def wait(self, timeout=10.0):
        status = self.proc.wait(timeout=timeout)
        if self._reader is not None:
            self._reader.join(timeout=2)
        return status

    def stop(self):
        if self.proc is not None and self.proc.poll() is None:
            self.proc.kill()
            self.proc.wait()
        if self._stream is not None:
            self._stream.close()

    def close(self):
        self.stop()
        shutil.rmtree(self.root, ignore_errors=True)
        shutil.rmtree(self.out, ignore_errors=True)


class E2ETest(unittest.TestCase):
    """Base class: each test gets a fresh namespace with only loopback;
    boxes made through self.box() are cleaned up after the test."""

    def setUp(self):
        self.netns = Netns()
        self.addCleanup(self.netns.close)

    def box(self, netns=None, **kw):
        b = SimBox(netns=netns or self.netns, **kw)
        self.addCleanup(b.close)
        return b


# The box and its peer in the control tests: a veth pair between them.
BOX = "192.168.1.20"
PEER = "192.168.1.1"
PORT = 16124
GROUP = "224.168.1.1"
SAVED = "[SaveConfig]-246: save config succeed"


class PeerTest(E2ETest):
    """eth0 at BOX on a veth pair to a peer namespace at PEER (and
    EXTRA_PEER_ADDRESSES), with a control socket in the peer. A test sets
    self.sim to its started box."""

    EXTRA_PEER_ADDRESSES = ()

    def setUp(self):
        super().setUp()
        self.peer = Netns("peer")
        self.addCleanup(self.peer.close)
        link(self.netns, "eth0", BOX + "/24", self.peer, "veth0", [PEER + "/24"] + list(self.EXTRA_PEER_ADDRESSES))
        self.tool = self.peer.udp_socket()
        self.addCleanup(self.tool.close)
        self.tool.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF, socket.inet_aton(PEER))
        self.settles = 0

    def send(self, payload, to=BOX, sock=None):
        (sock or self.tool).sendto(payload if isinstance(payload, bytes) else payload.encode("latin-1"), (to, PORT))

    def settle(self, timeout=20.0):
        """Sends a marked query until it is handled; every datagram sent
        before it has then been handled or dropped (one socket, in order).
        Returns its reply."""
        self.settles += 1
        tag = "%s:settle-%d" % (BOX, self.settles)
        deadline = time.time() + timeout
        start = len(self.sim.output())
        wait = 0.02  # short at first: a restarted server is up within ms
        while True:
            self.send("controlled=%s|replyoled" % tag)
            try:
                at = self.sim.wait_for("controlled ip " + tag, timeout=wait, after=start)
                break
            except AssertionError:
                if time.time() > deadline or self.sim.proc.poll() is not None:
                    raise
                wait = min(0.5, wait * 2)
        self.sim.wait_for(SAVED, after=at)
        reply = None
        self.tool.settimeout(3.0)
        while True:
            try:
                data, _ = self.tool.recvfrom(65536)
                reply = data
                self.tool.settimeout(0.05)
            except socket.timeout:
                return reply


def wait_until_carrying(netns, ifname, timeout=5.0):
    """The kernel switches a new link from its dropping "noop" queue to a
    real one up to a second after carrier; datagrams sent before are lost."""
    def carrying():
        shown = netns.ip("link", "show", ifname).stdout
        return "state UP" in shown and "qdisc noop" not in shown

    eventually(carrying, timeout, "link %s in %s up" % (ifname, netns.name))


def eventually(check, timeout, what, every=0.05):
    """check()'s first true result within timeout seconds; otherwise fails
    saying what (a text, or a function giving one: the state at the end)."""
    deadline = time.time() + timeout
    while True:
        try:
            got = check()
            if got:
                return got
        except (OSError, ValueError, IndexError):
            pass  # a file caught between two versions
        if time.time() > deadline:
            raise AssertionError("not seen within %ss: %s" % (timeout, what() if callable(what) else what))
        time.sleep(every)


def run_tool(netns, name, *args):
    """One of the built programs run to its end inside netns."""
    return run(*netns.exec_args([os.path.join(BIN_DIR, name)] + list(args)), check=False, timeout=30)


def main():
    needs_root()
    unittest.main(verbosity=2)
