#!/usr/bin/env python3
"""One minute (or --seconds) of oledd-sim with its screen and LED loops on
the good fixture box, in a network namespace of its own (eth0 one end of a
veth pair whose other end is in a second namespace) and a PID namespace of
its own: processes started, CPU time
(the daemon and the processes it waited for) and resident memory at the
end. Several builds (--sim PATH, repeated) run side by side.

Needs root (namespaces). Prints one line per build:
  PATH  processes/min  cpu-s/min  rss-kB"""

import os
import shutil
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "tests", "e2e"))
from bench_netns import BoxLink, argument_parser, cpu_seconds, kill, parse_as_root, rss_kb, side_by_side  # noqa: E402
from harness import run  # noqa: E402

FIXTURE = os.path.join(HERE, "..", "tests", "fixtures", "good")
# A small panel and the LED loop, with the shortest hold the screens take.
SETTINGS = ("OLed_a_kind_start=4\nOLed_a_sleep_tim=1\nOLed_a_led_start=1\nOLed_a_io=1\n"
            "kLed_outside_value=1\nkLed_eth_gpio=5_0\nkLed_cpu_gpio=5_1\nkLed_hdmi_gpio=5_2\nkLed_pwr_gpio=5_3\n")


def last_pid(pid):
    """The last process id handed out in pid's PID namespace (reading it
    takes one more)."""
    out = run("nsenter", "-t", str(pid), "-p", "cat", "/proc/sys/kernel/ns_last_pid").stdout
    return int(out.strip())


class Run:
    def __init__(self, sim):
        self.sim = sim
        self.link = BoxLink()
        self.proc = None
        self.root = tempfile.mkdtemp(prefix="oled-bench-root-")
        self.out = tempfile.mkdtemp(prefix="oled-bench-out-")
        shutil.copytree(FIXTURE, self.root, dirs_exist_ok=True)
        os.makedirs(self.root + "/version", exist_ok=True)
        with open(self.root + "/version/hardware_info", "w") as f:
            f.write('{"board":"BRD25"}\n')
        with open(self.root + "/data/oled.ini", "w") as f:
            f.write(SETTINGS)
        argv = self.link.netns.exec_args(["unshare", "--pid", "--fork", "--kill-child", sim, "--root", self.root,
                                     "--out", self.out])
        self.proc = subprocess.Popen(argv, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.pid = None

    def daemon_pid(self, timeout=10.0):
        """unshare's child, the daemon (process 1 of its namespace)."""
        deadline = time.time() + timeout
        while time.time() < deadline:
            try:
                with open("/proc/%d/task/%d/children" % (self.proc.pid, self.proc.pid)) as f:
                    children = f.read().split()
                if children:
                    return int(children[0])
            except FileNotFoundError:
                pass
            time.sleep(0.05)
        raise RuntimeError("%s did not start" % self.sim)

    def begin(self):
        self.pid = self.daemon_pid()
        self.cpu0, self.pid0, self.t0 = cpu_seconds(self.pid), last_pid(self.pid), time.time()

    def end(self):
        cpu, pids, t = cpu_seconds(self.pid), last_pid(self.pid), time.time()
        per_minute = 60.0 / (t - self.t0)
        # One id of each reading went to the reader itself.
        return ((pids - self.pid0 - 1) * per_minute, (cpu - self.cpu0) * per_minute, rss_kb(self.pid))

    def close(self):
        kill(self.proc)
        shutil.rmtree(self.root, ignore_errors=True)
        shutil.rmtree(self.out, ignore_errors=True)
        self.link.close()


def main():
    parser = argument_parser(__doc__)
    parser.add_argument("--sim", action="append", required=True, help="an oledd-sim to run (repeatable)")
    parser.add_argument("--seconds", type=float, default=60.0, help="measured time (default 60)")
    parser.add_argument("--warm-up", type=float, default=3.0, help="unmeasured start (default 3)")
    args = parse_as_root(parser, "sim_minute.py")
    for r in side_by_side(lambda runs: runs.extend(Run(sim) for sim in args.sim), args.warm_up, args.seconds):
        processes, cpu, rss = r.end()
        print("%s %.0f %.2f %d" % (r.sim, processes, cpu, rss))


if __name__ == "__main__":
    main()
