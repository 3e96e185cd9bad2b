#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>

#include <string>

#include "soc.h"
#include "vcd_writer.h"

TEST(VcdWriter, TimesEveryWriteShowsPullsAndWaitsAndStopsAtItsLimit)
{
    SimSoc& soc = SimSoc::instance();
    soc.reset();
    const uint32_t group5 = 0x121A0000;
    soc.store(group5 + 0x400, 0x07);
    soc.store(group5 + (2 << 2), 2);  // DAT high before recording starts
    const std::string header =
        "$version oledd-sim $end\n$timescale 1us $end\n$scope module box $end\n"
        "$var wire 1 ! CLK $end\n$var wire 1 \" DAT $end\n$upscope $end\n$enddefinitions $end\n"
        "#0\n$dumpvars\n0!\n1\"\n$end\n";
    const std::string recorded = "#1\n1!\n#3\n0!\n0\"\n#2504\n1!\n";
    char* text = nullptr;
    size_t size = 0;
    FILE* file = open_memstream(&text, &size);
    int64_t now = 0;
    VcdWriter writer(file, "bus.vcd", {{"CLK", {5, 0}}, {"DAT", {5, 1}}}, header.size() + recorded.size() + 5,
                     [&now] { return now; });
    writer.attach();
    soc.store(group5 + (1 << 2), 1);
    soc.store(group5 + (4 << 2), 4);  // no watched line, still a microsecond
    now += 999;                       // the host's own work
    soc.store(group5 + (1 << 2), 0);
    soc.pull_low(5, 1, true);
    now += 2500;                      // a Delayms
    soc.store(group5 + (2 << 2), 0);  // unseen: the line is pulled low already
    soc.pull_low(5, 1, false);
    soc.store(group5 + (1 << 2), 1);
    soc.store(group5 + (1 << 2), 0);
    soc.store(group5 + (1 << 2), 1);
    soc.reset();
    fclose(file);
    EXPECT_EQ(header + recorded + "$comment oledd-sim stopped recording here: the file reached its size limit $end\n",
              std::string(text, size));
    free(text);
}
