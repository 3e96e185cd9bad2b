// Every glyph of every font, drawn by the drivers onto the emulated panels
// and compared with reference pictures that were checked by eye.
#include <gtest/gtest.h>

#include <string>

#include "oled_ba_master.h"
#include "oled_master.h"
#include "panel_fixture.h"

namespace {

// Characters first..last, as the drivers take text.
std::string codes(int first, int last)
{
    std::string out;
    for (int c = first; c <= last; ++c) {
        out += static_cast<char>(c);
    }
    return out;
}

void draw(void (OLEDMaster::*routine)(unsigned char, unsigned char, unsigned char*, unsigned char), OLEDMaster& oled,
          int x, int y, std::string s)
{
    (oled.*routine)(static_cast<unsigned char>(x), static_cast<unsigned char>(y), text(s.c_str()),
                    static_cast<unsigned char>(s.size()));
}

class Pictures : public PanelOnSoc {};

TEST_F(Pictures, SmallPanelLargeTextAndIcons)
{
    wire(4);
    OLEDMaster oled;
    draw(&OLEDMaster::ShowOLEDString, oled, 0, 0, "0123456789");
    draw(&OLEDMaster::ShowOLEDString, oled, 0, 2, "ABCDEFGHIJKLMNO");
    // A lower-case letter is one blank column.
    draw(&OLEDMaster::ShowOLEDString, oled, 0, 4, "PQRSTUVWXYZ.:_!a");
    draw(&OLEDMaster::ShowOLEDCustom, oled, 0, 6, "012345");
    oled.ShowFrame();
    expect_panel("small_large_text_and_icons");
}

TEST_F(Pictures, SmallPanelSmallText)
{
    wire(5);
    OLEDMaster oled;
    for (int line = 0; line < 5; ++line) {
        draw(&OLEDMaster::ShowOLEDSmallString, oled, 0, line, codes(32 + 20 * line, line == 4 ? 126 : 51 + 20 * line));
    }
    // A character without a glyph is only its spacer.
    draw(&OLEDMaster::ShowOLEDSmallString, oled, 0, 6,
         "A\x01"
         "B\x7F"
         "C");
    oled.ShowFrame();
    expect_panel("small_small_text");
}

TEST_F(Pictures, BigPanelFonts)
{
    wire(0);
    OLEDBaMaster oled;
    char digits[] = "0123456789. ";
    oled.ShowOLEDString_big(0, 0, text(digits), 12);
    std::string line = codes(32, 63);
    oled.ShowOLEDSmallString(0, 32, text(line.c_str()), 32);
    line = codes(64, 95);
    oled.ShowOLEDSmallString(0, 48, text(line.c_str()), 32);
    oled.ShowFrame_big();
    expect_panel("big_digits_and_text");
    line = codes(96, 126);
    oled.ShowOLEDSmallString(0, 32, text(line.c_str()), 31);
    oled.ShowFrame_big();
    expect_panel("big_text_rest");
}

}  // namespace
