"""The init script keeps the daemon running from its folder: start, restart
after a crash, stop cleanly with nothing left behind. A stand-in daemon
records where and as which process it runs."""

import os
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

import psutil
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "e2e"))
from harness import eventually  # noqa: E402

SCRIPT = sys.argv[1]

# Behaves like oledd towards signals: on TERM it leaves after a moment.
FAKE_DAEMON = """#!/bin/sh
echo "start $$ $(pwd)" >> "$OLEDD_TEST_LOG"
trap 'echo "term $$" >> "$OLEDD_TEST_LOG"; exit 255' TERM
while :; do sleep 0.2 & wait $!; done
"""


def alive(pid):
    try:
        return psutil.Process(pid).status() != psutil.STATUS_ZOMBIE
    except psutil.NoSuchProcess:
        return False


class InitScript(unittest.TestCase):
    def setUp(self):
        self.tmp = tempfile.mkdtemp(prefix="oledd-init-")
        self.addCleanup(shutil.rmtree, self.tmp, True)
        self.folder = os.path.join(self.tmp, "home", "public")
        os.makedirs(self.folder)
        with open(os.path.join(self.folder, "oledd"), "w") as f:
            f.write(FAKE_DAEMON)
            os.fchmod(f.fileno(), 0o755)
        self.log, self.pidfile = os.path.join(self.tmp, "events"), os.path.join(self.tmp, "oledd.pid")
        self.env = dict(os.environ, OLEDD_DIR=self.folder, OLEDD_PIDFILE=self.pidfile, OLEDD_RESPAWN_PAUSE="0",
                        OLEDD_TEST_LOG=self.log)
        self.addCleanup(self.script, "stop")

    def script(self, verb):
        result = subprocess.run(["sh", SCRIPT, verb], env=self.env, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                text=True, timeout=30)
        return result.returncode, result.stdout

    def events(self):
        with open(self.log, "a+") as f:
            f.seek(0)
            return [line.split() for line in f]

    def starts(self, count):
        """Pids of the first `count` daemon starts, waiting for them."""
        pids = lambda: [int(e[1]) for e in self.events() if e[0] == "start"]  # noqa: E731
        return eventually(lambda: len(pids()) >= count and pids(), 10,
                          lambda: "daemon started fewer than %d times: %r" % (count, self.events()))

    def test_daemon_runs_once_comes_back_after_a_crash_and_stops_cleanly(self):
        self.assertEqual(self.script("start"), (0, "oledd: started\n"))
        first = self.starts(1)[0]
        self.assertEqual(self.events()[0][2], self.folder)
        self.assertEqual(self.script("start"), (0, "oledd: already running\n"))
        self.assertEqual(self.script("status"), (0, "oledd: running\n"))

        os.kill(first, 9)
        second = self.starts(2)[1]
        self.assertEqual(self.script("restart"), (0, "oledd: stopped\noledd: started\n"))
        third = self.starts(3)[2]
        self.assertIn(["term", str(second)], self.events())

        with open(self.pidfile) as f:
            loop = int(f.read())
        self.assertEqual(self.script("stop"), (0, "oledd: stopped\n"))
        self.assertIn(["term", str(third)], self.events())
        self.assertEqual([alive(pid) for pid in (first, second, third, loop)], [False] * 4)
        self.assertFalse(os.path.exists(self.pidfile) or os.path.exists(self.pidfile + ".daemon"))
        time.sleep(0.5)
        self.assertEqual(len(self.starts(3)), 3, "no start after stop")
        self.assertEqual(self.script("status"), (3, "oledd: stopped\n"))
        self.assertEqual(self.script("stop"), (0, "oledd: not running\n"))

    def test_missing_daemon_or_verb_is_reported(self):
        os.remove(os.path.join(self.folder, "oledd"))
        self.assertEqual(self.script("start"), (1, "oledd: %s/oledd missing or not executable\n" % self.folder))
        self.assertEqual(self.script("bogus")[0], 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
