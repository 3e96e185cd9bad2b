#ifndef OLEDCTL_PROTOCOL_H
#define OLEDCTL_PROTOCOL_H

#include <string>
#include <utility>
#include <vector>

#include "control_keys.h"

// What an operator's tool must know of the boxes' control protocol: the
// command keys, the values each accepts, how a command datagram is built
// and how the settings reply reads. No sockets here.
namespace protocol {

constexpr unsigned short kDefaultPort = 16124;
constexpr const char* kGroup = "224.168.1.1";
// The box reads at most this many bytes of a datagram; the rest is lost.
constexpr std::size_t kMaxDatagram = 1024;
constexpr const char* kReplyHeader = "[oled]\n";
// A box's counts begin so ("replystats"); a box that keeps none does not
// answer that question.
constexpr const char* kStatsHeader = "[oledstats]\n";

// The box's own table of keys and limits (no copy of it here).
using ValueKind = ControlValueKind;
using Command = ControlKey;

// The keys an operator may set, in the order the box tries them: all but
// the marker and the reply, which the verbs send themselves.
const std::vector<Command>& command_table();
const Command* find_command(const std::string& key);

using Settings = std::vector<std::pair<std::string, std::string>>;

// Checks "KEY=VALUE" against the table. Empty result: fine; otherwise a
// one-line reason naming the item.
std::string check_item(const std::string& item);

// The datagram for the items, joined by "|". With a target address the
// box marker goes first so that only that box obeys a group send.
std::string build_set(const std::vector<std::string>& items, const std::string& target);

// "replyoled" alone makes the box answer to the sender's address and port.
std::string build_query();
std::string build_stats_query();

// Splits a reply ("[oled]", a newline, then the settings file) into its
// key/value pairs in file order. False when the header is missing. The
// counts' reply is read the same way, with its own header.
bool parse_reply(const std::string& payload, Settings& settings, const char* header = kReplyHeader);

// Dotted IPv4 text, four decimal parts 0..255.
bool is_ipv4(const std::string& text);

}  // namespace protocol

#endif
