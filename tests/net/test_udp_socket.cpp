#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <dirent.h>
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

int open_descriptors()
{
    int count = 0;
    DIR* fds = opendir("/proc/self/fd");
    while (fds != nullptr && readdir(fds) != nullptr) {
        ++count;
    }
    closedir(fds);
    return count;
}

}  // namespace

TEST(UDPSocket, ClosesItsDescriptorWhenDestroyed)
{
    const int before = open_descriptors();
    {
        UDPSocket socket;
        ASSERT_GE(socket.CreateUDPServer(0, false, true), 0);
        EXPECT_EQ(open_descriptors(), before + 1);
    }
    EXPECT_EQ(open_descriptors(), before);
}

TEST(UDPSocket, ServesAnswersJoinsDrainsAndReportsEachFailure)
{
    UDPSocket server;
    const int server_fd = server.CreateUDPServer(0, true, true);
    ASSERT_GE(server_fd, 0);
    UDPSocket client;
    const int client_fd = client.CreateUDPClient("127.0.0.1", port_of(server_fd), false, true);
    ASSERT_GE(client_fd, 0);
    UDPSocket other;  // not connected: names the destination each time
    ASSERT_GE(other.CreateUDPClient(nullptr, 0, false, false), 0);
    {
        CaptureStdout out;
        EXPECT_EQ(other.SendTo("x", 1), -1);
        EXPECT_EQ(server.EchoTo("x", 1, true), -1);  // nothing received yet
        EXPECT_EQ(other.SendTo(nullptr, 9, "x", 1), -1);
        EXPECT_EQ(out.text(), "please intput client_ip and client_port\n");
    }
    EXPECT_TRUE(server.EmptyRecvBuf());  // idle: one short wait
    EXPECT_EQ(other.SendTo("127.0.0.1", port_of(server_fd), "via address", 11), 11);
    EXPECT_EQ(client.SendTo("hello", 5), 5);
    EXPECT_EQ(receive(server), "via address");
    char buf[16];
    ASSERT_EQ(server.RecvFrom(buf, sizeof(buf)), 5);
    EXPECT_EQ(server.GetClientSocketIP(), "127.0.0.1");
    EXPECT_EQ(ntohs(server.GetClientSockaddr().sin_port), port_of(client_fd));
    EXPECT_EQ(server.EchoTo("back!", 5, false), 5);
    EXPECT_EQ(receive(client), "back!");
    for (int i = 0; i < 3; ++i) {
        other.SendTo("127.0.0.1", port_of(server_fd), "queued", 6);
    }
    EXPECT_TRUE(server.EmptyRecvBuf());
    EXPECT_EQ(server.RecvFrom(buf, sizeof(buf)), -1);  // non-blocking, and drained
    EXPECT_EQ(errno, EAGAIN);

    {
        // No address on the interface: each attempt fails before joining,
        // at once, counting down.
        CaptureStdout out;
        CaptureStdout err(STDERR_FILENO);
        EXPECT_FALSE(server.AddMemberShip("224.168.1.1", "eth9", true, 0));
        EXPECT_FALSE(server.AddMemberShip("224.168.1.1", "eth9", true, 2));
        EXPECT_EQ(err.text(), "");
        EXPECT_EQ(out.text(), "AddMemberShip 224.168.1.1 error, retry : 2AddMemberShip 224.168.1.1 error, retry : 1");
    }
    EXPECT_TRUE(server.AddMemberShip("224.168.1.1", "lo", true, 0));

    UDPSocket taken;
    CaptureStdout err(STDERR_FILENO);
    EXPECT_FALSE(server.AddMemberShip("224.168.1.1", "lo", true, 0));  // a member already
    EXPECT_TRUE(server.DropMemberShip());
    EXPECT_EQ(taken.CreateUDPServer(port_of(server_fd), false, false), -1);
    EXPECT_GT(taken.GetRevBuf(), 0);  // a failed bind keeps the socket
    taken.CloseUDPSocket();
    taken.CloseUDPSocket();
    EXPECT_FALSE(taken.EmptyRecvBuf());
    EXPECT_TRUE(server.SetTimeOut(0, 1000));
    EXPECT_FALSE(taken.SetTimeOut(0, 1000));
    EXPECT_EQ(err.text(), std::string("setsockopt():IP_ADD_MEMBERSHIP: ") + strerror(EADDRINUSE) + "\nbind error: " +
                              strerror(EADDRINUSE) + "\nEmptyRecvBuf() select failed\n: " + strerror(EBADF) +
                              "\nsocket time out set failed\n: " + strerror(EBADF) + "\n");
}
