"""The screen loops as a person sees them: the simulated panel's RAM,
read back from panel.pgm, while control datagrams change what is shown."""

import signal

from harness import BOX, main
from loop_box import LoopTest
from panel_view import (big_digits_rows, grey_text_rows, page_is_blank, read_pgm, shows_address,
                        shows_pixels, shows_small_text)

CPU = "CPU:3.52%"
VI0 = "VI0:1920x1080@60\n"
OFF = dict(OLed_a_vi=0, OLed_a_ai=0, OLed_a_net=0, OLed_a_venc=0, OLed_a_temp=0, OLed_a_start=0)


class SmallPanel(LoopTest):
    def panel(self):
        return read_pgm(self.sim.out + "/panel.pgm")[2]

    def screen(self, first, second):
        """The address on top and two status slots, the second maybe blank."""
        rows = self.panel()
        return (shows_address(rows, BOX) and shows_small_text(rows, 4, 4, first) and
                (page_is_blank(rows, 6) if second is None else shows_small_text(rows, 6, 4, second)))

    def test_two_line_layout_follows_the_switches_and_puts_the_custom_text_last(self):
        changes = dict(OFF, OLed_a_kind_start=4, OLed_a_sleep_tim=1, OLed_a_vi=1, OLed_a_small_n_start=1,
                       OLed_a_small_n_buf="HELLO")
        self.start_box(**changes)
        self.wait_until(lambda: self.screen(CPU, VI0), 25, "CPU and video input on one screen")
        self.wait_until(lambda: self.screen("HELLO\n", None), 5, "the custom text alone in the first slot")

        self.send("vi=0")
        self.wait_until(lambda: self.screen(CPU, "HELLO\n"), 8, "custom text moves up beside the CPU")
        self.never_within(lambda: shows_small_text(self.panel(), 6, 4, VI0), 3, "video input after vi=0")
        self.sim.signal(signal.SIGTERM)
        self.assertEqual(self.sim.wait(), 255)

    def test_old_panel_shows_one_line_at_a_time_custom_text_first(self):
        self.start_box(**dict(OFF, OLed_a_kind_start=1, OLed_a_sleep_tim=1, OLed_a_small_n_start=1,
                              OLed_a_small_n_buf="OLD"))
        line = lambda text: shows_address(self.panel(), BOX) and shows_small_text(self.panel(), 3, 1, text)
        self.wait_until(lambda: line("OLD\n"), 30, "custom text on the old panel")
        self.wait_until(lambda: line(CPU), 5, "CPU after the custom text")
        self.wait_until(lambda: line("OLD\n"), 5, "custom text again on the next pass")

    def test_missing_status_pages_only_skip_their_lines(self):
        # No video input file and a CPU tool that prints garbage: those
        # lines are skipped, the rest goes on.
        self.start_box(extra_files={"/bin/iostat": "#!/bin/sh\necho garbage\n", "/tmp/vi0": ""},
                       **dict(OFF, OLed_a_kind_start=6, OLed_a_sleep_tim=1, OLed_a_vi=1, OLed_a_temp=1))
        self.wait_until(lambda: self.screen("TEMP:47 ", None), 25, "temperature alone, first slot")
        self.sim.write("/tmp/vi0", VI0)
        self.wait_until(lambda: self.screen(VI0, "TEMP:47 "), 8, "the video input once its file is back")


class BigPanel(LoopTest):
    def test_address_in_big_digits_and_the_status_band(self):
        self.start_box(**dict(OFF, OLed_a_kind_start=0, OLed_a_sleep_tim=1))
        pixels = lambda: read_pgm(self.sim.out + "/panel.pgm")[2]
        address = big_digits_rows(BOX + " " * (15 - len(BOX)))
        band = lambda text: shows_pixels(pixels(), 0, 0, address) and shows_pixels(pixels(), 45, 2, grey_text_rows(text))
        self.wait_until(lambda: band(CPU), 30, "address and CPU band")

        self.send("oled_string=BIG BOX|oled_str_en=1")
        self.wait_until(lambda: band("BIG BOX"), 8, "custom text in the band")
        self.wait_until(lambda: band(CPU), 5, "CPU after the custom text")


if __name__ == "__main__":
    main()
