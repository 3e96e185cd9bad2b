#include "hmac_sha256.h"

#include <stdio.h>
#include <stdlib.h>

#include <sodium.h>

// libsodium's archive has one section per source file: its HMAC's key
// maker and its guarded allocator would pull in the random generator and
// the library's start-up with every algorithm it has, over 120 KiB of the
// box's flash. Nothing here makes a key or allocates guarded memory;
// should that ever change, these end the process rather than run on.
extern "C" {
void randombytes_buf(void* const, const size_t)
{
    abort();
}
void sodium_misuse(void)
{
    abort();
}
}

std::string hmac_sha256_hex(const std::string& key, const std::string& message)
{
    unsigned char mac[crypto_auth_hmacsha256_BYTES];
    crypto_auth_hmacsha256_state state;
    crypto_auth_hmacsha256_init(&state, reinterpret_cast<const unsigned char*>(key.data()), key.size());
    crypto_auth_hmacsha256_update(&state, reinterpret_cast<const unsigned char*>(message.data()), message.size());
    crypto_auth_hmacsha256_final(&state, mac);
    // Not sodium_bin2hex: its file brings base64 along, 1.7 KiB of flash.
    char hex[2 * sizeof(mac) + 1];
    for (size_t i = 0; i < sizeof(mac); ++i) {
        snprintf(hex + 2 * i, 3, "%02x", mac[i]);
    }
    return hex;
}
