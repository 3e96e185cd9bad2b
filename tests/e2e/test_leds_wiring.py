"""oledd-sim's devices follow the settings the daemon reads: the small
panel's pins are routed at start, leds.json shows the LED settings' pins."""

import json
import os
import signal

import register_map
from harness import E2ETest, eventually, main

# BRD25's small panel: 4_0 data, 4_1 clock, 4_2 supply, 4_3 ground; its
# switch is 7_6. Two LEDs share the supply and ground pins, so their
# levels show the set-up's writes. A pin text that is no pin comes out
# escaped as JSON.
LEDS = {"kLed_eth_gpio": ["5_3", None], "kLed_cpu_gpio": ["0", None], "kLed_hdmi_gpio": ["57", None],
        "kLed_pwr_gpio": ["4_2", 1], "kLed_eth_onboard": ["0", None], "kLed_cpu_onboard": ["4_3", 0],
        "kLed_hdmi_onboard": ['a"\\\tb', None]}


class LedsWiring(E2ETest):
    def test_small_panel_pins_are_routed_and_leds_show_their_pins(self):
        box = self.box(board="BRD25", files={"/data/oled.ini": "".join("%s=%s\n" % (k, v[0]) for k, v in LEDS.items())})
        box.start("--trace", box.out + "/trace.txt", "--switch", "0")
        # Both sets are lit by a low level (the default on-levels are 0).
        expected = {key: {"pin": pin, "level": level, "on": None if level is None else level == 0}
                    for key, (pin, level) in LEDS.items()}
        leds = lambda: json.load(open(box.out + "/leds.json")) if os.path.exists(box.out + "/leds.json") else None
        eventually(lambda: leds() == expected, 10, lambda: "LEDs %r" % leds())
        box.signal(signal.SIGTERM)
        self.assertEqual(box.wait(), 255)
        self.assertEqual(leds(), expected)

        writes = {}
        for line in open(box.out + "/trace.txt"):
            address, value = line.split()
            writes.setdefault(int(address, 16), []).append(int(value, 16))
        # The set-up's register writes in order are the pin set-up's unit
        # test; here the trace shows the pads routed once, the levels driven.
        for pin in ("4_0", "4_1", "4_2", "4_3", "7_6"):  # the panel's four pins, the switch
            address, value = register_map.mux(*register_map.pin(pin))
            self.assertEqual(writes.get(address), [value], pin)
        self.assertEqual((writes[register_map.data(4, 2)], writes[register_map.data(4, 3)]), ([0x4], [0x0]))


if __name__ == "__main__":
    main()
