#include "protocol.h"

#include <arpa/inet.h>

namespace protocol {
namespace {

const char* kUnknownHint = " (oledctl set --help lists the keys)";

}  // namespace

const std::vector<Command>& command_table()
{
    static const std::vector<Command> table = [] {
        std::vector<Command> settable;
        for (std::size_t i = 0; i < kControlKeyCount; ++i) {
            const ControlKey& key = kControlKeys[i];
            if (key.effect != ControlEffect::Marker && key.effect != ControlEffect::Reply &&
                key.effect != ControlEffect::Stats) {
                settable.push_back(key);
            }
        }
        return settable;
    }();
    return table;
}

const Command* find_command(const std::string& key)
{
    for (const Command& command : command_table()) {
        if (key == command.key)
            return &command;
    }
    return nullptr;
}

std::string check_item(const std::string& item)
{
    const std::size_t equals = item.find('=');
    if (equals == std::string::npos)
        return "'" + item + "': expected KEY=VALUE";
    const std::string key = item.substr(0, equals);
    const std::string value = item.substr(equals + 1);
    if (key == "controlled")
        return "controlled: use --box ADDR --via-group";
    if (key == "replyoled")
        return "replyoled: use 'oledctl get'";
    const Command* command = find_command(key);
    if (command == nullptr)
        return "'" + key + "': unknown key" + kUnknownHint;
    if (value.empty())
        return key + ": empty value";
    if (value.find_first_of("|=") != std::string::npos)
        return key + ": a value may not contain '|' or '='";
    const std::string problem = control_value_problem(*command, value);
    if (!problem.empty())
        return problem;
    // The marker word anywhere in a datagram narrows it to one box.
    if (command->kind == ValueKind::Text && value.find("controlled") != std::string::npos) {
        return key + ": the word 'controlled' cannot be sent";
    }
    return "";
}

std::string build_set(const std::vector<std::string>& items, const std::string& target)
{
    std::string datagram;
    if (!target.empty())
        datagram = "controlled=" + target;
    for (const std::string& item : items) {
        if (!datagram.empty())
            datagram += '|';
        datagram += item;
    }
    return datagram;
}

std::string build_query()
{
    return "replyoled";
}
std::string build_stats_query()
{
    return "replystats";
}

bool parse_reply(const std::string& payload, Settings& settings, const char* expected)
{
    const std::string header = expected;
    if (payload.compare(0, header.size(), header) != 0)
        return false;
    std::size_t start = header.size();
    while (start < payload.size()) {
        std::size_t end = payload.find('\n', start);
        if (end == std::string::npos)
            end = payload.size();
        std::string line = payload.substr(start, end - start);
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        const std::size_t equals = line.find('=');
        if (equals != std::string::npos)
            settings.emplace_back(line.substr(0, equals), line.substr(equals + 1));
        start = end + 1;
    }
    return true;
}

bool is_ipv4(const std::string& text)
{
    in_addr address{};
    return inet_pton(AF_INET, text.c_str(), &address) == 1;
}

}  // namespace protocol
