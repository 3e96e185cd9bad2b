"""Reads the panel bus in an `oledd-sim --vcd` file as a logic analyser
would: with sigrok's own protocol decoders (Debian's sigrok-cli), and the
line levels for drawing."""

import json
import subprocess

I2C = ("i2c:scl=SCL:sda=SDA", "i2c=start:stop:ack:nack:address-read:address-write:data-read:data-write:warnings")
# The data/command line is read beside the data as a second data line: all
# ones for display data, all zeros for a command.
SPI = ("spi:clk=SCLK:mosi=SDIN:miso=DC:cs=CS", "spi=mosi-transfer:miso-transfer:warnings")
# How a two-wire transaction to the panel begins.
TRANSACTION = ["Start", "Address write: 3C", "ACK"]


def annotations(vcd, decoder):
    """[(begin us, end us, row, text)] as sigrok gives them."""
    stack, classes = decoder
    out = subprocess.run(["sigrok-cli", "-I", "vcd", "-i", vcd, "-P", stack, "-A", classes,
                          "--protocol-decoder-jsontrace"], check=True, stdout=subprocess.PIPE, text=True).stdout
    begun, found = {}, []
    for event in json.loads(out or "{}").get("traceEvents", []):  # nothing at all when nothing was found
        key = (event["tid"], event["name"])
        if event["ph"] == "B":
            begun[key] = len(found)
            found.append([int(event["ts"]), None, event["tid"], event["name"]])
        else:
            found[begun.pop(key)][1] = int(event["ts"])
    return [tuple(a) for a in found]


def bus_bytes(vcd, four_wire):
    """[(begin us, is data, [bytes])], one per transaction (two wires) or
    per chip-select frame (four wires). A transaction or frame of any other
    form is a ValueError naming it, but for a last one that the end of the
    recording cut short."""
    if four_wire:
        return _frames(vcd)
    found, texts = [], []
    for mark in (a for a in annotations(vcd, I2C) if a[3] not in ("Write", "Read")):
        if not texts:
            begin = mark[0]
        texts.append(mark[3])
        if mark[3] == "Stop":
            found.append(_transaction(begin, texts))
            texts = []
    return found


def _transaction(begin, texts):
    """Start, address 3C, a control byte (00 commands, 40 data), the bytes
    under it, stop; every byte acknowledged."""
    bytes_ = [t[len("Data write: "):] for t in texts[3:-1:2]]
    fits = (texts[:3] == TRANSACTION[:3] and len(texts) >= 8 and len(texts) % 2 == 0
            and all(t == "ACK" for t in texts[4:-1:2]) and all(b == t[-2:] for b, t in zip(bytes_, texts[3:-1:2]))
            and all(t.startswith("Data write: ") for t in texts[3:-1:2]) and bytes_[0] in ("00", "40"))
    if not fits:
        raise ValueError("transaction at %d us: %s" % (begin, " | ".join(texts)))
    return (begin, bytes_[0] == "40", [int(b, 16) for b in bytes_[1:]])


def _frames(vcd):
    rows = {}
    for begin, end, row, text in annotations(vcd, SPI):
        rows.setdefault(row, []).append((begin, text))
    found = []
    for (begin, data), (_, command) in zip(rows.get("MOSI transfer", []), rows.get("MISO transfer", [])):
        levels = set(command.split())
        if len(levels) != 1 or levels - {"00", "FF"}:
            raise ValueError("frame at %d us: %s, data/command %s" % (begin, data, command))
        found.append((begin, levels == {"FF"}, [int(b, 16) for b in data.split()]))
    return found


def line_levels(vcd):
    """{line name: [(us, level)]} from the file."""
    names, levels, now = {}, {}, 0
    with open(vcd) as f:
        for line in f:
            words = line.split()
            if words[:1] == ["$var"]:
                names[words[3]] = words[4]
                levels[words[4]] = []
            elif line.startswith("#"):
                now = int(line[1:])
            elif line[:1] in "01" and line[1:].strip() in names:
                levels[names[line[1:].strip()]].append((now, int(line[0])))
    return levels
