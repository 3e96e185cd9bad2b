#!/usr/bin/env python3
"""One minute (or --seconds) of the shipped oledd, run as the appliance
e2e test runs it (tests/e2e/appliance_root.py): the sample box's settings
in a private root whose /dev/mem is a sparse file, eth0 one end of a veth
pair. The ARM build (--arm) runs under qemu-arm-static, whose own memory
and time count in the figures; host builds (--host, repeated) run beside
it. CPU time is measured after a start-up (--warm-up).

Needs root (namespaces). Prints one line per build:
  PATH  rss-kB  cpu-s/min"""

import os
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "tests", "e2e"))
from appliance_root import ApplianceBox  # noqa: E402
from bench_netns import BoxLink, argument_parser, cpu_seconds, parse_as_root, rss_kb  # noqa: E402

ARM_EMULATOR = ["qemu-arm-static", "-L", "/"]


class Run:
    def __init__(self, oledd, emulator):
        self.oledd = oledd
        self.link = BoxLink()
        self.box = None
        try:
            self.box = ApplianceBox(self.link.netns, oledd, emulator).start()
        except Exception:
            self.close()
            raise

    def close(self):
        if self.box is not None:
            self.box.close()
        self.link.close()


def main():
    parser = argument_parser(__doc__)
    parser.add_argument("--arm", help="the ARM oledd, run under qemu-arm-static")
    parser.add_argument("--host", action="append", default=[], help="a host oledd (repeatable)")
    parser.add_argument("--seconds", type=float, default=60.0, help="measured time (default 60)")
    parser.add_argument("--warm-up", type=float, default=10.0, help="unmeasured start (default 10)")
    args = parse_as_root(parser, "appliance_minute.py")
    runs = []
    try:
        if args.arm:
            runs.append(Run(args.arm, ARM_EMULATOR))
        for host in args.host:
            runs.append(Run(host, []))
        time.sleep(args.warm_up)
        cpu0 = [cpu_seconds(r.box.proc.pid) for r in runs]
        time.sleep(args.seconds)
        for r, before in zip(runs, cpu0):
            if r.box.proc.poll() is not None:
                sys.exit("appliance_minute.py: %s ended early:\n%s" % (r.oledd, "\n".join(r.box.output()[-20:])))
            cpu = (cpu_seconds(r.box.proc.pid) - before) * 60.0 / args.seconds
            print("%s %d %.2f" % (r.oledd, rss_kb(r.box.proc.pid), cpu))
    finally:
        for r in runs:
            r.close()


if __name__ == "__main__":
    main()
