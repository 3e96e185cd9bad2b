#ifndef OLED_MAIN_CONTROL_DATAGRAM_H
#define OLED_MAIN_CONTROL_DATAGRAM_H

#include <string>

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

// Carries out one command datagram of length bytes: targeting, the
// command table, replies, then save, re-read and print of the settings and
// the LED switch recomputed. local_address is the box's own eth0 address
// text ("" when unknown). Returns false when the datagram was ignored
// (shorter than two bytes, or aimed at another box) or refused for want of
// a signature made with auth's key (none needed without auth).
class DatagramAuth;
bool handle_control_datagram(const char* text, long length, const ControlPeer& sender,
                             const std::string& local_address, ReplySender& reply, DatagramAuth* auth = nullptr);

#endif
