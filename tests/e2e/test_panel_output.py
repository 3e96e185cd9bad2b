"""oledd-sim wires the panel that the box's settings name and writes it
to panel.pgm and panel.png (a build without libpng, OLEDD_SIM_PNG=0,
writes no panel.png); a box without a screen, or whose panel lacks a pin,
has neither."""

import os
import signal

from harness import E2ETest, main
from test_startup import CANONICAL_DEFAULTS

WRITES_PNG = os.environ.get("OLEDD_SIM_PNG", "1") == "1"


class PanelOutput(E2ETest):
    def files_of(self, settings, message=None):
        box = self.box(files={"/data/oled.ini": settings})
        box.start()
        if message:
            box.wait_for(message)
        # The daemon's own start-up, with its signal handler in place.
        box.wait_for("save config succeed")
        box.signal(signal.SIGTERM)
        self.assertEqual(box.wait(), 255)
        return {name: open(os.path.join(box.out, name), "rb").read()
                for name in ("panel.pgm", "panel.png") if os.path.exists(os.path.join(box.out, name))}

    def test_panel_kind_decides_the_image(self):
        for kind, header, size in (("0", b"P5\n256 64\n15\n", 256 * 64), ("4", b"P5\n128 64\n1\n", 128 * 64),
                                   ("2", None, 0)):
            with self.subTest(kind=kind):
                files = self.files_of(CANONICAL_DEFAULTS.replace("OLed_a_kind_start=1", "OLed_a_kind_start=" + kind))
                if header is None:
                    self.assertEqual(files, {})
                    continue
                self.assertEqual(files["panel.pgm"][:len(header)], header)
                self.assertEqual(len(files["panel.pgm"]), len(header) + size)
                if WRITES_PNG:
                    self.assertEqual(files["panel.png"][:8], b"\x89PNG\r\n\x1a\n")
                else:
                    self.assertNotIn("panel.png", files)

    def test_unnamed_pin_is_reported(self):
        settings = CANONICAL_DEFAULTS.replace("OLed_a_kind_start=1", "OLed_a_kind_start=3").replace(
            "OLed_ba_CS_MUX=3_5", "OLed_ba_CS_MUX=none")
        self.assertEqual(self.files_of(settings, "no 0.96 small oled wired: a pin of the panel is not set"), {})


if __name__ == "__main__":
    main()
