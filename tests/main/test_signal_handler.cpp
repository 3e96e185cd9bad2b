#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include "capture_stdout.h"
#include "signal_handler.h"

namespace {

void exit_that_never_ends()
{
    for (;;) {
        pause();
    }
}

}  // namespace

// On the box a hung daemon is never restarted: whatever exit() waits on,
// the process ends with 255 about five seconds after the handler began.
TEST(HandleSig, EndsWithStatus255EvenWhenExitHangs)
{
    CaptureStdout out;  // the child inherits the captured descriptor
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        setvbuf(stdout, nullptr, _IOLBF, 0);
        take_stop_signals_here();
        signal(SIGTERM, HandleSig);
        atexit(exit_that_never_ends);
        raise(SIGTERM);
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status)) << status;
    EXPECT_EQ(WEXITSTATUS(status), 255);
    EXPECT_EQ(out.text(), "handle signal -->0xf\nexit  HandleSig\n");
}
