#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdio>
#include <string>

#include "temp_root.h"

namespace {

struct ProgramRun {
    int status;
    std::string output;  // standard output and error together
};

ProgramRun oled_logo(const std::string& arguments)
{
    FILE* pipe = popen((std::string(OLED_LOGO_PROGRAM) + " " + arguments + " 2>&1").c_str(), "r");
    ProgramRun run{-1, ""};
    char buffer[512];
    for (size_t size; pipe != nullptr && (size = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        run.output.append(buffer, size);
    const int status = pipe != nullptr ? pclose(pipe) : -1;
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

TEST(OledLogoProgram, LogoSurvivesTheTripThroughPngByteForByte)
{
    TempRoot dir;
    const std::string d = dir.path();
    for (const char* dither : {"", " --dither"}) {
        SCOPED_TRACE(dither);
        ASSERT_EQ(oled_logo(std::string("to-bin ") + OLED_ARTWORK + " " + d + "/first.bin" + dither).status, 0);
        ASSERT_EQ(oled_logo("to-png " + d + "/first.bin " + d + "/check.png").status, 0);
        ASSERT_EQ(oled_logo("to-bin " + d + "/check.png " + d + "/second.bin" + dither).status, 0);
        const std::string first = dir.read("/first.bin");
        EXPECT_EQ(first.size(), 8192u);
        EXPECT_EQ(dir.read("/second.bin"), first);
    }
}

TEST(OledLogoProgram, BadInputGivesOneLineAndFailure)
{
    TempRoot dir;
    const std::string d = dir.path();
    dir.write("/text.png", "hello");
    dir.write("/short.bin", std::string(8191, '\x11'));
    dir.write("/long.bin", std::string(8193, '\x11'));
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"to-bin " + d + "/text.png " + d + "/out.bin", "oled-logo: " + d + "/text.png: "},
        {"to-png " + d + "/short.bin " + d + "/out.png",
         "oled-logo: " + d + "/short.bin: 8191 bytes; a logo.bin holds exactly 8192"},
        {"to-png " + d + "/long.bin " + d + "/out.png",
         "oled-logo: " + d + "/long.bin: more than 8192 bytes; a logo.bin holds exactly 8192"},
        {"to-png " + d + "/none.bin " + d + "/out.png", "oled-logo: " + d + "/none.bin: No such file"},
        {"to-gif a b", "oled-logo: expected to-bin"},
        {"to-bin --fast a b", "oled-logo: unknown option --fast"},
    };
    for (const auto& c : cases) {
        const ProgramRun run = oled_logo(c.first);
        EXPECT_NE(run.status, 0) << c.first;
        EXPECT_EQ(run.output.compare(0, c.second.size(), c.second), 0) << run.output;
        EXPECT_EQ(run.output.find('\n'), run.output.size() - 1) << run.output;
    }
    EXPECT_FALSE(dir.exists("/out.bin"));
    EXPECT_FALSE(dir.exists("/out.png"));
    const ProgramRun help = oled_logo("--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.output.find("to-bin IN.png OUT.bin [--dither]"), std::string::npos);
}

}  // namespace
