#ifndef OLED_TESTS_CAPTURE_STDOUT_H
#define OLED_TESTS_CAPTURE_STDOUT_H

#include <string>

#include <unistd.h>

// Collects what the code under test prints on standard output between
// construction and text(); or on another descriptor (STDERR_FILENO for
// perror lines).
class CaptureStdout {
public:
    explicit CaptureStdout(int fd = STDOUT_FILENO);
    ~CaptureStdout();
    CaptureStdout(const CaptureStdout&) = delete;
    CaptureStdout& operator=(const CaptureStdout&) = delete;

    // Stops capturing (if still capturing) and returns everything printed.
    std::string text();

private:
    int fd_;
    int saved_fd_;
    int file_fd_;
    std::string text_;
    bool done_;
};

// How often what stands in text, overlapping or not.
int occurrences(const std::string& text, const std::string& what);

#endif
