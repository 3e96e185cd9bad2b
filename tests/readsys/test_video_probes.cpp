#include <gtest/gtest.h>

#include "probe_scene.h"
#include "video_probes.h"

namespace {

const char kLayerHeadings[] = "-----VIDEO LAYER STATUS 2-----\n  LayerId  bCscEn  CscMatrix  EnIntfCsc  Luma  Contr  Hue  Satu\n";

}  // namespace

TEST(CheckHDMIFile, ReadsThreeCharactersTwoPlacesAfterTheColon)
{
    ProbeScene scene("good");
    EXPECT_EQ(CheckHDMIFile(), "YES");
    const struct {
        const char* row;
        const char* result;
    } cases[] = {
        {"HotPlug             : NO\n", "NO"},
        {"HotPlug                    : YES\n", "YES"},
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

TEST(CheckHDMIFile, ThrowsWithoutAHotPlugRow)
{
    expect_outcomes(CheckHDMIFile, {{"missing", kThrows},
                                    {"empty", kThrows},
                                    {"truncated", "NO"},  // "Y" and the newline grep adds
                                    {"garbage", "NO"},    // no colon: "otP"
                                    {"long", "NO"}});
    ProbeScene scene("good");
    NoFreeDescriptors none;
    EXPECT_EQ(CheckHDMIFile(), "NO");
}

TEST(CheckVdecFile, TakesTheSecondColumnOfChannelZero)
{
    expect_outcomes(CheckVdecFile, {{"good", "VDEC:H264"},
                                    {"missing", "VDEC:"},
                                    {"empty", "VDEC:"},
                                    {"truncated", "VDEC:ATTR"},  // no rows: the buffer still holds the heading
                                    {"garbage", "VDEC:"},
                                    {"long", "VDEC:"}});
    ProbeScene scene("good");
    scene.write("/proc/umap/vdec", "-----CHN ATTR & PARAMS-----\n  ID  TYPE\n0  H264  1920  1088\n");
    EXPECT_EQ(CheckVdecFile(), "VDEC:H264");
    NoFreeDescriptors none;
    EXPECT_EQ(CheckVdecFile(), "CHN ATTR & PARAMS");
}

TEST(CheckVoFile, JoinsInterfaceModeAndLayerSettings)
{
    expect_outcomes(CheckVoFile, {{"good", "VO:HDMI_1080P60;LU:52CO:48HU:50SA:55"},
                                  {"missing", "VO:_;"},
                                  {"truncated", "VO:HDMI_1080P60;LU:52CO:48"},
                                  {"garbage", "VO:_;LU:eCO:fHU:gSA:h i j"},
                                  {"long", "VO:_;LU:52CO:48HU:50SA:55"}});
    ProbeScene scene("good");
    scene.write("/proc/umap/vo", std::string(kLayerHeadings) + "  0  Y  BT709  N  51  49\n");
    EXPECT_EQ(CheckVoFile(), "VO:_;LU:51CO:49\n") << "six words: the last keeps its newline";
    scene.write("/proc/umap/vo", std::string(kLayerHeadings) + "  0  Y  BT709  N  51  49  50  47  extra\n");
    EXPECT_EQ(CheckVoFile(), "VO:_;LU:51CO:49HU:50SA:47  extra") << "saturation runs to the newline";
    NoFreeDescriptors none;
    EXPECT_EQ(CheckVoFile(), "DEV CONFIG");
}
