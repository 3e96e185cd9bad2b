#ifndef OLEDCTL_UDP_CLIENT_H
#define OLEDCTL_UDP_CLIENT_H

#include <chrono>
#include <functional>
#include <string>

// The operator's end of the control protocol: one UDP socket on an
// ephemeral port that sends commands and collects the boxes' answers.
class UdpClient {
public:
    UdpClient() = default;
    ~UdpClient();
    UdpClient(const UdpClient&) = delete;
    UdpClient& operator=(const UdpClient&) = delete;

    // Opens the socket with a receive buffer large enough for a whole
    // segment of boxes answering at once; group sends leave through
    // group_iface when one is named (its IPv4 address), else the route's.
    // Empty result: fine, else why not.
    std::string open(const std::string& group_iface = "");
    bool is_open() const { return fd_ >= 0; }
    // Every datagram sent after this is signed with key (none when empty).
    void sign_with(const std::string& key) { key_ = key; }
    std::string send(const std::string& address, unsigned short port, const std::string& payload);

    // Returns true when it has what it waited for.
    using Handler = std::function<bool(const std::string& source, const std::string& payload)>;
    // Hands every datagram that arrives before the deadline to the handler,
    // until the handler is satisfied.
    std::string collect(std::chrono::steady_clock::time_point deadline, const Handler& handler);

private:
    std::string use_interface(const std::string& name);

    int fd_ = -1;
    std::string key_;
};

// When a collect that waits this many seconds from now ends.
std::chrono::steady_clock::time_point deadline_after(double seconds);
// "2 s", "0.5 s": a wait as the operator gave it.
std::string seconds_text(double seconds);

#endif
