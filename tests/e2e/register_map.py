"""Physical register addresses of a pin, for tests that read what the
daemon wrote (a trace of oledd-sim, or the file standing in for /dev/mem).
The pad table is read from the daemon's own source, so there is one copy."""

import os
import re

MUX_BASE = 0x120F0000
GPIO_BASE = 0x12150000
GROUP_STRIDE = 0x10000
DIRECTION = 0x400

_SOURCE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "src", "gpio", "gpio_master.cpp")


def _pad_table():
    with open(_SOURCE) as f:
        body = f.read().split("g_muxctrl_reg[", 1)[1].split("};", 1)[0]
    pads = [(int(offset, 16), int(value)) for offset, value in re.findall(r"\{(0x[0-9A-Fa-f]+), (\d+)\}", body)]
    assert len(pads) == 25 * 8, "pad table of %s not understood" % _SOURCE
    return pads


_PADS = _pad_table()


def pin(text):
    """(group, bit) of a pin setting such as "4_2"; None for no pin."""
    if "_" not in text:
        return None
    group, bit = text.split("_")[:2]
    return int(group), int(bit)


def mux(group, bit):
    """(pad register address, value that selects the GPIO function)."""
    offset, value = _PADS[group * 8 + bit]
    return MUX_BASE + offset, value


def direction(group):
    return GPIO_BASE + group * GROUP_STRIDE + DIRECTION


def data(group, bit):
    """The pin's single-bit data alias; it holds 1 << bit when high."""
    return GPIO_BASE + group * GROUP_STRIDE + (4 << bit)
