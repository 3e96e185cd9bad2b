#ifndef OLED_CONTROL_REPLY_LIMITER_H
#define OLED_CONTROL_REPLY_LIMITER_H

#include <stdint.h>

// Bounds the settings replies the box sends, so that datagrams naming a
// third party (replyoled=ADDRESS:PORT, or a forged sender) cannot turn it
// into an amplifier: a token bucket per destination address, as DNS
// servers limit their responses, and one for the whole box, both counted
// in bytes, since a reply grows with the texts stored. Time comes from the
// caller (milliseconds of a monotonic clock), so tests drive it.
class ReplyLimiter {
public:
    enum Verdict {
        kSend,
        kDrop,
        kDropAndTell  // dropped, and the first drop for a while: say so
    };

    // A tool polls a box a few times a second and a script may read it a
    // handful of times at once: a reply is 700 to 1,200 bytes, so 6 kB a
    // second with a burst of 12 kB answer both, while a flood aimed at one
    // address gets no more than that out of the box whatever it sends.
    static const int kPerDestinationBytesPerSecond = 6000;
    static const int kPerDestinationBurstBytes = 12000;
    // Many destinations at once still get no more than 100 kB a second in
    // all. Only replies sent count here, so a flood aimed at one address,
    // once its own bucket is empty, leaves the rest to others.
    static const int kWholeBoxBytesPerSecond = 100000;
    static const int kWholeBoxBurstBytes = 100000;
    // Enough for the tools of a studio; beyond it the least recently seen
    // destination is forgotten (its next reply starts a full bucket, and
    // the whole-box cap still holds).
    static const int kDestinations = 64;
    // Signed queries (on a box that holds a key: an operator's tool) are
    // answered from a share of their own that unsigned traffic cannot use
    // up, so a flood never hides a box from its operators; the counter in
    // the signature keeps a caught query from being played into it again.
    static const int kSignedBytesPerSecond = 20000;
    static const int kSignedBurstBytes = 40000;
    static const int64_t kTellEveryMs = 10 * 1000;

    // Which budget held the last reply back.
    enum Cause { kPerDestination, kWholeBox, kSignedShare };

    ReplyLimiter();
    Cause held_by() const { return held_by_; }

    // Whether a reply of bytes to destination (IPv4 address, network
    // order) may be sent at now_ms; a reply allowed is counted as sent. A
    // reply larger than a burst costs a whole burst. A signed reply is
    // taken from the signed share alone.
    Verdict allow(uint32_t destination, long bytes, int64_t now_ms, bool signed_query = false);

private:
    struct Bucket {
        int64_t tokens;  // in thousandths of a byte
        int64_t refilled_ms;
    };
    struct Destination {
        uint32_t address;
        int64_t seen_ms;
        bool in_use;
        Bucket bucket;
    };

    Destination& find(uint32_t address, int64_t now_ms);
    // A drop, told at most once a while.
    Verdict told(int64_t now_ms);

    Destination destinations_[kDestinations];
    Bucket whole_box_;
    Bucket signed_;
    int64_t told_ms_;
    bool told_;
    Cause held_by_;
};

#endif
