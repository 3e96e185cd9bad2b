"""What a stranger on the box's network can do with one datagram at a
time, against a box with a small panel holding each page 3 s: nothing that
outlasts the datagram, loads the box or wears its flash out. (Items the
box refuses and the replies it sends are shown by the unit tests of the
control protocol, the reply budget under a flood by the keyed boxes' test.)"""

import os
import signal
import time

from fault_box import FaultTest
from harness import BOX, eventually, main

SETTINGS = {"OLed_a_kind_start": "4", "OLed_a_sleep_tim": "3"}


class StrangerDatagrams(FaultTest):

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
