#include "signature_format.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include "hmac_sha256.h"

namespace {

const char kAuthItem[] = "|auth=";

}  // namespace

std::string read_key_file(const std::string& path, std::string& key, bool& missing)
{
    key.clear();
    FILE* f = fopen(path.c_str(), "rbe");
    int error = f == nullptr ? errno : 0;
    char chunk[256];
    size_t got;
    while (f != nullptr && key.size() <= kAuthKeyMax && (got = fread(chunk, 1, sizeof(chunk), f)) > 0) {
        key.append(chunk, got);
    }
    if (f != nullptr) {
        error = ferror(f) ? errno : 0;
        fclose(f);
    }
    missing = error == ENOENT;
    if (error != 0) {
        return std::string("cannot be read (") + strerror(error) + ")";
    }
    if (key.size() < kAuthKeyMin || key.size() > kAuthKeyMax) {
        return std::to_string(key.size()) + " bytes, a key has " + std::to_string(kAuthKeyMin) + " to " +
               std::to_string(kAuthKeyMax);
    }
    return "";
}

bool readable_by_others(const std::string& path)
{
    struct stat mode;
    return stat(path.c_str(), &mode) == 0 && (mode.st_mode & (S_IRGRP | S_IROTH)) != 0;
}

std::string signature_mac(const std::string& key, const std::string& destination, const std::string& signed_text)
{
    return hmac_sha256_hex(key, destination + "|" + signed_text);
}

Signature take_signature(std::string& text)
{
    Signature signature = {false, "", "", ""};
    const std::string::size_type item = text.rfind(kAuthItem);
    if (item == std::string::npos) {
        return signature;
    }
    const std::string::size_type counter = item + sizeof(kAuthItem) - 1;
    if (text.find('|', counter) != std::string::npos) {
        return signature;  // not the last item
    }
    const std::string::size_type colon = text.find(':', counter);
    signature.present = true;
    signature.signed_text = text.substr(0, colon);
    signature.counter = text.substr(counter, colon == std::string::npos ? colon : colon - counter);
    signature.mac = colon == std::string::npos ? std::string() : text.substr(colon + 1);
    text.erase(item);
    return signature;
}

std::string sign_datagram(const std::string& payload, const std::string& key, uint64_t counter,
                          const std::string& destination)
{
    const std::string signed_text = payload + kAuthItem + std::to_string(counter);
    return signed_text + ":" + signature_mac(key, destination, signed_text);
}
