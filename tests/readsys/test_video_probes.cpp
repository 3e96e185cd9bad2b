#include <gtest/gtest.h>

#include "probe_scene.h"
#include "video_probes.h"

namespace {

const char kLayerHeadings[] =
    "-----VIDEO LAYER STATUS 2-----\n  LayerId  bCscEn  CscMatrix  EnIntfCsc  Luma  Contr  Hue  Satu\n";

}  // namespace

TEST(CheckHDMIFile, ReadsThreeCharactersTwoPlacesAfterTheColon)
{
    ProbeScene scene("good");
    const struct {
        const char* row;
        const char* result;
    } cases[] = {
        {"HotPlug             :  YES\n", "NO"},
        {"HotPlug             : YESTERDAY\n", "YES"},
        {"xYESHotPlug\n", "YES"},  // no colon: the cut starts at 1
        {"HotPlug:\n", "NO"},
    };
    for (const auto& c : cases) {
        scene.write("/proc/umap/hdmi0", std::string("[HDMI]\n") + c.row + "HotPlug : YES\n");
        EXPECT_EQ(CheckHDMIFile(), c.result) << c.row;
    }
}

TEST(CheckVoFile, JoinsInterfaceModeAndLayerSettings)
{
    ProbeScene scene("good");
    scene.write("/proc/umap/vo", std::string(kLayerHeadings) + "  0  Y  BT709  N  51  49\n");
    EXPECT_EQ(CheckVoFile(), "VO:_;LU:51CO:49\n") << "six words: the last keeps its newline";
}
