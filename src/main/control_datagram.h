#ifndef OLED_MAIN_CONTROL_DATAGRAM_H
#define OLED_MAIN_CONTROL_DATAGRAM_H

#include <stdint.h>

#include <string>
#include <vector>

class DatagramAuth;
class SettingsSaver;

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
    virtual void send(const char* ip, unsigned int port, const std::string& payload) = 0;
};

// What datagrams act with for the server's lifetime.
struct ControlContext {
    std::string local_address;  // the box's own eth0 address text, "" when unknown
    std::vector<int> own_pins;  // group * 8 + bit of every pin a datagram may name
    ReplySender* reply;
    SettingsSaver* saver;
    DatagramAuth* auth;  // checks signatures; nullptr: no key asked for
};

// The pins that the panel and LED settings name now, and the board's
// default panel pins: a datagram may move the panel among these.
std::vector<int> panel_and_led_pins();

// Carries out one command datagram of length bytes at now_ms (monotonic):
// targeting, every item checked and carried out, replies, then the save
// (at once or pending, as the saver rules) and the LED switch recomputed.
// Returns false when the datagram was ignored (shorter than two bytes, or
// aimed at another box, or aimed while the box does not know its address)
// or refused whole for want of a signature made with the box's key.
bool handle_control_datagram(const char* text, long length, const ControlPeer& sender, ControlContext& context,
                             int64_t now_ms);

#endif
