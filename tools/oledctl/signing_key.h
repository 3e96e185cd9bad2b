#ifndef OLEDCTL_SIGNING_KEY_H
#define OLEDCTL_SIGNING_KEY_H

#include <cstdint>
#include <string>

// The operator's side of boxes that hold a key (/data/oled.key): the key
// file and the counters; the signature itself is the box's own format.
namespace signing {

// The key is the file's bytes as they stand, as many as the box takes. Empty result: fine, else a one-line reason.
std::string read_key_file(const std::string& path, std::string& key);

// The counter of the next datagram: the time in microseconds, and above
// every counter this process used before, so neither a restarted tool
// nor two datagrams within a microsecond repeat one.
std::uint64_t next_counter();

}  // namespace signing

#endif
