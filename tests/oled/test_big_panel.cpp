// The big-panel driver drawn onto the simulated SoC; the emulated
// greyscale controller's RAM is read back.
#include <gtest/gtest.h>
#include <string.h>

#include <string>

#include "bus_lines.h"
#include "capture_stdout.h"
#include "oled_ba_master.h"
#include "panel_fixture.h"
#include "probe_scene.h"
#include "register_access.h"

namespace {

class BigPanel : public PanelOnSoc {
protected:
    void SetUp() override
    {
        PanelOnSoc::SetUp();
        wire(0);
    }

    OLEDBaMaster oled_;
};

TEST_F(BigPanel, InitResetsAndSendsTheSequenceAsCommands)
{
    // Held in reset, the panel takes nothing.
    set_reg(RES, RES_L);
    oled_.ShowOLEDFill_big(0, 0, 4, 1, 0xFF);
    oled_.ShowFrame_big();
    EXPECT_EQ(0, pixel(0, 0));
    take();

    oled_.InitOLED_big();
    EXPECT_EQ(take(), commands("AE D5 90 A8 3F D3 00 B0 00 40 30 AD 80 A0 C0 81 38 D9 76 DB 3B DC 1A A4 A6"));
    EXPECT_FALSE(panel_->display_on());
    // After a start-up the whole frame goes out: 64 rows of 128 bytes.
    oled_.ShowFrame_big();
    EXPECT_EQ(64u * 128, data_of(take()).size());
    EXPECT_EQ(15, pixel(0, 0));
}

TEST_F(BigPanel, FillsPictureAndBigDigitsOnOneScreen)
{
    oled_.ShowOLEDFill_big(0, 0, 256, 64, 0xFF);
    oled_.ShowOLEDFill_big(20, 10, 40, 3, 0x00);
    // Rows 255, 0 and 1: the row wraps at 256, the controller keeps six bits.
    oled_.ShowOLEDFill_big(0, 255, 4, 3, 0x12);
    oled_.ShowOLEDFill_big(0, 45, 240, 0, 0);
    unsigned char picture[3 * 4];
    for (int i = 0; i < 12; ++i) {
        picture[i] = static_cast<unsigned char>(0x10 * i + 15 - i);
    }
    oled_.ShowOLEDFillPic_big(100, 7, 8, 3, picture);
    char shifted[] = "7-.";  // anything but a digit, '.' or ' ' is skipped
    oled_.ShowOLEDString_big(120, 30, text(shifted), 3);
    oled_.ShowFrame_big();
    expect_panel("big_fills_picture_digits");

    char buffer[8] = {'1', '2', 0, 'x', 'x', 'x', 'x', 'x'};
    oled_.ShowOLEDString_big(32, 20, text(buffer), 5);
    EXPECT_EQ(0, memcmp(buffer, "12   xxx", 8));  // padded in place
}

TEST_F(BigPanel, LogoSweepLeavesTheShapeBehind)
{
    for (int i = 0; i < 8192; ++i) {
        oled_logo[i] = static_cast<unsigned char>((i / 128) % 2 == 0 ? 0x9F : 0x05);
    }
    oled_.SweepLogo();
    // Behind the band the shape stays at level 2; the last band still
    // glows from 2 up to 14 and down; the last byte column is never swept.
    expect_panel("big_logo_sweep");
    // The logo that follows is read back whole by the logo end-to-end test.
}

// Runs the test body in a box's working folder.
class LogoFile : public BigPanel {
protected:
    ProbeScene box_{""};
};

TEST_F(LogoFile, MissingLogoIsReportedAndTheScreenKept)
{
    oled_.ShowOLEDFill_big(0, 0, 256, 64, 0x37);
    oled_.ShowFrame_big();
    take();
    CaptureStdout out;
    oled_.big_oled_show_logo();
    EXPECT_EQ("Open file (null) fail\n", out.text());
    EXPECT_TRUE(take().empty());
    EXPECT_EQ(3, pixel(154, 33));
    EXPECT_EQ(7, pixel(155, 33));
}

TEST_F(LogoFile, OversizedLogoIsCutToOneImageShownThenBlanked)
{
    std::string image(9000, '\0');
    for (size_t i = 0; i < image.size(); ++i) {
        image[i] = static_cast<char>(i < 8192 ? (i * 7) & 0xFF : 0xEE);
    }
    box_.write("/home/public/logo.bin", image);
    std::vector<uint8_t> shown;
    recorder_->hook = [this, &shown](const Recorder&) {
        // The logo's last byte is the last one sent; the blank follows.
        if (shown.empty() && pixel(255, 63) != 0) {
            shown = panel_->pixels();
        }
    };
    const int descriptors = open_descriptors();
    CaptureStdout out;
    oled_.big_oled_show_logo();
    EXPECT_EQ(0u, out.text().find("open file  ok ==="));
    EXPECT_EQ(open_descriptors(), descriptors);  // the logo file closed again
    EXPECT_EQ(0, memcmp(oled_logo, image.data(), 8192));
    ASSERT_EQ(256u * 64, shown.size());
    EXPECT_EQ((oled_logo[5 * 128 + 9] >> 4), shown[5 * 256 + 18]);
    EXPECT_EQ((oled_logo[63 * 128 + 127] & 0x0F), shown[63 * 256 + 255]);
    EXPECT_EQ(std::vector<uint8_t>(256 * 64, 0), panel_->pixels());
}

}  // namespace
