#ifndef OLED_TESTS_REGISTER_TRACE_H
#define OLED_TESTS_REGISTER_TRACE_H

#include <stdio.h>

#include <string>
#include <vector>

// Resets the simulated SoC to power-on and records every register write
// from then on as the SoC's trace lines "ADDR VALUE" (hexadecimal).
class RegisterTrace {
public:
    RegisterTrace();
    ~RegisterTrace();
    std::vector<std::string> lines();  // since construction or clear()
    void clear();

private:
    char* buffer_ = nullptr;
    size_t size_ = 0;
    size_t start_ = 0;
    FILE* stream_;
};

#endif
