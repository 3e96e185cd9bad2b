#include "udp_socket.h"

#include <arpa/inet.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

namespace {

// The size of an IPv4 socket address, which every call here passes.
const socklen_t kAddressSize = sizeof(sockaddr_in);

sockaddr_in ipv4_address(in_addr_t address, unsigned int port)
{
    sockaddr_in a;
    memset(&a, 0, sizeof(a));
    a.sin_family = AF_INET;
    a.sin_port = htons(static_cast<uint16_t>(port));
    a.sin_addr.s_addr = address;
    return a;
}

size_t length_of(long len)
{
    return len > 0 ? static_cast<size_t>(len) : 0;
}

int open_datagram_socket()
{
    int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        const int error = errno;  // the caller names the cause
        perror("can't create socket file");
        errno = error;
    }
    return fd;
}

}  // namespace

UDPSocket::UDPSocket() : sock_fd(-1), connected(0), peer_addr_len(kAddressSize)
{
    memset(&mreq, 0, sizeof(mreq));
    memset(&server_addr, 0, sizeof(server_addr));
    memset(&client_addr, 0, sizeof(client_addr));
}

UDPSocket::~UDPSocket()
{
    CloseUDPSocket();
}

int UDPSocket::CreateUDPServer(unsigned int port, bool nonblock, bool reuseaddr)
{
    // A second create must not leak the first descriptor.
    CloseUDPSocket();
    server_addr = ipv4_address(htonl(INADDR_ANY), port);
    sock_fd = open_datagram_socket();
    if (sock_fd < 0) {
        return -1;
    }
    if (reuseaddr && !SetReuseaddr(true)) {
        return -1;
    }
    if (nonblock && !setnonblocking()) {
        perror("setnonblock error");
        return -1;
    }
    if (bind(sock_fd, reinterpret_cast<const sockaddr*>(&server_addr), kAddressSize) != 0) {
        const int error = errno;  // the caller names the cause
        perror("bind error");
        errno = error;
        return -1;
    }
    return sock_fd;
}

int UDPSocket::CreateUDPClient(const char* ip, unsigned int port, bool nonblock, bool connect)
{
    CloseUDPSocket();
    connected = 0;
    if (port != 0) {
        server_addr = ipv4_address(ip != nullptr ? inet_addr(ip) : 0, port);
    }
    sock_fd = open_datagram_socket();
    if (sock_fd < 0) {
        return -1;
    }
    if (port != 0 && connect) {
        if (::connect(sock_fd, reinterpret_cast<const sockaddr*>(&server_addr), kAddressSize) != 0) {
            perror("connect error");
            return -1;
        }
        connected = 1;
    }
    if (nonblock && !setnonblocking()) {
        perror("setnonblock error");
        return -1;
    }
    return sock_fd;
}

bool UDPSocket::BindLocalAddr(const char* ifname, unsigned int port, bool reuseaddr)
{
    if (reuseaddr && !SetReuseaddr(true)) {
        return false;
    }
    char address[kItemSize];
    if (!GetNetworkInfo(ifname, IF_ADDR, address)) {
        return false;
    }
    const sockaddr_in local = ipv4_address(inet_addr(address), port);
    if (bind(sock_fd, reinterpret_cast<const sockaddr*>(&local), kAddressSize) != 0) {
        perror("bind error");
        return false;
    }
    return true;
}

bool UDPSocket::AddBroadCast(const char* ifname)
{
    if (!set_int_option(SOL_SOCKET, SO_BROADCAST, 1, "setsockopt():SO_BROADCAST")) {
        return false;
    }
    if (ifname == nullptr) {
        server_addr.sin_family = AF_INET;
        server_addr.sin_addr.s_addr = htonl(INADDR_BROADCAST);
        return true;
    }
    char broadcast[kItemSize];
    if (!GetNetworkInfo(ifname, IF_BRDADDR, broadcast)) {
        return false;
    }
    server_addr.sin_family = AF_INET;
    server_addr.sin_addr.s_addr = inet_addr(broadcast);
    printf("Broadcast IP: %s\n", broadcast);
    return true;
}

bool UDPSocket::join_once(const char* group, const char* ifname, bool reuseaddr)
{
    // The host hears its own multicast sends.
    if (!set_int_option(IPPROTO_IP, IP_MULTICAST_LOOP, 1, "setsockopt():IP_MULTICAST_LOOP")) {
        return false;
    }
    if (reuseaddr && !SetReuseaddr(true)) {
        return false;
    }
    memset(&mreq, 0, sizeof(mreq));
    if (group == nullptr) {
        return false;
    }
    mreq.imr_multiaddr.s_addr = inet_addr(group);
    if (ifname != nullptr) {
        char address[kItemSize];
        if (!GetNetworkInfo(ifname, IF_ADDR, address)) {
            return false;
        }
        mreq.imr_interface.s_addr = inet_addr(address);
    }
    if (setsockopt(sock_fd, IPPROTO_IP, IP_ADD_MEMBERSHIP, &mreq, sizeof(mreq)) != 0) {
        perror("setsockopt():IP_ADD_MEMBERSHIP");
        return false;
    }
    return true;
}

