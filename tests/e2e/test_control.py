"""The control protocol end to end: a box (eth0 at 192.168.1.20) and a peer
(192.168.1.1) joined by a veth pair in namespaces of their own, and for
reply destinations a third host (10.0.0.5) behind the peer: a flood aimed at
the third host is limited. Which box obeys, the datagram's size limit and
the reply's text are the control datagram's unit tests; the appliance test
sees a reply leave the control port.

OLEDD_REFLECT_RATE sets the datagrams a second of the reflection flood
(default 1000)."""

import os

from fault_box import FaultTest
from harness import eventually, main
from reflection_flood import THIRD, ThirdHost, describe, flood

REFLECT_RATE = int(os.environ.get("OLEDD_REFLECT_RATE", "1000"))


class Control(FaultTest):
    def test_a_flood_naming_a_third_host_is_not_amplified(self):
        sim, box = self.start_box({}), self.process
        third = ThirdHost(self.netns, self.peer)
        self.addCleanup(third.close)
        attacker = self.peer.udp_socket()
        self.addCleanup(attacker.close)
        saves, socket_drops, start = sim.saves, box.socket_queue()[1], len(sim.output())

        figures = flood(attacker, self.tool, third, seconds=5.0, rate=REFLECT_RATE)
        print(describe(figures), "; the box's socket dropped", box.socket_queue()[1] - socket_drops)
        self.assertEqual(figures["third_drops"], 0, "the count at the third host is not whole")
        self.assertLessEqual(figures["third_bytes"], figures["sent_bytes"])
        self.assertEqual(figures["first_at_third"], b"[oled]\n" + sim.read("/data/oled.ini", binary=True))
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
