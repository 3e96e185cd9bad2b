#ifndef OLEDCTL_DISCOVERY_H
#define OLEDCTL_DISCOVERY_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "protocol.h"

namespace fleet {

// Where and how long to ask the boxes.
struct Network {
    unsigned short port;
    std::string iface;                            // group sends leave through it; empty: the route's
    double timeout;                               // seconds to wait after the last question
    std::vector<std::uint32_t> subnet_addresses;  // asked one by one besides the group
    std::string key;                              // signs every datagram; empty: none signed
};

// One round of discovery: the query to the group, then to every subnet
// address that has not answered yet, paced; answers are collected until
// the timeout after the last question. Each box that answers is handed
// over once, with its settings. Empty result: fine, else a network failure.
using Answer = std::function<void(const std::string& address, const protocol::Settings& settings)>;
// With on_counts, every box is asked its counts too ("replystats"), and
// those that keep them hand them on there.
std::string discover(const Network& network, const Answer& on_answer, const Answer& on_counts = nullptr);

}  // namespace fleet

#endif
