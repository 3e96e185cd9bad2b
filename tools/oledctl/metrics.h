#ifndef OLEDCTL_METRICS_H
#define OLEDCTL_METRICS_H

#include <string>
#include <vector>

#include "fleet_roster.h"

// The fleet as the monitoring operators run reads it: Prometheus's text
// exposition format, version 0.0.4.
namespace metrics {

constexpr const char* kContentType = "text/plain; version=0.0.4; charset=utf-8";

// A label value between its double quotes: backslash, double quote and
// line feed escaped; bytes beyond ASCII taken as Latin-1, as the JSON API
// shows them, since the format is UTF-8 and a box's text need not be.
std::string label_value(const std::string& text);

// Every known box's up and last answer; the settings of those that
// answered this round (a silent box's old settings would be stale values).
std::string exposition(const std::vector<fleet::BoxState>& boxes);

// One probe of one box: whether it answered, how long that took and, when
// it did, the series of its settings as exposition() gives them, without
// the address label (Prometheus names the target itself).
// stats: the box's counts (replystats), empty when it keeps none.
std::string probe(bool answered, double seconds, const protocol::Settings& settings,
                  const protocol::Settings& stats = {});

}  // namespace metrics

#endif
