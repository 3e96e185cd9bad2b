#include <gtest/gtest.h>

#include "encoder_probes.h"
#include "probe_scene.h"

TEST(CheckVencFile, NamesThePayloadTypeOfTheFirstWholeKeyLine)
{
    ProbeScene scene("good");
    EXPECT_EQ(CheckVencFile(), "VENC_TYPE:H264") << "the _Profile line above is not the key";
    const struct {
        const char* file;
        const char* result;
    } cases[] = {
        {"kChn0_M_VENC_Type=265\n", "VENC_TYPE:H265"},
        {"kChn0_M_VENC_Type=1002\n", "VENC_TYPE:MJPEG"},
        {"kChn0_M_VENC_Type=96\r\n", "VENC_TYPE:"},
        {"kChn0_M_VENC_Type= 96\n", "VENC_TYPE:"},  // a blank in front keeps the whole text
        {"kChn0_M_VENC_Type=9 6\n", "VENC_TYPE:"},  // the cut drops the '9' too
        {"kChn0_M_VENC_Type=96", "VENC_TYPE:H264"},  // grep ends the line
        {"kChn0_M_VENC_Type=1002\nkChn0_M_VENC_Type=96\n", "VENC_TYPE:MJPEG"},
        {"kChn0_M_VENC_Type:265\n", "VENC_TYPE:H265"},  // the separator is not checked
        {"kChn1_M_VENC_Type=96\n", ""},
    };
    for (const auto& c : cases) {
        scene.write("/data/venc.ini", c.file);
        EXPECT_EQ(CheckVencFile(), c.result) << c.file;
    }
}

TEST(CheckVencFile, GivesNothingOrTheBareLabelForBrokenFiles)
{
    expect_outcomes(CheckVencFile, {{"missing", ""},
                                    {"empty", ""},
                                    {"truncated", "VENC_TYPE:"},
                                    {"garbage", "VENC_TYPE:"},
                                    {"long", "VENC_TYPE:H265"}});  // the key in the last piece of a long line
    ProbeScene scene("good");
    scene.write("/data/venc.ini", std::string(1005, 'x') + " kChn0_M_VENC_Type=96\n");
    EXPECT_EQ(CheckVencFile(), "VENC_TYPE:") << "a piece that ends with the key";
}

TEST(CheckViFile, ReturnsTheFirstLineAsRead)
{
    expect_outcomes(CheckViFile, {{"good", "VI0:1920x1080@60\n"},
                                  {"missing", ""},
                                  {"empty", ""},
                                  {"truncated", "VI0:19"},
                                  {"garbage", ""},  // a NUL first
                                  {"long", "VI0:" + std::string(95, '9')}});
    expect_outcomes(CheckVi1File, {{"good", "VI1:0@0"}, {"garbage", "\xe9\xe9\t\r\n"}, {"long", "VI1:0@0\n"}});
    ProbeScene scene("good");
    scene.write("/tmp/vi0", "VI0:0@0\nVI0:1@1\n");
    EXPECT_EQ(CheckViFile(), "VI0:0@0\n");
    NoFreeDescriptors none;
    EXPECT_EQ(CheckViFile(), "");
}

TEST(State_change, MapsOneToFourDownAndAllElseToFive)
{
    EXPECT_EQ(State_change("1"), "0");
    EXPECT_EQ(State_change("2"), "1");
    EXPECT_EQ(State_change("3"), "2");
    EXPECT_EQ(State_change("4"), "3");
    EXPECT_EQ(State_change("0"), "5");
    EXPECT_EQ(State_change("11"), "5");
    EXPECT_EQ(State_change(""), "5");
    const std::string mine = "2";
    State_change(mine);
    EXPECT_EQ(mine, "2");
}
