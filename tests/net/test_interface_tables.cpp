#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <string.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "capture_stdout.h"
#include "interface_tables.h"
#include "private_network.h"
#include "runtime_settings.h"

namespace {

// All tables as bytes, to see that a call changed nothing else.
std::string tables()
{
    return std::string(reinterpret_cast<const char*>(g_ip), sizeof(g_ip)) +
           std::string(reinterpret_cast<const char*>(g_hexip), sizeof(g_hexip)) +
           std::string(reinterpret_cast<const char*>(g_mac), sizeof(g_mac));
}

std::vector<uint32_t> mac_entry(int index)
{
    return std::vector<uint32_t>(g_mac[index], g_mac[index] + 12);
}

// Adds the address 127.0.1.n as the alias lo:n; it goes with the namespace.
void loopback_alias(int n)
{
    ifreq req;
    memset(&req, 0, sizeof(req));
    snprintf(req.ifr_name, IFNAMSIZ, "lo:%d", n);
    sockaddr_in* address = reinterpret_cast<sockaddr_in*>(&req.ifr_addr);
    address->sin_family = AF_INET;
    address->sin_addr.s_addr = htonl(0x7F000100u + static_cast<uint32_t>(n));
    EXPECT_EQ(ioctl(g_sock, SIOCSIFADDR, &req), 0);
}

}  // namespace

// Addresses are converted in the kernel list's test below.
TEST(InterfaceTables, HardwareDigitsBecomeNumbersWithinTheTables)
{
    char mac[] = "001a2b3c4d5e";
    macToNumber(mac, 1);
    EXPECT_EQ(mac_entry(1), std::vector<uint32_t>({0, 0, 1, 10, 2, 11, 3, 12, 4, 13, 5, 14}));
    char empty[] = "";
    macToNumber(empty, 2);
    EXPECT_EQ(mac_entry(2), std::vector<uint32_t>(12, 0));

    // The fourth entry has text only; past the tables nothing is written.
    const std::string before = tables();
    ipToNumber("1.2.3.4", 3);
    EXPECT_STREQ(g_ip[3], "1.2.3.4");
    EXPECT_EQ(tables().substr(sizeof(g_ip)), before.substr(sizeof(g_ip)));
    const std::string now = tables();
    ipToNumber("5.6.7.8", 4);
    ipToNumber("5.6.7.8", -1);
    macToNumber(mac, 3);
    EXPECT_EQ(tables(), now);
}

TEST(InterfaceTables, GetIpReadsTheKernelListAndKeepsTheFirstEntries)
{
    g_sock = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    memset(g_mac[0], 0xFF, sizeof(g_mac[0]));
    EXPECT_EQ(getIp(), 1);
    ASSERT_GE(g_ethnum, 1);
    EXPECT_STREQ(ifs[0].ifr_name, "lo");
    EXPECT_STREQ(g_ip[0], "127.0.0.1");
    EXPECT_EQ(g_hexip[0], 0x7F000001u);
    EXPECT_EQ(mac_entry(0), std::vector<uint32_t>(12, 0));  // loopback: no hardware address

    if (in_private_network()) {  // adds addresses: only in a namespace of its own
        for (int n = 1; n < kInterfaceListEntries; ++n) {
            loopback_alias(n);
            if (n == 5) {
                EXPECT_EQ(getIp(), 1);
                EXPECT_EQ(g_ethnum, 6);
                EXPECT_STREQ(g_ip[3], "127.0.1.3");
                EXPECT_EQ(g_hexip[2], 0x7F000102u);
            }
        }
        CaptureStdout err(STDERR_FILENO);
        EXPECT_EQ(peek_interfaces(g_sock), -1);  // a full list may be cut
        EXPECT_EQ(err.text().find("Buffer too small for IOCTL SIOCGIFCONF."), 0u);
    }

    // A list that cannot be read leaves the tables as they were.
    const std::string before = tables();
    close(g_sock);
    g_sock = -1;
    CaptureStdout err(STDERR_FILENO);
    EXPECT_EQ(getIp(), 1);
    EXPECT_EQ(g_ethnum, -1);
    EXPECT_EQ(tables(), before);
    EXPECT_EQ(err.text(), std::string("Failed IOCTL SIOCGIFCONF.: ") + strerror(EBADF) + "\n");
}
