#include <gtest/gtest.h>

#include <stdint.h>

#include "reply_limiter.h"

namespace {

const uint32_t kThird = 5;
const uint32_t kOperator = 1;
const long kReply = 1000;  // bytes, a settings reply with some texts

}  // namespace

TEST(ReplyLimiter, FloodAtOneAddressGetsItsBytesAndAnOperatorIsAlwaysAnswered)
{
    ReplyLimiter limiter;
    int sent = 0, told = 0, operator_answered = 0, operator_polls = 0;
    int sent_in_first_10_s = 0, told_in_first_10_s = 0;
    // 20 s of 1,000 datagrams a second naming a third party, and an
    // operator polling every 0.3 s.
    for (int64_t ms = 0; ms < 20000; ++ms) {
        const ReplyLimiter::Verdict verdict = limiter.allow(kThird, kReply, ms);
        sent += verdict == ReplyLimiter::kSend;
        told += verdict == ReplyLimiter::kDropAndTell;
        if (ms == 9999) {
            sent_in_first_10_s = sent;
            told_in_first_10_s = told;
        }
        if (ms % 300 == 150) {
            ++operator_polls;
            operator_answered += limiter.allow(kOperator, kReply, ms) == ReplyLimiter::kSend;
        }
    }
    // 12 kB at once, then 6 kB a second.
    EXPECT_EQ(sent_in_first_10_s, 12 + 59);
    EXPECT_EQ(sent, 12 + 119);
    // One line when the limiting starts, one more 10 s later.
    EXPECT_EQ(told_in_first_10_s, 1);
    EXPECT_EQ(told, 2);
    EXPECT_EQ(operator_answered, operator_polls);
}

TEST(ReplyLimiter, ManyDestinationsShareTheWholeBoxCapButNotTheSignedShare)
{
    ReplyLimiter limiter;
    // Each second another 100 kB, whichever destinations ask; signed
    // queries (an operator's tool) get 40 kB at once and 20 kB a second
    // beside them, wherever the operator is.
    for (int64_t ms : {0, 1000}) {
        int sent = 0, signed_sent = 0;
        for (uint32_t address = 100; address < 400; ++address) {
            sent += limiter.allow(address + static_cast<uint32_t>(ms), kReply, ms) == ReplyLimiter::kSend;
            signed_sent += limiter.allow(kThird, kReply, ms, true) == ReplyLimiter::kSend;
        }
        EXPECT_EQ(sent, 100) << ms;
        EXPECT_EQ(signed_sent, ms == 0 ? 40 : 20) << ms;
    }
}

TEST(ReplyLimiter, TableKeepsRecentDestinationsAndReusesTheOldest)
{
    ReplyLimiter limiter;
    for (int i = 0; i < 12; ++i) {
        ASSERT_EQ(limiter.allow(kThird, kReply, 0), ReplyLimiter::kSend);
    }
    ASSERT_NE(limiter.allow(kThird, kReply, 0), ReplyLimiter::kSend);
    for (uint32_t address = 100; address < 100 + ReplyLimiter::kDestinations - 1; ++address) {
        limiter.allow(address, kReply, 1);
    }
    EXPECT_EQ(limiter.allow(kThird, kReply, 2), ReplyLimiter::kDrop);  // still known, still empty
    limiter.allow(1000, kReply, 3);                                    // takes the oldest place, not the third's
    EXPECT_EQ(limiter.allow(kThird, kReply, 4), ReplyLimiter::kDrop);
    for (uint32_t address = 2000; address < 2000 + ReplyLimiter::kDestinations; ++address) {
        limiter.allow(address, kReply, 5);
    }
    // Forgotten: a full bucket again (its old one would hold half a reply).
    EXPECT_EQ(limiter.allow(kThird, kReply, 50), ReplyLimiter::kSend);
    // A reply beyond a burst costs a whole one: once, then nothing.
    ReplyLimiter fresh;
    EXPECT_EQ(fresh.allow(kThird, 60000, 0), ReplyLimiter::kSend);
    EXPECT_NE(fresh.allow(kThird, 1, 0), ReplyLimiter::kSend);
}
