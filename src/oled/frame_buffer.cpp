#include "frame_buffer.h"

#include <string.h>
#include <time.h>

namespace {

long monotonic_seconds()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<long>(now.tv_sec);
}

}  // namespace

FrameBuffer::FrameBuffer(int lines, int line_bytes)
    : lines_(lines),
      line_bytes_(line_bytes),
      wanted_(static_cast<size_t>(lines * line_bytes), 0),
      shown_(static_cast<size_t>(lines * line_bytes), 0),
      line_(0),
      column_(0),
      known_(false),
      whole_(false),
      next_(lines * line_bytes),
      last_whole_(0)
{}

void FrameBuffer::move_to(int line, int column)
{
    if (line >= 0 && line < lines_) {
        line_ = line;
    }
    column_ = column % line_bytes_;
}

void FrameBuffer::put(uint8_t byte)
{
    wanted_[static_cast<size_t>(line_ * line_bytes_ + column_)] = byte;
    column_ = (column_ + 1) % line_bytes_;
}

void FrameBuffer::begin_flush(bool whole)
{
    const long now = monotonic_seconds();
    whole_ = whole || !known_ || now - last_whole_ >= kWholeEverySeconds;
    if (whole_) {
        last_whole_ = now;
        known_ = true;
    }
    next_ = 0;
}

bool FrameBuffer::next_run(Run* run)
{
    const int size = lines_ * line_bytes_;
    int first = next_;
    if (!whole_) {
        while (first < size && !differs(first)) {
            ++first;
        }
    }
    if (first >= size) {
        next_ = size;
        return false;
    }
    const int line_end = (first / line_bytes_ + 1) * line_bytes_;
    int end = line_end;
    if (!whole_) {
        // Ends after the last change that has no further change within
        // the join gap.
        end = first + 1;
        for (int gap = 0, i = end; i < line_end && gap <= kJoinGap; ++i) {
            gap = differs(i) ? 0 : gap + 1;
            if (gap == 0) {
                end = i + 1;
            }
        }
    }
    run->line = first / line_bytes_;
    run->column = first % line_bytes_;
    run->bytes = &wanted_[static_cast<size_t>(first)];
    run->count = end - first;
    memcpy(&shown_[static_cast<size_t>(first)], run->bytes, static_cast<size_t>(run->count));
    next_ = end;
    return true;
}
