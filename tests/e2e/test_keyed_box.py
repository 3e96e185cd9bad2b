"""A box holding a key in /data/oled.key, on a segment with the operator's
PC: only datagrams signed with that key change it, each at most once."""

import hashlib
import hmac
import os
import re
import time

from harness import main, run
from segment import Listener, OperatorSegment

KEY = b"the fleet's key\n, any bytes"
BOX = "10.0.0.5"
THIRD = "10.0.0.7"
README = os.path.join(os.path.dirname(__file__), "..", "..", "README.md")


def signed(datagram, counter, key=KEY):
    text = "%s|auth=%d" % (datagram, counter)
    return text + ":" + hmac.new(key, text.encode(), hashlib.sha256).hexdigest()


class KeyedBox(OperatorSegment):
    def setUp(self):
        super().setUp()
        # Answering oledctl get unsigned: a query to its sender needs no key.
        self.keyed = self.serving_box(BOX, files={"/data/oled.key": KEY})
        self.sock = self.netns.udp_socket()
        self.sock.settimeout(5)
        self.addCleanup(self.sock.close)

    def refused(self, datagram, reason):
        start = len(self.keyed.output())
        self.sock.sendto(datagram.encode(), (BOX, 16124))
        port = self.sock.getsockname()[1]
        self.keyed.wait_for("refused a datagram from %s:%d: %s" % (self.OPERATOR, port, reason), after=start)

    def test_only_new_datagrams_signed_with_the_key_change_the_box(self):
        third = Listener(self.station(THIRD), THIRD)
        self.addCleanup(third.close)
        before = self.keyed.read("/data/oled.ini")
        good = signed("cpu=0|sleep=7", 1000)
        self.refused("cpu=0|sleep=7", "not signed")
        self.refused("replyoled=%s:16124" % THIRD, "not signed")
        self.refused(good[:-1] + ("1" if good.endswith("0") else "0"), "wrong MAC")
        self.refused(signed("cpu=0|sleep=7", 1000, key=b"another key, also long"), "wrong MAC")
        self.assertEqual(self.keyed.read("/data/oled.ini"), before)

        self.sock.sendto(good.encode(), (BOX, 16124))
        self.wait_for_setting(self.keyed, "OLed_a_sleep_tim=7")
        self.refused(signed("vi=0", 999), "counter 999 not above the last accepted")
        # Within a second of the last save this change and its counter wait
        # for the next, which the stop signal makes.
        later = signed("ai=0", 1001)
        self.sock.sendto(later.encode(), (BOX, 16124))
        self.sock.sendto(b"replyoled", (BOX, 16124))
        self.sock.recv(65536)
        time.sleep(0.2)  # the reply leaves before the box is done with the query
        self.keyed.signal()
        self.keyed.wait()
        self.started(self.keyed, BOX)
        self.refused(good, "counter 1000 not above the last accepted")
        self.refused(later, "counter 1001 not above the last accepted")
        self.assertEqual(third.received(), [])
        self.assertLessEqual({"OLed_a_ai=0", "OLed_a_vi=1"}, set(self.keyed.read("/data/oled.ini").splitlines()))

    def test_oledctl_and_the_readme_script_sign_with_the_key(self):
        key_file = self.keyed.host("/data/oled.key")  # the operator's copy
        for verb in (("set", "sleep=9", "--box", BOX), ("led-test", "off", "--box", BOX), ("get", "--box", BOX),
                     ("discover",)):
            self.assertEqual(self.oledctl(*verb, "--key-file", key_file).returncode, 0, verb)
        self.wait_for_setting(self.keyed, "OLed_a_sleep_tim=9")

        with open(README) as f:
            script = re.search(r"```python\n(.*?)```", f.read(), re.S).group(1)
        run(*self.netns.exec_args(["python3", "-c", script]), cwd=os.path.dirname(key_file))
        self.wait_for_setting(self.keyed, "OLed_a_cpu=0")
        self.wait_for_setting(self.keyed, "OLed_a_sleep_tim=5")
        self.assertFalse([line for line in self.keyed.output() if "refused" in line])


if __name__ == "__main__":
    main()
