#ifndef OLEDCTL_FLEET_ROSTER_H
#define OLEDCTL_FLEET_ROSTER_H

#include <cstdint>
#include <ctime>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "protocol.h"

namespace fleet {

struct BoxState {
    std::string address;
    protocol::Settings settings;  // as the box last sent them
    std::time_t last_answer = 0;
    bool answering = false;
    protocol::Settings counts;  // the box's last counts ("replystats"); none: it keeps none
};

// Every box the page has heard from. A box that stops answering stays,
// marked silent with its last settings, so the operator sees it is gone.
// Requests of the web server run on several threads at once.
class Roster {
public:
    // The largest sweep: forged answers cannot grow the roster past it.
    static constexpr std::size_t kMaxBoxes = 4096;

    // Keeps what settings_view::kept keeps. When the roster is full a new
    // box takes the place of the silent one heard from longest ago, or is
    // not added when every box answers.
    void answered(const std::string& address, const protocol::Settings& settings, std::time_t now);
    // Asked and got no answer; unknown boxes are not added.
    void silent(const std::string& address);
    // The box's counts as it last sent them.
    void counted(const std::string& address, const protocol::Settings& counts);
    // After a question to every box: those known but not among the
    // answering addresses turn silent.
    void silent_except(const std::vector<std::string>& answering);

    bool find(const std::string& address, BoxState& box) const;
    // By address, numerically.
    std::vector<BoxState> boxes() const;

private:
    mutable std::mutex mutex_;
    std::map<std::uint32_t, BoxState> boxes_;
};

}  // namespace fleet

#endif
