#ifndef OLEDCTL_PROBE_H
#define OLEDCTL_PROBE_H

#include <string>
#include <vector>

#include "discovery.h"
#include "fleet_api.h"

// GET /probe?target=ADDRESS: Prometheus holds the inventory and asks
// `oledctl serve` about one box per scrape, as with its blackbox exporter.
namespace probe {

constexpr const char* kScrapeTimeoutHeader = "X-Prometheus-Scrape-Timeout-Seconds";

// One box's address: dotted IPv4, unicast, not loopback (a box never
// answers there). Empty result: fine, else a one-line reason.
std::string check_target(const std::string& target);

// How long the question waits: the scrape's time-out (the header's text;
// empty when the request came from elsewhere) less the answer's way back,
// at most cap. Empty result: fine, else a one-line reason.
std::string wait_seconds(const std::string& scrape_timeout, double cap, double& seconds);

// The whole request: the targets as given (one is right), the header.
// 200 with the probe's metrics, 400 with a reason, 502 when no question
// could be sent from here.
fleet::Reply answer(const std::vector<std::string>& targets, const std::string& scrape_timeout,
                    const fleet::Network& network);

}  // namespace probe

#endif
