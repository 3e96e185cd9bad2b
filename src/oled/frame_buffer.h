#ifndef OLED_OLED_FRAME_BUFFER_H
#define OLED_OLED_FRAME_BUFFER_H

#include <stdint.h>

#include <vector>

// The daemon's copy of a panel's memory: lines (pages or rows) of bytes.
// Drawing moves a write pointer and puts bytes as the controller would;
// a flush hands out the runs of bytes that differ from what the panel was
// last sent, so a screen change never blanks what stays and the bus
// carries a fraction of the bytes. The whole memory goes out after
// forget() and at least every kWholeEverySeconds, which repairs a panel
// that lost its memory.
class FrameBuffer {
public:
    struct Run {
        int line;
        int column;
        const uint8_t* bytes;
        int count;
    };

    static const int kWholeEverySeconds = 50;

    FrameBuffer(int lines, int line_bytes);

    // Where the next byte goes. A line past the end is ignored, as the
    // controllers ignore such an address; the column wraps within a line.
    void move_to(int line, int column);
    // One byte at the pointer, which then moves right, wrapping.
    void put(uint8_t byte);

    // Starts handing out what changed: every line whole after forget(),
    // when asked, or when the last whole send is kWholeEverySeconds old.
    void begin_flush(bool whole = false);
    // The next run to send; false when the panel is up to date. Each run
    // handed out counts as sent.
    bool next_run(Run* run);
    // What the panel holds is unknown (it was reset or lost power).
    void forget() { known_ = false; }

private:
    // Unchanged bytes between two changes that are sent with them: fewer
    // bus writes than addressing a new run.
    static const int kJoinGap = 4;

    bool differs(int index) const { return wanted_[index] != shown_[index]; }

    const int lines_;
    const int line_bytes_;
    std::vector<uint8_t> wanted_;
    std::vector<uint8_t> shown_;
    int line_;
    int column_;
    bool known_;
    bool whole_;
    int next_;  // the byte index the flush looks at next
    long last_whole_;
};

#endif
