"""The control protocol end to end: a box (eth0 at 192.168.1.20) and a peer
(192.168.1.1) joined by a veth pair in namespaces of their own, and for
reply destinations a third host (10.0.0.5) behind the peer. Which box obeys,
the datagram's size limit and the reply's text are the control datagram's
unit tests; here the reply leaves the box's own socket, and a flood aimed at
a third host is limited.

OLEDD_REFLECT_RATE sets the datagrams a second of the reflection flood
(default 1000)."""

import os

from fault_box import Process, QuietSimBox
from harness import BOX, PORT, SAVED, PeerTest, eventually, main
from reflection_flood import THIRD, ThirdHost, describe, flood

REFLECT_RATE = int(os.environ.get("OLEDD_REFLECT_RATE", "1000"))


class Control(PeerTest):
    def start_box(self, files=None, kind=None):
        self.sim = self.box(files=files, kind=kind)
        self.sim.start()
        self.sim.wait_for(SAVED)
        self.settle()
        return self.sim

    def settings(self):
        return self.sim.read("/data/oled.ini", binary=True)

    def test_reply_comes_from_the_control_port_with_the_file_before_the_change(self):
        self.start_box(files={"/data/oled.ini": "OLed_a_cpu=0\n"})
        canonical = self.settings()
        self.send("cpu=1|replyoled")
        self.tool.settimeout(3.0)
        self.assertEqual(self.tool.recvfrom(65536), (b"[oled]\n" + canonical, (BOX, PORT)))

    def test_a_flood_naming_a_third_host_is_not_amplified(self):
        sim = self.start_box(kind=QuietSimBox)
        third = ThirdHost(self.netns, self.peer)
        self.addCleanup(third.close)
        attacker = self.peer.udp_socket()
        self.addCleanup(attacker.close)
        box = Process(sim.proc.pid)
        saves, socket_drops, start = sim.saves, box.socket_queue()[1], len(sim.output())

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

        eventually(lambda: accounted() >= figures["sent_datagrams"] + figures["polls"], 10, "every datagram handled")
        self.assertEqual(accounted(), figures["sent_datagrams"] + figures["polls"])
        told = [line for line in sim.output()[start:] if "replies are being limited" in line]
        self.assertEqual(len(told), 1, told)
        self.assertIn(THIRD, told[0])


if __name__ == "__main__":
    main()
