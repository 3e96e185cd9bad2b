#include "fleet_api.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "metrics.h"
#include "settings_view.h"
#include "udp_client.h"

namespace fleet {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kOk = 200;
constexpr int kBadRequest = 400;
constexpr int kNetworkFailure = 502;
constexpr int kNoAnswer = 504;

std::string text_of(const Json& json)
{
    // A box's texts are made UTF-8 where they enter (settings_view::as_utf8);
    // anything else odd is shown replaced.
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Reply answer(int status, const Json& json)
{
    return {status, text_of(json)};
}

Json box_json(const BoxState& box)
{
    std::string type;
    for (const auto& pair : box.settings) {
        if (pair.first == "OLed_a_kind_start")
            type = pair.second;
    }
    Json json = {{"address", box.address}, {"answering", box.answering}};
    json["last_answer"] = box.last_answer != 0 ? Json(static_cast<long long>(box.last_answer)) : Json(nullptr);
    json["panel"] =
        box.settings.empty() ? Json(nullptr) : Json(settings_view::panel_name(settings_view::as_utf8(type)));
    json["settings"] = settings_view::json_of(box.settings);
    // Datagrams the box refused since it started; null: it keeps no counts.
    long long refusals = 0;
    for (const auto& count : box.counts) {
        if (count.first.compare(0, 18, "datagrams_refused_") == 0)
            refusals += std::strtoll(count.second.c_str(), nullptr, 10);
    }
    json["refusals"] = box.counts.empty() ? Json(nullptr) : Json(refusals);
    return json;
}

// The object of a request body and its list of box addresses.
std::string read_boxes(const std::string& body, Json& request, std::vector<std::string>& boxes)
{
    request = Json::parse(body, nullptr, false);
    if (request.is_discarded() || !request.is_object())
        return "the request is not a JSON object";
    const auto list = request.find("boxes");
    if (list == request.end() || !list->is_array() || list->empty())
        return "boxes: a list of box addresses is needed";
    for (const Json& address : *list) {
        if (!address.is_string() || !protocol::is_ipv4(address.get<std::string>())) {
            return "boxes: '" + text_of(address) + "' is not a dotted IPv4 address";
        }
        boxes.push_back(address.get<std::string>());
    }
    return "";
}

const char* kind_name(protocol::ValueKind kind)
{
    switch (kind) {
        case protocol::ValueKind::Integer:
            return "integer";
        case protocol::ValueKind::Text:
            return "text";
        case protocol::ValueKind::Pin:
            return "pin";
    }
    return "";
}

}  // namespace

Reply refusal(int status, const std::string& reason)
{
    return answer(status, Json{{"error", reason}});
}

std::string read_change(const std::string& body, std::vector<std::string>& boxes, std::vector<std::string>& items)
{
    Json request;
    std::string error = read_boxes(body, request, boxes);
    if (!error.empty())
        return error;
    const auto list = request.find("items");
    if (list == request.end() || !list->is_array() || list->empty())
        return "items: a list of KEY=VALUE is needed";
    for (const Json& item : *list) {
        if (!item.is_string())
            return "items: '" + text_of(item) + "' is not a KEY=VALUE text";
        error = protocol::check_item(item.get<std::string>());
        if (!error.empty())
            return error;
        items.push_back(item.get<std::string>());
    }
    const std::string datagram = protocol::build_set(items, "");
    if (datagram.size() > protocol::kMaxDatagram) {
        return "datagram of " + std::to_string(datagram.size()) + " bytes; a box reads at most " +
               std::to_string(protocol::kMaxDatagram);
    }
    return "";
}

std::string read_led_test(const std::string& body, std::vector<std::string>& boxes, bool& on)
{
    Json request;
    const std::string error = read_boxes(body, request, boxes);
    if (!error.empty())
        return error;
    const auto wanted = request.find("on");
    if (wanted == request.end() || !wanted->is_boolean())
        return "on: true or false is needed";
    on = wanted->get<bool>();
    return "";
}

Reply Api::keys() const
{
    Json keys = Json::array();
    for (const protocol::Command& command : protocol::command_table()) {
        keys.push_back({{"key", command.key},
                        {"kind", kind_name(command.kind)},
                        {"min", command.min},
                        {"max", command.max},
                        {"setting", command.setting},
                        {"meaning", command.meaning}});
    }
    Json panels = Json::array();
    for (int type = 0; type <= 6; ++type)
        panels.push_back(settings_view::panel_name(std::to_string(type)));
    return answer(kOk, Json{{"keys", keys}, {"panels", panels}});
}

std::string Api::round()
{
    std::vector<std::string> answered;
    const std::string error = discover(
        network_,
        [&](const std::string& address, const protocol::Settings& settings) {
            roster_.answered(address, settings, std::time(nullptr));
            answered.push_back(address);
        },
        [&](const std::string& address, const protocol::Settings& counts) { roster_.counted(address, counts); });
    if (error.empty())
        roster_.silent_except(answered);
    return error;
}

Reply Api::list()
{
    const std::string error = round();
    if (!error.empty())
        return refusal(kNetworkFailure, error);
    Json boxes = Json::array();
    for (const BoxState& box : roster_.boxes())
        boxes.push_back(box_json(box));
    return answer(kOk, Json{{"boxes", boxes}});
}

Reply Api::scrape()
{
    const std::string error = round();
    if (!error.empty())
        return {kNetworkFailure, error + "\n"};
    return {kOk, metrics::exposition(roster_.boxes())};
}

std::string Api::unknown_box(const std::vector<std::string>& boxes) const
{
    for (const std::string& address : boxes) {
        in_addr parsed{};  // the callers checked the dotted form
        inet_pton(AF_INET, address.c_str(), &parsed);
        const std::uint32_t number = ntohl(parsed.s_addr);
        const auto& subnet = network_.subnet_addresses;
        BoxState box;
        const bool known =
            roster_.find(address, box) || std::find(subnet.begin(), subnet.end(), number) != subnet.end();
        // Neither a subnet nor a box's answer can be the group; a loopback
        // subnet, or a local program answering a round, can: it is this
        // PC's own services, not a box.
        if (!known || number >> 24 == 127) {
            return address + " is not a box of this page: only boxes that answered or addresses of --subnet are asked";
        }
    }
    return "";
}

Reply Api::read(const std::string& address)
{
    if (!protocol::is_ipv4(address))
        return refusal(kBadRequest, "'" + address + "' is not a dotted IPv4 address");
    const std::string unknown = unknown_box({address});
    if (!unknown.empty())
        return refusal(kBadRequest, unknown);
    std::vector<std::string> answered;
    const std::string error = ask({address}, "", answered);
    if (!error.empty())
        return refusal(kNetworkFailure, error);
    BoxState box;
    const bool known = roster_.find(address, box);
    if (!answered.empty())
        return answer(kOk, box_json(box));
    Json json = {{"error", "no answer from " + address + " within " + seconds_text(network_.timeout)}};
    json["box"] = known ? box_json(box) : Json(nullptr);
    return answer(kNoAnswer, json);
}

Reply Api::change(const std::string& body)
{
    std::vector<std::string> boxes;
    std::vector<std::string> items;
    const std::string error = read_change(body, boxes, items);
    if (!error.empty())
        return refusal(kBadRequest, error);
    return send_and_read(boxes, items);
}

Reply Api::led_test(const std::string& body)
{
    std::vector<std::string> boxes;
    bool on = false;
    const std::string error = read_led_test(body, boxes, on);
    if (!error.empty())
        return refusal(kBadRequest, error);
    return send_and_read(boxes, {on ? "test=1" : "test=0"});
}

Reply Api::send_and_read(const std::vector<std::string>& boxes, const std::vector<std::string>& items)
{
    const std::string unknown = unknown_box(boxes);
    if (!unknown.empty())
        return refusal(kBadRequest, unknown);
    std::vector<std::string> answered;
    const std::string error = ask(boxes, protocol::build_set(items, ""), answered);
    if (!error.empty())
        return refusal(kNetworkFailure, error);
    Json list = Json::array();
    for (const std::string& address : boxes) {
        BoxState box;
        if (!roster_.find(address, box))
            box.address = address;
        list.push_back(box_json(box));
    }
    return answer(kOk, Json{{"boxes", list}});
}

std::string Api::ask(const std::vector<std::string>& boxes, const std::string& datagram,
                     std::vector<std::string>& answered)
{
    UdpClient client;
    client.sign_with(network_.key);
    std::string error = client.open();
    for (const std::string& address : boxes) {
        if (error.empty() && !datagram.empty())
            error = client.send(address, network_.port, datagram);
        if (error.empty())
            error = client.send(address, network_.port, protocol::build_query());
    }
    if (!error.empty())
        return error;
    std::vector<std::string> waiting = boxes;
    error =
        client.collect(deadline_after(network_.timeout), [&](const std::string& source, const std::string& payload) {
            const auto asked = std::find(waiting.begin(), waiting.end(), source);
            protocol::Settings settings;
            if (asked == waiting.end() || !protocol::parse_reply(payload, settings))
                return false;
            roster_.answered(source, settings, std::time(nullptr));
            answered.push_back(source);
            waiting.erase(asked);
            return waiting.empty();
        });
    for (const std::string& address : waiting)
        roster_.silent(address);
    return error;
}

}  // namespace fleet
