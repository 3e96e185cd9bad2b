"""Status pages that appear, vanish, turn to garbage and grow huge while
the screen and LED loops read them: the daemon stays up, answers every
query, keeps its threads, and leaves no shell or file open behind.

OLEDD_SOAK_SECONDS=N sets the length of the soak (default 40)."""

import os
import random
import shutil
import threading
import time

from fault_box import FIXTURE, FaultTest
from harness import main

SECONDS = float(os.environ.get("OLEDD_SOAK_SECONDS", "40"))
PAGES = ["/proc/umap/hdmi0", "/proc/umap/vdec", "/proc/umap/vo", "/proc/umap/ai", "/data/venc.ini",
         "/data/remserial.ini", "/tmp/vi0", "/tmp/vi1", "/sys/class/net/eth0/speed", "/sys/class/net/eth0/carrier"]
TOOLS = ["/bin/iostat", "/home/public/get_temperature"]
HUGE = 4 << 20


def good(path):
    with open(FIXTURE + path, "rb") as f:
        return f.read()


def page_variant(rng, path):
    """New content for a status page, or None to remove it."""
    data = good(path)
    return (lambda: None, lambda: b"",
            lambda: bytes(rng.randrange(256) for _ in range(rng.randrange(1, 3000))),
            lambda: data[:40] + b"9" * HUGE,  # one huge line without a break
            lambda: data * (HUGE // max(1, len(data))),  # huge page of repeated rows
            lambda: data[:rng.randrange(len(data) + 1)],  # cut in the middle of a row
            lambda: data, lambda: data)[rng.randrange(8)]()


def tool_variant(rng, path):
    """A stand-in tool that prints garbage, a lot, nothing, or the good
    text; or None to remove it; or a tool that cannot run."""
    return rng.choice([(None, 0o755), (b"#!/bin/sh\nhead -c 3000 /dev/urandom\n", 0o755),
                       (b"#!/bin/sh\nyes 'avg-cpu: 12345678901234567890 9' | head -c %d\n" % HUGE, 0o755),
                       (b"#!/bin/sh\nexit 3\n", 0o755), (good(path), 0o644), (good(path), 0o755)])


def write_in_place(host, content, mode):
    """As the media software rewrites its pages: truncate and write."""
    os.makedirs(os.path.dirname(host), exist_ok=True)
    try:
        with open(host, "wb") as f:
            f.write(content)
        os.chmod(host, mode)
    except OSError:  # a tool that a shell is just starting (text busy)
        pass


class StatusPages(FaultTest):
    def change_pages(self, stop, rng, done):
        try:
            while not stop.is_set():
                self.change_one_page(rng)
                done["changes"] += 1
                time.sleep(rng.uniform(0.005, 0.05))
        except Exception as e:  # the test fails on it after the soak
            done["error"] = e

    def change_one_page(self, rng):
        path = rng.choice(PAGES + TOOLS)
        host = self.sim.root + path
        content, mode = tool_variant(rng, path) if path in TOOLS else (page_variant(rng, path), 0o644)
        if os.path.isdir(host):
            shutil.rmtree(host, ignore_errors=True)
        if content is None or rng.randrange(20) == 0:
            try:
                os.unlink(host)
            except FileNotFoundError:
                pass
            if content is not None:
                os.makedirs(host)  # a folder where the page was
        else:
            write_in_place(host, content, mode)

    def test_daemon_survives_changing_status_pages(self):
        # The big panel's loop and the LED loop together call every probe.
        self.start_box({"OLed_a_kind_start": "0", "OLed_a_sleep_tim": "0", "OLed_a_led_start": "1",
                        "kLed_cpu_gpio": "5_1", "kLed_eth_gpio": "5_0", "kLed_hdmi_gpio": "5_2"})
        descriptors = self.process.lasting_descriptors()
        self.process.quiet(descriptors)
        threads = self.process.num_threads()

        stop = threading.Event()
        done = {"changes": 0}
        changer = threading.Thread(target=self.change_pages, args=(stop, random.Random(5), done))
        changer.start()
        self.addCleanup(changer.join)
        self.addCleanup(stop.set)
        answered = 0
        deadline = time.time() + SECONDS
        while time.time() < deadline:
            self.assertIsNone(self.sim.proc.poll(), "the daemon died")
            self.assertTrue(self.settle(timeout=5.0).startswith(b"[oled]\n"))
            self.assertEqual(self.process.num_threads(), threads, "a loop thread ended")
            answered += 1
            time.sleep(0.5)
        stop.set()
        changer.join()
        self.assertNotIn("error", done)
        print("%d pages changed, %d queries answered during %.0f s" % (done["changes"], answered, SECONDS))

        # Good pages again: nothing of the soak stays open or running.
        for path in PAGES + TOOLS:
            if os.path.isdir(self.sim.root + path):
                shutil.rmtree(self.sim.root + path)
            write_in_place(self.sim.root + path, good(path), 0o755 if path in TOOLS else 0o644)
        self.process.quiet(descriptors)
        self.assert_answers()


if __name__ == "__main__":
    main()
