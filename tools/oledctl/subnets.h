#ifndef OLEDCTL_SUBNETS_H
#define OLEDCTL_SUBNETS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// The routed subnets an operator names for discovery, beyond the reach of
// the group: every host address in them is asked by unicast.
namespace subnets {

// A /20's worth: at the discovery pace about four seconds of questions.
constexpr std::size_t kMaxAddresses = 4096;

// "CIDR[,CIDR...]" into the host addresses to ask (host order), each once,
// in the order given. Below /31 the network and broadcast addresses are
// left out; /31 is both addresses, /32 the one. A subnet with host bits set
// (10.0.1.5/24) is refused with the subnet it likely means. Empty result:
// fine, else a one-line reason.
std::string parse(const std::string& text, std::vector<std::uint32_t>& addresses);

// Dotted text of a host-order address.
std::string dotted(std::uint32_t address);

}  // namespace subnets

#endif
