#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "file_command.h"
#include "line_source.h"
#include "probe_scene.h"

namespace {

// Every piece the reader hands out for a command, with a given buffer.
std::vector<std::string> pieces(const char* command, int size)
{
    std::vector<std::string> out;
    LineSource in;
    if (!in.open(command)) {
        out.push_back("<cannot start>");
        return out;
    }
    std::vector<char> buffer(size, 'z');
    while (in.gets(buffer.data(), size) != nullptr) {
        out.push_back(buffer.data());
    }
    return out;
}

const char* const kCommands[] = {
    "cat /data/mixed.txt",
    "cat /data/mixed.txt | grep kSet",
    "cat /data/mixed.txt | grep -w kChn0_M_VENC_Type",
    "cat /data/mixed.txt | awk '/HotPlug/'",
    "cat /data/absent.txt | grep kSet",
};

const char kMixed[] =
    "kSet0IO=1\n"
    "xkChn0_M_VENC_Type=1\n"
    "kChn0_M_VENC_Type_Profile=2\n"
    "kChn0_M_VENC_TypeA=3 -kChn0_M_VENC_Type-=4\n"
    "HotPlug : YES\r\n"
    "\n"
    "kSet1IO=0 and a tail long enough to be cut into several pieces\n"
    "HotPlug and kSet and kChn0_M_VENC_Type at the end";

}  // namespace

TEST(LineSource, ReadsFilesInProcessPieceForPieceAsTheToolsPrintThem)
{
    for (const std::string& content :
         {std::string(kMixed), std::string(kMixed) + "\n", std::string(3000, 'k') + "kSet\n"}) {
        ProbeScene scene("");
        scene.write("/data/mixed.txt", content);
        for (int size : {100, 7, 2}) {
            for (const char* command : kCommands) {
                set_probe_input(ProbeInput::literal_shell);
                const std::vector<std::string> expected = pieces(command, size);
                set_probe_input(ProbeInput::in_process);
                EXPECT_EQ(pieces(command, size), expected) << command << " size " << size;
            }
        }
    }
}

// A refused command goes to the tools, so the test above sees no
// difference; here what is read in-process, and what is not.
TEST(FileCommand, OnlyOneFileAndOnePlainWordAreReadInProcess)
{
    FileCommand c;
    ASSERT_TRUE(parse_file_command("cat /proc/umap/hdmi | awk '/HotPlug/'", c));
    EXPECT_EQ(c.path + "|" + c.pattern, "/proc/umap/hdmi|HotPlug");
    EXPECT_EQ(c.filter, FileCommand::awk_text);
    ASSERT_TRUE(parse_file_command("cat /a | awk '/x/'", c));
    EXPECT_EQ(c.pattern, "x");
    ASSERT_TRUE(parse_file_command("cat /a | grep -w x_1", c));
    EXPECT_EQ(c.filter, FileCommand::grep_word);
    EXPECT_EQ(c.pattern, "x_1");
    ASSERT_TRUE(parse_file_command("cat /a", c));
    EXPECT_EQ(c.path + "|" + c.pattern, "/a|");
    for (const char* refused : {"cat /a | awk '//'", "cat /a | awk '/'", "cat /a | awk '/xy'", "cat /a | awk 'xy/'",
                                "cat /a | awk \"/x/\"", "cat /a | awk '/x/' ", "cat /a | awk '/x/{print}'",
                                "cat /a | grep ", "cat /a | grep -c", "cat /a | grep -v x", "cat /a | grep x | wc",
                                "cat a", "cat /a /b", "cat  /a", "cat /a > /b", "tac /a", "cat /a|grep x"}) {
        EXPECT_FALSE(parse_file_command(refused, c)) << refused;
    }
    for (const char special : std::string(" \t'\"\\.[]*^$+?(){}|/")) {
        EXPECT_FALSE(parse_file_command(("cat /a | awk '/x" + std::string(1, special) + "y/'").c_str(), c)) << special;
    }
    for (const char special : std::string("'\"\\$*?[;&|<>`")) {
        EXPECT_FALSE(parse_file_command(("cat /a" + std::string(1, special) + "b").c_str(), c)) << special;
    }
}

TEST(LineSource, LeavesNoDescriptorOpen)
{
    ProbeScene scene("good");
    const int before = open_descriptors();
    for (ProbeInput input : {ProbeInput::in_process, ProbeInput::literal_shell}) {
        set_probe_input(input);
        LineSource in;
        ASSERT_TRUE(in.open("cat /proc/umap/vo | grep DEV"));
        EXPECT_GT(open_descriptors(), before);
        LineSource again;
        ASSERT_TRUE(again.open("cat /proc/umap/ai"));
        ASSERT_TRUE(again.open("iostat -c"));  // reopening closes the first
        ASSERT_TRUE(again.open("cat /proc/umap/vo"));
    }
    EXPECT_EQ(open_descriptors(), before);
}
