#include "udp_client.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include "protocol.h"
#include "signature_format.h"
#include "signing_key.h"

namespace {

// A box's answer is the settings file, well under this; a larger datagram
// is read whole and judged by the caller.
constexpr std::size_t kReceiveBuffer = 65536;
// Kernel buffer for a burst of answers from many boxes at once.
constexpr int kSocketBuffer = 4 * 1024 * 1024;

std::string system_error(const std::string& what)
{
    return what + ": " + std::strerror(errno);
}

}  // namespace

UdpClient::~UdpClient()
{
    if (fd_ >= 0)
        ::close(fd_);
}

std::string UdpClient::open(const std::string& group_iface)
{
    fd_ = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd_ < 0)
        return system_error("socket");
    int size = kSocketBuffer;
    // Past the system's cap when allowed (root), else as much as the cap
    // grants; a smaller buffer still works for a few dozen boxes. Questions
    // to a subnet of the operator's own segment wait in the send buffer
    // while the kernel seeks each address (seconds for an empty one), and
    // a full buffer would stall the sweep.
    if (::setsockopt(fd_, SOL_SOCKET, SO_RCVBUFFORCE, &size, sizeof size) != 0) {
        ::setsockopt(fd_, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
    }
    if (::setsockopt(fd_, SOL_SOCKET, SO_SNDBUFFORCE, &size, sizeof size) != 0) {
        ::setsockopt(fd_, SOL_SOCKET, SO_SNDBUF, &size, sizeof size);
    }
    unsigned char ttl = 1;  // the group is meant for the local segment only
    ::setsockopt(fd_, IPPROTO_IP, IP_MULTICAST_TTL, &ttl, sizeof ttl);
    sockaddr_in local{};
    local.sin_family = AF_INET;
    local.sin_addr.s_addr = htonl(INADDR_ANY);
    if (::bind(fd_, reinterpret_cast<sockaddr*>(&local), sizeof local) != 0)
        return system_error("bind");
    return group_iface.empty() ? "" : use_interface(group_iface);
}

std::string UdpClient::use_interface(const std::string& name)
{
    ifreq request{};
    if (name.size() >= sizeof request.ifr_name)
        return "interface name too long: " + name;
    std::memcpy(request.ifr_name, name.c_str(), name.size());
    if (::ioctl(fd_, SIOCGIFADDR, &request) != 0)
        return system_error("interface " + name);
    in_addr address = reinterpret_cast<sockaddr_in*>(&request.ifr_addr)->sin_addr;
    if (::setsockopt(fd_, IPPROTO_IP, IP_MULTICAST_IF, &address, sizeof address) != 0) {
        return system_error("multicast interface " + name);
    }
    return "";
}

std::string UdpClient::send(const std::string& address, unsigned short port, const std::string& unsigned_payload)
{
    const std::string payload =
        key_.empty() ? unsigned_payload : sign_datagram(unsigned_payload, key_, signing::next_counter(), address);
    // The box cuts what is longer, and the MAC would no longer match.
    if (!key_.empty() && payload.size() > protocol::kMaxDatagram) {
        return "signed datagram of " + std::to_string(payload.size()) + " bytes; a box reads at most " +
               std::to_string(protocol::kMaxDatagram);
    }
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(port);
    if (inet_pton(AF_INET, address.c_str(), &to.sin_addr) != 1)
        return "bad address: " + address;
    const ssize_t sent = ::sendto(fd_, payload.data(), payload.size(), 0, reinterpret_cast<sockaddr*>(&to), sizeof to);
    if (sent < 0)
        return system_error("send to " + address);
    if (static_cast<std::size_t>(sent) != payload.size())
        return "send to " + address + ": datagram cut";
    return "";
}

std::string UdpClient::collect(std::chrono::steady_clock::time_point deadline, const Handler& handler)
{
    // Once per thread: a fresh 64 KiB for every question (a probe is one)
    // costs more in page faults and returned memory than the question.
    thread_local std::vector<char> buffer(kReceiveBuffer);
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return "";
        pollfd waiting{fd_, POLLIN, 0};
        const int ready = ::poll(&waiting, 1, static_cast<int>(left.count()));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready < 0)
            return system_error("poll");
        if (ready == 0)
            continue;  // the deadline check above ends the loop
        sockaddr_in from{};
        socklen_t from_size = sizeof from;
        const ssize_t size =
            ::recvfrom(fd_, buffer.data(), buffer.size(), 0, reinterpret_cast<sockaddr*>(&from), &from_size);
        if (size < 0) {
            // An ICMP "port unreachable" from a unicast target shows up here.
            if (errno == EINTR || errno == ECONNREFUSED)
                continue;
            return system_error("receive");
        }
        char source[INET_ADDRSTRLEN] = "";
        inet_ntop(AF_INET, &from.sin_addr, source, sizeof source);
        if (handler(source, std::string(buffer.data(), static_cast<std::size_t>(size))))
            return "";
    }
}

std::chrono::steady_clock::time_point deadline_after(double seconds)
{
    return std::chrono::steady_clock::now() +
           std::chrono::duration_cast<std::chrono::steady_clock::duration>(std::chrono::duration<double>(seconds));
}

std::string seconds_text(double seconds)
{
    char text[32];
    std::snprintf(text, sizeof text, "%g s", seconds);
    return text;
}
