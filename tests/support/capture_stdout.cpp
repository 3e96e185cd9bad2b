#include "capture_stdout.h"

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

CaptureStdout::CaptureStdout(int fd) : fd_(fd), saved_fd_(-1), file_fd_(-1), done_(false)
{
    fflush(nullptr);
    char name[] = "/tmp/oled-stdout-XXXXXX";
    file_fd_ = mkstemp(name);
    unlink(name);
    saved_fd_ = dup(fd_);
    dup2(file_fd_, fd_);
}

CaptureStdout::~CaptureStdout()
{
    text();
}

std::string CaptureStdout::text()
{
    if (!done_) {
        done_ = true;
        fflush(nullptr);
        dup2(saved_fd_, fd_);
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

int occurrences(const std::string& text, const std::string& what)
{
    int n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) {
        ++n;
    }
    return n;
}
