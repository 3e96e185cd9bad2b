#include <gtest/gtest.h>

#include "board_identity.h"
#include "capture_stdout.h"
#include "temp_root.h"

namespace {

struct Outcome {
    std::string board;
    std::string printed;
};

Outcome read_board(const char* file_content)
{
    TempRoot root;
    if (file_content != nullptr) {
        root.write("/version/hardware_info", file_content);
    }
    char board[kBoardIdSize] = {0};
    CaptureStdout out;
    get_hw_version(board);
    return Outcome{board, out.text()};
}

const char kFailure[] = "[get_hw_version]-1209: GetJsonValue() from file-hardware_info failed!\n";

}  // namespace

TEST(BoardIdentity, ReadsTheBoardMemberAndPrintsIt)
{
    Outcome plain = read_board("{\"board\":\"BRD25\"}");
    EXPECT_EQ(plain.board, "BRD25");
    EXPECT_EQ(plain.printed, "BRD25\n");

    Outcome with_newline = read_board("{\"board\":\"BRD25\", \"sn\": 7}\n");
    EXPECT_EQ(with_newline.board, "BRD25");
    EXPECT_EQ(with_newline.printed, "BRD25\n");
}

TEST(BoardIdentity, EveryFailureLeavesTheBoardEmptyAndStartUpGoesOn)
{
    Outcome wrong_case = read_board("{\"Board\":\"BRD25\"}");
    EXPECT_EQ(wrong_case.board, "");
    EXPECT_EQ(wrong_case.printed, std::string(kFailure) + "\n");

    // A member that is not a string counts as found: no failure line.
    Outcome number = read_board("{\"board\":25}");
    EXPECT_EQ(number.board, "");
    EXPECT_EQ(number.printed, "\n");

    // A missing file reads as "null", valid JSON without members.
    Outcome missing = read_board(nullptr);
    EXPECT_EQ(missing.board, "");
    EXPECT_EQ(missing.printed, std::string(kFailure) + "\n");

    Outcome garbage = read_board("{\"board\": BRD25}");
    EXPECT_EQ(garbage.board, "");
    EXPECT_EQ(garbage.printed, std::string("[GetJsonValue]-83: Error before: BRD25}") + kFailure + "\n");
}

TEST(BoardIdentity, AnOverlongIdentifierIsCutToTheBuffer)
{
    std::string name(300, 'B');
    Outcome longer = read_board(("{\"board\":\"" + name + "\"}").c_str());
    EXPECT_EQ(longer.board, name.substr(0, kBoardIdSize - 1));
}

TEST(BoardIdentity, TextSearchReaderFindsTheQuotedIdentifier)
{
    TempRoot root;
    root.write("/version/hardware_info", "{\"board\": \"BRD07\", \"x\":1}\n");
    root.write("/media/version/hardware_info", "no board here\n");
    std::string result;
    ReadHardwareInfo(result, false);
    EXPECT_EQ(result, "BRD07");
    ReadHardwareInfo(result, true);
    EXPECT_EQ(result, "no board here");
}
