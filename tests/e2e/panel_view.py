"""Reads the simulator's panel.pgm and renders text the way the panel
drivers draw it, from the glyph tables in the daemon's sources, so a test
can say "page 4 shows CPU:3.52% at column 4"."""

import os
import re

SRC = os.path.join(os.path.dirname(__file__), "..", "..", "src", "oled")


def _table(name):
    for source in ("font_tables_fixed.cpp", "font_tables_generated.cpp"):
        text = open(os.path.join(SRC, source)).read()
        m = re.search(r"\b%s\[[^]]*\]\s*=\s*\{(.*?)\};" % name, text, re.S)
        if m:
            body = re.sub(r"//[^\n]*", "", m.group(1))
            return [int(v, 16) for v in re.findall(r"0x[0-9A-Fa-f]+", body)]
    raise KeyError(name)


ASCII5X7 = _table("kAscii5x7")
DIGIT7X12 = _table("kDigit7x12")
BIG_DIGITS = _table("kBigDigit16x27")
GREY8X13 = _table("kAscii8x13Grey")


def read_pgm(path):
    """(width, height, rows of pixel values)."""
    data = open(path, "rb").read()
    parts = data.split(maxsplit=4)
    width, height = int(parts[1]), int(parts[2])
    pixels = parts[4][:width * height]
    return width, height, [list(pixels[r * width:(r + 1) * width]) for r in range(height)]


def page_bytes(rows, page, x, count):
    """Column bytes of one 8-row page of a monochrome panel, bit 0 on top."""
    out = []
    for col in range(x, x + count):
        byte = 0
        for bit in range(8):
            if rows[page * 8 + bit][col]:
                byte |= 1 << bit
        out.append(byte)
    return out


def small_text(text):
    """Column bytes the small panel's 5x7 routine sends for text."""
    out = []
    for ch in text:
        c = ord(ch)
        if ch in "j1I":
            cols = [1, 2, 3]
        elif ch in "il":
            cols = [2]
        elif ch == "r":
            cols = [0, 1, 2, 3]
        elif 32 <= c <= 126:
            cols = [0, 1, 2, 3, 4]
        else:
            cols = []
        out += [ASCII5X7[(c - 32) * 5 + i] & 0xFF for i in cols] + [0]
    return out


def large_text(text):
    """(upper page, lower page) column bytes of the 7x12 routine for an
    address: digits and dots."""
    upper, lower = [], []
    for ch in text:
        glyph = [0] * 7 if ch == "." else DIGIT7X12[int(ch) * 7:int(ch) * 7 + 7]
        upper += [(g << 4) & 0xF0 for g in glyph] + [0]
        lower += [(g >> 4) & 0xFF for g in glyph] + [0]
        if ch == ".":
            lower[-7] = 0x80
    return upper, lower


def shows_small_text(rows, page, x, text):
    expected = small_text(text)
    return page_bytes(rows, page, x, len(expected)) == expected


def page_is_blank(rows, page):
    return not any(page_bytes(rows, page, 0, len(rows[0])))


def shows_address(rows, address):
    upper, lower = large_text(address)
    return page_bytes(rows, 0, 2, len(upper)) == upper and page_bytes(rows, 1, 2, len(lower)) == lower


def big_digits_rows(text):
    """Pixel rows (27) of the big-digit routine for text, 16 px a glyph."""
    rows = []
    for r in range(27):
        row = []
        for ch in text:
            g = ord(ch) - ord("0") if ch.isdigit() else 10 if ch == "." else 11 if ch == " " else None
            if g is None:
                continue
            for b in BIG_DIGITS[g * 216 + r * 8:g * 216 + r * 8 + 8]:
                row += [b >> 4, b & 15]
        rows.append(row)
    return rows


def grey_text_rows(text):
    """Pixel rows (13) of the big panel's 8x13 text routine."""
    rows = []
    for r in range(13):
        row = []
        for ch in text:
            c = ord(ch)
            if 32 <= c <= 126:
                for b in GREY8X13[(c - 32) * 52 + r * 4:(c - 32) * 52 + r * 4 + 4]:
                    row += [b >> 4, b & 15]
        rows.append(row)
    return rows


def shows_pixels(rows, top, left, expected):
    return all(rows[top + r][left:left + len(line)] == line for r, line in enumerate(expected))
