"""Reads the panel bus in an `oledd-sim --vcd` file as a logic analyser
would: with sigrok's own protocol decoders (Debian's sigrok-cli), and the
line levels for drawing."""

import json
import subprocess

I2C = ("i2c:scl=SCL:sda=SDA", "i2c=start:stop:ack:nack:address-read:address-write:data-read:data-write:warnings")
# The data/command line is read beside the data as a second data line: all
# ones for display data, all zeros for a command.
SPI = ("spi:clk=SCLK:mosi=SDIN:miso=DC:cs=CS", "spi=mosi-transfer:miso-transfer:warnings")
# One two-wire transaction as the panel takes it; None is any byte.
TRANSACTION = ["Start", "Address write: 3C", "ACK", None, "ACK", None, "ACK", "Stop"]


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
    """[(begin us, is data, byte)], one per transaction (two wires) or per
    chip-select frame (four wires). A transaction or frame of any other
    form is a ValueError naming it, but for a last one that the end of the
    recording cut short."""
    if four_wire:
        return _frames(vcd)
    found = []
    marks = [a for a in annotations(vcd, I2C) if a[3] not in ("Write", "Read")]
    for at in range(0, len(marks), len(TRANSACTION)):
        texts = [m[3] for m in marks[at:at + len(TRANSACTION)]]
        fits = all(t == want if want else t.startswith("Data write: ") for t, want in zip(texts, TRANSACTION))
        if fits and len(texts) < len(TRANSACTION):
            break  # the last, cut short (only the last can be short)
        if not fits or texts[3][-2:] not in ("00", "40"):
            raise ValueError("transaction at %d us: %s" % (marks[at][0], " | ".join(texts)))
        found.append((marks[at][0], texts[3][-2:] == "40", int(texts[5][-2:], 16)))
    return found


def _frames(vcd):
    rows = {}
    for begin, end, row, text in annotations(vcd, SPI):
        rows.setdefault(row, []).append((begin, text))
    found = []
    for (begin, data), (_, command) in zip(rows.get("MOSI transfer", []), rows.get("MISO transfer", [])):
        if len(data.split()) != 1 or command not in ("00", "FF"):
            raise ValueError("frame at %d us: %s, data/command %s" % (begin, data, command))
        found.append((begin, command == "FF", int(data, 16)))
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
