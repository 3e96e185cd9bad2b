#ifndef OLED_OLED_OLED_BA_MASTER_H
#define OLED_OLED_OLED_BA_MASTER_H

#include "frame_buffer.h"

// The boot logo: 64 rows of 128 bytes, two 4-bit pixels per byte, high
// nibble left. Filled from "logo.bin".
extern unsigned char oled_logo[8192];

// The big 256x64 greyscale panel on the four-wire bus (oled_type 0).
// Reached through Singleton<OLEDBaMaster>; the constructor copies the glyph
// tables in and touches no hardware. Column addresses count bytes (two
// pixels); x and widths given to the drawing calls count pixels. The
// drawing calls draw into the panel's frame buffer; ShowFrame_big sends
// what changed (a build with OLEDD_LITERAL_PANEL sends every byte as it is
// drawn instead).
class OLEDBaMaster {
public:
    OLEDBaMaster();
    ~OLEDBaMaster();

    void SendByte(unsigned char b);
    void WriteCmdOLED(unsigned char cmd);
    void INitoled_big_cs();
    // Resets and configures the panel; the caller switches it on. The next
    // ShowFrame_big sends the whole frame.
    void InitOLED_big();
    void ShowFrame_big();
    void SetOLEDAddr_big(unsigned char col, unsigned char row);
    void ShowOLEDFill_big(unsigned char x, unsigned char y, unsigned short width, unsigned char height,
                          unsigned char value);
    void ShowOLEDFillPic_big(unsigned char x, unsigned char y, unsigned short width, unsigned char height,
                             unsigned char* pic);
    // Blank, the sweep, then the logo: each frame a complete screen.
    void Show_Logo();
    // The light band across the logo's shape, one frame per byte column.
    void SweepLogo();
    void big_oled_show_logo();
    // Big digits, '.' and ' '; pads str with blanks up to len in place.
    void ShowOLEDString_big(unsigned char x, unsigned char y, unsigned char* str, unsigned char len);
    void ShowOLEDSmallString(unsigned char x, unsigned char y, unsigned char* str, unsigned char len);

private:
    // Rows y .. y + height - 1 (8-bit, wrapping), each addressed at byte
    // column x >> 1 and then filled by fill_row with the line in data mode.
    template <typename RowFiller>
    void for_each_row(unsigned char x, unsigned char y, unsigned char height, RowFiller fill_row);
    // Drawing: the row and byte column where put() writes next, and one
    // byte there.
    void position(unsigned char col, unsigned char row);
    void put(unsigned char byte);

    unsigned char big_digit_[12 * 216];
    unsigned char ascii_grey_[95 * 52];
    FrameBuffer frame_;
};

#endif
