"""oledctl against simulated boxes on one Ethernet segment: a bridge in a
namespace of its own, the operator's PC and each box in theirs."""

import json
import time

from harness import Netns, main
from segment import Listener, OperatorSegment, Segment

OPERATOR = OperatorSegment.OPERATOR


class OperatorTool(OperatorSegment):
    def test_set_reaches_one_box_the_marked_box_or_all(self):
        first = self.serving_box("10.0.0.5")
        second = self.serving_box("10.0.0.6")
        done = self.oledctl("set", "cpu=0", "sleep=5", "oled_string=HELLO BOX", "--box", "10.0.0.5")
        self.assertEqual((done.returncode, done.stdout),
                         (0, "sent to 10.0.0.5:16124: cpu=0|sleep=5|oled_string=HELLO BOX\n10.0.0.5: cpu=0 taken\n"
                             "10.0.0.5: sleep=5 taken\n10.0.0.5: oled_string=HELLO BOX taken\n"))
        for line in ("OLed_a_cpu=0", "OLed_a_sleep_tim=5", "OLed_a_small_n_buf=HELLO BOX"):
            self.wait_for_setting(first, line)

        done = self.oledctl("set", "vi=0", "--box", "10.0.0.6", "--via-group")
        self.assertEqual(done.stdout, "sent to 224.168.1.1:16124: controlled=10.0.0.6|vi=0\n10.0.0.6: vi=0 taken\n")
        self.wait_for_setting(second, "OLed_a_vi=0")

        self.assertEqual(self.oledctl("set", "ai=0", "--all").returncode, 0)
        self.wait_for_setting(first, "OLed_a_ai=0")
        self.wait_for_setting(second, "OLed_a_ai=0")
        # What each box was not sent stays as it was.
        self.assertIn("OLed_a_vi=1", first.read("/data/oled.ini").splitlines())
        self.assertIn("OLed_a_cpu=1", second.read("/data/oled.ini").splitlines())

    def test_get_prints_the_file_the_box_sends(self):
        box = self.serving_box("10.0.0.5", files={"/data/oled.ini": "OLed_a_sleep_tim=9\nOLed_a_small_n_buf=A B\n"})
        saved = box.read("/data/oled.ini")
        got = self.oledctl("get", "--box", "10.0.0.5")
        self.assertEqual((got.returncode, got.stdout), (0, saved))
        got = self.oledctl("get", "--box", "10.0.0.5", "--json")
        self.assertEqual(json.loads(got.stdout), dict(line.split("=", 1) for line in saved.splitlines()))

        silent = self.oledctl("get", "--box", "10.0.0.7", "--timeout", "0.5")
        self.assertEqual((silent.returncode, silent.stderr), (1, "oledctl: no answer from 10.0.0.7 within 0.5 s\n"))

    def test_bad_items_never_leave_the_pc_and_nothing_answers_a_listener(self):
        listener = Listener(self.station("10.0.0.5"), "10.0.0.5")
        self.addCleanup(listener.close)
        # Why each item is refused is the protocol unit test's.
        for argv in (("set", "cpu=2", "--box", "10.0.0.5", "--via-group"), ("set", "cpu=1", "--box", "10.0.0.256"),
                     ("set", "cpu=1"), ("led-test", "blink", "--box", "10.0.0.5")):
            result = self.oledctl(*argv)
            self.assertEqual(result.returncode, 2, argv)
            self.assertEqual(result.stdout, "")
            self.assertRegex(result.stderr, r"^oledctl: [^\n]+\n$")
        # Good commands arrive whole, each as one datagram, and the bad ones
        # before them never did.
        self.assertEqual(self.oledctl("led-test", "on", "--box", "10.0.0.5", "--via-group", "--no-check").returncode, 0)
        self.assertEqual(self.oledctl("set", "--raw", "cpu=1|nonsense", "--all").returncode, 0)
        listener.wait_for("cpu=1|nonsense")
        self.assertEqual(listener.received(), [(OPERATOR, "controlled=10.0.0.5|test=1"), (OPERATOR, "cpu=1|nonsense")])

        began = time.time()
        found = self.oledctl("discover", "--timeout", "1")
        self.assertEqual((found.returncode, found.stdout, found.stderr),
                         (1, "", "oledctl: no box answered within 1 s\n"))
        self.assertGreaterEqual(time.time() - began, 1.0)

    def test_group_sends_leave_through_the_chosen_interface(self):
        other = Segment()
        self.addCleanup(other.close)
        other.attach(self.netns, "eth1", "10.1.0.100/24", group_route=False)
        here = Listener(self.station("10.0.0.5"), "10.0.0.5")
        self.addCleanup(here.close)
        box_ns = Netns("box")
        self.addCleanup(box_ns.close)
        other.attach(box_ns, "eth0", "10.1.0.5/24")
        there = Listener(box_ns, "10.1.0.5")
        self.addCleanup(there.close)

        self.assertEqual(self.oledctl("led-test", "off", "--all", "--iface", "eth1", "--no-check").returncode, 0)
        self.assertEqual(self.oledctl("led-test", "on", "--all", "--iface", "eth0", "--no-check").returncode, 0)
        there.wait_for("test=0")
        here.wait_for("test=1")
        self.assertEqual(there.received(), [("10.1.0.100", "test=0")])
        self.assertEqual(here.received(), [(OPERATOR, "test=1")])
        missing = self.oledctl("discover", "--iface", "eth9")
        self.assertEqual(missing.returncode, 1)
        self.assertTrue(missing.stderr.startswith("oledctl: interface eth9: "), missing.stderr)


if __name__ == "__main__":
    main()
