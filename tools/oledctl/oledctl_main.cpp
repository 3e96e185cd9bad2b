// oledctl: drives the front panels of the boxes on a LAN through their UDP
// control protocol.

#include <chrono>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "cli_options.h"
#include "discovery.h"
#include "fleet_server.h"
#include "protocol.h"
#include "service_discovery.h"
#include "set_check.h"
#include "settings_view.h"
#include "udp_client.h"

namespace {

constexpr int kFine = 0;
constexpr int kNoAnswer = 1;  // also any network failure
constexpr int kBadInput = 2;
constexpr int kRefused = 3;  // set: a box answered, but did not take every item
// How long a box is given to tell its counts before a change: a box that
// keeps none does not answer, and must not slow every change down.
constexpr double kCountsWait = 0.5;

const char* const kCommonHelp =
    "  --port N         the boxes' control port (default 16124)\n"
    "  --iface NAME     interface for group sends (default: the route's)\n"
    "  --timeout S      seconds to wait for answers (default 2)\n"
    "  --key-file FILE  sign every datagram with the key in FILE, for boxes that\n"
    "                   hold one in /data/oled.key (the file's bytes, 16 to 1024)\n"
    "  --help           this text\n"
    "Exit status: 0 done (set: every item taken), 1 no answer or network failure,\n"
    "2 bad input, 3 (set) a box refused an item.\n";

const char* const kSubnetHelp =
    "  --subnet CIDR[,CIDR...]  also ask every address of these routed subnets by\n"
    "                   unicast, about 1000 addresses a second, at most 4096 in\n"
    "                   all; the wait begins after the last question. Network and\n"
    "                   broadcast addresses are skipped below /31; a subnet with\n"
    "                   host bits set (10.0.1.5/24) is refused, not rounded.\n";

void usage(const std::string& verb)
{
    if (verb == "set") {
        std::printf(
            "usage: oledctl set KEY=VALUE... (--box ADDR [--via-group] | --all) [options]\n"
            "       oledctl set --raw TEXT (--box ADDR | --all) [options]\n"
            "Sends the items as one datagram: to one box (--box), to every box on the\n"
            "segment through the group %s (--all), or to one box through the group\n"
            "(--box ADDR --via-group; a box whose address text is part of ADDR, such as\n"
            "192.168.1.2 for 192.168.1.20, obeys too). Items are checked before anything\n"
            "is sent; --raw sends TEXT as it stands, unchecked. Then each box that\n"
            "answers is read back and every item reported taken or refused (with the\n"
            "reason, or the value the box holds): exit status 3 when one was refused,\n"
            "1 when no box answered; --no-check sends and reads nothing back. Keys:\n",
            protocol::kGroup);
        for (const protocol::Command& command : protocol::command_table()) {
            std::string values = "GROUP_BIT or 0";
            if (command.kind == protocol::ValueKind::Integer) {
                values = std::to_string(command.min) + ".." + std::to_string(command.max);
            } else if (command.kind == protocol::ValueKind::Text) {
                values = "text, 1.." + std::to_string(command.max) + " chars";
            }
            std::printf("  %-12s %-22s %s\n", command.key, values.c_str(), command.meaning);
        }
        std::printf(
            "The box checks every item again and refuses, with one printed line, what\n"
            "it does not take; its other items still apply. Pins: a box takes only the\n"
            "pins its panel and LED settings named when it started and its board's\n"
            "default panel pins (others are set in /data/oled.ini on the box).\n");
    } else if (verb == "get") {
        std::printf(
            "usage: oledctl get --box ADDR [--json | --stats] [options]\n"
            "Prints the box's settings file as the box sends it, or with --json an\n"
            "object of its key/value pairs. With --stats: what the box took and\n"
            "refused since it started (datagrams, items and replies, by reason),\n"
            "one key=value a line; a box that keeps no counts does not answer.\n");
    } else if (verb == "discover") {
        std::printf(
            "usage: oledctl discover [--subnet CIDR[,CIDR...]] [--json | --format FORMAT [--output FILE]] [options]\n"
            "Asks every box on the segment through the group %s and lists those\n"
            "that answer before the timeout, one line each, by address: panel type,\n"
            "page hold time, shown pages, LED switches.\n"
            "  --format F       text (the default), json (as --json), or prometheus-sd:\n"
            "                   the addresses as a Prometheus file_sd target list\n"
            "  --output FILE    with prometheus-sd: add the boxes found to the list in\n"
            "                   FILE (boxes already listed stay listed), replacing it\n"
            "                   whole in one step; nothing is written when none answer\n%s",
            protocol::kGroup, kSubnetHelp);
    } else if (verb == "serve") {
        std::printf(
            "usage: oledctl serve [--listen ADDRESS[:PORT]] [--subnet CIDR[,CIDR...]] [--token-file FILE]\n"
            "                     [--metrics-token-file FILE] [options]\n"
            "Serves the fleet page, a table of every box on the segment to see and\n"
            "change in a browser, its JSON API and, for Prometheus, /probe?target=ADDRESS\n"
            "(one box per scrape) and /metrics (one discovery round per scrape), until\n"
            "Ctrl-C. Listens on 127.0.0.1:16180 unless told otherwise and prints the\n"
            "page's address. Every API request must carry the session token (/probe\n"
            "and /metrics as 'Authorization: Bearer TOKEN'); a new one is written,\n"
            "readable by you only, to $XDG_RUNTIME_DIR/oledctl-serve-PORT.token\n"
            "($HOME when unset).\n"
            "  --token-file FILE  the session token is FILE's content (16 to 256\n"
            "                   printable characters, no spaces)\n"
            "  --metrics-token-file FILE  a second token, for Prometheus: it reads\n"
            "                   /probe and /metrics and nothing else\n%s",
            kSubnetHelp);
    } else if (verb == "led-test") {
        std::printf(
            "usage: oledctl led-test on|off (--box ADDR [--via-group] | --all) [options]\n"
            "Lights the box's status LEDs for a test (on) or returns them to normal (off).\n");
    } else {
        std::printf(
            "usage: oledctl VERB [options]\n"
            "  set KEY=VALUE...   change settings of one box or all boxes\n"
            "  get                print one box's settings\n"
            "  discover           list the boxes on the segment\n"
            "  led-test on|off    light the status LEDs for a test\n"
            "  serve              the fleet page: every box in a browser\n"
            "oledctl VERB --help tells more.\n");
        return;
    }
    std::printf("Options:\n%s", kCommonHelp);
}

int fail(int status, const std::string& reason)
{
    std::fprintf(stderr, "oledctl: %s\n", reason.c_str());
    return status;
}

// Opens the socket and sends payload to the box or the group as asked.
std::string send_datagram(UdpClient& client, const CliOptions& options, bool to_group, const std::string& payload)
{
    client.sign_with(options.key);
    // One socket for the questions and the change: the interface chosen
    // for group sends does not matter to unicast ones.
    std::string error = client.is_open() ? std::string() : client.open(options.iface);
    if (error.empty())
        error = client.send(to_group ? protocol::kGroup : options.box, options.port, payload);
    return error;
}

std::string check_target(const CliOptions& options)
{
    if (options.all == !options.box.empty())
        return "give either --box ADDR or --all";
    if (options.via_group && options.box.empty())
        return "--via-group needs --box ADDR";
    return "";
}

// Answers by box address, as key/value pairs.
using Answers = std::map<std::string, protocol::Settings>;

// Asks the box (or with --all every box, through the group) and collects
// the answers that begin with header for up to wait seconds.
Answers ask(UdpClient& client, const CliOptions& options, const std::string& query, const char* header, double wait)
{
    Answers answers;
    if (!send_datagram(client, options, options.all, query).empty())
        return answers;
    client.collect(deadline_after(wait), [&](const std::string& source, const std::string& payload) {
        protocol::Settings pairs;
        if ((options.all || source == options.box) && protocol::parse_reply(payload, pairs, header)) {
            answers[source] = pairs;
        }
        return !options.all && !answers.empty();
    });
    return answers;
}

// Reads every box back after a change and says, item by item, what it
// took; the exit status sums it up.
int read_back(UdpClient& client, const CliOptions& options, const std::vector<std::string>& items,
              const Answers& before)
{
    const Answers after = ask(client, options, protocol::build_query(), protocol::kReplyHeader, options.timeout);
    if (after.empty()) {
        return fail(kNoAnswer, "no answer from " + (options.all ? std::string("any box") : options.box) + " within " +
                                   seconds_text(options.timeout) + ": nothing read back");
    }
    const Answers counts =
        before.empty() ? Answers()
                       : ask(client, options, protocol::build_stats_query(), protocol::kStatsHeader, kCountsWait);
    bool refused = false;
    for (const auto& box : after) {
        const auto was = before.find(box.first);
        const auto now = counts.find(box.first);
        const std::vector<set_check::ItemReport> reports = set_check::judge(
            items, box.second, set_check::refusal_counts(was == before.end() ? protocol::Settings() : was->second),
            set_check::refusal_counts(now == counts.end() ? protocol::Settings() : now->second));
        for (const auto& report : reports)
            refused = refused || report.verdict == set_check::Verdict::refused;
        std::fputs(set_check::report(box.first, reports).c_str(), stdout);
    }
    return refused ? kRefused : kFine;
}

int send_items(const CliOptions& options, const std::vector<std::string>& items)
{
    std::string error = check_target(options);
    if (!error.empty())
        return fail(kBadInput, error);
    for (const std::string& item : items) {
        error = protocol::check_item(item);
        if (!error.empty())
            return fail(kBadInput, error);
    }
    const bool to_group = options.all || options.via_group;
    const std::string datagram = protocol::build_set(items, options.via_group ? options.box : std::string());
    if (datagram.size() > protocol::kMaxDatagram) {
        return fail(kBadInput, "datagram of " + std::to_string(datagram.size()) + " bytes; a box reads at most " +
                                   std::to_string(protocol::kMaxDatagram));
    }
    UdpClient client;
    // A box's counts before the change tell why it refused one, after.
    const Answers before = options.no_check || options.all ? Answers()
                                                           : ask(client, options, protocol::build_stats_query(),
                                                                 protocol::kStatsHeader, kCountsWait);
    error = send_datagram(client, options, to_group, datagram);
    if (!error.empty())
        return fail(kNoAnswer, error);
    std::printf("sent to %s:%u: %s\n", to_group ? protocol::kGroup : options.box.c_str(), options.port,
                datagram.c_str());
    return options.no_check ? kFine : read_back(client, options, items, before);
}

int run_set(const CliOptions& options)
{
    if (!options.raw_given) {
        if (options.arguments.empty())
            return fail(kBadInput, "set needs KEY=VALUE items (oledctl set --help)");
        return send_items(options, options.arguments);
    }
    if (!options.arguments.empty())
        return fail(kBadInput, "--raw takes no KEY=VALUE items besides its text");
    if (options.via_group)
        return fail(kBadInput, "--raw sends its text as it stands: use --all and write the marker");
    std::string error = check_target(options);
    if (!error.empty())
        return fail(kBadInput, error);
    if (options.raw.size() > protocol::kMaxDatagram)
        return fail(kBadInput, "raw text longer than 1024 bytes");
    UdpClient client;
    error = send_datagram(client, options, options.all, options.raw);
    if (!error.empty())
        return fail(kNoAnswer, error);
    std::printf("sent to %s:%u: %s\n", options.all ? protocol::kGroup : options.box.c_str(), options.port,
                options.raw.c_str());
    return kFine;
}

int run_led_test(const CliOptions& options)
{
    if (options.arguments.size() != 1 || (options.arguments[0] != "on" && options.arguments[0] != "off")) {
        return fail(kBadInput, "led-test needs on or off");
    }
    return send_items(options, {options.arguments[0] == "on" ? "test=1" : "test=0"});
}

int run_get(const CliOptions& options)
{
    if (options.box.empty() || options.all || options.via_group)
        return fail(kBadInput, "get needs --box ADDR alone");
    if (!options.arguments.empty())
        return fail(kBadInput, "get takes no arguments");
    if (options.stats && options.json)
        return fail(kBadInput, "give --json or --stats, not both");
    const char* header = options.stats ? protocol::kStatsHeader : protocol::kReplyHeader;
    UdpClient client;
    std::string error =
        send_datagram(client, options, false, options.stats ? protocol::build_stats_query() : protocol::build_query());
    if (!error.empty())
        return fail(kNoAnswer, error);
    std::string reply;
    bool answered = false;
    error = client.collect(deadline_after(options.timeout), [&](const std::string& source, const std::string& payload) {
        if (source != options.box || payload.compare(0, std::strlen(header), header) != 0)
            return false;
        reply = payload;
        answered = true;
        return true;
    });
    if (!error.empty())
        return fail(kNoAnswer, error);
    if (!answered) {
        return fail(kNoAnswer, std::string(options.stats ? "no counts" : "no answer") + " from " + options.box +
                                   " within " + seconds_text(options.timeout));
    }
    if (options.json) {
        protocol::Settings settings;
        protocol::parse_reply(reply, settings);
        std::printf("%s\n", settings_view::to_json(settings).c_str());
    } else {
        const std::string file = reply.substr(std::strlen(header));
        std::fwrite(file.data(), 1, file.size(), stdout);
    }
    return kFine;
}

// The boxes found as Prometheus's target list: printed, or added to the
// list kept in --output.
// The list kept in --output, checked; empty result: fine.
std::string kept_inventory(const CliOptions& options, std::string& existing)
{
    std::string error = options.output.empty() ? "" : service_discovery::read_file(options.output, existing);
    std::string list;
    if (error.empty())
        error = service_discovery::merge(existing, {}, list);
    return error.empty() ? "" : options.output + ": " + error + "; the file is left as it is";
}

int write_inventory(const CliOptions& options, const std::vector<settings_view::Box>& boxes)
{
    std::vector<std::string> found;
    for (const settings_view::Box& box : boxes)
        found.push_back(box.address);
    std::string existing;
    std::string error = kept_inventory(options, existing);
    std::string list;
    if (error.empty())
        error = service_discovery::merge(existing, found, list);
    if (!error.empty())
        return fail(kBadInput, error);
    if (options.output.empty()) {
        std::fwrite(list.data(), 1, list.size(), stdout);
        return kFine;
    }
    error = service_discovery::write_atomically(options.output, list);
    if (!error.empty())
        return fail(kNoAnswer, error);
    std::printf("%zu boxes answered; %s written\n", boxes.size(), options.output.c_str());
    return kFine;
}

int run_discover(const CliOptions& options)
{
    if (!options.box.empty() || options.all || options.via_group)
        return fail(kBadInput, "discover asks every box");
    if (!options.arguments.empty())
        return fail(kBadInput, "discover takes no arguments");
    std::string existing;
    const std::string unusable = kept_inventory(options, existing);
    if (!unusable.empty())
        return fail(kBadInput, unusable);  // before the round's wait
    std::vector<settings_view::Box> answers;
    const fleet::Network network{options.port, options.iface, options.timeout, options.subnet_addresses, options.key};
    const std::string error =
        fleet::discover(network, [&](const std::string& address, const protocol::Settings& settings) {
            answers.push_back({address, settings});
        });
    if (!error.empty())
        return fail(kNoAnswer, error);
    const std::vector<settings_view::Box> boxes = settings_view::sorted_unique(std::move(answers));
    if (boxes.empty())
        return fail(kNoAnswer, "no box answered within " + seconds_text(options.timeout));
    if (options.format == "prometheus-sd")
        return write_inventory(options, boxes);
    if (options.json || options.format == "json") {
        std::printf("%s\n", settings_view::to_json(boxes).c_str());
    } else {
        for (const settings_view::Box& box : boxes)
            std::printf("%s\n", settings_view::summary(box.address, box.settings).c_str());
    }
    return kFine;
}

}  // namespace

