#ifndef OLED_SIM_VCD_WRITER_H
#define OLED_SIM_VCD_WRITER_H

#include <stdint.h>
#include <stdio.h>

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "panel_bus.h"

// Named pins of the simulated SoC as a Value Change Dump, the way a logic
// analyser on the box's pins would capture them (PulseView, GTKWave).
// The time is the box's, not the host's: every register write takes one
// microsecond, the pacing that clocks the panel buses, and where nothing
// was written for a millisecond or more (a Delayms, a loop's sleep, or the
// host taking the processor away) that wait is kept at its measured
// length. The registers are all the simulator sees, so a wait shows only
// as time between two writes.
class VcdWriter {
public:
    // Monotonic microseconds; a test gives its own clock.
    typedef std::function<int64_t()> Clock;

    // Writes the header and the lines' present levels. The file stops
    // growing at about max_bytes, with a note in it and one on stderr.
    VcdWriter(FILE* file, const std::string& path, const std::vector<NamedPin>& lines, uint64_t max_bytes,
              Clock clock = Clock());

    // Records from the next register write on. The writer must outlive the
    // SoC's listeners (a reset, or the end of the process).
    void attach();
    // Writes what is buffered and nothing after it. At exit, before the C
    // library flushes its files without locks while daemon threads may
    // still write registers. Waits at most kFinishWaitMs for a write in
    // progress (its thread may have faulted in it).
    void finish();
    static const int kFinishWaitMs = 500;

    static const uint64_t kDefaultMaxBytes = 1ull << 30;
    // The shortest wait kept: the daemon's shortest Delayms. Below it, the
    // time between writes is the host's own work, not the box's.
    static const int64_t kShortestPauseUs = 1000;

private:
    void count_write();
    void changed(size_t line, int level);
    void put(const char* text, int length);

    std::mutex mutex_;  // the file and the counts; writes come from every daemon thread
    bool finished_;
    FILE* file_;
    std::string path_;
    std::vector<NamedPin> lines_;
    uint64_t max_bytes_;
    Clock clock_;
    uint64_t written_;
    bool full_;
    int64_t last_write_us_;
    uint64_t time_us_;
    uint64_t stamped_us_;
};

#endif
