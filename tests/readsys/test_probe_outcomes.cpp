// Every probe on every fixture box, and on the good box when no command
// can start (no descriptor left): what each gives for broken pages, the
// same read in-process as through the shell.
#include <gtest/gtest.h>

#include "capture_stdout.h"
#include "probe_scene.h"
#include "probes.h"
#include "program_launch.h"
#include "shell_launch.h"

namespace {

const char* const kFixtures[] = {"good", "missing", "empty", "truncated", "garbage", "long"};
const char* const kUnchecked = nullptr;

struct ProbeOutcomes {
    const char* name;
    std::string (*probe)();
    // One per fixture, then the outcome with no descriptor free, then what
    // the probe prints on that path.
    const char* outcomes[6];
    const char* cannot_start;
    const char* printed;
};

const std::string kLongVi0 = "VI0:" + std::string(95, '9');
const std::string kLongTemperature = "TEMP:" + std::string(99, '0');
const std::string kLongSpeed = "ETH_SPEED:" + std::string(1023, '1');
const std::string kLongIo(99, '1');

const ProbeOutcomes kProbes[] = {
    {"CheckCpuFile", CheckCpuFile, {"CPU:3.52%", "", "", "", "", ""}, "AI DEV ATTR", ""},
    {"CheckTemperature",
     CheckTemperature,
     {"TEMP:52 ", "", "TEMP:", "TEMP:4", "TEMP: 12 5   ", kLongTemperature.c_str()},
     kUnchecked,
     ""},
    // No HotPlug row: the probe throws; "truncated" holds "Y" and the
    // newline grep adds, "garbage" has no colon and cuts "otP".
    {"CheckHDMIFile", CheckHDMIFile, {"YES", kThrows, kThrows, "NO", "NO", "NO"}, "NO", ""},
    // "truncated" has no rows: the buffer still holds the heading.
    {"CheckVdecFile",
     CheckVdecFile,
     {"VDEC:H264", "VDEC:", "VDEC:", "VDEC:ATTR", "VDEC:", "VDEC:"},
     "CHN ATTR & PARAMS",
     ""},
    {"CheckVoFile",
     CheckVoFile,
     {"VO:HDMI_1080P60;LU:52CO:48HU:50SA:55", "VO:_;", kUnchecked, "VO:HDMI_1080P60;LU:52CO:48",
      "VO:_;LU:eCO:fHU:gSA:h i j", "VO:_;LU:52CO:48HU:50SA:55"},
     "DEV CONFIG",
     ""},
    // "good" has a _Profile line above the key; "long" has the key in the
    // last piece of a long line.
    {"CheckVencFile",
     CheckVencFile,
     {"VENC_TYPE:H264", "", "", "VENC_TYPE:", "VENC_TYPE:", "VENC_TYPE:H265"},
     kUnchecked,
     ""},
    // "garbage" starts with a NUL.
    {"CheckViFile", CheckViFile, {"VI0:1920x1080@60\n", "", "", "VI0:19", "", kLongVi0.c_str()}, "", ""},
    {"CheckVi1File",
     CheckVi1File,
     {"VI1:0@0", kUnchecked, kUnchecked, kUnchecked, "\xe9\xe9\t\r\n", "VI1:0@0\n"},
     kUnchecked,
     ""},
    // What is missing shows as its key name.
    {"CheckIOFile",
     CheckIOFile,
     {"01105", "kSet0IOkSet1IOkSet2IOkSet3IOkrelay0st", kUnchecked, "01kSet3IOkrelay0st",
      "kSet0IO=7\r\xff\xfe\rkSet2IO=0", kLongIo.c_str()},
     "",
     ""},
    {"CheckIO1File",
     CheckIO1File,
     {"10010", "kSet4IOkSet5IOkSet6IOkSet7IOkrelay1st", kUnchecked, "kSet4IOkSet5IOkSet6IOkSet7IOkrelay1st",
      "kSet4IOkSet5IOkSet6IOkSet7IOkrelay1st", kUnchecked},
     "",
     "read /data/remserial.ini failed\n"},
    {"CheckEthspeedFile",
     CheckEthspeedFile,
     {"ETH_SPEED:1000 ", "ETH_SPEED:", "ETH_SPEED:", "ETH_SPEED:NO LINK", "ETH_SPEED: 1 ", kLongSpeed.c_str()},
     "",
     "Open /proc/umap/vi failed!\n"},
    {"CheckAiFile", CheckAiFile, {"AIOSR:48000", "AIOSR:", "AIOSR:", "NO_AI", "NO_AI", "AIOSR:"}, "AI DEV ATTR", ""},
};

}  // namespace

TEST(ProbeOutcomes, EachProbeGivesItsTextOnEveryFixtureAndWhenItsCommandCannotStart)
{
    for (const ProbeOutcomes& p : kProbes) {
        for (int f = 0; f < 6; ++f) {
            ProbeScene scene(kFixtures[f], ProbeInput::literal_shell);
            const std::string literal = outcome(p.probe);
            set_probe_input(ProbeInput::in_process);
            EXPECT_EQ(outcome(p.probe), literal) << p.name << " on " << kFixtures[f];
            if (p.outcomes[f] != kUnchecked) {
                EXPECT_EQ(literal, p.outcomes[f]) << p.name << " on " << kFixtures[f];
            }
        }
        for (ProbeInput input : {ProbeInput::in_process, ProbeInput::literal_shell}) {
            if (p.cannot_start == kUnchecked) {
                break;
            }
            ProbeScene scene("good", input);
            CaptureStdout out;
            std::string result;
            {
                NoFreeDescriptors none;
                result = outcome(p.probe);
            }
            const std::string printed = out.text();
            EXPECT_EQ(result, p.cannot_start) << p.name << " " << static_cast<int>(input);
            EXPECT_EQ(printed, p.printed) << p.name << " " << static_cast<int>(input);
        }
    }
}

TEST(ProbeModes, InProcessOnlyTheToolsStartAndWithoutAShell)
{
    ProbeScene scene("good");
    for (const ProbeOutcomes& p : kProbes) {
        const bool tool = p.probe == CheckCpuFile || p.probe == CheckTemperature;
        unsigned long shells = shells_launched();
        const unsigned long programs = programs_started();
        probe_text(p.probe);
        EXPECT_EQ(shells_launched() - shells, 0u) << p.name;
        EXPECT_EQ(programs_started() - programs, tool ? 1u : 0u) << p.name;

        set_probe_input(ProbeInput::literal_shell);
        const bool two_commands = p.probe == CheckIOFile || p.probe == CheckIO1File || p.probe == CheckTemperature;
        shells = shells_launched();
        probe_text(p.probe);
        EXPECT_EQ(shells_launched() - shells, two_commands ? 2u : 1u) << p.name;
        set_probe_input(ProbeInput::in_process);
    }
}

TEST(ProbeModes, BuildOptionChoosesTheDefault)
{
#ifdef OLEDD_LITERAL_SHELL
    EXPECT_EQ(probe_input(), ProbeInput::literal_shell);
#else
    EXPECT_EQ(probe_input(), ProbeInput::in_process);
#endif
}
