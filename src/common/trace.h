#ifndef OLED_COMMON_TRACE_H
#define OLED_COMMON_TRACE_H

#include <cstdio>

// The "[function]-line: " prefix in front of diagnostics. The line numbers
// are fixed texts of the system's output, not __LINE__.
inline void trace_prefix(const char* function_name, int line)
{
    printf("[%s]-%d: ", function_name, line);
}

#endif
