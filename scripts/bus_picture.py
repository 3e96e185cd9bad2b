#!/usr/bin/python3
"""Draws one two-wire bus transaction from an `oledd-sim --vcd` file, the
bytes sigrok's decoder finds written under the waveform: the README's
docs/bus-transaction.png.

usage: scripts/bus_picture.py [FILE.vcd [PICTURE.png]]

Without a file it records the sample box (0.96-inch panel, two-wire) until
its panel is set up, in network namespaces of its own: that needs root and
a host build (build/bin). Needs Debian's sigrok-cli and python3-matplotlib."""

import os
import shutil
import signal
import sys
import tempfile

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "tests", "e2e"))
from bus_decode import I2C, annotations, bus_bytes, line_levels  # noqa: E402
from harness import Netns, SimBox, eventually, needs_root  # noqa: E402


def record(vcd):
    needs_root()
    netns = Netns("pic")
    box = SimBox(netns=netns)
    try:
        shutil.copytree(os.path.join(HERE, "..", "sim", "sample-root"), box.root, dirs_exist_ok=True, symlinks=True)
        box.start("--vcd", vcd)
        pgm = os.path.join(box.out, "panel.pgm")
        # The loop draws once the panel is set up.
        eventually(lambda: any(open(pgm, "rb").read()[len(b"P5\n128 64\n1\n"):]), 30, "the panel set up")
        box.signal(signal.SIGTERM)
        box.wait()
    finally:
        box.close()
        netns.close()


def draw(vcd, picture):
    begin = bus_bytes(vcd, False)[0][0]  # the first command after reset
    marks = [a for a in annotations(vcd, I2C) if a[0] >= begin and a[3] not in ("Write", "Read")][:8]
    end = marks[-1][1]
    levels = line_levels(vcd)
    figure, axes = plt.subplots(figsize=(13, 3.2), dpi=100)
    for row, name in enumerate(("SDA", "SCL")):
        times, values = [begin - 4], []
        for at, level in levels[name]:
            if at < begin - 4:
                values = [level]
            elif at <= end + 4:
                times.append(at)
                values.append(level)
        times.append(end + 4)
        values.append(values[-1])
        base = 2 * row + 1.2
        axes.step([t - begin for t in times], [base + 0.8 * v for v in values], where="post", color="#0a6")
        axes.text(-6, base + 0.3, name, ha="right", va="center", fontsize=11, family="monospace")
    for start, stop, _, text in marks:
        middle = (start + stop) / 2 - begin
        axes.annotate("", xy=(start - begin, 0.6), xytext=(stop - begin, 0.6),
                      arrowprops=dict(arrowstyle="|-|", color="#888", shrinkA=0, shrinkB=0))
        axes.text(middle, 0.2, text.replace("Data write: ", "").replace("Address write: ", "addr "),
                  ha="center", va="center", fontsize=10, family="monospace")
    axes.set_xlim(-14, end - begin + 6)
    axes.set_ylim(0, 4.4)
    axes.set_yticks([])
    axes.set_xlabel("microseconds from the start condition (one per register write)")
    axes.set_title("oledd-sim --vcd: the first transaction on the two-wire bus, bytes from sigrok's i2c decoder")
    for side in ("top", "right", "left"):
        axes.spines[side].set_visible(False)
    figure.tight_layout()
    figure.savefig(picture)
    print(picture)


def main():
    if "-h" in sys.argv or "--help" in sys.argv:
        print(__doc__.strip())
        return
    picture = sys.argv[2] if len(sys.argv) > 2 else os.path.join(HERE, "..", "docs", "bus-transaction.png")
    if len(sys.argv) > 1:
        draw(sys.argv[1], picture)
        return
    folder = tempfile.mkdtemp(prefix="oledd-bus-")
    try:
        record(os.path.join(folder, "bus.vcd"))
        draw(os.path.join(folder, "bus.vcd"), picture)
    finally:
        shutil.rmtree(folder, ignore_errors=True)


if __name__ == "__main__":
    main()
