#include "fleet_roster.h"

#include <arpa/inet.h>

#include <algorithm>

#include "settings_view.h"

namespace fleet {
namespace {

// Callers pass addresses that have been checked or that a box sent from.
std::uint32_t order(const std::string& address)
{
    in_addr parsed{};
    if (inet_pton(AF_INET, address.c_str(), &parsed) != 1)
        return 0xffffffffu;
    return ntohl(parsed.s_addr);
}

}  // namespace

void Roster::answered(const std::string& address, const protocol::Settings& settings, std::time_t now)
{
    std::lock_guard<std::mutex> lock(mutex_);
    const std::uint32_t key = order(address);
    if (boxes_.size() >= kMaxBoxes && boxes_.count(key) == 0) {
        auto oldest = boxes_.end();
        for (auto known = boxes_.begin(); known != boxes_.end(); ++known) {
            if (known->second.answering)
                continue;
            if (oldest == boxes_.end() || known->second.last_answer < oldest->second.last_answer)
                oldest = known;
        }
        if (oldest == boxes_.end())
            return;
        boxes_.erase(oldest);
    }
    BoxState& box = boxes_[key];
    box.address = address;
    box.settings = settings_view::kept(settings);
    box.last_answer = now;
    box.answering = true;
}

void Roster::silent(const std::string& address)
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto known = boxes_.find(order(address));
    if (known != boxes_.end())
        known->second.answering = false;
}

void Roster::silent_except(const std::vector<std::string>& answering)
{
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto& entry : boxes_) {
        BoxState& box = entry.second;
        if (std::find(answering.begin(), answering.end(), box.address) == answering.end())
            box.answering = false;
    }
}

bool Roster::find(const std::string& address, BoxState& box) const
{
    std::lock_guard<std::mutex> lock(mutex_);
    auto known = boxes_.find(order(address));
    if (known == boxes_.end())
        return false;
    box = known->second;
    return true;
}

void Roster::counted(const std::string& address, const protocol::Settings& counts)
{
    std::lock_guard<std::mutex> lock(mutex_);
    const auto box = boxes_.find(order(address));
    if (box != boxes_.end())
        box->second.counts = settings_view::kept(counts);
}

std::vector<BoxState> Roster::boxes() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    std::vector<BoxState> list;
    for (const auto& entry : boxes_)
        list.push_back(entry.second);
    return list;
}

}  // namespace fleet
