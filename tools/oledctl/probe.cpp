#include "probe.h"

#include <arpa/inet.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>

#include "metrics.h"
#include "udp_client.h"

namespace probe {
namespace {

constexpr int kOk = 200;
constexpr int kBadRequest = 400;
constexpr int kNetworkFailure = 502;
// How long the counts are waited for once the settings came.
constexpr double kCountsGrace = 0.1;

// A stranger's text in a one-line reason: short, printable.
std::string shown(const std::string& text)
{
    std::string out;
    for (char c : text.substr(0, 40))
        out += (c >= 0x20 && c < 0x7f) ? c : '?';
    return "'" + out + (text.size() > 40 ? "...'" : "'");
}

fleet::Reply refused(const std::string& reason)
{
    return {kBadRequest, reason + "\n"};
}

}  // namespace

std::string check_target(const std::string& target)
{
    in_addr address{};
    if (inet_pton(AF_INET, target.c_str(), &address) != 1) {
        return "target " + shown(target) + ": not a dotted IPv4 address such as 10.1.0.5";
    }
    const unsigned first = ntohl(address.s_addr) >> 24;
    const char* why = nullptr;
    if (first == 0) {
        why = "not a host's address";
    } else if (first == 127) {
        why = "a loopback address; a box answers only on its network";
    } else if (first >= 224 && first < 240) {
        why = "a multicast group; a probe asks one box";
    } else if (first >= 240) {
        why = "a reserved or broadcast address";
    }
    return why == nullptr ? "" : "target '" + target + "': " + why;
}

std::string wait_seconds(const std::string& scrape_timeout, double cap, double& seconds)
{
    seconds = cap;
    if (scrape_timeout.empty())
        return "";
    char* end = nullptr;
    const double scrape = std::strtod(scrape_timeout.c_str(), &end);
    if (*end != '\0' || !std::isfinite(scrape) || scrape <= 0.0) {
        return std::string(kScrapeTimeoutHeader) + " " + shown(scrape_timeout) + ": not a number of seconds";
    }
    // The metrics must reach Prometheus before it gives up: a tenth of
    // its time-out, at most half a second, is left for that.
    seconds = std::min(cap, scrape - std::min(0.5, scrape / 10));
    return "";
}

fleet::Reply answer(const std::vector<std::string>& targets, const std::string& scrape_timeout,
                    const fleet::Network& network)
{
    if (targets.empty())
        return refused("give the box to probe as /probe?target=ADDRESS");
    if (targets.size() > 1)
        return refused("one target per probe, not " + std::to_string(targets.size()));
    const std::string& target = targets.front();
    std::string error = check_target(target);
    double wait = 0;
    if (error.empty())
        error = wait_seconds(scrape_timeout, network.timeout, wait);
    if (!error.empty())
        return refused(error);

    const auto began = std::chrono::steady_clock::now();
    UdpClient client;
    error = client.open();
    if (!error.empty())
        return {kNetworkFailure, error + "\n"};
    protocol::Settings settings, stats;
    bool answered = false;
    bool counted = false;
    // A send that fails (no route to the box) is a box that does not
    // answer, as in discovery; the wait for it is then skipped. The counts
    // are asked at once; a box that keeps none does not answer them, so
    // they are waited for only a moment beyond the settings.
    if (client.send(target, network.port, protocol::build_query()).empty() &&
        client.send(target, network.port, protocol::build_stats_query()).empty()) {
        const auto heard = [&](const std::string& source, const std::string& payload) {
            if (source == target) {
                answered = answered || protocol::parse_reply(payload, settings);
                counted = counted || protocol::parse_reply(payload, stats, protocol::kStatsHeader);
            }
            return answered && counted;
        };
        const auto deadline = deadline_after(wait);
        error = client.collect(deadline, heard);
        if (error.empty() && answered && !counted) {
            error = client.collect(std::min(deadline, deadline_after(kCountsGrace)), heard);
        }
        if (!error.empty())
            return {kNetworkFailure, error + "\n"};
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - began;
    return {kOk, metrics::probe(answered, took.count(), settings, stats)};
}

}  // namespace probe
