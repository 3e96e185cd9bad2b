// The appliance's register seam over a sparse file standing in for
// /dev/mem; the mapping device is switched to /dev/null (which opens but
// cannot be mapped) to make one page fail.
#include <gtest/gtest.h>
#include <unistd.h>

#include "bus_lines.h"
#include "capture_stdout.h"
#include "oled_master.h"
#include "pin_setup.h"
#include "register_file.h"
#include "runtime_settings.h"

namespace {

const uint32_t kSentinel = 0xA5A5A5A5;

}  // namespace

// A failure is final for its page, so one test walks from working pages to
// one that fails and back to new pages that map.
TEST(DeviceRegisters, APageThatCannotBeMappedIsReportedOnceAndOnlyItIsSkipped)
{
    const RegisterFile& file = RegisterFile::instance();
    EXPECT_EQ(set_reg(0x12190010, 0x4), 0x4u);
    EXPECT_EQ(file.read(0x12190010), 0x4u);
    EXPECT_EQ(get_reg(0x12190010), 0x4u);

    CaptureStdout out;
    set_memmap_device("/dev/null");
    EXPECT_EQ(get_reg(0x12200400), 0u);
    set_reg(0x12200010, 0x4);
    EXPECT_EQ(get_reg(0x12200400), 0u);
    set_reg(0x12190010, 0x8);  // mapped before: still reached
    EXPECT_EQ(file.read(0x12190010), 0x8u);

    file.use();
    set_reg(0x12200010, 0x4);  // the failed page stays skipped, silently
    EXPECT_EQ(file.read(0x12200010), 0u);
    set_reg(0x121A0010, 0x10);  // a page never tried before maps
    EXPECT_EQ(file.read(0x121A0010), 0x10u);
    EXPECT_EQ(get_reg(0x121A0010), 0x10u);
    EXPECT_EQ(out.text(),
              "memmap():mmap @ 0x12200000 error!\n"
              "register 0x12200400 cannot be mapped: accesses to page 0x12200000 are skipped from now on\n");
}

// The two-wire panels have no reset line: its address stays 0, and start-up
// must not pulse it (a kernel that refuses page 0 would otherwise cost the
// whole panel). Pins as the board defaults name them.
TEST(DeviceRegisters, TwoWirePanelsNeverTouchAddressZero)
{
    const RegisterFile& file = RegisterFile::instance();
    file.use();
    ASSERT_TRUE(file.write(0, kSentinel));
    for (int kind : {4, 5}) {
        SCOPED_TRACE(kind);
        CaptureStdout out;
        oled_type = kind;
        oled_gpio_init();
        ASSERT_NE(SDA, 0u);
        ASSERT_EQ(RES, 0u);
        file.write(SDA, 0);
        OLEDMaster().InitOLED();
        EXPECT_EQ(file.read(SDA), SDA_H);  // the stop condition leaves data high
        EXPECT_EQ(file.read(0), kSentinel);
        EXPECT_EQ(out.text().find("cannot be mapped"), std::string::npos) << out.text();
    }
    EXPECT_EQ(get_reg(0), 0u);
    EXPECT_EQ(file.read(0), kSentinel);
}
