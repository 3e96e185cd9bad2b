#ifndef OLED_CONTROL_SIGNATURE_FORMAT_H
#define OLED_CONTROL_SIGNATURE_FORMAT_H

#include <stddef.h>
#include <stdint.h>

#include <string>

// The signature of keyed datagrams as it stands on the wire, for the box
// that checks it and the operators' tools that make it: a datagram ends in
// "|auth=COUNTER:MAC", MAC the lowercase hexadecimal HMAC-SHA256, made
// with the key, of the address the datagram is sent to (a box's, or the
// group's), a "|", and every byte before ":MAC".

// Shorter keys are guessed too easily; longer ones are not key files.
const size_t kAuthKeyMin = 16;
const size_t kAuthKeyMax = 1024;

// The key of a key file at path (as this host sees it): its bytes as they
// stand. "" when it serves, else why not ("cannot be read (...)", "15
// bytes, a key has 16 to 1024"); missing tells a file that is not there.
std::string read_key_file(const std::string& path, std::string& key, bool& missing);

// Whether others than its owner may read the file at path.
bool readable_by_others(const std::string& path);

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

// The MAC of signed_text sent to destination (dotted), in lowercase hex.
std::string signature_mac(const std::string& key, const std::string& destination, const std::string& signed_text);

// payload signed for destination with key and counter, as it is sent.
std::string sign_datagram(const std::string& payload, const std::string& key, uint64_t counter,
                          const std::string& destination);

#endif
