#include "reply_limiter.h"

namespace {

const int64_t kThousandths = 1000;  // tokens are counted in these: whole ms refill them exactly

// Tops the bucket up for the time since it was last filled: rate bytes a
// second is rate thousandths a millisecond.
void refill(int64_t& tokens, int64_t& refilled_ms, int64_t now_ms, int rate, int burst)
{
    if (now_ms > refilled_ms) {
        tokens += (now_ms - refilled_ms) * rate;
        refilled_ms = now_ms;
    }
    if (tokens > burst * kThousandths) {
        tokens = burst * kThousandths;
    }
}

}  // namespace

ReplyLimiter::ReplyLimiter() : told_ms_(0), told_(false), held_by_(kWholeBox)
{
    for (int i = 0; i < kDestinations; ++i) {
        destinations_[i].in_use = false;
    }
    whole_box_.tokens = kWholeBoxBurstBytes * kThousandths;
    whole_box_.refilled_ms = 0;
    signed_.tokens = kSignedBurstBytes * kThousandths;
    signed_.refilled_ms = 0;
}

ReplyLimiter::Destination& ReplyLimiter::find(uint32_t address, int64_t now_ms)
{
    Destination* oldest = &destinations_[0];
    for (int i = 0; i < kDestinations; ++i) {
        Destination& d = destinations_[i];
        if (d.in_use && d.address == address) {
            d.seen_ms = now_ms;
            return d;
        }
        if (!d.in_use || (oldest->in_use && d.seen_ms < oldest->seen_ms)) {
            oldest = &d;
        }
    }
    oldest->address = address;
    oldest->seen_ms = now_ms;
    oldest->in_use = true;
    oldest->bucket.tokens = kPerDestinationBurstBytes * kThousandths;
    oldest->bucket.refilled_ms = now_ms;
    return *oldest;
}

ReplyLimiter::Verdict ReplyLimiter::allow(uint32_t destination, long bytes, int64_t now_ms, bool signed_query)
{
    if (signed_query) {
        refill(signed_.tokens, signed_.refilled_ms, now_ms, kSignedBytesPerSecond, kSignedBurstBytes);
        const int64_t cost = (bytes < 0 ? 0 : bytes > kSignedBurstBytes ? kSignedBurstBytes : bytes) * kThousandths;
        if (signed_.tokens >= cost) {
            signed_.tokens -= cost;
            return kSend;
        }
        held_by_ = kSignedShare;
        return told(now_ms);
    }
    Bucket& own = find(destination, now_ms).bucket;
    refill(own.tokens, own.refilled_ms, now_ms, kPerDestinationBytesPerSecond, kPerDestinationBurstBytes);
    refill(whole_box_.tokens, whole_box_.refilled_ms, now_ms, kWholeBoxBytesPerSecond, kWholeBoxBurstBytes);
    const long most = kPerDestinationBurstBytes;
    const int64_t cost = (bytes < 0 ? 0 : bytes > most ? most : bytes) * kThousandths;
    if (own.tokens >= cost && whole_box_.tokens >= cost) {
        own.tokens -= cost;
        whole_box_.tokens -= cost;
        return kSend;
    }
    held_by_ = own.tokens < cost ? kPerDestination : kWholeBox;
    return told(now_ms);
}

ReplyLimiter::Verdict ReplyLimiter::told(int64_t now_ms)
{
    if (told_ && now_ms - told_ms_ < kTellEveryMs) {
        return kDrop;
    }
    told_ = true;
    told_ms_ = now_ms;
    return kDropAndTell;
}
