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

SCRIPT = sys.argv[1]

# Behaves like oledd towards signals: on TERM it leaves after a moment.
FAKE_DAEMON = """#!/bin/sh
echo "start $$ $(pwd)" >> "$OLEDD_TEST_LOG"
trap 'echo "term $$" >> "$OLEDD_TEST_LOG"; exit 255' TERM
while :; do sleep 0.2 & wait $!; done
"""


def alive(pid):
    try:
        with open("/proc/%d/stat" % pid) as f:
            return f.read().split(") ")[1][0] != "Z"
    except (FileNotFoundError, ProcessLookupError):
        return False


class InitScript(unittest.TestCase):
    def setUp(self):
        self.tmp = tempfile.mkdtemp(prefix="oledd-init-")
        self.addCleanup(shutil.rmtree, self.tmp, True)
        self.folder = os.path.join(self.tmp, "home", "public")
        os.makedirs(self.folder)
        daemon = os.path.join(self.folder, "oledd")
        with open(daemon, "w") as f:
            f.write(FAKE_DAEMON)
        os.chmod(daemon, 0o755)
        self.log = os.path.join(self.tmp, "events")
        self.pidfile = os.path.join(self.tmp, "oledd.pid")
        self.env = dict(os.environ, OLEDD_DIR=self.folder, OLEDD_PIDFILE=self.pidfile, OLEDD_RESPAWN_PAUSE="0",
                        OLEDD_TEST_LOG=self.log)
        self.addCleanup(self.script, "stop")

    def script(self, verb):
        return subprocess.run(["sh", SCRIPT, verb], env=self.env, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              text=True, timeout=30)

    def events(self):
        try:
            with open(self.log) as f:
                return [line.split() for line in f]
        except FileNotFoundError:
            return []

    def starts(self):
        return [int(e[1]) for e in self.events() if e[0] == "start"]

    def wait_for_starts(self, count, timeout=10):
        deadline = time.time() + timeout
        while time.time() < deadline:
            if len(self.starts()) >= count:
                return self.starts()
            time.sleep(0.05)
        self.fail("daemon started %d times, expected %d" % (len(self.starts()), count))

    def test_start_runs_one_daemon_from_its_folder(self):
        self.assertEqual(self.script("start").stdout, "oledd: started\n")
        self.wait_for_starts(1)
        self.assertEqual(self.events()[0][2], self.folder)
        self.assertEqual(self.script("start").stdout, "oledd: already running\n")
        self.assertEqual(self.script("status").stdout, "oledd: running\n")
        time.sleep(0.5)
        self.assertEqual(len(self.starts()), 1)

    def test_daemon_that_dies_is_started_again(self):
        self.script("start")
        first = self.wait_for_starts(1)[0]
        os.kill(first, 9)
        second = self.wait_for_starts(2)[1]
        self.assertNotEqual(first, second)
        self.assertTrue(alive(second))

    def test_stop_ends_daemon_and_loop_and_leaves_nothing(self):
        self.script("start")
        daemon = self.wait_for_starts(1)[0]
        with open(self.pidfile) as f:
            loop = int(f.read())
        self.assertEqual(self.script("stop").stdout, "oledd: stopped\n")
        self.assertIn(["term", str(daemon)], self.events())
        self.assertFalse(alive(daemon))
        self.assertFalse(alive(loop))
        self.assertFalse(os.path.exists(self.pidfile))
        self.assertFalse(os.path.exists(self.pidfile + ".daemon"))
        time.sleep(0.5)
        self.assertEqual(len(self.starts()), 1, "no restart after stop")
        status = self.script("status")
        self.assertEqual((status.returncode, status.stdout), (3, "oledd: stopped\n"))
        self.assertEqual(self.script("stop").stdout, "oledd: not running\n")

    def test_restart_replaces_the_daemon(self):
        self.script("start")
        first = self.wait_for_starts(1)[0]
        self.assertEqual(self.script("restart").stdout, "oledd: stopped\noledd: started\n")
        second = self.wait_for_starts(2)[1]
        self.assertFalse(alive(first))
        self.assertTrue(alive(second))

    def test_missing_daemon_is_reported(self):
        os.remove(os.path.join(self.folder, "oledd"))
        result = self.script("start")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stdout, "oledd: %s/oledd missing or not executable\n" % self.folder)
        self.assertEqual(self.script("bogus").returncode, 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
