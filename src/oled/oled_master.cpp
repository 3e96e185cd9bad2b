#include "oled_master.h"

#include <stdio.h>
#include <string.h>

#include "font_tables.h"
#include "panel_lines.h"
#include "runtime_settings.h"
#include "small_panel_kinds.h"

unsigned char oled_buf[320];

namespace {

const int kColumns = 128;
const int kLargeWidth = 7;
const int kSmallGlyphWidth = 5;
const int kCustomBytes = 32;
const int kCustomStep = 18;
const int kPages = 8;

}  // namespace

OLEDMaster::OLEDMaster() : frame_(kPages, kColumns)
{
    memcpy(digit_, kDigit7x12, sizeof(digit_));
    memcpy(capital_, kCapital7x12, sizeof(capital_));
    memcpy(ascii5x7_, kAscii5x7, sizeof(ascii5x7_));
    memcpy(ascii6x8_, kAscii6x8, sizeof(ascii6x8_));
    memcpy(ascii8x16_, kAscii8x16, sizeof(ascii8x16_));
    memcpy(custom_, kCustom16x16, sizeof(custom_));
}

OLEDMaster::~OLEDMaster()
{
    puts(" i am is OLEDmaster");
}

void OLEDMaster::SetSmallOLEDAddr(unsigned char x, unsigned char y)
{
    if (kLiteralPanel) {
        send_command(static_cast<unsigned char>(y + 0xB0));
        send_command(static_cast<unsigned char>(0x10 | (x >> 4)));
        send_command(x & 0x0F);
    }
    frame_.move_to(y, x & 0x7F);
}

void OLEDMaster::put(unsigned char byte)
{
    if (kLiteralPanel) {
        WriteByteOLED(byte, 0x40);
    }
    frame_.put(byte);
}

void OLEDMaster::send_frame(bool whole)
{
    frame_.begin_flush(whole);
    FrameBuffer::Run run;
    while (frame_.next_run(&run)) {
        const unsigned char address[] = {static_cast<unsigned char>(0xB0 + run.line),
                                         static_cast<unsigned char>(0x10 | (run.column >> 4)),
                                         static_cast<unsigned char>(run.column & 0x0F)};
        WriteRunOLED(false, address, sizeof(address));
        WriteRunOLED(true, run.bytes, run.count);
    }
}

void OLEDMaster::ShowFrame()
{
    if (!kLiteralPanel) {
        send_frame(false);
    }
}

// The older positioning: page shifted by five and wrapped, low column
// nibble first. Kept as it was; nothing calls it.
void OLEDMaster::SetOLEDAddr(unsigned char x, unsigned char y)
{
    send_command(static_cast<unsigned char>(0xB0 + ((y + 5) & 7)));
    send_command(x & 0x0F);
    send_command(static_cast<unsigned char>(0x10 + (x >> 4)));
    frame_.move_to((y + 5) & 7, x & 0x7F);
}

void OLEDMaster::ShowOLEDClear(unsigned char first_page, unsigned char end_page)
{
    memset(oled_buf, 0, sizeof(oled_buf));
    for (unsigned char page = first_page; page < end_page; ++page) {
        SetSmallOLEDAddr(0, page);
        for (int column = 0; column < kColumns; ++column) {
            put(0x00);
        }
    }
}

void OLEDMaster::InitOLED()
{
    const SmallPanelKind* kind = small_panel_kind(oled_type);
    if (kind == nullptr) {
        return;
    }
    puts(kind->name);
    if (kind->reset_pulse) {
        drive_res(false);
        Delayms(200);
        drive_res(true);
    }
    for (size_t i = 0; i < kind->step_count; ++i) {
        const PanelStep& step = kind->steps[i];
        switch (step.op) {
            case PanelStep::kCommand:
                send_command(step.command);
                if (step.arg_count != 0) {
                    send_command(step.arg);
                }
                break;
            case PanelStep::kClearScreen:
                // The panel's memory is unknown after a start-up: all of
                // it, which repairs a panel whose set-up was lost.
                if (kLiteralPanel) {
                    ShowOLEDClear(0, kPages);
                } else {
                    send_frame(true);
                }
                break;
            case PanelStep::kPauseMs:
                Delayms(step.command);
                break;
        }
    }
}

int OLEDMaster::large_glyph_page(unsigned char c, bool lower, unsigned char* columns) const
{
    const unsigned short* glyph = nullptr;
    if (c >= '0' && c <= '9') {
        glyph = &digit_[(c - '0') * kLargeWidth];
    } else if (c >= 'A' && c <= 'Z') {
        glyph = &capital_[(c - 'A') * kLargeWidth];
    }
    if (glyph != nullptr) {
        // The 12 glyph rows sit in rows 4..15 of the two-page cell.
        for (int i = 0; i < kLargeWidth; ++i) {
            columns[i] = static_cast<unsigned char>(lower ? (glyph[i] >> 4) & 0xFF : (glyph[i] << 4) & 0xF0);
        }
        return kLargeWidth;
    }
    if (c != ' ' && c != ':' && c != '.' && c != '_' && c != '!') {
        return 0;
    }
    memset(columns, 0, kLargeWidth);
    // A colon stays blank on both pages: the system has always drawn it so.
    if (c == '!') {
        columns[1] = lower ? 0x90 : 0xFF;
    } else if (lower && c == '.') {
        columns[1] = 0x80;
    } else if (lower && c == '_') {
        memset(columns, 0x80, kLargeWidth);
    }
    return kLargeWidth;
}

void OLEDMaster::ShowOLEDString(unsigned char x, unsigned char y, unsigned char* str, unsigned char len)
{
    for (int page = 0; page < 2; ++page) {
        SetSmallOLEDAddr(x, static_cast<unsigned char>(y + page));
        for (int i = 0; i < len; ++i) {
            unsigned char columns[kLargeWidth];
            const int count = large_glyph_page(str[i], page == 1, columns);
            for (int k = 0; k < count; ++k) {
                put(columns[k]);
            }
            put(0x00);
        }
    }
}

void OLEDMaster::ShowOLEDSmallString(unsigned char x, unsigned char y, unsigned char* str, unsigned char len)
{
    SetSmallOLEDAddr(x, y);
    for (int i = 0; i < len; ++i) {
        const unsigned char c = str[i];
        // Narrow letters keep only their inked columns: proportional text.
        int first = 0;
        int last = kSmallGlyphWidth - 1;
        if (c == 'j' || c == '1' || c == 'I') {
            first = 1;
            last = 3;
        } else if (c == 'i' || c == 'l') {
            first = 2;
            last = 2;
        } else if (c == 'r') {
            last = 3;
        } else if (c < 32 || c > 126) {
            last = -1;
        }
        for (int column = first; column <= last; ++column) {
            put(ascii5x7_[(c - 32) * kSmallGlyphWidth + column] & 0xFF);
        }
        put(0x00);
    }
}

void OLEDMaster::ShowOLEDCustom(unsigned char x, unsigned char y, unsigned char* str, unsigned char len)
{
    for (int i = 0; i < len; ++i) {
        const int k = str[i] - '0';
        // Only six icons exist: another character keeps its slot blank
        // rather than reading past the table.
        if (k >= 0 && k < 6) {
            const unsigned char* glyph = &custom_[k * kCustomBytes];
            for (int page = 0; page < 2; ++page) {
                SetSmallOLEDAddr(x, static_cast<unsigned char>(y + page));
                for (int column = 0; column < 16; ++column) {
                    put(glyph[page * 16 + column]);
                }
            }
        }
        x = static_cast<unsigned char>(x + kCustomStep);
    }
}
