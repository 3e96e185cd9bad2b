#include <gtest/gtest.h>
#include <dirent.h>
#include <unistd.h>

#include <string>
#include <vector>

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

int open_descriptors()
{
    int count = 0;
    DIR* dir = opendir("/proc/self/fd");
    while (readdir(dir) != nullptr) {
        ++count;
    }
    closedir(dir);
    return count;
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
    for (const std::string& content : {std::string(kMixed), std::string(kMixed) + "\n", std::string(3000, 'k') + "kSet\n"}) {
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

TEST(LineSource, LeavesNoDescriptorOpenAndReportsWhenNoneIsLeft)
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

    for (ProbeInput input : {ProbeInput::in_process, ProbeInput::literal_shell}) {
        set_probe_input(input);
        LineSource in;
        NoFreeDescriptors none;
        EXPECT_FALSE(in.open("cat /proc/umap/vo"));
        EXPECT_FALSE(in.open("iostat -c"));
    }
}
