"""A logo made by oled-logo, copied to a simulated box with the big panel
and the logo page on, stands whole in the panel's RAM (panel.pgm)."""

import os
import struct
import time
import zlib

from harness import main, run_tool
from loop_box import LoopTest
from panel_view import read_pgm


def write_grey_png(path, width, height, pixels):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    rows = b"".join(b"\0" + pixels[y * width:(y + 1) * width] for y in range(height))
    with open(path, "wb") as f:
        f.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)) +
                chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


class LogoOnBox(LoopTest):
    def test_logo_from_a_png_plays_on_the_big_panel(self):
        work = self.box().root  # a scratch folder, removed after the test
        # A 2:1 picture: a bright diagonal band on a dim field.
        width, height = 64, 32
        write_grey_png(os.path.join(work, "art.png"), width, height,
                       bytes(250 if abs(x - 2 * y) < 6 else 60 for y in range(height) for x in range(width)))
        made = run_tool(None, "oled-logo", "to-bin", os.path.join(work, "art.png"), os.path.join(work, "logo.bin"))
        self.assertEqual(made.returncode, 0, made.stderr)
        with open(os.path.join(work, "logo.bin"), "rb") as f:
            data = f.read()
        levels = [n for byte in data for n in (byte >> 4, byte & 15)]
        expected = [levels[r * 256:(r + 1) * 256] for r in range(64)]
        self.assertEqual(expected[32][0], 0)     # black beside the picture
        self.assertEqual(expected[32][128], 15)  # the band through the centre

        self.start_box(extra_files={"/home/public/logo.bin": data}, OLed_a_kind_start=0, OLed_a_logo=1)
        # The whole logo stands only for a moment (the driver draws it row by
        # row, then blanks row by row), so collect the rows seen exactly as
        # made; the sweep before it never fills a whole row.
        seen = set()
        deadline = time.time() + 60
        while time.time() < deadline and len(seen) < 64:
            if os.path.exists(self.sim.out + "/panel.pgm"):
                rows = read_pgm(self.sim.out + "/panel.pgm")[2]
                seen |= {r for r in range(64) if rows[r] == expected[r]}
            time.sleep(0.01)
        self.assertEqual(sorted(set(range(64)) - seen), [], "rows never shown as made")
        self.assertIn("open file  ok ===", "\n".join(self.sim.output()))

if __name__ == "__main__":
    main()
