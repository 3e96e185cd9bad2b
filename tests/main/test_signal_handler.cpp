#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "capture_stdout.h"
#include "signal_handler.h"

namespace {

struct Ending {
    std::vector<std::string> lines;  // the handler's lines, whole or not
    int status;
    double seconds;
};

// Runs body in a child set up as the daemon's start-up sets itself up;
// the child then waits for its end.
Ending end_of(const std::function<void()>& body)
{
    CaptureStdout out;  // the child inherits the captured descriptor
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
        setvbuf(stdout, nullptr, _IOLBF, 0);
        start_ending_thread();
        for (int sig : {SIGINT, SIGTERM, SIGHUP, SIGSEGV}) {
            signal(sig, HandleSig);
        }
        body();
        for (;;) {
            pause();
        }
    }
    Ending ending = {{}, -1, 0};
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    ending.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    ending.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::istringstream text(out.text());
    for (std::string line; std::getline(text, line);) {
        if (line.find("andle") != std::string::npos) {
            ending.lines.push_back(line);
        }
    }
    return ending;
}

int thread_id()
{
    return static_cast<int>(syscall(SYS_gettid));
}

// Sends sig to the thread once ready() holds, from a thread of its own.
void send_when(std::function<bool()> ready, const std::atomic<int>& target, int sig)
{
    std::thread([ready, &target, sig] {
        while (!ready()) {
            usleep(1000);
        }
        syscall(SYS_tgkill, getpid(), target.load(), sig);
    }).detach();
}

void exit_that_never_ends()
{
    for (;;) {
        pause();
    }
}

// Timings of the daemon without a sanitizer, with a sanitizer's room on top.
const double kOneSecond = 1.0;
const double kRoom = 1.5;

}  // namespace

// Whichever thread takes the signal, and whatever it is doing, the same
// two whole lines, status 255, one second later.
TEST(HandleSig, EndsOnceWithTheTwoLinesOneSecondLater)
{
    static std::atomic<int> main_thread(0);
    static std::atomic<int> worker(0);
    static std::atomic<int> lines_printed(0);
    const std::vector<std::string> term = {"handle signal -->0xf", "exit  HandleSig"};

    // The main thread inside printf, holding the stdout lock.
    Ending ending = end_of([] {
        main_thread = thread_id();
        send_when([] { return lines_printed.load() > 100; }, main_thread, SIGTERM);
        const std::string line(4000, 'x');
        while (!process_is_ending()) {
            printf("%s\n", line.c_str());
            ++lines_printed;
        }
    });
    EXPECT_EQ(ending.lines, term);
    EXPECT_EQ(ending.status, 255);
    EXPECT_GE(ending.seconds, kOneSecond);
    EXPECT_LT(ending.seconds, kOneSecond + kRoom);

    // A worker thread, by a stop signal and by a fault's signal.
    for (int sig : {SIGINT, SIGSEGV}) {
        ending = end_of([sig] {
            std::thread([] {
                worker = thread_id();
                exit_that_never_ends();
            }).detach();
            send_when([] { return worker.load() != 0; }, worker, sig);
        });
        char first[32];
        snprintf(first, sizeof(first), "handle signal -->0x%x", sig);
        EXPECT_EQ(ending.lines, (std::vector<std::string>{first, "exit  HandleSig"})) << sig;
        EXPECT_EQ(ending.status, 255) << sig;
        EXPECT_LT(ending.seconds, kOneSecond + kRoom) << sig;
    }
}

// On the box a hung daemon is never restarted: whatever exit() waits on,
// the process ends with 255 about five seconds after the handler began.
TEST(HandleSig, EndsWithStatus255EvenWhenExitHangs)
{
    const Ending ending = end_of([] {
        atexit(exit_that_never_ends);
        raise(SIGTERM);
    });
    EXPECT_EQ(ending.lines, (std::vector<std::string>{"handle signal -->0xf", "exit  HandleSig"}));
    EXPECT_EQ(ending.status, 255);
    EXPECT_GE(ending.seconds, 5.0);
    EXPECT_LT(ending.seconds, 5.0 + kRoom);
}
