// The small-panel driver drawn onto the simulated SoC; what the emulated
// panel decoded from the pins and holds in its RAM is read back.
#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>

#include "capture_stdout.h"
#include "oled_master.h"
#include "panel_fixture.h"
#include "runtime_settings.h"

namespace {

typedef std::vector<std::pair<bool, uint8_t>> Stream;

class SmallPanel : public PanelOnSoc {
protected:
    OLEDMaster oled_;
};

// The bytes of each kind's start-up are read back from the bus by the
// waveform test; here each kind's name, and what the panel is left in: the
// display on, its rows, and its whole memory sent blank.
TEST_F(SmallPanel, EveryKindStartsUpItsPanelBlankAndSwitchedOn)
{
    const struct {
        int type;
        const char* name;
        int rows;
    } kinds[] = {{1, "old small oled\n", 32},
                 {3, "0.96 small oled\n", 64},
                 {4, "0.96 small oled\n", 64},
                 {5, "1.29 small oled\n", 64},
                 {6, "1.29 small oled\n", 64}};
    for (const auto& kind : kinds) {
        SCOPED_TRACE(kind.type);
        TearDown();
        SetUp();
        wire(kind.type, false);  // a reset line waits for the driver's pulse
        panel_->scramble(3);
        CaptureStdout out;
        oled_.InitOLED();
        EXPECT_EQ(kind.name, out.text());
        EXPECT_EQ(std::vector<uint8_t>(128 * 64, 0), panel_->pixels());
        EXPECT_EQ(8u * 128, data_of(take()).size());
        EXPECT_TRUE(panel_->display_on());
        EXPECT_EQ(kind.rows, panel_->visible_rows());
    }
}

TEST_F(SmallPanel, TypesWithoutSmallPanelSendAndPrintNothing)
{
    for (int type : {0, 2}) {
        TearDown();
        SetUp();
        wire(4);
        oled_type = type;
        CaptureStdout out;
        oled_.InitOLED();
        oled_.ShowOLEDString(0, 0, text("A1"), 2);
        oled_.ShowOLEDClear(0, 8);
        oled_.ShowFrame();
        EXPECT_EQ("", out.text());
        EXPECT_TRUE(take().empty());
    }
}

// A screen change as the loops make it: the area blanked, the next text
// drawn. Only the bytes that differ go out, in one transaction per run.
TEST_F(SmallPanel, ScreenChangeSendsOnlyWhatDiffers)
{
    for (int type : {4, 3}) {
        SCOPED_TRACE(type);
        TearDown();
        SetUp();
        wire(type);
        oled_.InitOLED();
        oled_.ShowOLEDString(2, 0, text("10.0.0.7"), 8);
        oled_.ShowOLEDSmallString(4, 4, text("CPU:12%"), 7);
        oled_.ShowFrame();
        take();
        memset(oled_buf, 0x5A, sizeof(oled_buf));
        oled_.ShowOLEDClear(2, 8);
        EXPECT_EQ(0, oled_buf[0] | oled_buf[319]);
        oled_.ShowOLEDSmallString(4, 4, text("CPU:17%"), 7);
        oled_.ShowFrame();
        const Stream sent = take();
        // "CPU:1" is 28 columns wide from column 4: one run from column 32,
        // the '2' turned into a '7', a glyph and its spacer at most.
        ASSERT_EQ(Stream(sent.begin(), sent.begin() + 3), commands("B4 12 00"));
        EXPECT_LE(sent.size(), 3u + 6u);
        EXPECT_EQ(0u, data_of(Stream(sent.begin(), sent.begin() + 3)).size());
        // Nothing changed, nothing sent.
        oled_.ShowFrame();
        EXPECT_TRUE(take().empty());
        // What the panel shows is the frame: the whole frame, sent again
        // by a start-up to a panel that lost its memory, changes nothing.
        const std::vector<uint8_t> changed = panel_->pixels();
        panel_->scramble(5);
        oled_.InitOLED();
        EXPECT_EQ(changed, panel_->pixels());
    }
}

TEST_F(SmallPanel, OlderAddressingShiftsThePageByFive)
{
    wire(4);
    oled_.SetOLEDAddr(0x25, 4);
    EXPECT_EQ(take(), commands("B1 05 12"));
}

}  // namespace
