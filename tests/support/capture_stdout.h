#ifndef OLED_TESTS_CAPTURE_STDOUT_H
#define OLED_TESTS_CAPTURE_STDOUT_H

#include <string>

// Collects what the code under test prints on standard output between
// construction and text().
class CaptureStdout {
public:
    CaptureStdout();
    ~CaptureStdout();
    CaptureStdout(const CaptureStdout&) = delete;
    CaptureStdout& operator=(const CaptureStdout&) = delete;

    // Stops capturing (if still capturing) and returns everything printed.
    std::string text();

private:
    int saved_fd_;
    int file_fd_;
    std::string text_;
    bool done_;
};

#endif
