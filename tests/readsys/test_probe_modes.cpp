#include <gtest/gtest.h>

#include "probe_scene.h"
#include "probes.h"
#include "program_launch.h"
#include "shell_launch.h"

namespace {

struct NamedProbe {
    const char* name;
    std::string (*probe)();
};

const NamedProbe kProbes[] = {
    {"CheckCpuFile", CheckCpuFile},       {"CheckTemperature", CheckTemperature},
    {"CheckHDMIFile", CheckHDMIFile},     {"CheckVdecFile", CheckVdecFile},
    {"CheckVoFile", CheckVoFile},         {"CheckVencFile", CheckVencFile},
    {"CheckViFile", CheckViFile},         {"CheckVi1File", CheckVi1File},
    {"CheckIOFile", CheckIOFile},         {"CheckIO1File", CheckIO1File},
    {"CheckEthspeedFile", CheckEthspeedFile}, {"CheckAiFile", CheckAiFile},
};

}  // namespace

TEST(ProbeModes, InProcessReadingGivesWhatTheShellGives)
{
    for (const char* fixture : {"good", "missing", "empty", "truncated", "garbage", "long"}) {
        ProbeScene scene(fixture);
        for (const NamedProbe& p : kProbes) {
            set_probe_input(ProbeInput::literal_shell);
            const std::string literal = outcome(p.probe);
            set_probe_input(ProbeInput::in_process);
            EXPECT_EQ(outcome(p.probe), literal) << p.name << " on " << fixture;
        }
    }
}

TEST(ProbeModes, InProcessOnlyTheToolsStartAndWithoutAShell)
{
    ProbeScene scene("good");
    for (const NamedProbe& p : kProbes) {
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
