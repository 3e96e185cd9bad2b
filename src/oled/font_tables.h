#ifndef OLED_OLED_FONT_TABLES_H
#define OLED_OLED_FONT_TABLES_H

// Small panel: column-major glyphs, one entry per pixel column, bit 0 the
// top row.
extern const unsigned short kDigit7x12[10 * 7];    // '0'..'9', 12 significant bits
extern const unsigned short kCapital7x12[26 * 7];  // 'A'..'Z'
extern const unsigned short kAscii5x7[95 * 5];     // codes 32..126, low 8 bits
extern const unsigned short kAscii6x8[95 * 6];     // carried, not drawn; column 0 blank
extern const unsigned short kAscii8x16[95 * 16];   // carried, not drawn
extern const unsigned char kCustom16x16[6 * 32];   // 16 upper-page then 16 lower-page columns

// Big panel: row-major, 4 bits per pixel, high nibble the left pixel.
extern const unsigned char kBigDigit16x27[12 * 216];  // '0'..'9', '.', ' '; 27 rows of 8 bytes
extern const unsigned char kAscii8x13Grey[95 * 52];   // codes 32..126; 13 rows of 4 bytes

#endif
