#include <gtest/gtest.h>

#include <stdio.h>

#include <atomic>
#include <fstream>
#include <thread>

#include "probe_scene.h"
#include "system_probes.h"

namespace {

std::string iostat_printing(const std::string& values_line)
{
    return "#!/bin/sh\ncat <<'OUT'\nLinux 4.9.37 (box) \t03/14/26 \t_armv7l_\t(2 CPU)\n\n"
           "avg-cpu:  %user   %nice %system %iowait  %steal   %idle\n" +
           values_line + "\n\nOUT\n";
}

}  // namespace

TEST(CheckCpuFile, TakesTheFirstValueWordWhenLongerThanThree)
{
    ProbeScene scene("good");
    scene.write_tool("/bin/iostat", iostat_printing("           5.0    0.00    0.50    0.00    0.00   94.50"));
    EXPECT_EQ(CheckCpuFile(), "");
    scene.write_tool("/bin/iostat", iostat_printing("\t12.25\t0.00"));
    EXPECT_EQ(CheckCpuFile(), "CPU:\t12.25\t0.00\n%") << "a tab belongs to the word, and so does the newline";
    scene.write_tool("/bin/iostat",
                     "#!/bin/sh\nprintf 'avg-cpu: %%user\\n 1.00 2\\n\\navg-cpu: %%user\\n 4.00 5\\n\\n'\n");
    EXPECT_EQ(CheckCpuFile(), "") << "a second report clears the word and takes no other";
}

TEST(CheckTimeFile, SplitsTheUptimeIntoUnpaddedFields)
{
    EXPECT_EQ(format_uptime(59), "TIM:0.0.0.59S");
    EXPECT_EQ(format_uptime(86400 + 2 * 3600 + 3 * 60 + 4), "TIM:1.2.3.4S");
    EXPECT_EQ(format_uptime(400L * 86400 + 86399), "TIM:400.23.59.59S");

    double uptime = 0;
    std::ifstream("/proc/uptime") >> uptime;
    // The fields read back make the uptime of the moment it was taken.
    const std::string now = CheckTimeFile();
    long days = -1, hours = -1, minutes = -1, seconds = -1;
    ASSERT_EQ(sscanf(now.c_str(), "TIM:%ld.%ld.%ld.%ldS", &days, &hours, &minutes, &seconds), 4) << now;
    const long total = ((days * 24 + hours) * 60 + minutes) * 60 + seconds;
    EXPECT_GE(total, static_cast<long>(uptime)) << now;
    EXPECT_LE(total, static_cast<long>(uptime) + 1) << now;
}

TEST(CheckTemperature, RunsTheToolFromTheWorkingFolderAndBlanksNonDigits)
{
    ProbeScene scene("good");
    EXPECT_EQ(CheckTemperature(), "TEMP:52 ");
    EXPECT_EQ(scene.root().read("/tmp/temperature"), "52\n") << "written under the box root";

    scene.remove("/home/public/get_temperature");
    scene.write_tool("/home/public/get_temperature.sh", "#!/bin/sh\necho 45.5\n");
    EXPECT_EQ(CheckTemperature(), "TEMP:45 5 ");

    scene.remove("/home/public/get_temperature.sh");
    EXPECT_EQ(CheckTemperature(), "") << "no tool: the old reading is not shown";

    // The LED loop and a screen loop run the tool into the same file:
    // neither reads it between the other's truncation and the tool's line.
    scene.write_tool("/home/public/get_temperature", "#!/bin/sh\necho 52\n");
    std::atomic<int> empty(0);
    const auto passes = [&empty] {
        for (int i = 0; i < 300; ++i) {
            empty += CheckTemperature() != "TEMP:52 ";
        }
    };
    std::thread led_loop(passes);
    passes();
    led_loop.join();
    EXPECT_EQ(0, empty);
}
