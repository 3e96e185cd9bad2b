#include <gtest/gtest.h>

#include <sys/ipc.h>
#include <sys/msg.h>

#include <atomic>
#include <thread>
#include <vector>

#include "capture_stdout.h"
#include "durable_file.h"
#include "message_queue.h"
#include "singleton.h"
#include "temp_root.h"

namespace {

std::atomic<int> constructed(0);

struct Counted {
    Counted() { ++constructed; }
    int value = 42;
};

}  // namespace

TEST(Singleton, CreatesOneInstanceEvenWhenThreadsRace)
{
    std::vector<std::thread> threads;
    std::vector<Counted*> seen(8, nullptr);
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([i, &seen] { seen[i] = Singleton<Counted>::instance().get(); });
    }
    for (std::thread& t : threads) {
        t.join();
    }
    EXPECT_EQ(constructed.load(), 1);
    for (Counted* p : seen) {
        EXPECT_EQ(p, seen[0]);
    }
    EXPECT_EQ(Singleton<Counted>::instance()->value, 42);
}

// The fallback for a folder that takes no new file is the settings
// store's test, run as an unprivileged user.
TEST(DurableFile, ReplacesTheWholeFileAndLeavesNoTemporary)
{
    TempRoot root;
    root.make_folder("/data");
    ASSERT_TRUE(write_file_durably("/data/f", "first, longer\n"));
    ASSERT_TRUE(write_file_durably("/data/f", "second\n"));
    EXPECT_EQ(root.read("/data/f"), "second\n");
    EXPECT_FALSE(root.exists("/data/f.tmp"));
    EXPECT_TRUE(file_holds("/data/f", "second\n"));
    EXPECT_FALSE(file_holds("/data/f", "second"));
}

TEST(MessageQueue, CreateAndDelete)
{
    TempRoot root;
    int id = CreateMessageQueue(root.path().c_str());
    if (id < 0) {
        GTEST_SKIP() << "System V message queues not available here";
    }
    CaptureStdout quiet;
    EXPECT_EQ(DeleteMessageQueue(id), 1);
    EXPECT_EQ(DeleteMessageQueue(id), 0);
}
