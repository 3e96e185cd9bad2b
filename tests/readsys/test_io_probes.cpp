#include <gtest/gtest.h>

#include "io_probes.h"
#include "probe_scene.h"

TEST(CheckIOFile, JoinsFourStatesAndTheRelayOfEachHalf)
{
    ProbeScene scene("good");
    const std::string states = "kSet0IO=0\nkSet1IO=1\nkSet2IO=1\nkSet3IO=0\n";
    scene.write("/data/remserial.ini", states + "krelay0st=2\n");
    EXPECT_EQ(CheckIOFile(), "01100");
    scene.write("/data/remserial.ini", "kSet0IO=0\nkSet1IO=1\nkSet3IO=0\nkrelay0st=1\n");
    EXPECT_EQ(CheckIOFile(), "01kSet2IO05") << "out of order: the third line is passed over";
    scene.write("/data/remserial.ini",
                "kSet0IO=1\nkSet1IO=0\nkSet2IO=0\nkSet3IO=0\nkSet4IO=10\nkSet5IO=20\nkSet6IO=30\nkSet7IO=40\n");
    EXPECT_EQ(CheckIOFile(), "10203040krelay0st") << "later lines match the values now held";
    scene.write("/data/remserial.ini", "kSet0IO=1\nkSet1IO=1\nkSet2IO=1\nkSet3IO=1\nkrelay0st=1\nkrelay0st=5\n");
    EXPECT_EQ(CheckIOFile(), "11110") << "the mapped relay value is matched again";
}
