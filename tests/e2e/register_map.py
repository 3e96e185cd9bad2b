"""Physical register addresses of a pin, for tests that read what the
daemon wrote (a trace of oledd-sim, or the file standing in for /dev/mem).
The pad table is the one written out by hand for the GPIO unit test."""

import os

MUX_BASE = 0x120F0000
GPIO_BASE = 0x12150000
GROUP_STRIDE = 0x10000
DIRECTION = 0x400

_PADS = {}
for _line in open(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "gpio", "pads.txt")):
    if not _line.startswith("#"):
        _group, *_cells = _line.split()
        for _bit, _cell in enumerate(_cells):
            _PADS[int(_group[:-1]), _bit] = None if _cell == "-" else (int(_cell.split("/")[0], 16), int(_cell.split("/")[1]))


def pin(text):
    """(group, bit) of a pin setting such as "4_2"; None for no pin."""
    if "_" not in text:
        return None
    group, bit = text.split("_")[:2]
    return int(group), int(bit)


def mux(group, bit):
    """(pad register address, value that selects the GPIO function)."""
    offset, value = _PADS[group, bit]
    return MUX_BASE + offset, value


def direction(group):
    return GPIO_BASE + group * GROUP_STRIDE + DIRECTION


def data(group, bit):
    """The pin's single-bit data alias; it holds 1 << bit when high."""
    return GPIO_BASE + group * GROUP_STRIDE + (4 << bit)
