"""The program that goes into the firmware image, oledd with its /dev/mem
register access, run whole in a private root folder (appliance_root.py):
it starts, drives the pins its settings name, serves the control protocol
and ends on SIGTERM. The build is the one of OLEDD_BIN_DIR; with
OLEDD_EMULATOR (the ARM build) it runs under that emulator, once for each
core of OLEDD_CPUS ("cortex-a7 cortex-a9"). Its userland is BusyBox's."""

import os
import signal

import register_map
from appliance_root import ApplianceBox
from harness import BIN_DIR, BOX, EMULATOR, PORT, SAVED, PeerTest, eventually, main

# Marks written before the start: a register the daemon leaves alone keeps
# UNTOUCHED; a direction register keeps FOREIGN_OUTPUT (bit 7, no pin of
# ours) when the daemon changes only its own bits.
UNTOUCHED = 0xA5A5A5A5
FOREIGN_OUTPUT = 0x80
LED_KEYS = ("kLed_eth_gpio", "kLed_cpu_gpio", "kLed_hdmi_gpio", "kLed_pwr_gpio", "kLed_eth_onboard",
            "kLed_cpu_onboard", "kLed_hdmi_onboard")
CPUS = os.environ.get("OLEDD_CPUS", "").split() if EMULATOR else []


class Appliance(PeerTest):
    def test_starts_drives_its_pins_serves_control_and_ends_on_sigterm(self):
        for cpu in CPUS or [None]:
            with self.subTest(cpu=cpu):
                box = self.sim = ApplianceBox(self.netns, os.path.join(BIN_DIR, "oledd"),
                                              EMULATOR + (["-cpu", cpu] if cpu else []))
                try:
                    self.check(box)
                finally:
                    box.close()

    def check(self, box):
        settings = box.read("/data/oled.ini")  # the sample box: a small two-wire panel, both LED sets
        config = dict(line.split("=", 1) for line in settings.splitlines())
        self.assertEqual(config["OLed_a_kind_start"], "4")
        bus = [register_map.pin(config[key]) for key in ("OLed_sml_SDINMUX", "OLed_sml_SCLKMUX")]
        supply, ground = (register_map.pin(config[key]) for key in ("OLed_sml_VCCMUX", "OLed_sml_GNDMUX"))
        power = register_map.pin(config["kLed_pwr_gpio"])
        leds = [register_map.pin(config[key]) for key in LED_KEYS if register_map.pin(config[key])]
        switch = register_map.pin(config["kSwitch_gpio"])
        chip_select = register_map.pin(config["OLed_ba_CS_MUX"])  # a line of the four-wire bus only
        outputs = bus + [supply, ground] + leds
        groups = {group for group, _ in outputs + [switch, chip_select]}
        for group in groups:
            box.poke(register_map.direction(group), FOREIGN_OUTPUT)
        for pin in outputs + [switch, chip_select]:
            box.poke(register_map.mux(*pin)[0], UNTOUCHED)
            box.poke(register_map.data(*pin), UNTOUCHED)
        box.write("/tmp/cpu_load", "97\n")  # what the iostat stand-in reports

        box.start()
        box.wait_for(SAVED, timeout=30)
        box.wait_for("oled loop", timeout=30)
        # The board file and settings at the box's own paths; what was read
        # is the reply below, the listing's form the start-up test's.
        self.assertEqual(box.output()[:2], ["BRD25", "[ReadConfig]-221: read_config: /data/oled.ini"])

        lit = 1 << power[1] if config["kLed_outside_value"] == "1" else 0
        # The LED loop's first pass lights the power LED; the panel's first
        # bytes move the bus lines.
        eventually(lambda: box.register(register_map.data(*power)) == lit and all(
            box.register(register_map.data(*pin)) != UNTOUCHED for pin in bus), 30, "power LED lit, bus lines moved")
        # The iostat stand-in, run by BusyBox's shell, gives the load: above
        # 80 lights the CPU LED; low, with the temperature tool's reading
        # (no overheat), it goes out.
        cpu = register_map.pin(config["kLed_cpu_gpio"])
        cpu_lit, cpu_out = (1 << cpu[1], 0) if lit else (0, 1 << cpu[1])
        eventually(lambda: box.register(register_map.data(*cpu)) == cpu_lit, 30, "CPU LED lit at a load of 97")
        box.write("/tmp/cpu_load", "3\n")
        eventually(lambda: box.register(register_map.data(*cpu)) == cpu_out, 30, "CPU LED out at a load of 3")
        self.assertRegex(box.read("/tmp/temperature"), r"^\d+\n$")
        for pin in outputs + [switch]:
            address, value = register_map.mux(*pin)
            self.assertEqual(box.register(address), value, "pad of pin %d_%d" % pin)
        for group in groups:
            expected = FOREIGN_OUTPUT | sum(1 << bit for g, bit in outputs if g == group)
            self.assertEqual(box.register(register_map.direction(group)), expected, "direction of group %d" % group)
        for pin in bus:
            self.assertIn(box.register(register_map.data(*pin)), (0, 1 << pin[1]), "bus line %d_%d" % pin)
        levels = [box.register(register_map.data(*pin)) for pin in (supply, ground, power, switch, chip_select)]
        self.assertEqual(levels, [1 << supply[1], 0, lit, UNTOUCHED, UNTOUCHED])  # the switch is only read
        self.assertEqual(box.register(register_map.mux(*chip_select)[0]), UNTOUCHED)

        self.assertEqual(self.settle(), b"[oled]\n" + settings.encode())
        # The reply leaves the control port and shows the file before the change.
        self.send("cpu=0|oled_string=FROM PEER|replyoled")
        self.tool.settimeout(3.0)
        self.assertEqual(self.tool.recvfrom(65536), (b"[oled]\n" + settings.encode(), (BOX, PORT)))
        self.settle()
        self.assertEqual(box.read("/data/oled.ini"), settings.replace("OLed_a_cpu=1", "OLed_a_cpu=0")
                         .replace("OLed_a_small_n_buf=" + config["OLed_a_small_n_buf"], "OLed_a_small_n_buf=FROM PEER"))

        # One signal to the daemon's own pid (the emulator's, which hands it on).
        box.signal(signal.SIGTERM)
        self.assertEqual(box.wait(timeout=30), 255)
        out = box.output()
        self.assertEqual([line for line in out if "HandleSig" in line or "handle signal" in line],
                         ["handle signal -->0xf", "exit  HandleSig"])


if __name__ == "__main__":
    main()
