#include <arpa/inet.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "control_fixture.h"
#include "control_server.h"
#include "runtime_settings.h"
#include "udp_socket.h"

namespace {

// A port free right now on the loopback interface.
unsigned int free_port()
{
    UDPSocket probe;
    const int fd = probe.CreateUDPServer(0, false, false);
    sockaddr_in a;
    socklen_t size = sizeof(a);
    getsockname(fd, reinterpret_cast<sockaddr*>(&a), &size);
    return ntohs(a.sin_port);
}

// The server on its own thread; stopped and joined however the test ends.
class ServerThread {
public:
    explicit ServerThread(unsigned int port) : port_(port)
    {
        thread_oled_ump = true;
        thread_ = std::thread([port] { oled_ump(port); });
    }
    ~ServerThread()
    {
        // Noticed at the next datagram, of any length.
        thread_oled_ump = false;
        UDPSocket poke;
        poke.CreateUDPClient(nullptr, 0, false, false);
        poke.SendTo("127.0.0.1", port_, "x", 1);
        thread_.join();
        thread_oled_ump = true;
    }

private:
    unsigned int port_;
    std::thread thread_;
};

}  // namespace

TEST_F(ControlDatagram, ServerAnswersOverLoopbackAndEndsOnItsFlag)
{
    const unsigned int port = free_port();
    const std::string before = settings_file();
    std::unique_ptr<ServerThread> server(new ServerThread(port));

    UDPSocket tool;
    // Not connected: a refusal before the server is bound must not end the
    // waiting.
    ASSERT_GE(tool.CreateUDPClient(nullptr, 0, false, false), 0);
    tool.SetTimeOut(0, 200 * 1000);
    char buf[4096];
    int got = -1;
    // The server may not be bound yet: ask until it answers.
    for (int attempt = 0; attempt < 50 && got < 0; ++attempt) {
        tool.SendTo("127.0.0.1", port, "cpu=0|replyoled", 15);
        got = tool.RecvFrom(buf, sizeof(buf));
    }
    ASSERT_GT(got, 0);
    EXPECT_EQ(std::string(buf, static_cast<size_t>(got)), "[oled]\n" + before);

    const std::string changed = defaults_with({"OLed_a_cpu=0"});
    for (int wait = 0; wait < 100 && settings_file() != changed; ++wait) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    EXPECT_EQ(settings_file(), changed);

    server.reset();
    EXPECT_FALSE(oled_display_cpu);
}