bool UDPSocket::AddMemberShip(const char* group, const char* ifname, bool reuseaddr, unsigned int retries)
{
    // Retried at once, without a pause, as many times as asked.
    while (!join_once(group, ifname, reuseaddr)) {
        if (retries == 0) {
            return false;
        }
        printf("AddMemberShip %s error, retry : %u", group != nullptr ? group : "", retries);
        --retries;
    }
    return true;
}

bool UDPSocket::DropMemberShip()
{
    if (setsockopt(sock_fd, IPPROTO_IP, IP_DROP_MEMBERSHIP, &mreq, sizeof(mreq)) != 0) {
        perror("setsockopt():IP_DROP_MEMBERSHIP");
        return false;
    }
    return true;
}

int UDPSocket::RecvFrom(char* buf, long len)
{
    return static_cast<int>(
        recvfrom(sock_fd, buf, length_of(len), 0, reinterpret_cast<sockaddr*>(&client_addr), &peer_addr_len));
}

int UDPSocket::RecvFrom(char* buf, long len, in_addr& destination)
{
    iovec data = {buf, length_of(len)};
    // Room for the packet-info message and whatever else the kernel adds.
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(in_pktinfo)) + 64];
    msghdr message;
    memset(&message, 0, sizeof(message));
    message.msg_name = &client_addr;
    message.msg_namelen = peer_addr_len;
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof(control);
    destination.s_addr = htonl(INADDR_ANY);
    const ssize_t received = recvmsg(sock_fd, &message, 0);
    if (received < 0) {
        return -1;
    }
    for (cmsghdr* c = CMSG_FIRSTHDR(&message); c != nullptr; c = CMSG_NXTHDR(&message, c)) {
        if (c->cmsg_level == IPPROTO_IP && c->cmsg_type == IP_PKTINFO) {
            in_pktinfo info;
            memcpy(&info, CMSG_DATA(c), sizeof(info));
            // The header's destination: the group for a group datagram.
            destination = info.ipi_addr;
        }
    }
    return static_cast<int>(received);
}

int UDPSocket::SendTo(const char* buf, long len)
{
    if (server_addr.sin_addr.s_addr == 0) {
        puts("please intput client_ip and client_port");
        return -1;
    }
    if (connected) {
        return static_cast<int>(write(sock_fd, buf, length_of(len)));
    }
    return static_cast<int>(
        sendto(sock_fd, buf, length_of(len), 0, reinterpret_cast<const sockaddr*>(&server_addr), kAddressSize));
}

int UDPSocket::SendTo(const char* ip, unsigned int port, const char* buf, long len)
{
    if (ip == nullptr || buf == nullptr) {
        return -1;
    }
    const sockaddr_in to = ipv4_address(inet_addr(ip), port);
    return static_cast<int>(
        sendto(sock_fd, buf, length_of(len), 0, reinterpret_cast<const sockaddr*>(&to), kAddressSize));
}

int UDPSocket::EchoTo(const char* buf, long len, bool verbose)
{
    if (client_addr.sin_addr.s_addr == 0) {
        return -1;
    }
    if (verbose) {
        // The message need not be terminated: print at most len bytes.
        const long long wanted = len;
        const int shown = static_cast<int>(wanted < 0 ? 0 : (wanted > INT_MAX ? INT_MAX : wanted));
        printf("Receive client (%s:%u) on socket: %d  \nmessage:%.*s\n", GetClientSocketIP().c_str(),
               static_cast<unsigned int>(ntohs(client_addr.sin_port)), sock_fd, shown, buf != nullptr ? buf : "");
    }
    return static_cast<int>(
        sendto(sock_fd, buf, length_of(len), 0, reinterpret_cast<const sockaddr*>(&client_addr), peer_addr_len));
}

bool UDPSocket::EmptyRecvBuf()
{
    // poll rather than select: a descriptor beyond FD_SETSIZE cannot
    // overrun a set. Each pass waits at most 1 ms.
    if (sock_fd < 0) {
        errno = EBADF;
        perror("EmptyRecvBuf() select failed\n");
        return false;
    }
    for (;;) {
        pollfd waiting;
        waiting.fd = sock_fd;
        waiting.events = POLLIN;
        waiting.revents = 0;
        const int ready = poll(&waiting, 1, 1);
        if (ready == 0) {
            return true;
        }
        if (ready < 0) {
            perror("EmptyRecvBuf() select failed\n");
            return false;
        }
        if (!(waiting.revents & POLLIN)) {
            perror("EmptyRecvBuf() select error\n");
            return false;
        }
        char discard[1024];
        recvfrom(sock_fd, discard, sizeof(discard), 0, reinterpret_cast<sockaddr*>(&client_addr), &peer_addr_len);
    }
}

bool UDPSocket::setnonblocking()
{
    // The descriptor flags are read and written back as status flags; on a
    // datagram socket only O_NONBLOCK ends up set either way.
    int flags = fcntl(sock_fd, F_GETFD);
    if (flags < 0) {
        flags = 0;
    }
    return fcntl(sock_fd, F_SETFL, flags | O_NONBLOCK) != -1;
}

void UDPSocket::CloseUDPSocket()
{
    if (sock_fd != -1) {
        close(sock_fd);
        sock_fd = -1;
    }
}

sockaddr_in UDPSocket::GetClientSockaddr()
{
    return client_addr;
}

std::string UDPSocket::GetClientSocketIP()
{
    char text[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &client_addr.sin_addr, text, sizeof(text));
    return text;
}
