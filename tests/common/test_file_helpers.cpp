#include <gtest/gtest.h>

#include <algorithm>

#include "capture_stdout.h"
#include "file_helpers.h"
#include "temp_root.h"

namespace {

std::vector<std::string> split(const std::string& text, const std::string& sep)
{
    std::vector<std::string> list;
    SplitString(text, list, sep);
    return list;
}

}  // namespace

TEST(SplitString, KeepsInnerEmptyPiecesButNoTrailingOne)
{
    typedef std::vector<std::string> V;
    EXPECT_EQ(split("4_2", "_"), (V{"4", "2"}));
    EXPECT_EQ(split("a||b", "|"), (V{"a", "", "b"}));
    EXPECT_EQ(split("|a", "|"), (V{"", "a"}));
    EXPECT_EQ(split("a|b|", "|"), (V{"a", "b"}));
    EXPECT_EQ(split("", "|"), V{});
    EXPECT_EQ(split("0", "_"), V{"0"});
    EXPECT_EQ(split("|", "|"), V{""});
    EXPECT_EQ(split("a::b", "::"), (V{"a", "b"}));

    V list{"kept"};
    SplitString("x|y", list, "|");
    EXPECT_EQ(list, (V{"kept", "x", "y"}));
}

TEST(Str2Int, AcceptsOnlyALeadingDigitOrMinusDigit)
{
    EXPECT_EQ(str2int(""), -1);
    EXPECT_EQ(str2int("abc"), -1);
    EXPECT_EQ(str2int(" 5"), -1);
    EXPECT_EQ(str2int("+5"), -1);
    EXPECT_EQ(str2int("-"), -1);
    EXPECT_EQ(str2int("-7x"), -7);
    EXPECT_EQ(str2int("4_2"), 4);
    EXPECT_EQ(str2int("0x10"), 0);
    EXPECT_EQ(str2int("99999999999"), 2147483647);
    EXPECT_EQ(str2int("-99999999999"), -2147483647 - 1);
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

TEST(FileHelpers, WriteShellDirectoryAndHexHelpersWorkUnderTheRoot)
{
    TempRoot root;
    WriteSthFile("/data/x", "hello");
    EXPECT_EQ(root.read("/data/x"), "");  // no folder: nothing written
    root.make_folder("/data");
    WriteSthFile("/data/x", "hello");
    EXPECT_EQ(root.read("/data/x"), "hello\n");

    std::string out;
    EXPECT_EQ(LinuxShell("cat /data/x", out), 5);
    EXPECT_EQ(out, "hello");

    root.write("/dir/a", "");
    root.write("/dir/b", "");
    std::vector<std::string> files = getFiles("/dir");
    std::sort(files.begin(), files.end());
    EXPECT_EQ(files, (std::vector<std::string>{"a", "b"}));

    unsigned char bytes[3] = {0, 0, 0};
    HexStrToByte("0aFf7C", bytes, 6);
    EXPECT_EQ(std::vector<unsigned char>(bytes, bytes + 3), (std::vector<unsigned char>{0x0A, 0xFF, 0x7C}));
}
