#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include <string>

#include "capture_stdout.h"
#include "udp_socket.h"

namespace {

unsigned int port_of(int fd)
{
    sockaddr_in a;
    socklen_t size = sizeof(a);
    getsockname(fd, reinterpret_cast<sockaddr*>(&a), &size);
    return ntohs(a.sin_port);
}

std::string address_of(int fd)
{
    sockaddr_in a;
    socklen_t size = sizeof(a);
    getsockname(fd, reinterpret_cast<sockaddr*>(&a), &size);
    return inet_ntoa(a.sin_addr);
}

int open_descriptors()
{
    int count = 0;
    DIR* dir = opendir("/proc/self/fd");
    while (dir != nullptr && readdir(dir) != nullptr) {
        ++count;
    }
    closedir(dir);
    return count;
}

// Receives one datagram as text, waiting at most two seconds.
std::string receive(UDPSocket& socket)
{
    socket.SetTimeOut(2, 0);
    char buf[2048];
    const int n = socket.RecvFrom(buf, sizeof(buf));
    return n < 0 ? "<nothing>" : std::string(buf, static_cast<size_t>(n));
}

}  // namespace

TEST(UDPSocket, ServerAndClientTalkOverLoopback)
{
    UDPSocket server;
    const int server_fd = server.CreateUDPServer(0, false, true);
    ASSERT_GE(server_fd, 0);
    const unsigned int port = port_of(server_fd);

    UDPSocket client;
    const int client_fd = client.CreateUDPClient("127.0.0.1", port, false, true);
    ASSERT_GE(client_fd, 0);
    EXPECT_EQ(client.SendTo("hello", 5), 5);
    EXPECT_EQ(receive(server), "hello");
    EXPECT_EQ(server.GetClientSocketIP(), "127.0.0.1");
    EXPECT_EQ(ntohs(server.GetClientSockaddr().sin_port), port_of(client_fd));

    CaptureStdout out;
    EXPECT_EQ(server.EchoTo("back!", 5, true), 5);
    EXPECT_EQ(out.text(), "Receive client (127.0.0.1:" + std::to_string(port_of(client_fd)) + ") on socket: " +
                              std::to_string(server_fd) + "  \nmessage:back!\n");
    EXPECT_EQ(receive(client), "back!");

    // An unconnected socket names its destination each time.
    UDPSocket other;
    ASSERT_GE(other.CreateUDPClient(nullptr, 0, false, false), 0);
    EXPECT_EQ(other.SendTo("127.0.0.1", port, "via address", 11), 11);
    EXPECT_EQ(receive(server), "via address");
    // A client that is not connected sends to its peer with sendto.
    UDPSocket peer;
    ASSERT_GE(peer.CreateUDPClient("127.0.0.1", port, false, false), 0);
    EXPECT_EQ(peer.SendTo("to peer", 7), 7);
    EXPECT_EQ(receive(server), "to peer");
}

TEST(UDPSocket, SendingWithoutADestinationFails)
{
    UDPSocket socket;
    ASSERT_GE(socket.CreateUDPClient(nullptr, 0, false, false), 0);
    CaptureStdout out;
    EXPECT_EQ(socket.SendTo("x", 1), -1);
    EXPECT_EQ(socket.EchoTo("x", 1, true), -1);  // nothing received yet
    EXPECT_EQ(socket.SendTo(nullptr, 9, "x", 1), -1);
    EXPECT_EQ(socket.SendTo("127.0.0.1", 9, nullptr, 1), -1);
    EXPECT_EQ(out.text(), "please intput client_ip and client_port\n");
}

