// The frame buffer on its own: which runs a flush hands out.
#include <gtest/gtest.h>

#include <string>

#include "frame_buffer.h"

namespace {

// "line,column:bytes" of each run of one flush.
std::string flush(FrameBuffer& frame, bool whole = false)
{
    std::string out;
    frame.begin_flush(whole);
    FrameBuffer::Run run;
    while (frame.next_run(&run)) {
        out += std::to_string(run.line) + "," + std::to_string(run.column) + ":";
        for (int i = 0; i < run.count; ++i) {
            out += std::to_string(run.bytes[i]);
        }
        out += " ";
    }
    return out;
}

TEST(FrameBuffer, HandsOutChangedRunsJoinedAcrossShortGapsAndEverythingWhenUnknown)
{
    FrameBuffer frame(2, 16);
    const std::string blank = "0,0:0000000000000000 1,0:0000000000000000 ";
    EXPECT_EQ(blank, flush(frame));  // what the panel holds is not known yet
    EXPECT_EQ("", flush(frame));

    frame.move_to(0, 2);
    frame.put(1);
    frame.move_to(0, 7);  // four unchanged bytes between: one run
    frame.put(2);
    frame.move_to(0, 13);  // five: a run of its own
    frame.put(3);
    frame.move_to(1, 15);
    frame.put(9);
    frame.put(8);         // wrapped to the start of the same line
    frame.move_to(9, 3);  // no such line: the column moves, the line stays
    frame.put(7);
    EXPECT_EQ("0,2:100002 0,13:3 1,0:8007 1,15:9 ", flush(frame));

    frame.move_to(0, 2);
    frame.put(1);  // the panel has it already
    EXPECT_EQ("", flush(frame));

    frame.forget();
    const std::string drawn = "0,0:0010000200000300 1,0:8007000000000009 ";
    EXPECT_EQ(drawn, flush(frame));
    EXPECT_EQ(drawn, flush(frame, true));
}

}  // namespace
