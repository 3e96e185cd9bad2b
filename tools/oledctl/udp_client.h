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
    // segment of boxes answering at once. Empty result: fine, else why not.
    std::string open();
    // Group sends leave through this interface (its IPv4 address).
    std::string use_interface(const std::string& name);
    std::string send(const std::string& address, unsigned short port, const std::string& payload);

    // Returns true when it has what it waited for.
    using Handler = std::function<bool(const std::string& source, const std::string& payload)>;
    // Hands every datagram that arrives before the deadline to the handler,
    // until the handler is satisfied.
    std::string collect(std::chrono::steady_clock::time_point deadline, const Handler& handler);

private:
    int fd_ = -1;
};

#endif
