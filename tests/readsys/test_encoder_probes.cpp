#include <gtest/gtest.h>

#include "encoder_probes.h"
#include "probe_scene.h"

TEST(CheckVencFile, NamesThePayloadTypeOfTheFirstWholeKeyLine)
{
    ProbeScene scene("good");
    const struct {
        std::string file;
        const char* result;
    } cases[] = {
        {"kChn0_M_VENC_Type=1002\n", "VENC_TYPE:MJPEG"},
        {"kChn0_M_VENC_Type=96\r\n", "VENC_TYPE:"},
        {"kChn0_M_VENC_Type= 96\n", "VENC_TYPE:"},   // a blank in front keeps the whole text
        {"kChn0_M_VENC_Type=9 6\n", "VENC_TYPE:"},   // the cut drops the '9' too
        {"kChn0_M_VENC_Type=96", "VENC_TYPE:H264"},  // grep ends the line
        {"kChn0_M_VENC_Type=1002\nkChn0_M_VENC_Type=96\n", "VENC_TYPE:MJPEG"},
        {"kChn1_M_VENC_Type=96\n", ""},
        {std::string(1005, 'x') + " kChn0_M_VENC_Type=96\n", "VENC_TYPE:"},  // a piece that ends with the key
    };
    for (const auto& c : cases) {
        scene.write("/data/venc.ini", c.file);
        EXPECT_EQ(CheckVencFile(), c.result) << c.file;
    }
}

TEST(CheckViFile, ReturnsTheFirstLineAsRead)
{
    ProbeScene scene("good");
    scene.write("/tmp/vi0", "VI0:0@0\nVI0:1@1\n");
    EXPECT_EQ(CheckViFile(), "VI0:0@0\n");
}

TEST(State_change, MapsOneToFourDownAndAllElseToFive)
{
    const char* const cases[][2] = {{"1", "0"}, {"2", "1"}, {"3", "2"}, {"4", "3"}, {"0", "5"}, {"11", "5"}, {"", "5"}};
    for (const auto& c : cases) {
        EXPECT_EQ(State_change(c[0]), c[1]) << c[0];
    }
}
