#include <gtest/gtest.h>

#include "capture_stdout.h"
#include "register_file.h"

// The failure is final for the process, so one test walks from working
// registers to a device that cannot be mapped.
TEST(DeviceRegisters, ReachTheDeviceUntilAMappingFailsThenSkipQuietly)
{
    const RegisterFile& file = RegisterFile::instance();
    EXPECT_EQ(set_reg(0x12190010, 0x4), 0x4u);
    EXPECT_EQ(file.read(0x12190010), 0x4u);
    EXPECT_EQ(get_reg(0x12190010), 0x4u);

    set_memmap_device("/nonexistent/mem");
    CaptureStdout out;
    EXPECT_EQ(get_reg(0x12200400), 0u);
    set_reg(0x12200010, 0x4);
    file.use();
    set_reg(0x12190010, 0x0);  // mapped before, skipped all the same
    EXPECT_EQ(get_reg(0x12190010), 0u);
    EXPECT_EQ(file.read(0x12190010), 0x4u);
    EXPECT_EQ(out.text(),
              "memmap():open /nonexistent/mem error!\n"
              "register 0x12200400 cannot be mapped: register access is skipped from now on\n");
}
