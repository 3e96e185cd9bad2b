"""The screen loops in the running daemon (their pages and order are the
loop unit test's): a control datagram changes what the big panel shows at
its next pass, a small-screen loop with nothing to show rests, and a panel
whose memory was lost is whole again within a minute."""

import os
import signal
import time

import psutil
from harness import eventually, main
from loop_box import LoopTest, read_pgm

OFF = dict(OLed_a_cpu=0, OLed_a_vi=0, OLed_a_ai=0, OLed_a_net=0, OLed_a_venc=0, OLed_a_temp=0, OLed_a_start=0)
# The first screen the loop unit test took of the big panel: this box's
# address, and the custom text "CUSTOM" in the band.
PICTURE = os.path.join(os.path.dirname(__file__), "..", "oled", "pictures", "loop_big_panel.pgm")


class ScreenLoops(LoopTest):
    def test_datagram_puts_the_custom_text_on_the_big_panel(self):
        self.start_box(**dict(OFF, OLed_a_kind_start=0, OLed_a_sleep_tim=1))
        self.sim.wait_for("oled_big_loop")
        expected = read_pgm(PICTURE)[2][:64]
        self.send("oled_string=CUSTOM|oled_str_en=1")
        eventually(lambda: read_pgm(self.sim.out + "/panel.pgm")[2] == expected, 30, "custom text shown")

    def test_small_screen_loop_with_nothing_to_show_rests(self):
        # A panel kind without a layout and no pause of its own.
        self.start_box(**dict(OFF, OLed_a_kind_start=7, OLed_a_sleep_tim=0))
        self.sim.wait_for("192.168.1.20", 20)  # the first pass draws the address

        daemon = psutil.Process(self.sim.proc.pid)
        before = sum(daemon.cpu_times()[:2])
        time.sleep(2)
        # A spinning loop takes a whole core; resting, the daemon takes little.
        self.assertLess(sum(daemon.cpu_times()[:2]) - before, 0.5)

    def test_panel_that_lost_its_memory_is_repaired_within_a_minute(self):
        self.start_box(**dict(OFF, OLed_a_kind_start=4, OLed_a_sleep_tim=1, OLed_a_start=1))
        pgm = self.sim.out + "/panel.pgm"
        # The upper half: the address, and blank pages that the uptime's
        # line never reaches; it stays as it is.
        upper = lambda: read_pgm(pgm)[2][:32]  # noqa: E731
        eventually(lambda: any(any(row) for row in upper()), 30, "the address drawn")
        time.sleep(2)
        shown = upper()
        self.sim.signal(signal.SIGUSR1)
        self.sim.wait_for("oledd-sim: panel memory scrambled")
        eventually(lambda: upper() != shown, 10, "the scrambled panel written out")
        eventually(lambda: upper() == shown, 65, "the panel repaired", every=0.5)

if __name__ == "__main__":
    main()
