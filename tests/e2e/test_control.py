"""The control protocol end to end: a box (eth0 at 192.168.1.20) and a peer
(192.168.1.1) joined by a veth pair in namespaces of their own, and for
reply destinations a third host (10.0.0.5) behind the peer; the peer sends
datagrams by unicast and to the group, and reads the replies.

OLEDD_REFLECT_RATE sets the datagrams a second of the reflection flood
(default 1000)."""

import os
import socket
import time

from fault_box import Process, QuietSimBox
from harness import BOX, GROUP, PORT, SAVED, PeerTest, main
from reflection_flood import THIRD, ThirdHost, describe, flood

REFLECT_RATE = int(os.environ.get("OLEDD_REFLECT_RATE", "1000"))


class Control(PeerTest):
    def start_box(self, files=None, kind=None):
        self.sim = self.box(files=files, kind=kind)
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

    def test_a_flood_naming_a_third_host_is_not_amplified(self):
        sim = self.start_box(kind=QuietSimBox)
        third = ThirdHost(self.netns, self.peer)
        self.addCleanup(third.close)
        attacker = self.peer.udp_socket()
        self.addCleanup(attacker.close)
        box = Process(sim.proc.pid)
        saves, socket_drops, start = sim.saves, box.socket_queue()[1], self.mark()

        figures = flood(attacker, self.tool, third, seconds=5.0, rate=REFLECT_RATE)
        print(describe(figures), "; the box's socket dropped", box.socket_queue()[1] - socket_drops)
        self.assertEqual(figures["third_drops"], 0, "the count at the third host is not whole")
        self.assertLessEqual(figures["third_bytes"], figures["sent_bytes"])
        self.assertEqual(figures["first_at_third"], b"[oled]\n" + self.settings())
        self.assertEqual(figures["answered"], figures["polls"])
        # A dropped reply changes nothing else: every datagram the socket
        # took in was carried out and saved.
        def accounted():
            return sim.saves - saves + box.socket_queue()[1] - socket_drops

        deadline = time.time() + 10
        while accounted() < figures["sent_datagrams"] + figures["polls"] and time.time() < deadline:
            time.sleep(0.05)
        self.assertEqual(accounted(), figures["sent_datagrams"] + figures["polls"])
        told = [line for line in self.lines(start, None) if "replies are being limited" in line]
        self.assertEqual(len(told), 1, told)
        self.assertIn(THIRD, told[0])


if __name__ == "__main__":
    main()
