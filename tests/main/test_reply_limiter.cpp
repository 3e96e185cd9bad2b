#include <gtest/gtest.h>

#include <stdint.h>

#include "reply_limiter.h"

namespace {

const uint32_t kThird = 5;
const uint32_t kOperator = 1;

}  // namespace

TEST(ReplyLimiter, FloodAtOneAddressGetsItsRateAndAnOperatorIsAlwaysAnswered)
{
    ReplyLimiter limiter;
    int sent = 0, told = 0, operator_answered = 0, operator_polls = 0;
    int sent_in_first_10_s = 0, told_in_first_10_s = 0;
    // 20 s of 1,000 datagrams a second naming a third party, and an
    // operator polling every 0.3 s.
    for (int64_t ms = 0; ms < 20000; ++ms) {
        const ReplyLimiter::Verdict verdict = limiter.allow(kThird, ms);
        sent += verdict == ReplyLimiter::kSend;
        told += verdict == ReplyLimiter::kDropAndTell;
        if (ms == 9999) {
            sent_in_first_10_s = sent;
            told_in_first_10_s = told;
        }
        if (ms % 300 == 150) {
            ++operator_polls;
            operator_answered += limiter.allow(kOperator, ms) == ReplyLimiter::kSend;
        }
    }
    // The burst at once, then one every 100 ms.
    EXPECT_EQ(sent_in_first_10_s, 20 + 99);
    EXPECT_EQ(sent, 20 + 199);
    // One line when the limiting starts, one more 10 s later.
    EXPECT_EQ(told_in_first_10_s, 1);
    EXPECT_EQ(told, 2);
    EXPECT_EQ(operator_answered, operator_polls);
}

TEST(ReplyLimiter, ManyDestinationsShareTheWholeBoxCap)
{
    ReplyLimiter limiter;
    // Each second another hundred, whichever destinations ask.
    for (int64_t ms : {0, 1000}) {
        int sent = 0;
        for (uint32_t address = 100; address < 400; ++address) {
            sent += limiter.allow(address + static_cast<uint32_t>(ms), ms) == ReplyLimiter::kSend;
        }
        EXPECT_EQ(sent, 100) << ms;
    }
}

TEST(ReplyLimiter, TableKeepsRecentDestinationsAndReusesTheOldest)
{
    ReplyLimiter limiter;
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(limiter.allow(kThird, 0), ReplyLimiter::kSend);
    }
    ASSERT_NE(limiter.allow(kThird, 0), ReplyLimiter::kSend);
    for (uint32_t address = 100; address < 100 + ReplyLimiter::kDestinations - 1; ++address) {
        limiter.allow(address, 1);
    }
    EXPECT_EQ(limiter.allow(kThird, 2), ReplyLimiter::kDrop);  // still known, still empty
    limiter.allow(1000, 3);                                    // takes the oldest place, not the third's
    EXPECT_EQ(limiter.allow(kThird, 4), ReplyLimiter::kDrop);
    for (uint32_t address = 2000; address < 2000 + ReplyLimiter::kDestinations; ++address) {
        limiter.allow(address, 5);
    }
    // Forgotten: a full bucket again (its old one would hold half a reply).
    EXPECT_EQ(limiter.allow(kThird, 50), ReplyLimiter::kSend);
}
