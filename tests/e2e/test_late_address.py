"""A box whose eth0 gets its address after the daemon started (a DHCP
lease that came late), and later another: the control plane follows, with
no restart, the group and aimed datagrams included."""

import time

from harness import Netns, eventually, main
from segment import OperatorSegment

FIRST, SECOND = "10.0.0.5", "10.0.0.9"


class LateAddress(OperatorSegment):
    def reachable_at(self, box, address, value):
        """Within 5 s, discover through the group lists the box at address,
        and a datagram aimed at address through the group changes it."""
        def reached():
            listed = address in self.oledctl("discover", "--timeout", "0.3").stdout
            self.oledctl("set", "sleep=%d" % value, "--box", address, "--via-group")
            time.sleep(0.2)
            return listed and "OLed_a_sleep_tim=%d" % value in box.read("/data/oled.ini").splitlines()

        eventually(reached, 5, "%s listed by discover and obeyed through the group" % address, every=0)

    def test_the_group_and_aimed_datagrams_follow_the_address(self):
        station = Netns("box")
        self.addCleanup(station.close)
        self.segment.attach(station, "eth0", None)
        box = self.box(netns=station)
        box.start()
        started = time.monotonic()
        box.wait_for("save config succeed")
        time.sleep(max(0.0, started + 8 - time.monotonic()))
        station.ip("addr", "add", FIRST + "/24", "dev", "eth0")
        self.reachable_at(box, FIRST, 11)

        station.ip("addr", "flush", "dev", "eth0")
        station.ip("addr", "add", SECOND + "/24", "dev", "eth0")
        self.reachable_at(box, SECOND, 12)
        start = len(box.output())
        self.oledctl("set", "sleep=13", "--box", FIRST, "--via-group")
        self.oledctl("set", "sleep=14", "--box", SECOND, "--via-group")
        self.wait_for_setting(box, "OLed_a_sleep_tim=14")
        self.assertNotIn("controlled ip %s" % FIRST, "\n".join(box.output()[start:]))


if __name__ == "__main__":
    main()
