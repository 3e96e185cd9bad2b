"""Boxes and an operator's PC on one Ethernet segment (a bridge), and a
listener standing where a box would."""

import socket

from harness import E2ETest, Netns, eventually, link, run_tool


class Segment:
    """A bridge in a namespace of its own; snooping off, every group
    datagram reaches every port whether or not a join was seen."""

    def __init__(self):
        self.netns = Netns("seg")
        self.netns.ip("link", "add", "br0", "type", "bridge", "mcast_snooping", "0")
        self.netns.ip("link", "set", "br0", "up")
        self.ports = 0

    def attach(self, netns, ifname, addr, group_route=True):
        """With group_route, netns's group datagrams leave through ifname."""
        self.ports += 1
        port = "port%d" % self.ports
        link(netns, ifname, addr, self.netns, port, [], group_route=False)
        self.netns.ip("link", "set", port, "master", "br0")
        if group_route:
            netns.ip("route", "add", "224.0.0.0/4", "dev", ifname)

    def close(self):
        self.netns.close()


class OperatorSegment(E2ETest):
    """The operator's PC (self.netns, at OPERATOR) and boxes on one segment."""

    OPERATOR = "10.0.0.100"

    def setUp(self):
        super().setUp()
        self.segment = Segment()
        self.addCleanup(self.segment.close)
        self.segment.attach(self.netns, "eth0", self.OPERATOR + "/24")

    def station(self, addr):
        ns = Netns("box")
        self.addCleanup(ns.close)
        self.segment.attach(ns, "eth0", addr + "/24")
        return ns

    def serving_box(self, addr, files=None, netns=None):
        """A started box answering at addr, on this segment unless given netns."""
        box = self.box(netns=netns or self.station(addr), files=files)
        return self.started(box, addr)

    def started(self, box, addr, wrapper=()):
        """box started and answering at addr."""
        box.start(wrapper=wrapper)
        box.wait_for("save config succeed")
        eventually(lambda: self.oledctl("get", "--box", addr, "--timeout", "0.3").returncode == 0, 15,
                   lambda: "box %s answering:\n%s" % (addr, "\n".join(box.output()[-20:])), every=0)
        return box

    def oledctl(self, *args):
        return run_tool(self.netns, "oledctl", *args)

    def wait_for_setting(self, box, line):
        eventually(lambda: line in box.read("/data/oled.ini").splitlines(), 5,
                   lambda: "%s in:\n%s" % (line, box.read("/data/oled.ini")))


class Listener:
    """Receives every datagram to a box's control port, unicast or group."""

    def __init__(self, netns, local_addr):
        self.sock = netns.udp_socket("0.0.0.0", 16124)
        self.sock.setsockopt(socket.IPPROTO_IP, socket.IP_ADD_MEMBERSHIP,
                             socket.inet_aton("224.168.1.1") + socket.inet_aton(local_addr))
        self.sock.setblocking(False)
        self.datagrams = []

    def received(self):
        while True:
            try:
                data, source = self.sock.recvfrom(65536)
            except BlockingIOError:
                return list(self.datagrams)
            self.datagrams.append((source[0], data.decode("latin-1")))

    def wait_for(self, text):
        eventually(lambda: any(d[1] == text for d in self.received()), 5,
                   lambda: "datagram %r; got %r" % (text, self.received()), every=0.02)

    def close(self):
        self.sock.close()
