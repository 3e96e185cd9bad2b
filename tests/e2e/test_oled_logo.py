"""A logo made by oled-logo, copied to a simulated box with the big panel
and the logo page on, stands whole in the panel's RAM (panel.pgm)."""

import os

from harness import eventually, main, run_tool
from loop_box import LoopTest, read_pgm

ARTWORK = os.path.join(os.path.dirname(__file__), "..", "..", "sim", "artwork", "logo.png")


class LogoOnBox(LoopTest):
    def test_logo_from_a_png_plays_on_the_big_panel(self):
        logo = os.path.join(self.box().root, "logo.bin")  # a scratch folder, removed after the test
        made = run_tool(None, "oled-logo", "to-bin", ARTWORK, logo)
        self.assertEqual(made.returncode, 0, made.stderr)
        with open(logo, "rb") as f:
            data = f.read()
        levels = [n for byte in data for n in (byte >> 4, byte & 15)]
        expected = [levels[r * 256:(r + 1) * 256] for r in range(64)]

        self.start_box(extra_files={"/home/public/logo.bin": data}, OLed_a_kind_start=0, OLed_a_logo=1)
        # The whole logo stands only for a moment (the driver draws it row by
        # row, then blanks row by row), so collect the rows seen exactly as
        # made; the sweep before it never fills a whole row.
        seen = set()

        def whole():
            rows = read_pgm(self.sim.out + "/panel.pgm")[2]
            seen.update(r for r in range(64) if rows[r] == expected[r])
            return len(seen) == 64

        eventually(whole, 60, lambda: "rows %r shown as made" % sorted(set(range(64)) - seen), every=0.01)
        self.assertIn("open file  ok ===", "\n".join(self.sim.output()))


if __name__ == "__main__":
    main()
