"""The simulated box's devices follow the settings the daemon reads: the
small panel's pins are routed at start, the LEDs sit on the pins that the
LED settings name, and leds.json shows what those pins do."""

import json
import os
import signal
import time

from harness import E2ETest, main

# BRD25: the small panel on 4_0 (data), 4_1 (clock), 4_2 (supply) and
# 4_3 (ground); the mode switch on 7_6. Two LEDs share the panel's supply
# and ground pins, so their levels show the set-up's writes.
SETTINGS = "kLed_eth_gpio=5_3\nkLed_pwr_gpio=4_2\nkLed_cpu_onboard=4_3\nkLed_hdmi_gpio=57\n"

EXPECTED_LEDS = {
    "kLed_eth_gpio": {"pin": "5_3", "level": None},
    "kLed_cpu_gpio": {"pin": "0", "level": None},
    "kLed_hdmi_gpio": {"pin": "57", "level": None},
    "kLed_pwr_gpio": {"pin": "4_2", "level": 1},
    "kLed_eth_onboard": {"pin": "0", "level": None},
    "kLed_cpu_onboard": {"pin": "4_3", "level": 0},
    "kLed_hdmi_onboard": {"pin": "0", "level": None},
}


class LedsWiring(E2ETest):
    def read_leds(self, box):
        try:
            with open(os.path.join(box.out, "leds.json")) as f:
                return json.load(f)
        except (OSError, ValueError):
            return None

    def wait_for_leds(self, box, expected, timeout=10.0):
        deadline = time.time() + timeout
        leds = None
        while time.time() < deadline:
            leds = self.read_leds(box)
            if leds == expected:
                return
            time.sleep(0.02)
        self.fail("leds.json never became %r; last %r" % (expected, leds))

    def test_small_panel_pins_are_routed_and_leds_show_their_pins(self):
        box = self.box(board="BRD25", files={"/data/oled.ini": SETTINGS})
        trace_path = os.path.join(box.out, "trace.txt")
        box.start("--trace", trace_path, "--switch", "0")
        self.wait_for_leds(box, EXPECTED_LEDS)
        box.signal(signal.SIGTERM)
        self.assertEqual(box.wait(), 255)
        self.assertEqual(self.read_leds(box), EXPECTED_LEDS)

        with open(trace_path) as f:
            writes = [line.split() for line in f.read().splitlines()]
        self.assertTrue(all(len(w) == 2 and len(w[0]) == 8 and len(w[1]) == 8 for w in writes), writes[:5])
        addresses = [int(a, 16) for a, _ in writes]
        values = dict()
        for address, value in writes:
            values.setdefault(int(address, 16), []).append(int(value, 16))

        # Each panel pad gets its GPIO function (value 1 in group 4's pads).
        for pad in (0x074, 0x078, 0x07C, 0x080):
            self.assertEqual(values.get(0x120F0000 + pad), [1], hex(pad))
        # Group 4's direction: the four pins become outputs, one by one.
        self.assertEqual(values[0x12190400][:4], [0x1, 0x3, 0x7, 0xF])
        # Supply high, ground low, each through its single-bit alias.
        self.assertEqual(values[0x12190010], [0x4])
        self.assertEqual(values[0x12190020], [0x0])
        # The mode switch pad is routed but never made an output.
        self.assertEqual(values.get(0x120F0100), [1])
        self.assertNotIn(0x121C0400, addresses)
        # Nothing of the big panel's chip select (3_5) or of an LED's group 5.
        self.assertFalse([a for a in addresses if 0x12180000 <= a < 0x121B0000 and a >> 16 != 0x1219])

    def test_fresh_box_has_every_led_unwired(self):
        box = self.box(board="BRD25")
        box.start()
        expected = {key: {"pin": "0", "level": None} for key in EXPECTED_LEDS}
        self.wait_for_leds(box, expected)
        box.signal(signal.SIGTERM)
        self.assertEqual(box.wait(), 255)
        with open(os.path.join(box.out, "leds.json")) as f:
            self.assertEqual(list(json.load(f).keys()), list(EXPECTED_LEDS.keys()))

    def test_bad_switch_or_trace_arguments_are_refused_with_one_line(self):
        box = self.box()
        for args, message in ((["--switch", "2"], "oledd-sim: --switch takes 0 or 1, not '2'"),
                              (["--trace", "/nonexistent/trace.txt"],
                               "oledd-sim: cannot write trace file /nonexistent/trace.txt: No such file or directory")):
            with self.subTest(args=args):
                box.start(*args)
                self.assertEqual(box.wait(), 2)
                self.assertEqual(box.output()[-1], message)
                box.lines = []


if __name__ == "__main__":
    main()
