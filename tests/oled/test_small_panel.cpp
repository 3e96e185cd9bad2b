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

Stream join(Stream a, const Stream& b, const Stream& c = Stream())
{
    a.insert(a.end(), b.begin(), b.end());
    a.insert(a.end(), c.begin(), c.end());
    return a;
}

// The blanking of pages first..end-1: address, then 128 zero data bytes.
Stream blank(int first = 0, int end = 8)
{
    Stream out;
    for (int page = first; page < end; ++page) {
        char address[12];
        snprintf(address, sizeof(address), "%X 10 00", 0xB0 + page);
        out = join(out, commands(address), Stream(128, std::make_pair(true, uint8_t(0))));
    }
    return out;
}

class SmallPanel : public PanelOnSoc {
protected:
    OLEDMaster oled_;
};

TEST_F(SmallPanel, EveryKindSendsItsStartUpSequenceOnItsBus)
{
    const Stream kind096 = join(commands("AE 00 10 40 81 CF A1 C8 A6 A8 3F D3 00 D5 80 D9 F1 DA 12 DB 40 20 02 "
                                         "8D 14 A4 A6"),
                                blank(), commands("AF A6 C8 A1"));
    const Stream kind129 = join(commands("AE 00 10 B0 40 81 88 82 00 A1 A2 A4 A6 A8 3F C8 D3 00 D5 A0 D9 22 "
                                         "DB 40 31 AD 8B"),
                                blank(), commands("AF A6 C0 A0"));
    const Stream kind_old = join(commands("AE D5 80 A8 1F D3 00 A1 A6 40 B0 D5 F0 8D 14 20 02 C8 A1 DA 02 81 00 "
                                          "D9 F1 DB 49"),
                                 blank(), commands("AF"));
    const struct {
        int type;
        const char* name;
        const Stream* stream;
        int rows;
    } kinds[] = {
        {1, "old small oled\n", &kind_old, 32}, {3, "0.96 small oled\n", &kind096, 64},
        {4, "0.96 small oled\n", &kind096, 64}, {5, "1.29 small oled\n", &kind129, 64},
        {6, "1.29 small oled\n", &kind129, 64},
    };
    for (const auto& kind : kinds) {
        SCOPED_TRACE(kind.type);
        TearDown();
        SetUp();
        wire(kind.type, false);  // a reset line waits for the driver's pulse
        CaptureStdout out;
        oled_.InitOLED();
        EXPECT_EQ(kind.name, out.text());
        EXPECT_EQ(take(), *kind.stream);
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
