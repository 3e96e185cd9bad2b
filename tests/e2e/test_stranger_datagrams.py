"""What a stranger on the box's network can do with one datagram at a
time, against a box with a small panel holding each page 3 s: nothing that
outlasts the datagram, loads the box, takes pins of other hardware, wears
its flash out or turns it into an amplifier."""

import os
import select
import signal
import time

from fault_box import FaultTest
from harness import BOX, eventually, main

SETTINGS = {"OLed_a_kind_start": "4", "OLed_a_sleep_tim": "3"}
THIRD = "192.168.1.40"
# Every key that takes text: the custom line and the pins.
TEXT_KEYS = "oled_string sda scl cs dc res sml_sda sml_scl vcc gnd pwr_led cpu_led eth_led hdmi_led".split()


def received_bytes(sock):
    total = 0
    while select.select([sock], [], [], 0.2)[0]:
        total += len(sock.recv(65536))
    return total


class StrangerDatagrams(FaultTest):
    EXTRA_PEER_ADDRESSES = (THIRD + "/24",)

    def setUp(self):
        super().setUp()
        self.box = self.start_box(SETTINGS)

    def file(self):
        return self.box.read("/data/oled.ini")

    def refused(self, after):
        return [line for line in self.box.output()[after:] if line.startswith("item refused, ")]

    def test_sleep_zero_keeps_the_pace(self):
        start = len(self.box.output())
        self.send("sleep=0")
        self.settle()
        self.assertEqual(len(self.refused(start)), 1)
        before = self.process.cpu_times()
        time.sleep(4)
        # The daemon's and that of the probes it waited for.
        self.assertLess(sum(self.process.cpu_times()[:4]) - sum(before[:4]), 0.8)
        self.assertIn("\nOLed_a_sleep_tim=3\n", self.file())

    def test_bad_items_are_refused_one_line_each_and_the_rest_apply(self):
        start = len(self.box.output())
        self.send("sleep=-5|cpu=0|oled_type=99|oled_string=%s|vi=0|oled_string=A\x1b[2J\x07B" % ("x" * 200))
        self.send("sml_sda=9_1|vcc=9_3|gnd=9_4|pwr_led=1_0")  # pins of other hardware
        self.send("sml_sda=0|vcc=0|pwr_led=4_3")  # a line off, or onto the panel's ground
        self.settle()
        self.assertEqual([line.split(":")[0][len("item refused, "):] for line in self.refused(start)],
                         ["sleep", "oled_type", "oled_string", "oled_string", "sml_sda", "vcc", "gnd", "pwr_led",
                          "pwr_led"])
        for kept in ("OLed_a_sleep_tim=3", "OLed_a_kind_start=4", "OLed_a_small_n_buf=WELCOME", "OLed_a_cpu=0",
                     "OLed_a_vi=0", "OLed_sml_SDINMUX=0", "OLed_sml_VCCMUX=0", "kLed_pwr_gpio=0"):
            self.assertIn("\n%s\n" % kept, self.file())
        self.assertNotIn("\x1b", "".join(self.box.output()))

    def test_replies_bring_no_more_bytes_than_they_cost_and_none_to_the_box_itself(self):
        listener = self.netns.udp_socket("127.0.0.1", 9000)
        own = self.netns.udp_socket(BOX, 9000)
        self.addCleanup(listener.close)
        self.addCleanup(own.close)
        self.send("replyoled=127.0.0.1:9000")
        self.send("replyoled=%s:9000" % BOX)
        for key in TEXT_KEYS:
            self.send("%s=%s" % (key, "4_2" * 333))
        self.settle()
        self.assertLess(len(self.file()), 1200)
        third = self.peer.udp_socket(THIRD, 9000)
        self.addCleanup(third.close)
        attack = ("replyoled=%s:9000" % THIRD).encode()
        for i in range(7500):  # about 3 s
            self.send(attack)
            time.sleep(0.004 if i % 10 == 9 else 0)
        self.settle()
        received = received_bytes(third)
        self.assertGreater(received, 0)
        self.assertLessEqual(received, 7500 * len(attack))
        self.assertEqual(received_bytes(listener) + received_bytes(own), 0)

    def test_a_flood_of_changes_writes_about_once_a_second(self):
        # Every save replaces the file: a new inode each time.
        inode, writes = os.stat(self.box.host("/data/oled.ini")).st_ino, 0
        started, value = time.monotonic(), 0
        while time.monotonic() - started < 6.5:  # 5 s of changes, then the last save
            if time.monotonic() - started < 5:
                value = 1 - value
                self.send("cpu=%d" % value)
            time.sleep(0.004)
            now = os.stat(self.box.host("/data/oled.ini")).st_ino
            writes, inode = writes + (now != inode), now
        self.assertIn("\nOLed_a_cpu=%d\n" % value, self.file())
        self.assertLessEqual(writes, 15)
        self.assertGreater(writes, 2)

    def test_term_right_after_a_change_keeps_it(self):
        self.send("cpu=0")
        eventually(lambda: "\nOLed_a_cpu=0\n" in self.file(), 2.0, "the first change saved at once")
        start = len(self.box.output())
        self.send("vi=0|controlled=%s:pending" % BOX)  # within the second: left pending
        self.box.wait_for("controlled ip %s:pending" % BOX, after=start)
        self.assertIn("\nOLed_a_vi=1\n", self.file())
        self.box.signal(signal.SIGTERM)
        self.assertEqual(self.box.wait(), 255)
        self.assertIn("\nOLed_a_vi=0\n", self.file())


if __name__ == "__main__":
    main()
