"""A flood of control datagrams (valid, malformed, oversized, aimed at
other boxes) against a box whose screen and LED loops run: afterwards it
answers, its memory has not grown, and its descriptors, children, threads
and settings file are as they were.

OLEDD_FLOOD=N sets the number of datagrams (default 100000)."""

import os
import random
import socket
import time

from fault_box import FaultTest
from harness import BOX, GROUP, main

FLOOD = int(os.environ.get("OLEDD_FLOOD", "100000"))
WARM_UP = min(10000, FLOOD // 10)
LOOPS_WARM_UP_S = 5
# Resident memory may move by allocator noise; a leak of a few bytes per
# datagram over the flood shows well above this.
RSS_NOISE_KB = int(os.environ.get("OLEDD_RSS_NOISE_KB", "1024"))
SETTINGS = {"OLed_a_kind_start": "4", "OLed_a_sleep_tim": "1", "OLed_a_led_start": "1", "OLed_a_io": "1",
            "OLed_a_small_n_start": "1", "kLed_outside_value": "1", "kLed_eth_gpio": "5_0",
            "kLed_cpu_gpio": "5_1", "kLed_hdmi_gpio": "5_2", "kLed_pwr_gpio": "5_3"}
# The flood comes from an address of its own: replies to it are limited,
# while the checks between its parts are answered at the peer's.
FLOODER = "192.168.1.30"

# Items that leave the settings as they are: the file is not rewritten.
STEADY = ["cpu=1", "vi=1", "sleep=1", "oled_string=WELCOME", "oled_str_en=1", "test=0", "led_on=1",
          "replyoled=%s:9999" % FLOODER, "replyoled", "io=1", "sda=4_2"]
# Items that change a setting; rare, each costs a durable save.
CHANGING = ["cpu=0", "cpu=1", "sleep=2", "sleep=1", "oled_string=FLOOD", "oled_string=WELCOME"]
KEYS = ["controlled", "oled_type", "led_on", "oled_str_en", "oled_string", "cpu", "vi", "ai", "net", "time",
        "venc", "temp", "io", "sleep", "logo", "port", "sda", "scl", "cs", "dc", "res", "sml_sda", "sml_scl",
        "vcc", "gnd", "pwr_led", "cpu_led", "eth_led", "hdmi_led", "test", "replyoled", "bogus", ""]


def datagram(rng, i):
    """The i-th datagram of the flood and where it goes."""
    kind = i % 10
    if kind == 0:
        return bytes(rng.randrange(256) for _ in range(rng.randrange(0, 64))), BOX
    if kind == 1:  # items without values, stray separators, NUL and line breaks
        parts = [rng.choice(KEYS) + rng.choice(["", "=", "==", "=\n", "=\r", "=\x00x", "|", "=a|b"])
                 for _ in range(rng.randrange(1, 12))]
        return "|".join(parts).encode("latin-1"), BOX
    if kind == 2:  # oversized: beyond the 1024-byte cut, up to a jumbo UDP payload
        size = rng.choice([1023, 1024, 1025, 1500, 4096, 65000])
        return ("cpu=1|" + "x" * size)[:size].encode(), BOX
    if kind == 3:  # aimed at other boxes, by unicast and through the group
        return ("controlled=192.168.1.%d|cpu=0|sleep=9" % rng.choice([21, 3, 200])).encode(), rng.choice([BOX, GROUP])
    if kind == 4:  # one byte
        return bytes([rng.randrange(256)]), BOX
    if i % 1000 == 5:
        return rng.choice(CHANGING).encode(), rng.choice([BOX, GROUP])
    items = [rng.choice(STEADY) for _ in range(rng.randrange(1, 6))]
    if kind == 6:
        items.insert(0, "controlled=" + BOX)
    return "|".join(items).encode(), rng.choice([BOX, GROUP])


class Flood(FaultTest):
    EXTRA_PEER_ADDRESSES = (FLOODER + "/24",)

    def send_flood(self, rng, first, count, sock):
        """Sends datagrams first .. first+count-1, pacing on the daemon's
        receive queue so that most are read rather than dropped."""
        for i in range(first, first + count):
            payload, to = datagram(rng, i)
            try:
                self.send(payload, to=to, sock=sock)
            except OSError:  # 65000 bytes through a small send buffer
                pass
            if i % 64 == 63:
                deadline = time.time() + 2.0
                while self.process.socket_queue()[0] > 32768 and time.time() < deadline:
                    time.sleep(0.0005)

    def test_flood_leaves_no_trace(self):
        box = self.start_box(SETTINGS)
        # Replies of the flood's queries go to a socket nobody reads.
        sink = self.peer.udp_socket(FLOODER, 9999)
        self.addCleanup(sink.close)
        sock = self.peer.udp_socket(FLOODER)
        self.addCleanup(sock.close)
        sock.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF, socket.inet_aton(FLOODER))
        sock.setsockopt(socket.SOL_SOCKET, socket.SO_SNDBUF, 1 << 20)
        rng = random.Random(16124)

        # The first part brings allocator pools and buffers to their size.
        self.send_flood(rng, 0, WARM_UP, sock)
        # ... and the loops theirs: a few pages of each.
        time.sleep(LOOPS_WARM_UP_S)
        self.settle()
        descriptors = self.process.lasting_descriptors()
        self.process.quiet(descriptors)
        rss, threads = self.process.rss_kb(), self.process.num_threads()
        dropped = self.process.socket_queue()[1]
        started = time.time()

        self.send_flood(rng, WARM_UP, FLOOD - WARM_UP, sock)
        self.assert_answers()
        # Changes within a second of a write are saved together, so saves
        # do not count what was read: the socket's drops do.
        dropped = self.process.socket_queue()[1] - dropped
        handled = FLOOD - WARM_UP - dropped
        print("%d datagrams in %.1f s, %d read, %d dropped by the socket, %d saves, rss %d -> %d kB" % (
            FLOOD - WARM_UP, time.time() - started, handled, dropped, box.saves, rss, self.process.rss_kb()))

        self.process.quiet(descriptors)
        if not self.process.sanitized():
            self.assertLess(self.process.rss_kb() - rss, RSS_NOISE_KB)
        self.assertEqual(self.process.num_threads(), threads)
        # Most datagrams the daemon should handle were read, not lost.
        self.assertGreater(handled, (FLOOD - WARM_UP) // 3)
        # Changes are still obeyed and saved after the flood.
        self.send("sleep=7|oled_string=AFTER")
        self.settle()
        after = self.assert_whole_file()
        self.assertIn(b"\nOLed_a_sleep_tim=7\n", after)
        self.assertIn(b"\nOLed_a_small_n_buf=AFTER\n", after)


if __name__ == "__main__":
    main()
