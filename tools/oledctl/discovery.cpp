#include "discovery.h"

#include <chrono>
#include <unordered_set>

#include "subnets.h"
#include "udp_client.h"

namespace fleet {
namespace {

// About a /22 a second: past the kernel's and a router's queues without
// loss, and a box gets one question a round, far below its reply limit.
constexpr std::size_t kBatch = 16;
constexpr auto kBatchPause = std::chrono::microseconds(kBatch * 1000000 / 1024);

}  // namespace

std::string discover(const Network& network, const Answer& on_answer, const Answer& on_counts)
{
    UdpClient client;
    client.sign_with(network.key);
    std::string error = client.open(network.iface);
    if (!error.empty())
        return error;
    const auto ask = [&](const std::string& address) {
        std::string failed = client.send(address, network.port, protocol::build_query());
        if (failed.empty() && on_counts)
            failed = client.send(address, network.port, protocol::build_stats_query());
        return failed;
    };
    error = ask(protocol::kGroup);
    // A PC without a route for the group can still reach routed subnets.
    if (!error.empty() && network.subnet_addresses.empty())
        return error;
    std::unordered_set<std::string> answered;
    const UdpClient::Handler take = [&](const std::string& source, const std::string& payload) {
        protocol::Settings settings;
        // Forged answers from ever new addresses end at the largest sweep.
        if (answered.size() >= subnets::kMaxAddresses && answered.count(source) == 0)
            return false;
        if (protocol::parse_reply(payload, settings) && answered.insert(source).second)
            on_answer(source, settings);
        if (on_counts && answered.count(source) != 0 &&
            protocol::parse_reply(payload, settings, protocol::kStatsHeader)) {
            on_counts(source, settings);
        }
        return false;  // everyone may answer until the deadline
    };
    auto next_batch = std::chrono::steady_clock::now();
    const std::vector<std::uint32_t>& addresses = network.subnet_addresses;
    for (std::size_t i = 0; i < addresses.size(); i += kBatch) {
        for (std::size_t j = i; j < addresses.size() && j < i + kBatch; ++j) {
            const std::string address = subnets::dotted(addresses[j]);
            // An address nobody holds, or one a router cannot reach, is a
            // box that does not answer, not a failed round.
            if (answered.count(address) == 0)
                ask(address);
        }
        next_batch += kBatchPause;
        error = client.collect(next_batch, take);
        if (!error.empty())
            return error;
    }
    return client.collect(deadline_after(network.timeout), take);
}

}  // namespace fleet
