#ifndef OLED_NET_UDP_SOCKET_H
#define OLED_NET_UDP_SOCKET_H

#include <netinet/in.h>
#include <sys/socket.h>

#include <string>

#include "network_info.h"

// One IPv4 datagram socket, as a server (bound port, answers the last
// sender) or as a client (fixed peer), with multicast membership,
// broadcast and the usual options. Failures are printed (perror, or stdout
// where noted) and returned; nothing throws. Owns its descriptor.
class UDPSocket : public NetworkInfo {
public:
    UDPSocket();
    ~UDPSocket();
    UDPSocket(const UDPSocket&) = delete;
    UDPSocket& operator=(const UDPSocket&) = delete;

    // Bound to any address and port; the descriptor or -1.
    int CreateUDPServer(unsigned int port, bool nonblock, bool reuseaddr);
    // Socket towards ip:port (port 0: only the socket); the descriptor or -1.
    int CreateUDPClient(const char* ip, unsigned int port, bool nonblock, bool connect);
    // Binds to the interface's IPv4 address and port (0: any port).
    bool BindLocalAddr(const char* ifname, unsigned int port, bool reuseaddr);
    // Enables broadcast; the peer becomes the interface's broadcast address,
    // or 255.255.255.255 when ifname is null.
    bool AddBroadCast(const char* ifname);
    // Joins group on the interface's address (any when ifname is null);
    // a failed attempt is repeated up to retries times.
    bool AddMemberShip(const char* group, const char* ifname, bool reuseaddr, unsigned int retries);
    bool DropMemberShip();

    // One datagram; the sender becomes the client address.
    int RecvFrom(char* buf, long len);
    // The same, and the address the sender sent it to (a group's, or one
    // of this host's): the packet's own, once SetPacketInfo is on; 0.0.0.0
    // when the kernel did not say.
    int RecvFrom(char* buf, long len, in_addr& destination);
    // To the peer of CreateUDPClient/AddBroadCast.
    int SendTo(const char* buf, long len);
    int SendTo(const char* ip, unsigned int port, const char* buf, long len);
    // Back to the last sender.
    int EchoTo(const char* buf, long len, bool verbose);
    // Discards whatever is queued.
    bool EmptyRecvBuf();
    bool setnonblocking();
    void CloseUDPSocket();

    sockaddr_in GetClientSockaddr();
    std::string GetClientSocketIP();

    bool SetReuseaddr(bool on);
    bool SetTimeOut(int sec, int usec);
    int GetRevBuf();
    int GetSndBuf();
    bool SetRevBuf(int size);
    bool SetSndBuf(int size);
    int GetIpTTL();
    int GetMulticastTTL();
    bool SetIpTTL(int ttl);
    bool SetMulticastTTL(int ttl);
    // Each datagram then carries the address it was sent to.
    bool SetPacketInfo(bool on);

private:
    bool join_once(const char* group, const char* ifname, bool reuseaddr);
    bool set_int_option(int level, int option, int value, const char* failure);
    int get_int_option(int level, int option, const char* failure);

    int sock_fd;
    int connected;
    socklen_t peer_addr_len;
    ip_mreq mreq;
    sockaddr_in server_addr;
    sockaddr_in client_addr;
};

#endif
