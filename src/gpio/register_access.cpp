#include "register_access.h"

#include <stddef.h>
#include <time.h>

#include "register_seam.h"

namespace {

// Pacing and delays read the monotonic clock in microseconds: a wall clock
// stepped backwards (NTP, an operator) would otherwise stall every write.
inline void now_us(timeval* t)
{
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    t->tv_sec = ts.tv_sec;
    t->tv_usec = ts.tv_nsec / 1000;
}

inline long long microseconds(const timeval& t)
{
    return static_cast<long long>(t.tv_sec) * 1000000 + t.tv_usec;
}

// A bus line without a pin keeps address 0 (the two-wire panels have no
// reset line): such a line is never read or written. Physical page 0 is no
// register of the SoC, and a kernel may refuse to map it.
const unsigned int kNoPin = 0;

}  // namespace

unsigned int get_reg(unsigned int addr)
{
    return addr == kNoPin ? 0 : register_load(addr);
}

unsigned int set_reg(unsigned int addr, unsigned int value)
{
    if (addr == kNoPin) {
        return value;
    }
    // At least one microsecond must visibly pass before every write: the
    // panel buses have no other timing.
    timeval start;
    timeval now;
    now_us(&start);
    do {
        now_us(&now);
    } while (microseconds(now) - microseconds(start) <= 0);
    register_store(addr, value);
    return value;
}

int tim_subtract(timeval* result, timeval* start, timeval* end)
{
    if (start->tv_sec > end->tv_sec) {
        return -1;
    }
    if (start->tv_sec == end->tv_sec && start->tv_usec > end->tv_usec) {
        return -2;
    }
    result->tv_sec = end->tv_sec - start->tv_sec;
    result->tv_usec = end->tv_usec - start->tv_usec;
    if (result->tv_usec < 0) {
        result->tv_sec -= 1;
        result->tv_usec += 1000000;
    }
    return 0;
}

int Delayms(int ms)
{
    // Only the sub-second part of the difference is compared, as the
    // drivers expect; callers wait 1 to 200 ms.
    timeval start;
    timeval now;
    timeval diff = {0, 0};
    const long target = static_cast<long>(ms) * 1000;
    int rc;
    now_us(&start);
    do {
        now_us(&now);
        rc = tim_subtract(&diff, &start, &now);
    } while (diff.tv_usec < target);
    return rc;
}

void Delay() {}
