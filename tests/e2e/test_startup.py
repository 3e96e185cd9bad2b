"""The daemon's start-up on a fresh box: board file, settings file,
messages. (Signals: test_signal_path.py.)"""

import signal

from harness import E2ETest, main

CANONICAL_DEFAULTS = (
    "OLed_Port_udp=16124\nOLed_Port=16124\nOLed_a_kind_start=1\nOLed_a_small_n_start=0\n"
    "OLed_a_small_n_buf=WELCOME\nOLed_a_cpu=1\nOLed_a_vi=1\nOLed_a_ai=1\nOLed_a_net=1\n"
    "OLed_a_venc=1\nOLed_a_temp=1\nOLed_a_start=1\nOLed_a_sleep_tim=3\nOLed_a_logo=0\n"
    "OLed_a_gpio_j=0\nOLed_a_io=0\nOLed_ba_SDINMUX=4_2\nOLed_ba_SCLKMUX=4_3\nOLed_ba_CS_MUX=3_5\n"
    "OLed_ba_DC_MUX=4_0\nOLed_ba_RES_MUX=4_1\nOLed_sml_SDINMUX=4_2\nOLed_sml_SCLKMUX=4_3\n"
    "OLed_sml_VCCMUX=0\nOLed_sml_GNDMUX=0\nOLed_china_str=AA\nOLed_a_led_start=0\n"
    "kLed_outside_value=0\nkLed_eth_gpio=0\nkLed_cpu_gpio=0\nkLed_hdmi_gpio=0\nkLed_pwr_gpio=0\n"
    "kLed_onboard=0\nkLed_onboard_value=0\nkLed_eth_onboard=0\nkLed_cpu_onboard=0\n"
    "kLed_hdmi_onboard=0\nkSwitch_gpio=0\n")


def settings_text(values):
    """The canonical settings file with some values changed."""
    pairs = (line.split("=", 1) for line in CANONICAL_DEFAULTS.splitlines())
    return "".join("%s=%s\n" % (key, values.get(key, value)) for key, value in pairs)


FAILED = "[get_hw_version]-1209: GetJsonValue() from file-hardware_info failed!"


class StartUp(E2ETest):
    def start_and_stop(self, box):
        box.start()
        box.wait_for("save config succeed")
        box.signal(signal.SIGTERM)
        self.assertEqual(box.wait(), 255)
        return box.output()

    def test_fresh_root_gets_the_canonical_file_and_prints_the_sequence(self):
        box = self.box()
        out = self.start_and_stop(box)
        self.assertEqual(out[:4], [FAILED, "", 'make "/data" successfully',  # no board file
                                   "[ReadConfig]-221: read_config: /data/oled.ini"])
        self.assertEqual("\n".join(out[4:42]) + "\n", CANONICAL_DEFAULTS)
        self.assertEqual(out[42], "[SaveConfig]-246: save config succeed")
        self.assertEqual(box.read("/data/oled.ini"), CANONICAL_DEFAULTS)
        self.assertFalse(any(box.root in line for line in out), "host folder leaked into messages")

    def test_board_file_variants(self):
        cases = {
            '{"board":"BRD25"}': ["BRD25"],
            '{"Board":"BRD25"}': [FAILED, ""],
            '{"board":25}': [""],
            '{"board": BRD25}': ["[GetJsonValue]-83: Error before: BRD25}" + FAILED, ""],
        }
        for content, first_lines in cases.items():
            with self.subTest(board_file=content):
                box = self.box(files={"/version/hardware_info": content})
                self.assertEqual(self.start_and_stop(box)[:len(first_lines)], first_lines)
                # Only a board that was read gets its own pins.
                self.assertEqual("OLed_sml_SDINMUX=4_0\n" in box.read("/data/oled.ini"), first_lines == ["BRD25"])


if __name__ == "__main__":
    main()
