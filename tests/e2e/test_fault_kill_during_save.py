"""kill -9 at a random moment while the daemon saves a changed setting:
the settings file is always a complete old or new version, never torn or
empty, and the daemon restarts on it.

OLEDD_KILL_TRIALS=N sets the number of trials (default 300); the loop also
stops after OLEDD_KILL_SECONDS (default 60)."""

import os
import random
import signal
import time

from fault_box import FaultTest, settings_text
from harness import main

TRIALS = int(os.environ.get("OLEDD_KILL_TRIALS", "300"))
SECONDS = float(os.environ.get("OLEDD_KILL_SECONDS", "60"))
# No screen: the box restarts at once. The LED loop runs.
SETTINGS = {"OLed_a_kind_start": "2", "OLed_a_led_start": "1", "kLed_cpu_gpio": "5_1"}


class KillDuringSave(FaultTest):
    def test_file_is_old_or_new_after_kill_during_save(self):
        box = self.start_box(SETTINGS)
        self.assertEqual(box.read("/data/oled.ini"), settings_text(SETTINGS))
        rng = random.Random(9)
        outcomes = {"old": 0, "new": 0}
        deadline = time.time() + SECONDS
        trials = 0
        while trials < TRIALS and time.time() < deadline:
            trials += 1
            old = box.read("/data/oled.ini", binary=True)
            # A value of a new length each time: a torn write shows as a
            # file of neither size.
            text = ("K%d" % trials) * rng.randrange(1, 6)
            new = settings_text(dict(SETTINGS, OLed_a_small_n_buf=text)).encode()
            self.send("oled_string=%s" % text)
            time.sleep(rng.uniform(0, 0.004))
            os.kill(box.proc.pid, signal.SIGKILL)
            box.wait()
            found = box.read("/data/oled.ini", binary=True)
            # Both are whole files: the first old one was checked above.
            self.assertIn(found, (old, new), "trial %d" % trials)
            outcomes["old" if found == old else "new"] += 1
            self.restart()
            self.assertEqual(box.read("/data/oled.ini", binary=True), found, "restart changed the file")
        print("%d trials: %d kept the old file, %d had the new one" % (trials, outcomes["old"], outcomes["new"]))
        self.assertGreater(trials, 20)
        self.assert_answers()


if __name__ == "__main__":
    main()
