#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <errno.h>
#include <string.h>

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

// One datagram as text, waiting at most two seconds.
std::string receive(UDPSocket& socket)
{
    socket.SetTimeOut(2, 0);
    char buf[256];
    const int n = socket.RecvFrom(buf, sizeof(buf));
    return n < 0 ? "<nothing>" : std::string(buf, static_cast<size_t>(n));
}

}  // namespace

TEST(UDPSocket, ServerAndClientTalkOverLoopback)
{
    UDPSocket server;
    const int server_fd = server.CreateUDPServer(0, false, true);
    ASSERT_GE(server_fd, 0);
    UDPSocket client;
    const int client_fd = client.CreateUDPClient("127.0.0.1", port_of(server_fd), false, true);
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

    UDPSocket other;  // not connected: names the destination each time
    ASSERT_GE(other.CreateUDPClient(nullptr, 0, false, false), 0);
    EXPECT_EQ(other.SendTo("127.0.0.1", port_of(server_fd), "via address", 11), 11);
    EXPECT_EQ(receive(server), "via address");
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
    // With the broadcast peer (no interface asked) the check passes and
    // the system refuses port 0 instead.
    CaptureStdout quiet;
    EXPECT_TRUE(socket.AddBroadCast(nullptr));
    EXPECT_EQ(socket.SendTo("x", 1), -1);
    EXPECT_EQ(quiet.text(), "");
    EXPECT_FALSE(socket.AddBroadCast("eth9"));
}

TEST(UDPSocket, MembershipRetriesAtOnceAndCountsDown)
{
    UDPSocket socket;
    ASSERT_GE(socket.CreateUDPServer(0, false, true), 0);
    {
        // No address on the interface: each attempt fails before joining.
        CaptureStdout out;
        CaptureStdout err(STDERR_FILENO);
        EXPECT_FALSE(socket.AddMemberShip("224.168.1.1", "eth9", true, 0));
        EXPECT_FALSE(socket.AddMemberShip("224.168.1.1", "eth9", true, 2));
        EXPECT_EQ(err.text(), "");
        EXPECT_EQ(out.text(), "AddMemberShip 224.168.1.1 error, retry : 2AddMemberShip 224.168.1.1 error, retry : 1");
    }
    {
        // Not a group: both attempts reach the join and fail there.
        CaptureStdout out;
        CaptureStdout err(STDERR_FILENO);
        EXPECT_FALSE(socket.AddMemberShip("10.0.0.1", nullptr, false, 1));
        const std::string line = std::string("setsockopt():IP_ADD_MEMBERSHIP: ") + strerror(EINVAL) + "\n";
        EXPECT_EQ(err.text(), line + line);
    }
    EXPECT_TRUE(socket.AddMemberShip("224.168.1.1", "lo", true, 0));
    EXPECT_TRUE(socket.DropMemberShip());
    CaptureStdout err(STDERR_FILENO);
    EXPECT_FALSE(socket.DropMemberShip());
    EXPECT_EQ(err.text().find("setsockopt():IP_DROP_MEMBERSHIP: "), 0u);
}

TEST(UDPSocket, EmptyRecvBufDrainsTheQueueAndKeepsTheLastSender)
{
    UDPSocket server;
    const int fd = server.CreateUDPServer(0, true, false);
    ASSERT_GE(fd, 0);
    EXPECT_TRUE(server.EmptyRecvBuf());  // idle: one short wait
    UDPSocket client;
    ASSERT_GE(client.CreateUDPClient("127.0.0.1", port_of(fd), false, true), 0);
    for (int i = 0; i < 3; ++i) {
        client.SendTo("queued", 6);
    }
    EXPECT_TRUE(server.EmptyRecvBuf());
    char buf[16];
    EXPECT_EQ(server.RecvFrom(buf, sizeof(buf)), -1);  // non-blocking, and empty
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_EQ(server.EchoTo("ok", 2, false), 2);  // to the drained datagrams' sender
    EXPECT_EQ(receive(client), "ok");
}

TEST(UDPSocket, ClosedSocketFailsEveryCallWithItsText)
{
    UDPSocket taken;
    const int fd = taken.CreateUDPServer(0, false, false);
    UDPSocket socket;
    CaptureStdout err(STDERR_FILENO);
    EXPECT_EQ(socket.CreateUDPServer(port_of(fd), false, false), -1);
    EXPECT_GT(socket.GetRevBuf(), 0);  // a failed bind keeps the socket
    socket.CloseUDPSocket();
    socket.CloseUDPSocket();
    EXPECT_FALSE(socket.EmptyRecvBuf());
    EXPECT_FALSE(socket.SetTimeOut(1, 0));
    EXPECT_EQ(socket.GetMulticastTTL(), -1);
    EXPECT_FALSE(socket.SetMulticastTTL(1));
    EXPECT_FALSE(socket.AddMemberShip("224.168.1.1", nullptr, false, 0));
    std::string want = std::string("bind error: ") + strerror(EADDRINUSE) + "\n";
    for (const char* text : {"EmptyRecvBuf() select failed\n", "socket time out set failed\n",
                             "setsockopt():IP_TTL", "setsockopt():IP_MULTICAST_TTL",
                             "setsockopt():IP_MULTICAST_LOOP"}) {
        want += std::string(text) + ": " + strerror(EBADF) + "\n";
    }
    EXPECT_EQ(err.text(), want);
}
