#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "capture_stdout.h"
#include "interface_tables.h"
#include "private_network.h"
#include "runtime_settings.h"

namespace {

// All four tables as bytes, to see that a call changed nothing else.
std::string tables()
{
    std::string all(reinterpret_cast<const char*>(g_ip), sizeof(g_ip));
    all.append(reinterpret_cast<const char*>(g_hexip), sizeof(g_hexip));
    all.append(reinterpret_cast<const char*>(g_mac), sizeof(g_mac));
    return all;
}

std::vector<uint32_t> mac_entry(int index)
{
    return std::vector<uint32_t>(g_mac[index], g_mac[index] + kMacDigits);
}

// Adds (or with up false, removes) the address 127.0.1.n as the alias lo:n.
void loopback_alias(int n, bool up)
{
    int sock = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq req;
    memset(&req, 0, sizeof(req));
    snprintf(req.ifr_name, IFNAMSIZ, "lo:%d", n);
    if (up) {
        sockaddr_in address;
        memset(&address, 0, sizeof(address));
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(0x7F000100u + static_cast<uint32_t>(n));
        memcpy(&req.ifr_addr, &address, sizeof(address));
        EXPECT_EQ(ioctl(sock, SIOCSIFADDR, &req), 0);
    } else {
        ioctl(sock, SIOCGIFFLAGS, &req);
        req.ifr_flags = static_cast<short>(req.ifr_flags & ~IFF_UP);
        ioctl(sock, SIOCSIFFLAGS, &req);
    }
    close(sock);
}

class InterfaceTables : public ::testing::Test {
protected:
    void SetUp() override
    {
        saved_sock_ = g_sock;
        g_sock = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    }
    void TearDown() override
    {
        close(g_sock);
        g_sock = saved_sock_;
    }

private:
    int saved_sock_;
};

}  // namespace

TEST_F(InterfaceTables, AddressesBecomeTextAndNumbers)
{
    ipToNumber("10.0.0.1", 0);
    ipToNumber("192.168.1.10", 1);
    ipToNumber("0.0.0.0", 2);
    EXPECT_STREQ(g_ip[0], "10.0.0.1");
    EXPECT_STREQ(g_ip[1], "192.168.1.10");
    EXPECT_EQ(g_hexip[0], 0x0A000001u);
    EXPECT_EQ(g_hexip[1], 0xC0A8010Au);
    EXPECT_EQ(g_hexip[2], 0u);

    // The fourth entry has text only; beyond the tables nothing is written.
    std::string before = tables();
    ipToNumber("1.2.3.4", 3);
    EXPECT_STREQ(g_ip[3], "1.2.3.4");
    EXPECT_EQ(memcmp(tables().data() + sizeof(g_ip), before.data() + sizeof(g_ip), before.size() - sizeof(g_ip)),
              0);
    before = tables();
    ipToNumber("5.6.7.8", 4);
    ipToNumber("5.6.7.8", -1);
    ipToNumber("1234567890123456789012345", 0);  // cut to the entry's 20 bytes
    EXPECT_EQ(memcmp(g_ip[0], "1234567890123456789", 20), 0);
    EXPECT_EQ(memcmp(tables().data() + 20, before.data() + 20, 60), 0);
}

TEST_F(InterfaceTables, HardwareDigitsBecomeOneValueEach)
{
    char mac[] = "001a2b3c4d5e";
    macToNumber(mac, 1);
    EXPECT_EQ(mac_entry(1), std::vector<uint32_t>({0, 0, 1, 10, 2, 11, 3, 12, 4, 13, 5, 14, 0, 0, 0, 0, 0, 0, 0, 0}));
    char upper[] = "FFEE";
    macToNumber(upper, 2);
    EXPECT_EQ(mac_entry(2), std::vector<uint32_t>({15, 15, 14, 14, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));

    const std::string before = tables();
    char empty[] = "";
    macToNumber(empty, 1);  // cleared
    EXPECT_EQ(mac_entry(1), std::vector<uint32_t>(kMacDigits, 0));
    char longer[] = "123456789abcdef0123456789";  // only twenty fit
    macToNumber(longer, 0);
    EXPECT_EQ(g_mac[0][19], 4u);
    EXPECT_EQ(memcmp(g_mac[2], before.data() + sizeof(g_ip) + sizeof(g_hexip) + sizeof(g_mac[0]) * 2,
                     sizeof(g_mac[2])),
              0);
    const std::string now = tables();
    macToNumber(mac, 3);
    macToNumber(mac, -1);
    EXPECT_EQ(tables(), now);
}

TEST_F(InterfaceTables, GetIpFillsTheTablesFromTheKernelList)
{
    memset(g_mac[0], 0xFF, sizeof(g_mac[0]));
    EXPECT_EQ(getIp(), 1);
    ASSERT_GE(g_ethnum, 1);
    int lo = -1;
    for (int i = 0; i < g_ethnum && i < kNumberEntries; ++i) {
        if (strcmp(ifs[i].ifr_name, "lo") == 0) {
            lo = i;
        }
    }
    ASSERT_GE(lo, 0);
    EXPECT_STREQ(g_ip[lo], "127.0.0.1");
    EXPECT_EQ(g_hexip[lo], 0x7F000001u);
    EXPECT_EQ(mac_entry(lo), std::vector<uint32_t>(kMacDigits, 0));  // loopback has no hardware address

    // A list that cannot be read leaves the tables as they were.
    const std::string before = tables();
    close(g_sock);
    g_sock = -1;
    CaptureStdout err(STDERR_FILENO);
    EXPECT_EQ(getIp(), 1);
    EXPECT_EQ(g_ethnum, -1);
    EXPECT_EQ(tables(), before);
    char hex[20] = "untouched";
    int sock = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    print_hw_addr(sock, "lo", hex);
    print_hw_addr(sock, "nosuch0", hex);
    close(sock);
    EXPECT_STREQ(hex, "untouched");
    EXPECT_EQ(err.text(), std::string("Failed IOCTL SIOCGIFCONF.: ") + strerror(EBADF) +
                              "\nFailed   IOCTL SIOCGIFFLAGS.: " + strerror(ENODEV) + "\n");
}

TEST_F(InterfaceTables, ManyInterfacesFillOnlyTheTablesAndAFullListFails)
{
    if (!in_private_network()) {
        GTEST_SKIP() << "adds addresses: only in a network namespace of its own";
    }
    for (int n = 1; n <= 5; ++n) {
        loopback_alias(n, true);
    }
    EXPECT_EQ(getIp(), 1);
    EXPECT_EQ(g_ethnum, 6);
    EXPECT_STREQ(g_ip[3], "127.0.1.3");
    EXPECT_EQ(g_hexip[2], 0x7F000102u);

    for (int n = 6; n < kInterfaceListEntries; ++n) {
        loopback_alias(n, true);
    }
    CaptureStdout err(STDERR_FILENO);
    EXPECT_EQ(peek_interfaces(g_sock), -1);
    EXPECT_EQ(err.text().find("Buffer too small for IOCTL SIOCGIFCONF."), 0u);
    for (int n = 1; n < kInterfaceListEntries; ++n) {
        loopback_alias(n, false);
    }
    EXPECT_EQ(peek_interfaces(g_sock), 1);
}
