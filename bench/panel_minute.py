#!/usr/bin/env python3
"""Register writes of the sample box (sim/sample-root) in one minute (or
--seconds) of oledd-sim once it has started up and shown its logo
(--warm-up), for each panel kind asked
(--kind, repeated; default the two-wire and four-wire small panels and the
big one) and each build (--sim PATH, repeated), all side by side. Counted
from the --trace file: one line per register write.

Needs root (namespaces). Prints one line per build and kind:
  PATH  KIND  writes/min"""

import os
import shutil
import subprocess
import tempfile
import time

from bench_netns import BoxLink, argument_parser, kill, parse_as_root, side_by_side

HERE = os.path.dirname(os.path.abspath(__file__))
SAMPLE_ROOT = os.path.join(HERE, "..", "sim", "sample-root")
KINDS = (4, 3, 0)


class Run:
    def __init__(self, sim, kind):
        self.sim, self.kind = sim, kind
        self.link = BoxLink()
        self.proc = None
        self.root = tempfile.mkdtemp(prefix="oled-bench-root-")
        self.trace = self.root + ".trace"
        shutil.copytree(SAMPLE_ROOT, self.root, dirs_exist_ok=True)
        settings = os.path.join(self.root, "data", "oled.ini")
        with open(settings) as f:
            lines = [line for line in f if not line.startswith("OLed_a_kind_start=")]
        with open(settings, "w") as f:
            f.writelines(lines + ["OLed_a_kind_start=%d\n" % kind])
        argv = self.link.netns.exec_args([sim, "--root", self.root, "--trace", self.trace])
        self.proc = subprocess.Popen(argv, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def writes(self):
        with open(self.trace, "rb") as f:
            return sum(chunk.count(b"\n") for chunk in iter(lambda: f.read(1 << 20), b""))

    def begin(self):
        self.writes0, self.t0 = self.writes(), time.time()

    def writes_per_minute(self):
        writes, elapsed = self.writes() - self.writes0, time.time() - self.t0
        return writes * 60.0 / elapsed

    def close(self):
        kill(self.proc)
        shutil.rmtree(self.root, ignore_errors=True)
        if os.path.exists(self.trace):
            os.remove(self.trace)
        self.link.close()


def main():
    parser = argument_parser(__doc__)
    parser.add_argument("--sim", action="append", required=True, help="an oledd-sim to run (repeatable)")
    parser.add_argument("--kind", action="append", type=int, help="a panel kind (repeatable; default 4, 3, 0)")
    parser.add_argument("--seconds", type=float, default=60.0, help="measured time (default 60)")
    parser.add_argument("--warm-up", type=float, default=15.0, help="unmeasured start (default 15)")
    args = parse_as_root(parser, "panel_minute.py")
    start = lambda runs: runs.extend(Run(sim, kind) for sim in args.sim for kind in args.kind or KINDS)  # noqa: E731
    for r in side_by_side(start, args.warm_up, args.seconds):
        print("%s %d %.0f" % (r.sim, r.kind, r.writes_per_minute()))


if __name__ == "__main__":
    main()
