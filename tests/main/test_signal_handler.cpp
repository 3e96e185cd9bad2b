#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <utility>

#include "capture_stdout.h"
#include "signal_handler.h"

namespace {

// A child set up as start-up sets itself up runs body and waits for its
// end: the handler's two lines, whole, status 255, in time.
void expect_end(void (*body)(), double at_least, double within)
{
    CaptureStdout out;  // the child inherits the captured descriptor
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
        setvbuf(stdout, nullptr, _IOLBF, 0);
        start_ending_thread();
        signal(SIGTERM, HandleSig);
        body();
        for (;;) {
            pause();
        }
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    const double took = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const std::string text = "\n" + out.text();
    // The interrupted loop may still finish one line between the two.
    const std::string first = "\nhandle signal -->0xf\n";
    const std::string second = "\nexit  HandleSig\n";
    EXPECT_EQ(std::make_pair(1, 1), std::make_pair(occurrences(text, first), occurrences(text, second)));
    EXPECT_LT(text.find(first), text.find(second));
    EXPECT_EQ(occurrences(text, "andle"), 2);
    EXPECT_EQ(status, 255 << 8);
    EXPECT_TRUE(took >= at_least && took < within) << took;
}

std::atomic<int> g_lines_printed(0);

}  // namespace

// Lands on the main thread inside printf, holding the stdout lock: one
// second later (with a sanitizer's room). On the box a hung daemon is
// never restarted: whatever exit() waits on, the process ends five
// seconds after the signal.
TEST(HandleSig, EndsWithTheTwoLinesOneSecondLaterOrByTheWatchdog)
{
    expect_end(
        [] {
            const int main_thread = static_cast<int>(syscall(SYS_gettid));
            std::thread([main_thread] {
                while (g_lines_printed < 100) {
                    usleep(1000);
                }
                syscall(SYS_tgkill, getpid(), main_thread, SIGTERM);
            }).detach();
            const std::string line(4000, 'x');
            for (; !process_is_ending(); ++g_lines_printed) {
                printf("%s\n", line.c_str());
            }
        },
        1.0, 2.5);
    expect_end(
        [] {
            atexit([] { pause(); });
            raise(SIGTERM);
        },
        5.0, 6.5);
}
