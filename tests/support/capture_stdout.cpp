#include "capture_stdout.h"

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

CaptureStdout::CaptureStdout() : saved_fd_(-1), file_fd_(-1), done_(false)
{
    fflush(stdout);
    char name[] = "/tmp/oled-stdout-XXXXXX";
    file_fd_ = mkstemp(name);
    unlink(name);
    saved_fd_ = dup(STDOUT_FILENO);
    dup2(file_fd_, STDOUT_FILENO);
}

CaptureStdout::~CaptureStdout()
{
    text();
}

std::string CaptureStdout::text()
{
    if (!done_) {
        done_ = true;
        fflush(stdout);
        dup2(saved_fd_, STDOUT_FILENO);
        close(saved_fd_);
        lseek(file_fd_, 0, SEEK_SET);
        char buf[4096];
        ssize_t n;
        while ((n = read(file_fd_, buf, sizeof(buf))) > 0) {
            text_.append(buf, static_cast<size_t>(n));
        }
        close(file_fd_);
    }
    return text_;
}
