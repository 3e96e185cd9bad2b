#include "signature_format.h"

#include "hmac_sha256.h"

namespace {

const char kAuthItem[] = "|auth=";

}  // namespace

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