int main(int argc, char** argv)
{
    CliOptions options;
    const std::string error = parse_cli(argc, argv, options);
    if (options.help) {
        usage(options.verb);
        return kFine;
    }
    if (!error.empty())
        return fail(kBadInput, error);
    if (options.subnet_given && options.verb != "discover" && options.verb != "serve") {
        return fail(kBadInput, "--subnet is for discover and serve");
    }
    if ((!options.token_file.empty() || !options.metrics_token_file.empty()) && options.verb != "serve") {
        return fail(kBadInput, "--token-file and --metrics-token-file are for serve");
    }
    if (!options.format.empty() && options.verb != "discover")
        return fail(kBadInput, "--format is for discover");
    if (!options.output.empty() && options.format != "prometheus-sd") {
        return fail(kBadInput, "--output is for discover --format prometheus-sd");
    }
    if (options.json && !options.format.empty())
        return fail(kBadInput, "give --json or --format, not both");
    if (options.verb == "set")
        return run_set(options);
    if (options.verb == "get")
        return run_get(options);
    if (options.verb == "discover")
        return run_discover(options);
    if (options.verb == "led-test")
        return run_led_test(options);
    if (options.verb == "serve") {
        if (!options.box.empty() || options.all || options.via_group || !options.arguments.empty()) {
            return fail(
                kBadInput,
                "serve takes only --listen, --subnet, --token-file, --metrics-token-file, --key-file, --iface, --port "
                "and --timeout");
        }
        return fleet::serve(options);
    }
    if (options.verb.empty() || options.verb == "help") {
        usage("");
        return options.verb.empty() ? kBadInput : kFine;
    }
    return fail(kBadInput, "unknown verb '" + options.verb + "' (oledctl --help)");
}
