#ifndef OLEDCTL_SET_CHECK_H
#define OLEDCTL_SET_CHECK_H

#include <map>
#include <string>
#include <vector>

#include "protocol.h"

// What `oledctl set` reads back: for each box that answered, each item
// taken or refused, judged from the settings the box sends after the
// change and, when the box keeps counts, from what it refused meanwhile.
namespace set_check {

enum class Verdict { taken, refused, not_kept };

struct ItemReport {
    std::string item;
    Verdict verdict;
    std::string why;  // for a refusal: the reason, or the value the box holds
};

// The counts of refused datagrams a box sends ("datagrams_refused_..."),
// before and after the change; empty when it keeps none.
using RefusalCounts = std::map<std::string, unsigned long>;
RefusalCounts refusal_counts(const protocol::Settings& stats);

// items as sent, against the box's settings after the change and the
// refusals it counted meanwhile.
std::vector<ItemReport> judge(const std::vector<std::string>& items, const protocol::Settings& after,
                              const RefusalCounts& before, const RefusalCounts& since);

// One line per item: "ADDRESS: ITEM taken", "... refused (REASON)".
std::string report(const std::string& address, const std::vector<ItemReport>& items);

}  // namespace set_check

#endif
