"""oledd-sim wires the panel that the box's settings name and writes it
to panel.pgm and panel.png (a build without libpng, OLEDD_SIM_PNG=0,
writes no panel.png)."""

import os
import signal

from harness import E2ETest, main
from test_startup import CANONICAL_DEFAULTS

WRITES_PNG = os.environ.get("OLEDD_SIM_PNG", "1") == "1"


class PanelOutput(E2ETest):
    def run_box(self, kind):
        settings = CANONICAL_DEFAULTS.replace("OLed_a_kind_start=1", "OLed_a_kind_start=%s" % kind)
        box = self.box(files={"/data/oled.ini": settings})
        box.start()
        box.wait_for("save config succeed")
        box.signal(signal.SIGTERM)
        self.assertEqual(box.wait(), 255)
        return box

    def pgm(self, box):
        with open(os.path.join(box.out, "panel.pgm"), "rb") as f:
            return f.read()

    def test_panel_kind_decides_the_image(self):
        for kind, header, size in (("0", b"P5\n256 64\n15\n", 256 * 64), ("4", b"P5\n128 64\n1\n", 128 * 64),
                                   ("6", b"P5\n128 64\n1\n", 128 * 64)):
            with self.subTest(kind=kind):
                box = self.run_box(kind)
                data = self.pgm(box)
                self.assertTrue(data.startswith(header))
                self.assertEqual(len(data), len(header) + size)
                png = os.path.join(box.out, "panel.png")
                if WRITES_PNG:
                    with open(png, "rb") as f:
                        self.assertEqual(f.read(8), b"\x89PNG\r\n\x1a\n")
                else:
                    self.assertFalse(os.path.exists(png))

    def test_box_without_screen_has_no_panel_files(self):
        box = self.run_box("2")
        self.assertFalse(os.path.exists(os.path.join(box.out, "panel.pgm")))
        self.assertFalse(os.path.exists(os.path.join(box.out, "panel.png")))

    def test_unnamed_pin_is_reported(self):
        box = self.box(files={"/data/oled.ini": CANONICAL_DEFAULTS.replace("OLed_a_kind_start=1", "OLed_a_kind_start=3")
                              .replace("OLed_ba_CS_MUX=3_5", "OLed_ba_CS_MUX=none")})
        box.start()
        box.wait_for("no 0.96 small oled wired: a pin of the panel is not set")
        box.signal(signal.SIGTERM)
        box.wait()
        self.assertFalse(os.path.exists(os.path.join(box.out, "panel.pgm")))


if __name__ == "__main__":
    main()
