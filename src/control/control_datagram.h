#ifndef OLED_CONTROL_CONTROL_DATAGRAM_H
#define OLED_CONTROL_CONTROL_DATAGRAM_H

#include <stdint.h>

#include <map>
#include <string>
#include <vector>

class DatagramAuth;
class SettingsSaver;
struct ControlStats;

// Longest command text: a datagram is cut here and its text ends there.
const int kControlDatagramMax = 1024;
// Longest dotted IPv4 address a reply may be sent to.
const size_t kReplyAddressMax = 15;

// The sender of a datagram: dotted address and source port (host order).
struct ControlPeer {
    std::string address;
    unsigned int port;
};

// Where "replyoled" answers go: the server's socket, or a test's collector.
class ReplySender {
public:
    virtual ~ReplySender() {}
    // signed_query: the datagram carried a valid signature, so the reply
    // may come from the operators' own share of the budget.
    virtual void send(const char* ip, unsigned int port, const std::string& payload, bool signed_query) = 0;
};

// For each pin setting, the pins (group * 8 + bit) a datagram may give
// it besides 0: its own at start and the board's default for it.
typedef std::map<std::string, std::vector<int>> PinsAtStart;

// What datagrams act with for the server's lifetime.
struct ControlContext {
    std::string local_address;  // the box's own eth0 address text, "" when unknown
    PinsAtStart pins;
    ReplySender* reply;
    SettingsSaver* saver;
    DatagramAuth* auth;  // checks signatures; nullptr: no key asked for
    // Every address of the box (network order): its local services
    // listen there, so no reply goes to one.
    std::vector<uint32_t> own_addresses;
    ControlStats* stats = nullptr;  // counts what datagrams did, or nullptr
    long long started = 0;          // the daemon's start, Unix seconds
};

// The pins of every pin setting as the daemon starts.
PinsAtStart pins_at_start();

// Carries out one command datagram of length bytes, sent to destination
// (dotted: the box's address or the group's), at now_ms (monotonic):
// targeting, every item checked and carried out, at most one reply, then
// the save (at once or pending, as the saver rules) and the LED switch
// recomputed.
// Returns false when the datagram was ignored (shorter than two bytes, or
// aimed at another box, or aimed while the box does not know its address)
// or refused whole for want of a signature made with the box's key.
bool handle_control_datagram(const char* text, long length, const ControlPeer& sender, const std::string& destination,
                             ControlContext& context, int64_t now_ms);

#endif
