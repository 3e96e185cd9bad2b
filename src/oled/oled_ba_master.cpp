#include "oled_ba_master.h"

#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include "font_tables.h"
#include "panel_lines.h"
#include "panel_steps.h"

unsigned char oled_logo[8192];

namespace {

const PanelStep kInitBig[] = {
    cmd(0xAE),       cmd(0xD5, 0x90),                   // clock
    cmd(0xA8, 0x3F),                                    // 64 rows
    cmd(0xD3, 0x00), cmd(0xB0, 0x00),                   // row address 0
    cmd(0x40),       cmd(0x30),       cmd(0xAD, 0x80),  // DC-DC
    cmd(0xA0),       cmd(0xC0),       cmd(0x81, 0x38),  // contrast
    cmd(0xD9, 0x76), cmd(0xDB, 0x3B), cmd(0xDC, 0x1A), cmd(0xA4), cmd(0xA6),
};

const int kDigitRows = 27;
const int kDigitRowBytes = 8;
const int kSmallRows = 13;
const int kSmallRowBytes = 4;
const int kRows = 64;
const int kRowBytes = 128;

int big_glyph_index(unsigned char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c == '.') {
        return 10;
    }
    return c == ' ' ? 11 : -1;
}

}  // namespace

OLEDBaMaster::OLEDBaMaster() : frame_(kRows, kRowBytes)
{
    memcpy(big_digit_, kBigDigit16x27, sizeof(big_digit_));
    memcpy(ascii_grey_, kAscii8x13Grey, sizeof(ascii_grey_));
}

OLEDBaMaster::~OLEDBaMaster()
{
    puts("i am is OLEDBamaster  ");
}

void OLEDBaMaster::SendByte(unsigned char b)
{
    shift_out_four_wire(b);
}

void OLEDBaMaster::WriteCmdOLED(unsigned char cmd)
{
    drive_dc(false);
    SendByte(cmd);
    Delayms(1);
}

void OLEDBaMaster::INitoled_big_cs()
{
    drive_cs(false);
    drive_res(false);
    Delay();
    drive_res(true);
    Delay();
}

void OLEDBaMaster::InitOLED_big()
{
    // The panel is the only device on its bus: selected once, for good.
    drive_cs(false);
    drive_res(false);
    Delayms(100);
    drive_res(true);
    Delayms(200);
    for (size_t i = 0; i < sizeof(kInitBig) / sizeof(kInitBig[0]); ++i) {
        WriteCmdOLED(kInitBig[i].command);
        if (kInitBig[i].arg_count != 0) {
            WriteCmdOLED(kInitBig[i].arg);
        }
    }
    frame_.forget();
}

void OLEDBaMaster::ShowFrame_big()
{
    if (kLiteralPanel) {
        return;
    }
    frame_.begin_flush();
    FrameBuffer::Run run;
    while (frame_.next_run(&run)) {
        SetOLEDAddr_big(static_cast<unsigned char>(run.column), static_cast<unsigned char>(run.line));
        drive_dc(true);
        for (int i = 0; i < run.count; ++i) {
            SendByte(run.bytes[i]);
        }
    }
}

// The controller keeps six bits of the row and seven of the column.
void OLEDBaMaster::position(unsigned char col, unsigned char row)
{
    if (kLiteralPanel) {
        SetOLEDAddr_big(col, row);
        drive_dc(true);
    }
    frame_.move_to(row & 0x3F, col & 0x7F);
}

void OLEDBaMaster::put(unsigned char byte)
{
    if (kLiteralPanel) {
        SendByte(byte);
    }
    frame_.put(byte);
}

// Positioning goes without the 1 ms command pause: it precedes every row.
void OLEDBaMaster::SetOLEDAddr_big(unsigned char col, unsigned char row)
{
    drive_dc(false);
    SendByte(0xB0);
    SendByte(row);
    SendByte(static_cast<unsigned char>(0x10 + (col >> 4)));
    SendByte(col & 0x0F);
}

template <typename RowFiller>
void OLEDBaMaster::for_each_row(unsigned char x, unsigned char y, unsigned char height, RowFiller fill_row)
{
    if (height == 0) {
        return;
    }
    const unsigned char end = static_cast<unsigned char>(y + height);
    unsigned char row = y;
    do {
        position(static_cast<unsigned char>(x >> 1), row);
        fill_row(row);
        ++row;
    } while (row != end);
}

void OLEDBaMaster::ShowOLEDFill_big(unsigned char x, unsigned char y, unsigned short width, unsigned char height,
                                    unsigned char value)
{
    for_each_row(x, y, height, [this, width, value](unsigned char) {
        for (int i = 0; i < (width >> 1); ++i) {
            put(value);
        }
    });
}

void OLEDBaMaster::ShowOLEDFillPic_big(unsigned char x, unsigned char y, unsigned short width, unsigned char height,
                                       unsigned char* pic)
{
    const unsigned char count = static_cast<unsigned char>(width >> 1);
    for_each_row(x, y, height, [this, count, &pic](unsigned char) {
        for (int i = 0; i < count; ++i) {
            put(*pic++);
        }
    });
}

void OLEDBaMaster::ShowOLEDString_big(unsigned char x, unsigned char y, unsigned char* str, unsigned char len)
{
    // Bounded look for the terminator: the caller's text need not end
    // within len.
    const void* nul = memchr(str, 0, len);
    if (nul != nullptr) {
        const size_t used = static_cast<const unsigned char*>(nul) - str;
        memset(str + used, ' ', len - used);
    }
    for (int r = 0; r < kDigitRows; ++r) {
        position(static_cast<unsigned char>(x >> 1), static_cast<unsigned char>(y + r));
        for (int i = 0; i < len; ++i) {
            const int glyph = big_glyph_index(str[i]);
            if (glyph < 0) {
                continue;
            }
            const unsigned char* bytes = &big_digit_[(glyph * kDigitRows + r) * kDigitRowBytes];
            for (int k = 0; k < kDigitRowBytes; ++k) {
                put(bytes[k]);
            }
        }
    }
}

void OLEDBaMaster::ShowOLEDSmallString(unsigned char x, unsigned char y, unsigned char* str, unsigned char len)
{
    for (int r = 0; r < kSmallRows; ++r) {
        position(static_cast<unsigned char>(x >> 1), static_cast<unsigned char>(y + r));
        for (int i = 0; i < len; ++i) {
            // The font covers 32..126 only; another code sends nothing
            // rather than bytes from outside the table.
            if (str[i] < 32 || str[i] > 126) {
                continue;
            }
            const unsigned char* bytes = &ascii_grey_[((str[i] - 32) * kSmallRows + r) * kSmallRowBytes];
            for (int k = 0; k < kSmallRowBytes; ++k) {
                put(bytes[k]);
            }
        }
    }
}
