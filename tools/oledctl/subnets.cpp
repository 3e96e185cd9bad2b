#include "subnets.h"

#include <arpa/inet.h>

#include <unordered_set>

#include "protocol.h"

namespace subnets {
namespace {

std::uint32_t host_order(const std::string& dotted_text)
{
    in_addr address{};
    inet_pton(AF_INET, dotted_text.c_str(), &address);
    return ntohl(address.s_addr);
}

// One "ADDRESS/PREFIX" into its first and last address to ask.
std::string read_subnet(const std::string& text, std::uint32_t& first, std::uint32_t& last)
{
    const std::size_t slash = text.find('/');
    if (slash == std::string::npos)
        return "subnet '" + text + "': expected ADDRESS/PREFIX such as 10.1.0.0/24";
    const std::string address = text.substr(0, slash);
    const std::string prefix_text = text.substr(slash + 1);
    if (!protocol::is_ipv4(address))
        return "subnet '" + text + "': '" + address + "' is not a dotted IPv4 address";
    if (prefix_text.empty() || prefix_text.size() > 2 ||
        prefix_text.find_first_not_of("0123456789") != std::string::npos || std::stoi(prefix_text) > 32) {
        return "subnet '" + text + "': prefix '" + prefix_text + "' is not 0..32";
    }
    const int prefix = std::stoi(prefix_text);
    const std::uint64_t size = std::uint64_t{1} << (32 - prefix);
    const std::uint32_t mask = static_cast<std::uint32_t>(~(size - 1));
    const std::uint32_t network = host_order(address) & mask;
    if (network != host_order(address)) {
        return "subnet '" + text + "': host bits set; the subnet is " + dotted(network) + "/" + prefix_text;
    }
    const std::uint64_t hosts = prefix < 31 ? size - 2 : size;
    if (hosts > kMaxAddresses) {
        return "subnet '" + text + "': " + std::to_string(hosts) + " addresses; at most " +
               std::to_string(kMaxAddresses) + " can be asked in one round (a /20)";
    }
    // Groups, the reserved block and "this network" hold no boxes.
    const std::uint32_t top = network >> 24;
    if (top == 0 || top >= 224)
        return "subnet '" + text + "': not a unicast subnet";
    first = prefix < 31 ? network + 1 : network;
    last = static_cast<std::uint32_t>(network + (prefix < 31 ? size - 2 : size - 1));
    return "";
}

}  // namespace

std::string parse(const std::string& text, std::vector<std::uint32_t>& addresses)
{
    std::vector<std::uint32_t> found;
    std::unordered_set<std::uint32_t> seen;
    std::size_t start = 0;
    for (;;) {
        const std::size_t comma = text.find(',', start);
        const std::string part = text.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
        if (part.empty())
            return "subnets '" + text + "': an empty entry in the list";
        std::uint32_t first = 0;
        std::uint32_t last = 0;
        const std::string error = read_subnet(part, first, last);
        if (!error.empty())
            return error;
        for (std::uint64_t address = first; address <= last; ++address) {
            if (seen.insert(static_cast<std::uint32_t>(address)).second)
                found.push_back(static_cast<std::uint32_t>(address));
        }
        if (found.size() > kMaxAddresses) {
            return "subnets '" + text + "': more than " + std::to_string(kMaxAddresses) +
                   " addresses together; at most that many can be asked in one round";
        }
        if (comma == std::string::npos)
            break;
        start = comma + 1;
    }
    addresses = std::move(found);
    return "";
}

std::string dotted(std::uint32_t address)
{
    in_addr raw{};
    raw.s_addr = htonl(address);
    char text[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &raw, text, sizeof text);
    return text;
}

}  // namespace subnets
