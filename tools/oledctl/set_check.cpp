#include "set_check.h"

#include <cstdlib>

#include "control_keys.h"

namespace set_check {
namespace {

const char kRefusedPrefix[] = "datagrams_refused_";

// A refusal of the whole datagram that the box counted meanwhile, as the
// box says it ("not signed"); "" when none.
std::string datagram_refusal(const RefusalCounts& before, const RefusalCounts& since)
{
    for (const auto& count : since) {
        const auto was = before.find(count.first);
        if (count.second > (was == before.end() ? 0 : was->second)) {
            std::string reason = count.first;
            for (char& c : reason)
                c = c == '_' ? ' ' : c;
            return reason == "old counter" ? "counter not above the last accepted" : reason;
        }
    }
    return "";
}

}  // namespace

RefusalCounts refusal_counts(const protocol::Settings& stats)
{
    RefusalCounts counts;
    for (const auto& item : stats) {
        if (item.first.compare(0, sizeof kRefusedPrefix - 1, kRefusedPrefix) == 0) {
            counts[item.first.substr(sizeof kRefusedPrefix - 1)] = std::strtoul(item.second.c_str(), nullptr, 10);
        }
    }
    return counts;
}

std::vector<ItemReport> judge(const std::vector<std::string>& items, const protocol::Settings& after,
                              const RefusalCounts& before, const RefusalCounts& since)
{
    const std::string whole = datagram_refusal(before, since);
    std::vector<ItemReport> reports;
    for (const std::string& item : items) {
        const std::size_t equals = item.find('=');
        const std::string value = equals == std::string::npos ? "" : item.substr(equals + 1);
        const ControlKey* key = find_control_key(item.substr(0, equals));
        if (key == nullptr || *key->setting == '\0') {
            reports.push_back({item, Verdict::not_kept, ""});
            continue;
        }
        std::string held = "nothing";
        for (const auto& setting : after) {
            if (setting.first == key->setting)
                held = setting.second;
        }
        const bool same = key->kind == ControlValueKind::Integer
                              ? held != "nothing" &&
                                    std::strtoll(held.c_str(), nullptr, 10) == std::strtoll(value.c_str(), nullptr, 10)
                              : held == value;
        if (same) {
            reports.push_back({item, Verdict::taken, ""});
        } else {
            reports.push_back({item, Verdict::refused, whole.empty() ? "the box holds " + held : whole});
        }
    }
    return reports;
}

std::string report(const std::string& address, const std::vector<ItemReport>& items)
{
    std::string text;
    for (const ItemReport& item : items) {
        text += address + ": " + item.item;
        switch (item.verdict) {
            case Verdict::taken:
                text += " taken\n";
                break;
            case Verdict::refused:
                text += " refused (" + item.why + ")\n";
                break;
            case Verdict::not_kept:
                text += " sent (not kept in the settings, nothing to read back)\n";
                break;
        }
    }
    return text;
}

}  // namespace set_check
