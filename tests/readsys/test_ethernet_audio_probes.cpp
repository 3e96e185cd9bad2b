#include <gtest/gtest.h>

#include "ethernet_audio_probes.h"
#include "probe_scene.h"

namespace {

const char kHeadings[] = "  AiDev    WorkMode  SampRate  BitWidth\n";

std::string audio_page(const std::string& row)
{
    return "-----AI DEV ATTR-----\n" + std::string(kHeadings) + row + "\n";
}

}  // namespace

TEST(CheckAiFile, TakesTheRateStandingUnderSamp)
{
    ProbeScene scene("good");
    const struct {
        std::string page;
        const char* result;
    } pages[] = {
        {audio_page("  0        I2S_MST   AUTO      16"), "NO_AI"},
        {audio_page("  0        I2S_MST   x8000     16"), "AIOSR:x8000"},  // a digit one place right counts
        {audio_page("  0        I2S_MST    48000    16"), "AIOSR:"},
        {audio_page("  0        I2S_MST   8000      16") + audio_page("  0        I2S_MST   16000     16"),
         "AIOSR:16000"},
        {"-----AI DEV ATTR----- 0000000000000000000000000\n" + std::string(kHeadings) + "  0\n", kThrows},
    };
    for (const auto& p : pages) {
        scene.write("/proc/umap/ai", p.page);
        EXPECT_EQ(outcome(CheckAiFile), p.result) << p.page;
    }
}
