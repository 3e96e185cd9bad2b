"""What a stranger on the box's network can do with one datagram at a
time, against a box with a small panel holding each page 3 s: nothing that
outlasts the datagram, loads the box, takes pins of other hardware, wears
its flash out or turns it into an amplifier."""

import signal
import time

from fault_box import FaultTest, FileWrites
from harness import BOX, GROUP, eventually, main

SETTINGS = {"OLed_a_kind_start": "4", "OLed_a_sleep_tim": "3"}
THIRD = "192.168.1.40"
# Every key that takes text: the custom line and the pins.
TEXT_KEYS = ["oled_string", "sda", "scl", "cs", "dc", "res", "sml_sda", "sml_scl", "vcc", "gnd", "pwr_led",
             "cpu_led", "eth_led", "hdmi_led"]


class StrangerDatagrams(FaultTest):
    EXTRA_PEER_ADDRESSES = (THIRD + "/24",)

    def setUp(self):
        super().setUp()
        self.box = self.start_box(SETTINGS)

    def file(self):
        return self.box.read("/data/oled.ini")

    def refused(self, after):
        return [line for line in self.box.output()[after:] if line.startswith("item refused, ")]

    def cpu_seconds(self, seconds):
        before = self.process.cpu_times()
        time.sleep(seconds)
        after = self.process.cpu_times()
        return sum(after[:4]) - sum(before[:4])  # the daemon's and the probes' it waited for

    def test_sleep_zero_keeps_the_pace(self):
        start = len(self.box.output())
        self.send("sleep=0")
        self.settle()
        self.assertEqual(len(self.refused(start)), 1)
        self.assertLess(self.cpu_seconds(4), 0.8)
        self.assertIn("\nOLed_a_sleep_tim=3\n", self.file())

    def test_bad_items_are_refused_one_line_each_and_the_rest_apply(self):
        start = len(self.box.output())
        self.send("sleep=-5|cpu=0|oled_type=99|oled_string=%s|vi=0|oled_string=A\x1b[2J\x07B" % ("x" * 200))
        self.settle()
        lines = self.refused(start)
        self.assertEqual([line.split(":")[0] for line in lines],
                         ["item refused, sleep", "item refused, oled_type", "item refused, oled_string",
                          "item refused, oled_string"], lines)
        text = self.file()
        for kept in ("OLed_a_sleep_tim=3", "OLed_a_kind_start=4", "OLed_a_small_n_buf=WELCOME", "OLed_a_cpu=0",
                     "OLed_a_vi=0"):
            self.assertIn("\n%s\n" % kept, text)
        self.assertNotIn("\x1b", "".join(self.box.output()))

    def test_only_the_panels_own_pins(self):
        start = len(self.box.output())
        self.send("sml_sda=9_1|vcc=9_3|gnd=9_4|pwr_led=1_0")
        self.send("sml_sda=4_1|sml_scl=4_0|vcc=0|pwr_led=4_3")  # BRD25's small panel pins
        self.settle()
        self.assertEqual(len(self.refused(start)), 4)
        text = self.file()
        for line in ("OLed_sml_SDINMUX=4_1", "OLed_sml_SCLKMUX=4_0", "OLed_sml_VCCMUX=0", "kLed_pwr_gpio=4_3"):
            self.assertIn("\n%s\n" % line, text)

    def test_replies_bring_no_more_bytes_than_they_cost(self):
        for key in TEXT_KEYS:
            self.send("%s=%s" % (key, "4_2" * 333))
        self.settle()
        self.assertLess(len(self.file()), 1200)
        third = self.peer.udp_socket(THIRD, 9000)
        self.addCleanup(third.close)
        attack = ("replyoled=%s:9000" % THIRD).encode()
        sent = 0
        started = time.monotonic()
        while time.monotonic() - started < 3:
            for _ in range(10):
                self.send(attack)
                sent += len(attack)
            time.sleep(0.004)
        self.settle()
        third.setblocking(False)
        received = 0
        try:
            while True:
                received += len(third.recv(65536))
        except BlockingIOError:
            pass
        self.assertGreater(received, 0)
        self.assertLessEqual(received, sent)

    def test_no_reply_to_the_box_itself_or_to_everyone(self):
        listener = self.netns.udp_socket("127.0.0.1", 9000)
        self.addCleanup(listener.close)
        start = len(self.box.output())
        self.send("replyoled=127.0.0.1:9000|replyoled=127.1:9000|replyoled=%s:9000|replyoled=0.0.0.0:9000" % GROUP)
        self.settle()
        self.assertEqual(sum("replyoled: no reply to" in line for line in self.box.output()[start:]), 4)
        listener.setblocking(False)
        self.assertRaises(BlockingIOError, listener.recv, 65536)

    def test_a_flood_of_changes_writes_about_once_a_second(self):
        writes = FileWrites(self.box.host("/data/oled.ini"))
        self.addCleanup(writes.close)
        started = time.monotonic()
        value = 0
        while time.monotonic() - started < 5:
            value = 1 - value
            self.send("cpu=%d" % value)
            time.sleep(0.004)
            writes.count()
        last = "\nOLed_a_cpu=%d\n" % value
        eventually(lambda: last in self.file(), 2.0, "the last value in the file")
        time.sleep(1.2)  # and nothing after it
        self.assertLessEqual(writes.count(), 15)
        self.assertGreater(writes.count(), 2)

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


class BoxWithoutAddress(FaultTest):
    def test_obeys_no_aimed_datagram(self):
        self.netns.ip("addr", "del", BOX + "/24", "dev", "eth0")
        box = self.start_box(SETTINGS, settle=False)
        self.netns.ip("addr", "add", BOX + "/24", "dev", "eth0")
        start = len(box.output())
        self.send("controlled=%s|cpu=0" % BOX)
        self.send("replyoled")
        self.tool.settimeout(5)
        self.assertTrue(self.tool.recvfrom(65536)[0].startswith(b"[oled]\n"))
        self.assertNotIn("controlled ip %s" % BOX, box.output()[start:])
        self.assertIn("\nOLed_a_cpu=1\n", box.read("/data/oled.ini"))


if __name__ == "__main__":
    main()
