#ifndef OLED_COMMON_HMAC_SHA256_H
#define OLED_COMMON_HMAC_SHA256_H

#include <string>

// The lowercase hexadecimal HMAC-SHA256 of message made with key: what
// signs a control datagram, on the box and in the operators' tool alike.
std::string hmac_sha256_hex(const std::string& key, const std::string& message);

#endif
