#include <gtest/gtest.h>

#include <algorithm>

#include "file_helpers.h"
#include "temp_root.h"

TEST(SplitString, KeepsInnerEmptyPiecesButNoTrailingOne)
{
    typedef std::vector<std::string> V;
    const std::pair<const char*, V> cases[] = {
        {"4|2", {"4", "2"}}, {"a||b", {"a", "", "b"}}, {"|a", {"", "a"}}, {"a|b|", {"a", "b"}}, {"", {}}, {"|", {""}}};
    for (const auto& c : cases) {
        V list;
        SplitString(c.first, list, "|");
        EXPECT_EQ(list, c.second) << c.first;
    }
    V list{"kept"};
    SplitString("a::b", list, "::");
    EXPECT_EQ(list, (V{"kept", "a", "b"}));
}

TEST(Str2Int, AcceptsOnlyALeadingDigitOrMinusDigit)
{
    const std::pair<const char*, int> cases[] = {{"", -1},
                                                 {"abc", -1},
                                                 {" 5", -1},
                                                 {"+5", -1},
                                                 {"-", -1},
                                                 {"-7x", -7},
                                                 {"0x10", 0},
                                                 {"99999999999", 2147483647},
                                                 {"-99999999999", -2147483647 - 1}};
    for (const auto& c : cases) {
        EXPECT_EQ(str2int(c.first), c.second) << c.first;
    }
}

TEST(ReadSthFile, StripsOneLineFeedAndSaysNullForAMissingFile)
{
    TempRoot root;
    root.write("/f/two", "abc\n\n");
    root.write("/f/crlf", "abc\r\n");
    root.write("/f/empty", "");
    EXPECT_EQ(ReadSthFile("/f/two", true), "abc\n");
    EXPECT_EQ(ReadSthFile("/f/two", false), "abc\n\n");
    EXPECT_EQ(ReadSthFile("/f/crlf", true), "abc\r");
    EXPECT_EQ(ReadSthFile("/f/empty", true), "");
    EXPECT_EQ(ReadSthFile("/f/missing", true), "null");
    EXPECT_EQ(ReadSthFile("/f/missing", false), "null");
}

// Routines the daemon keeps for its tools; one behaviour each.
TEST(FileHelpers, WriteShellDirectoryAndHexHelpersWorkUnderTheRoot)
{
    TempRoot root;
    root.make_folder("/data");
    WriteSthFile("/data/x", "hello");
    std::string out;
    EXPECT_EQ(LinuxShell("cat /data/x", out), 5);  // the last line break dropped
    EXPECT_EQ(out, "hello");
    EXPECT_EQ(getFiles("/data"), (std::vector<std::string>{"x"}));
    unsigned char bytes[3] = {0, 0, 0};
    HexStrToByte("0aFf7C", bytes, 6);
    EXPECT_EQ(std::vector<unsigned char>(bytes, bytes + 3), (std::vector<unsigned char>{0x0A, 0xFF, 0x7C}));
}
