#ifndef OLED_TESTS_REGISTER_TRACE_H
#define OLED_TESTS_REGISTER_TRACE_H

#include <stdio.h>

#include <string>
#include <vector>

// Resets the simulated SoC to power-on and records every register write
// from then on, as the SoC's trace lines "ADDR VALUE" (hexadecimal).
class RegisterTrace {
public:
    RegisterTrace();
    ~RegisterTrace();
    RegisterTrace(const RegisterTrace&) = delete;
    RegisterTrace& operator=(const RegisterTrace&) = delete;

    // Every write so far, in order.
    std::vector<std::string> lines();
    // Forgets the writes so far.
    void clear();

private:
    char* buffer_;
    size_t size_;
    FILE* stream_;
    size_t start_;
};

#endif
