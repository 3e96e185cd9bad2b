#include "signing_key.h"

#include <algorithm>
#include <atomic>
#include <chrono>

#include "signature_format.h"

namespace signing {

std::string read_key_file(const std::string& path, std::string& key)
{
    bool missing = false;
    const std::string unusable = ::read_key_file(path, key, missing);
    return unusable.empty() ? "" : "key file " + path + ": " + unusable;
}

std::uint64_t next_counter()
{
    static std::atomic<std::uint64_t> last{0};
    const auto now =
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::system_clock::now().time_since_epoch());
    std::uint64_t previous = last.load();
    std::uint64_t counter;
    do {
        counter = std::max<std::uint64_t>(static_cast<std::uint64_t>(now.count()), previous + 1);
    } while (!last.compare_exchange_weak(previous, counter));
    return counter;
}

}  // namespace signing