TEST(UDPSocket, MembershipRetriesAtOnceAndCountsDown)
{
    UDPSocket socket;
    ASSERT_GE(socket.CreateUDPServer(0, false, true), 0);
    {
        // No address on the interface: the attempt fails before joining.
        CaptureStdout out;
        CaptureStdout err(STDERR_FILENO);
        EXPECT_FALSE(socket.AddMemberShip("224.168.1.1", "eth9", true, 0));
        EXPECT_FALSE(socket.AddMemberShip("224.168.1.1", "eth9", true, 2));
        EXPECT_EQ(err.text(), "");
        EXPECT_EQ(out.text(), "AddMemberShip 224.168.1.1 error, retry : 2AddMemberShip 224.168.1.1 error, retry : 1");
    }
    {
        // Not a group address: every attempt reaches the join and fails there.
        CaptureStdout out;
        CaptureStdout err(STDERR_FILENO);
        EXPECT_FALSE(socket.AddMemberShip("10.0.0.1", nullptr, false, 1));
        EXPECT_EQ(out.text(), "AddMemberShip 10.0.0.1 error, retry : 1");
        const std::string errors = err.text();
        EXPECT_EQ(errors.find("setsockopt():IP_ADD_MEMBERSHIP: "), 0u) << errors;
        EXPECT_NE(errors.find("setsockopt():IP_ADD_MEMBERSHIP: ", 1), std::string::npos) << errors;
    }
    // The loopback interface has an address: joining there works, and the
    // membership can be left once.
    EXPECT_TRUE(socket.AddMemberShip("224.168.1.1", "lo", true, 0));
    EXPECT_TRUE(socket.DropMemberShip());
    CaptureStdout err(STDERR_FILENO);
    EXPECT_FALSE(socket.DropMemberShip());
    EXPECT_EQ(err.text().find("setsockopt():IP_DROP_MEMBERSHIP: "), 0u);
}

TEST(UDPSocket, BroadcastAndLocalAddress)
{
    UDPSocket socket;
    ASSERT_GE(socket.CreateUDPClient(nullptr, 0, false, false), 0);
    CaptureStdout out;
    EXPECT_FALSE(socket.AddBroadCast("eth9"));
    EXPECT_TRUE(socket.AddBroadCast(nullptr));
    // The peer is now known (all ones, port 0): the send is refused by the
    // system, not by the missing-destination check.
    EXPECT_EQ(socket.SendTo("x", 1), -1);
    EXPECT_EQ(out.text(), "");
    int on = 0;
    socklen_t size = sizeof(on);
    UDPSocket probe;
    const int fd = probe.CreateUDPClient(nullptr, 0, false, false);
    ASSERT_TRUE(probe.AddBroadCast(nullptr));
    getsockopt(fd, SOL_SOCKET, SO_BROADCAST, &on, &size);
    EXPECT_EQ(on, 1);

    EXPECT_TRUE(probe.BindLocalAddr("lo", 0, true));
    EXPECT_EQ(address_of(fd), "127.0.0.1");
    EXPECT_NE(port_of(fd), 0u);
    UDPSocket unbound;
    unbound.CreateUDPClient(nullptr, 0, false, false);
    EXPECT_FALSE(unbound.BindLocalAddr("eth9", 0, false));
    EXPECT_FALSE(unbound.BindLocalAddr(nullptr, 0, false));
}

TEST(UDPSocket, EmptyRecvBufDrainsTheQueueAndKeepsTheLastSender)
{
    UDPSocket server;
    const int fd = server.CreateUDPServer(0, true, false);
    ASSERT_GE(fd, 0);
    EXPECT_TRUE(fcntl(fd, F_GETFL) & O_NONBLOCK);
    char buf[16];
    EXPECT_EQ(server.RecvFrom(buf, sizeof(buf)), -1);
    EXPECT_EQ(errno, EAGAIN);

    EXPECT_TRUE(server.EmptyRecvBuf());  // idle: one short wait
    UDPSocket client;
    ASSERT_GE(client.CreateUDPClient("127.0.0.1", port_of(fd), false, true), 0);
    for (int i = 0; i < 3; ++i) {
        client.SendTo("queued", 6);
    }
    EXPECT_TRUE(server.EmptyRecvBuf());
    EXPECT_EQ(server.RecvFrom(buf, sizeof(buf)), -1);
    // The drained datagrams told who sent them.
    EXPECT_EQ(server.EchoTo("ok", 2, false), 2);
    EXPECT_EQ(receive(client), "ok");

    server.CloseUDPSocket();
    CaptureStdout err(STDERR_FILENO);
    EXPECT_FALSE(server.EmptyRecvBuf());
    EXPECT_EQ(err.text().find("EmptyRecvBuf() select failed\n: "), 0u);
}

