"""Stop signals and faults aimed by thread id at every thread of a running
box, one at a time and two in a row: the process always ends within three
seconds, with status 255 and the handler's two lines exactly once.

OLEDD_SIGNAL_TRIALS (default 128) sets the number of runs, OLEDD_SIGNAL_BOXES
(default 4) how many boxes run at once."""

import concurrent.futures
import ctypes
import os
import random
import re
import signal
import time
import unittest

from harness import Netns, SimBox, eventually, main
from test_startup import settings_text

TRIALS = int(os.environ.get("OLEDD_SIGNAL_TRIALS", "128"))
BOXES = int(os.environ.get("OLEDD_SIGNAL_BOXES", "4"))
SIGNALS = (signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGSEGV)
# Main thread, the output files' writer, the thread that ends the daemon,
# small-screen loop and LED loop.
THREADS = 5
ENDS_WITHIN = float(os.environ.get("OLEDD_SIGNAL_ENDS_WITHIN", "3.0"))

# The small panel keeps the SoC busy (and locked) on its bus; the LEDs and
# the output folder add the other threads.
SETTINGS = settings_text(dict(OLed_a_kind_start=4, OLed_a_sleep_tim=1, OLed_a_led_start=1,
                              kLed_eth_gpio="5_0", kLed_cpu_gpio="5_1", kLed_pwr_gpio="5_3"))

_libc = ctypes.CDLL(None, use_errno=True)


def tgkill(pid, tid, sig):
    if _libc.tgkill(pid, tid, sig) != 0:
        raise OSError(ctypes.get_errno(), "tgkill %d %d" % (tid, sig))


def threads_of(pid, count):
    """The daemon's threads; a sanitizer's own blocks every signal."""
    def blocks_signals(tid):
        status = open("/proc/%d/task/%d/status" % (pid, tid)).read()
        return int(re.search(r"SigBlk:\s*(\w+)", status).group(1), 16) & (1 << (signal.SIGTERM - 1)) != 0

    def tids():
        found = [t for t in sorted(int(t) for t in os.listdir("/proc/%d/task" % pid)) if not blocks_signals(t)]
        return found if len(found) >= count else None
    return eventually(tids, 10, "box %d with %d threads" % (pid, count), every=0.01)


def plan(trials, seed=13):
    """For each run the (thread index, signal) pairs to send and the delay
    before them: every signal at every thread alone, and as often followed
    at once by a second one, the same or another, at any thread."""
    pick = random.Random(seed)
    runs = []
    for i in range(trials):
        sends = [(i % THREADS, SIGNALS[(i // THREADS) % len(SIGNALS)])]
        if (i // (THREADS * len(SIGNALS))) % 2 == 1:
            sends.append((pick.randrange(THREADS), pick.choice(SIGNALS)))
        runs.append((sends, pick.uniform(0.0, 0.3)))
    return runs


class SignalPath(unittest.TestCase):
    def run_once(self, sends, delay):
        """Why this run failed, or None; and how long the box took to end."""
        netns = Netns("sig")
        box = SimBox(netns=netns, files={"/data/oled.ini": SETTINGS})
        try:
            box.start()
            box.wait_for("save config succeed")
            tids = threads_of(box.proc.pid, THREADS)
            time.sleep(delay)  # somewhere in the loops' work
            sent_at = time.time()
            for index, sig in sends:
                tgkill(box.proc.pid, tids[index], sig)
            try:
                status = box.wait(timeout=ENDS_WITHIN)
            except Exception:
                return "still running %.1f s after the signal" % ENDS_WITHIN, None
            took = time.time() - sent_at
            out = box.output()
            lines = [line for line in out if line.startswith("handle signal -->") or line == "exit  HandleSig"]
            sent = ["handle signal -->0x%x" % sig for _, sig in sends]
            if status != 255 or len(lines) != 2 or lines[0] not in sent or lines[1] != "exit  HandleSig":
                return "status %d, handler lines %r" % (status, lines), took
            return None, took
        finally:
            box.close()
            netns.close()

    def test_every_signal_at_every_thread_ends_the_box_once_within_three_seconds(self):
        runs = plan(TRIALS)
        with concurrent.futures.ThreadPoolExecutor(BOXES) as pool:
            results = list(pool.map(lambda run: self.run_once(*run), runs))
        failures = ["%s: %s" % (", ".join("%s at thread %d" % (signal.Signals(s).name, t) for t, s in sends), problem)
                    for (sends, _), (problem, _) in zip(runs, results) if problem is not None]
        alone = sum(1 for sends, _ in runs if len(sends) == 1)
        print("%d runs (%d alone, %d two in a row), %d failed; slowest end %.2f s" % (
            len(runs), alone, len(runs) - alone, len(failures), max(took or 0 for _, took in results)))
        self.assertEqual(failures, [])


if __name__ == "__main__":
    main()
