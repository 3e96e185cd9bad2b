#include <stdio.h>
#include <sys/time.h>

#include "udp_socket.h"

bool UDPSocket::set_int_option(int level, int option, int value, const char* failure)
{
    if (setsockopt(sock_fd, level, option, &value, sizeof(value)) != 0) {
        perror(failure);
        return false;
    }
    return true;
}

int UDPSocket::get_int_option(int level, int option, const char* failure)
{
    int value = 0;
    socklen_t size = sizeof(value);
    if (getsockopt(sock_fd, level, option, &value, &size) != 0) {
        perror(failure);
        return -1;
    }
    return value;
}

bool UDPSocket::SetReuseaddr(bool on)
{
    return set_int_option(SOL_SOCKET, SO_REUSEADDR, on ? 1 : 0, "setsockopt():SO_REUSEADDR");
}

bool UDPSocket::SetTimeOut(int sec, int usec)
{
    timeval timeout;
    timeout.tv_sec = sec;
    timeout.tv_usec = usec;
    if (setsockopt(sock_fd, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof(timeout)) != 0) {
        perror("socket time out set failed\n");
        return false;
    }
    return true;
}

int UDPSocket::GetRevBuf()
{
    return get_int_option(SOL_SOCKET, SO_RCVBUF, "getsockopt():SO_RCVBUF");
}

int UDPSocket::GetSndBuf()
{
    return get_int_option(SOL_SOCKET, SO_SNDBUF, "getsockopt():SO_SNDBUF");
}

bool UDPSocket::SetRevBuf(int size)
{
    return set_int_option(SOL_SOCKET, SO_RCVBUF, size, "setsockopt():SO_RCVBUF");
}

bool UDPSocket::SetSndBuf(int size)
{
    return set_int_option(SOL_SOCKET, SO_SNDBUF, size, "setsockopt():SO_SNDBUF");
}

// Both TTL getters report under the IP_TTL wording.
int UDPSocket::GetIpTTL()
{
    return get_int_option(IPPROTO_IP, IP_TTL, "setsockopt():IP_TTL");
}

int UDPSocket::GetMulticastTTL()
{
    return get_int_option(IPPROTO_IP, IP_MULTICAST_TTL, "setsockopt():IP_TTL");
}

bool UDPSocket::SetIpTTL(int ttl)
{
    return set_int_option(IPPROTO_IP, IP_TTL, ttl, "setsockopt():IP_TTL");
}

bool UDPSocket::SetMulticastTTL(int ttl)
{
    return set_int_option(IPPROTO_IP, IP_MULTICAST_TTL, ttl, "setsockopt():IP_MULTICAST_TTL");
}

bool UDPSocket::SetPacketInfo(bool on)
{
    return set_int_option(IPPROTO_IP, IP_PKTINFO, on ? 1 : 0, "setsockopt():IP_PKTINFO");
}
