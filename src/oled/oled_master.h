#ifndef OLED_OLED_OLED_MASTER_H
#define OLED_OLED_OLED_MASTER_H

#include "frame_buffer.h"

// Blanked by ShowOLEDClear; nothing else in the small driver uses it.
extern unsigned char oled_buf[320];

// The small monochrome panel (128 columns, 8-row pages) on the two-wire or
// the four-wire bus, as oled_type selects. Reached through
// Singleton<OLEDMaster>; the constructor copies the glyph tables in and
// touches no hardware. The drawing calls draw into the panel's frame
// buffer; ShowFrame sends what changed (a build with OLEDD_LITERAL_PANEL
// sends every byte as it is drawn instead, each its own transaction).
class OLEDMaster {
public:
    OLEDMaster();
    ~OLEDMaster();

    // Two-wire bus primitives.
    void IICStart();
    void IICStop();
    unsigned char DelayACK();
    void IICWriteByte(unsigned char b);
    // One byte to the panel as a transaction of its own: ctrl 0x00 a
    // command, 0x40 display data.
    void WriteByteOLED(unsigned char byte, unsigned char ctrl);
    // Commands (data false) or display data in one transaction.
    void WriteRunOLED(bool data, const unsigned char* bytes, int count);

    void SetSmallOLEDAddr(unsigned char x, unsigned char y);
    void SetOLEDAddr(unsigned char x, unsigned char y);
    void ShowOLEDClear(unsigned char first_page, unsigned char end_page);
    // Runs the kind's start-up table; its blanking step sends the whole
    // frame buffer (blank until something is drawn).
    void InitOLED();
    // The screen drawn since the last call goes to the panel, as the bytes
    // that differ from what it holds (all of them now and then).
    void ShowFrame();

    // Text in the 7x12 font, two pages high.
    void ShowOLEDString(unsigned char x, unsigned char y, unsigned char* str, unsigned char len);
    // Proportional text in the 5x7 font, one page high.
    void ShowOLEDSmallString(unsigned char x, unsigned char y, unsigned char* str, unsigned char len);
    // 16x16 status icons '0'..'5', 18 columns apart.
    void ShowOLEDCustom(unsigned char x, unsigned char y, unsigned char* str, unsigned char len);

private:
    void send_command(unsigned char command) { WriteByteOLED(command, 0x00); }
    // A drawn byte at the frame's pointer.
    void put(unsigned char byte);
    // Sends the frame: the changes, or every page when whole.
    void send_frame(bool whole);
    // Columns of character c in the 7x12 font on its upper or lower page;
    // returns how many (7, or 0 for a character the font cannot draw).
    int large_glyph_page(unsigned char c, bool lower, unsigned char* columns) const;

    unsigned short digit_[10 * 7];
    unsigned short capital_[26 * 7];
    unsigned short ascii5x7_[95 * 5];
    unsigned short ascii6x8_[95 * 6];
    unsigned short ascii8x16_[95 * 16];
    unsigned char custom_[6 * 32];
    FrameBuffer frame_;
};

#endif