TEST(UDPSocket, CreateFailuresKeepTheDescriptorAndCloseIsIdempotent)
{
    const int before = open_descriptors();
    {
        UDPSocket first;
        const int fd = first.CreateUDPServer(0, false, false);
        ASSERT_GE(fd, 0);
        UDPSocket second;
        CaptureStdout err(STDERR_FILENO);
        EXPECT_EQ(second.CreateUDPServer(port_of(fd), false, false), -1);
        EXPECT_EQ(err.text().find("bind error: "), 0u);
        // The socket stays open: its options can still be read.
        EXPECT_GT(second.GetRevBuf(), 0);
        // Creating again replaces the socket rather than leaking it.
        EXPECT_GE(second.CreateUDPClient(nullptr, 0, false, false), 0);
        EXPECT_EQ(open_descriptors(), before + 2);
    }
    EXPECT_EQ(open_descriptors(), before);

    UDPSocket socket;
    socket.CreateUDPClient(nullptr, 0, false, false);
    socket.CloseUDPSocket();
    socket.CloseUDPSocket();
    EXPECT_EQ(open_descriptors(), before);
    CaptureStdout err(STDERR_FILENO);
    EXPECT_EQ(socket.SendTo("127.0.0.1", 9, "x", 1), -1);
    EXPECT_FALSE(socket.setnonblocking());
}

TEST(UDPSocket, OptionAccessorsSetAndReportWithTheirTexts)
{
    UDPSocket socket;
    ASSERT_GE(socket.CreateUDPClient(nullptr, 0, false, false), 0);
    EXPECT_TRUE(socket.SetIpTTL(7));
    EXPECT_EQ(socket.GetIpTTL(), 7);
    EXPECT_TRUE(socket.SetMulticastTTL(3));
    EXPECT_EQ(socket.GetMulticastTTL(), 3);
    EXPECT_TRUE(socket.SetRevBuf(8192));
    EXPECT_GE(socket.GetRevBuf(), 8192);
    EXPECT_TRUE(socket.SetSndBuf(8192));
    EXPECT_GE(socket.GetSndBuf(), 8192);
    EXPECT_TRUE(socket.SetReuseaddr(true));
    EXPECT_TRUE(socket.SetTimeOut(0, 20000));
    char buf[4];
    EXPECT_EQ(socket.RecvFrom(buf, sizeof(buf)), -1);  // times out instead of blocking
    EXPECT_TRUE(errno == EAGAIN || errno == EWOULDBLOCK);

    socket.CloseUDPSocket();
    CaptureStdout err(STDERR_FILENO);
    EXPECT_FALSE(socket.SetReuseaddr(true));
    EXPECT_FALSE(socket.SetTimeOut(1, 0));
    EXPECT_EQ(socket.GetRevBuf(), -1);
    EXPECT_EQ(socket.GetSndBuf(), -1);
    EXPECT_FALSE(socket.SetRevBuf(1));
    EXPECT_FALSE(socket.SetSndBuf(1));
    EXPECT_EQ(socket.GetIpTTL(), -1);
    EXPECT_EQ(socket.GetMulticastTTL(), -1);
    EXPECT_FALSE(socket.SetIpTTL(1));
    EXPECT_FALSE(socket.SetMulticastTTL(1));
    EXPECT_FALSE(socket.AddBroadCast(nullptr));
    EXPECT_FALSE(socket.AddMemberShip("224.168.1.1", nullptr, false, 0));
    const char* expected[] = {
        "setsockopt():SO_REUSEADDR", "socket time out set failed\n", "getsockopt():SO_RCVBUF",
        "getsockopt():SO_SNDBUF",    "setsockopt():SO_RCVBUF",       "setsockopt():SO_SNDBUF",
        "setsockopt():IP_TTL",       "setsockopt():IP_TTL",          "setsockopt():IP_TTL",
        "setsockopt():IP_MULTICAST_TTL", "setsockopt():SO_BROADCAST", "setsockopt():IP_MULTICAST_LOOP",
    };
    std::string want;
    for (const char* text : expected) {
        want += std::string(text) + ": " + strerror(EBADF) + "\n";
    }
    EXPECT_EQ(err.text(), want);
}
