#include "datagram_auth.h"

#include <errno.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <sodium.h>

#include "durable_file.h"
#include "path_on_box.h"

namespace {

const char kKeyFile[] = "/data/oled.key";
// Beside the key, written when it is made: without it every change ever
// signed with the key would be taken again.
const char kCounterFile[] = "/data/oled.counter";
const size_t kMacHexSize = 2 * crypto_auth_hmacsha256_BYTES;
const uint64_t kCounterMax = INT64_MAX;

// The file's bytes, at most limit + 1 of them; false with errno's reason
// when it cannot be read.
bool read_small_file(const char* path, size_t limit, std::string& bytes, int& error)
{
    FILE* f = fopen(path_on_box(path).c_str(), "rbe");
    if (f == nullptr) {
        error = errno;
        return false;
    }
    char chunk[256];
    size_t got;
    while (bytes.size() <= limit && (got = fread(chunk, 1, sizeof(chunk), f)) > 0) {
        bytes.append(chunk, got);
    }
    error = ferror(f) ? errno : 0;
    fclose(f);
    return error == 0;
}

// A decimal number from 1 to 2^63-1, digits only.
bool read_counter(const std::string& text, uint64_t& value)
{
    uint64_t number = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c < '0' || c > '9' || number > (kCounterMax - static_cast<uint64_t>(c - '0')) / 10) {
            return false;
        }
        number = number * 10 + static_cast<uint64_t>(c - '0');
    }
    value = number;
    return number != 0;
}

}  // namespace

void DatagramAuth::load()
{
    std::string key;
    bool missing = false;
    const std::string unusable = read_key_file(path_on_box(kKeyFile), key, missing);
    if (missing) {
        return;  // no key: the box stays open, as it always was
    }
    if (!unusable.empty()) {
        state_ = kBroken;
        printf("%s: %s: every change is refused until it is fixed\n", kKeyFile, unusable.c_str());
        return;
    }
    if (readable_by_others(path_on_box(kKeyFile))) {
        printf("%s: readable by others than its owner: chmod 600 %s\n", kKeyFile, kKeyFile);
    }
    std::string counter;
    int error = 0;
    if (!read_small_file(kCounterFile, 32, counter, error)) {
        state_ = kBroken;
        printf("%s: cannot be read (%s): every change is refused until it is fixed\n", kCounterFile, strerror(error));
        return;
    }
    if (!counter.empty() && counter[counter.size() - 1] == '\n') {
        counter.erase(counter.size() - 1);
    }
    if (!read_counter(counter, highest_)) {
        state_ = kBroken;
        printf("%s: not a counter: every change is refused until it is fixed\n", kCounterFile);
        return;
    }
    key_ = key;
    state_ = kKeyed;
    printf("%s: changes must be signed\n", kKeyFile);
}

std::string DatagramAuth::accept(const Signature& signature, const std::string& destination, bool change)
{
    refused_as_ = kUnusable;
    if (state_ == kOpen) {
        refused_as_ = kNone;
        return "";
    }
    if (state_ == kBroken) {
        return "the box's key or counter file is unusable";
    }
    refused_as_ = kNotSigned;
    if (!signature.present) {
        return "not signed";
    }
    refused_as_ = kWrongMac;
    // The MAC first, in time that does not depend on where it differs: a
    // stranger learns nothing, not even whether the counter would do.
    const std::string expected = signature_mac(key_, destination, signature.signed_text);
    if (signature.mac.size() != kMacHexSize || sodium_memcmp(expected.data(), signature.mac.data(), kMacHexSize) != 0) {
        return "wrong MAC";
    }
    uint64_t counter = 0;
    refused_as_ = kOldCounter;
    if (!read_counter(signature.counter, counter)) {
        return "counter not a number from 1 to 2^63-1";
    }
    if (counter <= highest_) {
        return "counter " + signature.counter + " not above the last accepted";
    }
    refused_as_ = kUnusable;
    if (change && !write_file_durably(kCounterFile, std::to_string(counter) + "\n")) {
        return "counter cannot be saved to " + std::string(kCounterFile);
    }
    counter_saves_ += change ? 1 : 0;
    refused_as_ = kNone;
    highest_ = counter;
    return "";
}
