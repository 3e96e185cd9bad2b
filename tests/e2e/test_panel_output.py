"""oledd-sim's output files follow the settings the daemon reads: panel.pgm
and panel.png for the panel kind named (a build without libpng,
OLEDD_SIM_PNG=0, writes no panel.png), neither for a box without a screen
or whose panel lacks a pin; leds.json shows each LED setting's pin and the
level the daemon left on it. Relative paths are the starting folder's, and
an output folder that cannot be written is refused."""

import json
import os
import signal
import tempfile

from harness import BIN_DIR, EMULATOR, E2ETest, main, run
from test_startup import settings_text

WRITES_PNG = os.environ.get("OLEDD_SIM_PNG", "1") == "1"
SMALL, BIG = b"P5\n128 64\n1\n", b"P5\n256 64\n15\n"
# Two LEDs share BRD25's panel supply (4_2) and ground (4_3) pins, so their
# levels are the pin set-up's; a pin text that is no pin comes out escaped.
LEDS = {"kLed_eth_gpio": ["5_3", None], "kLed_cpu_gpio": ["0", None], "kLed_hdmi_gpio": ["57", None],
        "kLed_pwr_gpio": ["4_2", 1], "kLed_eth_onboard": ["0", None], "kLed_cpu_onboard": ["4_3", 0],
        "kLed_hdmi_onboard": ['a"\\\tb', None]}


def kind(number, **changes):
    return {"/data/oled.ini": settings_text(dict(changes, OLed_a_kind_start=number))}


class PanelAndLedOutputs(E2ETest):
    def test_output_files_follow_the_settings(self):
        cases = (
            ("BRD25", {"/data/oled.ini": "".join("%s=%s\n" % (k, v[0]) for k, v in LEDS.items())}, SMALL, None),
            (None, kind("0"), BIG, None),
            (None, kind("2"), None, None),
            (None, kind("3", OLed_ba_CS_MUX="none"), None,
             "no 0.96 small oled wired: a pin of the panel is not set"),
        )
        for board, files, header, message in cases:
            with self.subTest(board=board, kind=files["/data/oled.ini"][:60]):
                box = self.box(board=board, files=files)
                box.start()
                box.wait_for(message or "save config succeed")
                box.wait_for("save config succeed")
                box.signal(signal.SIGTERM)
                self.assertEqual(box.wait(), 255)
                out = {name: open(os.path.join(box.out, name), "rb").read()
                       for name in ("panel.pgm", "panel.png", "leds.json") if os.path.exists(os.path.join(box.out, name))}
                if header is None:
                    self.assertNotIn("panel.pgm", out)
                    self.assertNotIn("panel.png", out)
                    continue
                self.assertEqual(out["panel.pgm"][:len(header)], header)
                self.assertEqual(len(out["panel.pgm"]), len(header) + (128 if header == SMALL else 256) * 64)
                self.assertEqual(out.get("panel.png", b"")[:8], b"\x89PNG\r\n\x1a\n" if WRITES_PNG else b"")
                if board:
                    # Both sets are lit by a low level (the default on-levels are 0).
                    self.assertEqual(json.loads(out["leds.json"]), {
                        key: {"pin": pin, "level": level, "on": None if level is None else level == 0}
                        for key, (pin, level) in LEDS.items()})

    def test_relative_paths_are_the_starting_folders_and_an_unwritable_out_is_refused(self):
        box = self.box(files=kind("4"))
        start = tempfile.mkdtemp(dir=box.out)  # not the folder that holds the root
        box.start("--root", os.path.relpath(box.root, start), "--out", "out", "--trace", "t", "--vcd", "v", cwd=start)
        box.wait_for("save config succeed")
        box.signal(signal.SIGTERM)
        box.wait()
        self.assertEqual(sorted(os.listdir(start)), ["out", "t", "v"])
        self.assertIn("panel.pgm", os.listdir(os.path.join(start, "out")))
        self.assertGreater(os.path.getsize(os.path.join(start, "t")), 0)
        sim = os.path.join(BIN_DIR, "oledd-sim")
        # Root writes anywhere but under a file or on a read-only mount.
        mounted = ["unshare", "-m", "sh", "-c", 'mount -t tmpfs -o ro none "$0" && exec "$@"', start]
        for out, prefix, reason in ((os.path.join(start, "t", "out"), [], "Not a directory"),
                                    (start, mounted, "Read-only file system")):
            with self.subTest(reason=reason):
                argv = prefix + EMULATOR + [sim, "--root", box.root, "--out", out]
                done = run(*self.netns.exec_args(argv), check=False, timeout=30)
                self.assertEqual((done.returncode, done.stderr.count("\n")), (2, 1))
                self.assertIn("output folder %s: %s" % (out, reason), done.stderr)


if __name__ == "__main__":
    main()
