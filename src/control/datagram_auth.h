#ifndef OLED_CONTROL_DATAGRAM_AUTH_H
#define OLED_CONTROL_DATAGRAM_AUTH_H

#include <stdint.h>

#include <string>

#include "signature_format.h"

// Keyed datagrams. With a key in /data/oled.key, a datagram that would
// change the box, or send a reply elsewhere than to its sender, must carry
// a signature (signature_format.h) made with the key for the address it
// was sent to, and a counter above every one the box accepted before. The
// address binds a datagram to where it was sent, so one key can serve a
// fleet: a datagram caught on its way to one box is refused by every other.

// Used by the control server's thread alone. An accepted counter of a
// change is on flash before the change is made, so neither a restart nor a
// power cut lets a datagram be played again.
class DatagramAuth {
public:
    // Reads the key and the highest counter accepted before, and prints
    // what the box will ask of datagrams or what keeps it from checking.
    void load();

    // Whether changes must be signed: a key file is there, usable or not.
    bool required() const { return state_ != kOpen; }

    // Empty when the signature is made with the key for destination and
    // carries a new counter, which becomes the highest; else why the
    // datagram is refused. The counter of a change is written to flash
    // first, and a change whose counter cannot be written is refused; a
    // query's counter is kept in memory only (it changes nothing, and the
    // flash is not worn by polling).
    std::string accept(const Signature& signature, const std::string& destination, bool change);

    enum Refusal { kNone, kNotSigned, kWrongMac, kOldCounter, kUnusable };
    // Why the last accept refused, for the counts.
    Refusal refused_as() const { return refused_as_; }
    unsigned long counter_saves() const { return counter_saves_; }

private:
    enum State { kOpen, kKeyed, kBroken };
    State state_ = kOpen;
    std::string key_;
    uint64_t highest_ = 0;
    Refusal refused_as_ = kNone;
    unsigned long counter_saves_ = 0;
};

#endif
