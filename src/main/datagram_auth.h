#ifndef OLED_MAIN_DATAGRAM_AUTH_H
#define OLED_MAIN_DATAGRAM_AUTH_H

#include <stdint.h>

#include <string>

// Keyed datagrams. With a key in /data/oled.key, a datagram that would
// change the box, or send a reply elsewhere than to its sender, must end in
// "|auth=COUNTER:MAC": COUNTER a decimal number above every one the box
// accepted before, MAC the lowercase hexadecimal HMAC-SHA256, made with the
// key, of every byte before ":MAC".

// Shorter keys are guessed too easily; longer ones are not key files.
const size_t kAuthKeyMin = 16;
const size_t kAuthKeyMax = 1024;

// The trailing auth item of a datagram, taken apart.
struct Signature {
    bool present;
    std::string signed_text;  // every byte before ":MAC"
    std::string counter;
    std::string mac;
};

// Takes a trailing auth item off text; text is left unchanged when there
// is none.
Signature take_signature(std::string& text);

// Not locked itself: the control server checks and the settings saver
// saves under the saver's lock, since the signal path may save too.
class DatagramAuth {
public:
    // Reads the key and the highest counter accepted before, and prints
    // what the box will ask of datagrams or what keeps it from checking.
    void load();

    // Whether changes must be signed: a key file is there, usable or not.
    bool required() const { return state_ != kOpen; }

    // Empty when the signature is made with the key and carries a new
    // counter, which becomes the highest; else why the datagram is refused.
    std::string accept(const Signature& signature);

    // An accepted counter is not on flash yet.
    bool save_pending() const { return saved_ != highest_; }
    // Writes the highest counter; false when it could not.
    bool save();

private:
    enum State { kOpen, kKeyed, kBroken };
    State state_ = kOpen;
    std::string key_;
    uint64_t highest_ = 0;
    uint64_t saved_ = 0;
};

// The control server's, for the daemon's life: the signal path may save
// its counter while exit() runs the destructors of statics.
DatagramAuth& process_datagram_auth();

#endif
