"""The control protocol end to end: a box (eth0 at 192.168.1.20) and a peer
(192.168.1.1, and 10.0.0.5 for reply destinations) joined by a veth pair in
namespaces of their own; the peer sends datagrams by unicast and to the
group, and reads the replies."""

import os
import socket

from harness import BOX, GROUP, PEER, PORT, SAVED, PeerTest, main


class Control(PeerTest):
    EXTRA_PEER_ADDRESSES = ("10.0.0.5/24",)

    def setUp(self):
        super().setUp()
        self.netns.ip("route", "add", "10.0.0.0/24", "via", PEER)

    def start_box(self, files=None):
        self.sim = self.box(files=files)
        self.sim.start()
        self.sim.wait_for(SAVED)
        self.settle()
        return self.sim

    def mark(self):
        return len(self.sim.output())

    def reply(self, sock=None, timeout=3.0):
        sock = sock or self.tool
        sock.settimeout(timeout)
        return sock.recvfrom(65536)

    def settings(self):
        return self.sim.read("/data/oled.ini", binary=True)

    def lines(self, start, end):
        return self.sim.output()[start:end]

    def test_only_the_addressed_box_obeys(self):
        self.start_box()
        before = os.stat(self.sim.host("/data/oled.ini"))
        content = self.settings()
        start = self.mark()
        self.send("controlled=192.168.1.21|cpu=0")
        self.send("controlled=192.168.1.21|cpu=0", to=GROUP)
        reply = self.settle()
        end = self.settled_at
        self.assertEqual(reply, b"[oled]\n" + content)
        after = os.stat(self.sim.host("/data/oled.ini"))
        self.assertEqual((before.st_ino, before.st_mtime_ns), (after.st_ino, after.st_mtime_ns))
        self.assertEqual(self.lines(start, end), [])

        start = self.mark()
        self.send("controlled=192.168.1.20|vi=0", to=GROUP)
        self.settle()
        self.assertEqual(self.lines(start, self.settled_at)[0], "controlled ip 192.168.1.20")
        self.assertIn(b"\nOLed_a_vi=0\n", self.settings())

    def test_replies_carry_the_file_before_the_change(self):
        self.start_box(files={"/data/oled.ini": "OLed_a_cpu=0\n"})
        canonical = self.settings()
        self.send("replyoled")
        data, sender = self.reply()
        self.assertEqual(data, b"[oled]\n" + canonical)
        self.assertEqual(sender, (BOX, PORT))

        elsewhere = self.peer.udp_socket("10.0.0.5", 9000)
        self.addCleanup(elsewhere.close)
        self.send("replyoled=10.0.0.5:9000")
        data, _ = self.reply(elsewhere)
        self.assertEqual(data, b"[oled]\n" + canonical)

        self.send("cpu=1|replyoled")
        data, _ = self.reply()
        self.assertEqual(data, b"[oled]\n" + canonical)
        self.assertEqual(self.settle(), b"[oled]\n" + canonical.replace(b"OLed_a_cpu=0", b"OLed_a_cpu=1"))

    def test_oversized_datagram_and_long_destination_do_no_harm(self):
        self.start_box()
        start = self.mark()
        big = ("cpu=0|" + "x" * 1009 + "|sleep=12345|vi=0|" + "y" * 2000)[:2000]
        self.send(big)
        self.send("replyoled=1234567890.12345:9000")  # 16 characters
        self.tool.settimeout(0.5)
        with self.assertRaises(socket.timeout):
            self.tool.recvfrom(65536)
        self.settle()
        end = self.settled_at
        saved = self.settings()
        self.assertIn(b"\nOLed_a_cpu=0\n", saved)
        self.assertIn(b"\nOLed_a_sleep_tim=12\n", saved)
        self.assertIn(b"\nOLed_a_vi=1\n", saved)
        self.assertEqual(sum("longer than 15 characters" in line for line in self.lines(start, end)), 1)
        self.assertIsNone(self.sim.proc.poll())


if __name__ == "__main__":
    main()
