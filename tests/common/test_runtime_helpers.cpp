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

TEST(MessageQueue, CreateSetStatusDelete)
{
    TempRoot root;
    int id = CreateMessageQueue(root.path().c_str());
    if (id < 0) {
        GTEST_SKIP() << "System V message queues not available here";
    }
    CaptureStdout out;
    // Raising the byte limit needs a privilege a container may lack.
    msqid_ds info;
    EXPECT_TRUE(SetMessageQueue(id) == 0 || (msgctl(id, IPC_STAT, &info) == 0 && info.msg_qbytes == 5242880u));
    GetMessageQueueStatus(id);
    EXPECT_EQ(DeleteMessageQueue(id), 1);
    EXPECT_EQ(DeleteMessageQueue(id), 0);
    EXPECT_EQ(CreateMessageQueue("/no/such/path"), 0);
    const std::string printed = out.text();
    EXPECT_NE(printed.find("\nnumber of messages in queue is 0\nmax number of bytes"), std::string::npos) << printed;
    EXPECT_NE(printed.find("[DeleteMessageQueue]-39: msgctl(IPC_RMID) failed\n[CreateMessageQueue]-13: ftok create error: "),
              std::string::npos) << printed;
}
