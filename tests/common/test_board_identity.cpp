// What get_hw_version prints for each kind of board file is checked end
// to end at start-up; here the bound and the text-search reader.
#include <gtest/gtest.h>

#include "board_identity.h"
#include "capture_stdout.h"
#include "temp_root.h"

TEST(BoardIdentity, OverlongIdentifierIsCutAndTextSearchFindsTheQuotedOne)
{
    TempRoot root;
    const std::string name(300, 'B');
    root.write("/version/hardware_info", "{\"board\":\"" + name + "\"}");
    char board[kBoardIdSize] = {0};
    CaptureStdout quiet;
    get_hw_version(board);
    EXPECT_EQ(board, name.substr(0, kBoardIdSize - 1));

    root.write("/version/hardware_info", "{\"board\": \"BRD07\", \"x\":1}\n");
    root.write("/media/version/hardware_info", "no board here\n");
    std::string result;
    ReadHardwareInfo(result, false);
    EXPECT_EQ(result, "BRD07");
    ReadHardwareInfo(result, true);
    EXPECT_EQ(result, "no board here");
}
