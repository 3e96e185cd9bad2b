"""oledd-sim --vcd read by sigrok's own decoders, as a logic analyser on
the box would read the bus: each small panel kind starts up with its
commands (one transaction each, one microsecond per register write) and
then its whole memory blank, each page one bulk transaction."""

import os
import signal
import statistics
import sys

from harness import E2ETest, Netns, eventually, main
from test_startup import settings_text

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "..", "scripts"))
from bus_decode import bus_bytes  # noqa: E402

INIT = {
    "old": "AE D5 80 A8 1F D3 00 A1 A6 40 B0 D5 F0 8D 14 20 02 C8 A1 DA 02 81 00 D9 F1 DB 49",
    "0.96": "AE 00 10 40 81 CF A1 C8 A6 A8 3F D3 00 D5 80 D9 F1 DA 12 DB 40 20 02 8D 14 A4 A6",
    "1.29": "AE 00 10 B0 40 81 88 82 00 A1 A2 A4 A6 A8 3F C8 D3 00 D5 A0 D9 22 DB 40 31 AD 8B",
}
SWITCHED_ON = {"old": "AF", "0.96": "AF A6 C8 A1", "1.29": "AF A6 C0 A0"}
# oled_type: panel, four-wire, register writes per byte on its bus.
KINDS = {1: ("old", False, 89), 3: ("0.96", True, 20), 4: ("0.96", False, 89), 5: ("1.29", False, 89),
         6: ("1.29", True, 20)}


def commands(text):
    return [(False, [int(b, 16)]) for b in text.split()]


def page_clears():
    return sum(([(False, [0xB0 + page, 0x10, 0x00]), (True, [0] * 128)] for page in range(8)), [])


def lit(path):
    return any(open(path, "rb").read()[len(b"P5\n128 64\n1\n"):])


class BusWaveform(E2ETest):
    def test_each_small_panel_starts_up_in_order_on_a_well_formed_bus(self):
        boxes = {}
        for kind in KINDS:
            netns = Netns("vcd")
            self.addCleanup(netns.close)
            box = boxes[kind] = self.box(netns=netns, files={
                "/data/oled.ini": settings_text({"OLed_a_kind_start": str(kind)})})
            box.start("--vcd", os.path.join(box.out, "bus.vcd"))
        drawing = dict(boxes)

        def stop_those_drawing():  # the loop draws once the panel is set up and blank
            for kind, box in list(drawing.items()):
                if lit(os.path.join(box.out, "panel.pgm")):
                    box.signal(signal.SIGTERM)
                    del drawing[kind]
            return not drawing

        eventually(stop_those_drawing, 30, lambda: "kinds %s never drew" % sorted(drawing))
        for kind, (panel, four_wire, writes_per_byte) in KINDS.items():
            with self.subTest(kind=kind):
                box = boxes[kind]
                box.wait()
                found = bus_bytes(os.path.join(box.out, "bus.vcd"), four_wire)
                expected = commands(INIT[panel]) + page_clears() + commands(SWITCHED_ON[panel])
                self.assertEqual([(data, run) for _, data, run in found[:len(expected)]], expected)
                starts = [at for at, _, _ in found[:len(INIT[panel].split())]]
                self.assertEqual(statistics.median(b - a for a, b in zip(starts, starts[1:])), writes_per_byte)
                if panel != "old":  # Delayms(10) after switching on
                    switched_on = [at for at, _, _ in found[len(expected) - 4:len(expected) - 2]]
                    self.assertGreaterEqual(switched_on[1] - switched_on[0], 10000)


if __name__ == "__main__":
    main()
