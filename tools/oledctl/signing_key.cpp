#include "signing_key.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>

#include "datagram_auth.h"

namespace signing {

std::string read_key_file(const std::string& path, std::string& key) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    int error = file == nullptr ? errno : 0;
    char chunk[256];
    std::size_t got;
    while (file != nullptr && key.size() <= kAuthKeyMax && (got = std::fread(chunk, 1, sizeof chunk, file)) > 0) {
        key.append(chunk, got);
    }
    if (file != nullptr) {
        if (std::ferror(file)) error = errno;
        std::fclose(file);
    }
    if (error != 0) return "key file " + path + ": cannot be read (" + std::strerror(error) + ")";
    if (key.size() < kAuthKeyMin || key.size() > kAuthKeyMax) {
        return "key file " + path + ": " + std::to_string(key.size()) + " bytes, a key has " +
               std::to_string(kAuthKeyMin) + " to " + std::to_string(kAuthKeyMax);
    }
    return "";
}

std::uint64_t next_counter() {
    static std::atomic<std::uint64_t> last{0};
    const auto now = std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::system_clock::now().time_since_epoch());
    std::uint64_t previous = last.load();
    std::uint64_t counter;
    do {
        counter = std::max<std::uint64_t>(static_cast<std::uint64_t>(now.count()), previous + 1);
    } while (!last.compare_exchange_weak(previous, counter));
    return counter;
}

}  // namespace signing
