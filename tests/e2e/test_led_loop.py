"""The LED loop as the LEDs show it (leds.json): Ethernet blink, CPU and
video LEDs, the test mode, and the exit steps."""

import json
import signal

from harness import main
from loop_box import LoopTest

LED_PINS = dict(kLed_eth_gpio="5_0", kLed_cpu_gpio="5_1", kLed_hdmi_gpio="5_2", kLed_pwr_gpio="5_3",
                kLed_eth_onboard="6_0", kLed_cpu_onboard="6_1", kLed_hdmi_onboard="6_2")
HDMI_PAGE = "HdmiId               : 0\nHotPlug              : YES\nOutputEnable         : YES\n"


class LedLoop(LoopTest):
    def leds(self):
        return json.load(open(self.sim.out + "/leds.json"))

    def lit(self, key):
        return self.leds()[key]["on"] is True

    def start_leds(self, **changes):
        # No screen; the switch pin reads high, so the video LED follows HDMI.
        settings = dict(LED_PINS, OLed_a_kind_start=2, OLed_a_led_start=1, kLed_outside_value=1,
                        kLed_onboard=1, kLed_onboard_value=0, kSwitch_gpio="7_6")
        settings.update(changes)
        return self.start_box(extra_files={"/proc/umap/hdmi0": HDMI_PAGE}, args=("--switch", "1"), **settings)

    def test_ethernet_blinks_with_a_cable_and_goes_off_without(self):
        self.start_leds()
        for key in ("kLed_eth_gpio", "kLed_eth_onboard"):
            self.wait_until(lambda: self.leds()[key]["level"] == 1, 5, key + " high")
            self.wait_until(lambda: self.leds()[key]["level"] == 0, 5, key + " low")
            self.wait_until(lambda: self.leds()[key]["level"] == 1, 5, key + " high again")
        self.assertTrue(self.lit("kLed_pwr_gpio"))
        self.assertTrue(self.lit("kLed_hdmi_gpio") and self.lit("kLed_hdmi_onboard"))

        self.sim.write("/sys/class/net/eth0/carrier", "0\n")
        self.sim.wait_for("No network cable inserted", 5)
        self.wait_until(lambda: not self.lit("kLed_eth_gpio") and not self.lit("kLed_eth_onboard"), 2, "eth off")
        self.never_within(lambda: self.lit("kLed_eth_gpio") or self.lit("kLed_eth_onboard"), 1.5, "eth LED lit")

    def test_load_temperature_and_video_thresholds(self):
        self.start_leds()
        self.wait_until(lambda: not self.lit("kLed_cpu_gpio") and self.lit("kLed_hdmi_gpio"), 5, "idle box")
        self.sim.write("/tmp/load", "81.00")
        self.wait_until(lambda: self.lit("kLed_cpu_gpio") and self.lit("kLed_cpu_onboard"), 5, "load above 80")
        self.sim.write("/tmp/load", "80.00")
        self.sim.write("/home/public/get_temperature", "#!/bin/sh\necho 91\n", mode=0o755)
        self.wait_until(lambda: self.lit("kLed_cpu_gpio"), 5, "temperature above 90")
        self.sim.write("/home/public/get_temperature", "#!/bin/sh\necho 90\n", mode=0o755)
        self.wait_until(lambda: not self.lit("kLed_cpu_gpio"), 5, "load 80 and temperature 90")

        # A page that makes the HDMI probe fail costs the signal, not the loop.
        self.sim.write("/proc/umap/hdmi0", "")
        self.wait_until(lambda: not self.lit("kLed_hdmi_gpio") and not self.lit("kLed_hdmi_onboard"), 5, "no HDMI")
        self.sim.write("/proc/umap/hdmi0", HDMI_PAGE)
        self.wait_until(lambda: self.lit("kLed_hdmi_gpio"), 5, "HDMI back")

    def test_test_mode_lights_a_sets_three_leds_but_not_power_and_exit_turns_them_off(self):
        # Outside LEDs off at start: the test mode is then the only writer.
        self.start_leds(OLed_a_led_start=0)
        self.sim.write("/sys/class/net/eth0/carrier", "0\n")
        self.wait_until(lambda: self.leds()["kLed_eth_onboard"]["on"] is False, 5, "onboard eth off")
        self.send("test=1|led_on=1")
        self.wait_until(lambda: all(self.lit(k) for k in ("kLed_eth_gpio", "kLed_cpu_gpio", "kLed_hdmi_gpio",
                                                          "kLed_eth_onboard", "kLed_cpu_onboard",
                                                          "kLed_hdmi_onboard")), 5, "test mode")
        self.never_within(lambda: self.lit("kLed_pwr_gpio"), 1.0, "power LED lit by the test")
        self.send("test=0")
        self.wait_until(lambda: self.lit("kLed_pwr_gpio"), 5, "power LED after the test")

        # The exit steps run when the loop reaches its flag within the
        # second the signal handler waits; in test mode a pass runs no
        # probes, so that holds even on a loaded test machine.
        self.send("test=1")
        self.wait_until(lambda: self.lit("kLed_cpu_gpio"), 5, "test mode again")
        self.sim.signal(signal.SIGTERM)
        self.assertEqual(self.sim.wait(), 255)
        out = self.sim.output()
        self.assertLess(out.index("led_exit"), out.index("exit  HandleSig"))
        leds = self.leds()
        for key in ("kLed_eth_gpio", "kLed_cpu_gpio", "kLed_hdmi_gpio", "kLed_eth_onboard", "kLed_cpu_onboard",
                    "kLed_hdmi_onboard"):
            self.assertIs(leds[key]["on"], False, key)
        self.assertIs(leds["kLed_pwr_gpio"]["on"], True)


if __name__ == "__main__":
    main()
