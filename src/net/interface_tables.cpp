#include "interface_tables.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>

#include "file_helpers.h"
#include "register_access.h"
#include "runtime_settings.h"

ifreq ifs[kInterfaceListEntries];
int g_ethnum;
char g_ip[kIpEntries][20];
uint32_t g_hexip[kNumberEntries];
uint32_t g_mac[kNumberEntries][kMacDigits];

int peek_interfaces(int sock)
{
    const int count = read_interface_list(sock, ifs);
    if (count < 0) {
        perror("Failed IOCTL SIOCGIFCONF.");
        return -1;
    }
    // A full list may have been cut by the kernel.
    if (count >= kInterfaceListEntries) {
        perror("Buffer too small for IOCTL SIOCGIFCONF.");
        return -1;
    }
    return count;
}

void print_hw_addr(int sock, const char* ifname, char* dst)
{
    ifreq req;
    memset(&req, 0, sizeof(req));
    strncpy(req.ifr_name, ifname, IFNAMSIZ - 1);
    if (ioctl(sock, SIOCGIFFLAGS, &req) != 0) {
        perror("Failed   IOCTL SIOCGIFFLAGS.");
        return;
    }
    if (req.ifr_flags & IFF_LOOPBACK) {
        return;
    }
    if (ioctl(sock, SIOCGIFHWADDR, &req) != 0) {
        perror("Failed IOCTL SIOCGIFHWADDR.");
        return;
    }
    const unsigned char* hw = reinterpret_cast<const unsigned char*>(req.ifr_hwaddr.sa_data);
    snprintf(dst, 13, "%02x%02x%02x%02x%02x%02x", hw[0], hw[1], hw[2], hw[3], hw[4], hw[5]);
}

void ipToNumber(std::string ip, int index)
{
    if (index < 0 || index >= kIpEntries) {
        return;
    }
    snprintf(g_ip[index], sizeof(g_ip[index]), "%s", ip.c_str());
    if (index >= kNumberEntries) {
        return;
    }
    g_hexip[index] = 0;
    // Each octet becomes at least two hexadecimal digits; an octet above
    // 255 widens its slot and the joined number with it.
    char octets[4][10];
    const char* rest = ip.c_str();
    for (int i = 0; i < 4; ++i) {
        snprintf(octets[i], sizeof(octets[i]), "%02x", static_cast<unsigned int>(strtol_(rest, 10)));
        const char* dot = strchr(rest, '.');
        if (dot != nullptr) {
            rest = dot + 1;
        }
    }
    char joined[48];
    snprintf(joined, sizeof(joined), "0x%s%s%s%s", octets[0], octets[1], octets[2], octets[3]);
    unsigned int number = 0;
    StrToNumber(joined, &number);
    g_hexip[index] = number;
}

void macToNumber(char* hex, int index)
{
    if (index < 0 || index >= kNumberEntries) {
        return;
    }
    memset(g_mac[index], 0, sizeof(g_mac[index]));
    if (hex == nullptr) {
        return;
    }
    // The length is taken as a 16-bit count.
    const size_t length = strlen(hex) % 65536;
    for (size_t i = 0; i < length && i < static_cast<size_t>(kMacDigits); ++i) {
        char digit[8];
        snprintf(digit, sizeof(digit), "0x%c", hex[i]);
        unsigned int value = 0;
        StrToNumber(digit, &value);
        g_mac[index][i] = value;
    }
}

int getIp()
{
    g_ethnum = peek_interfaces(g_sock);
    for (int i = 0; i < g_ethnum && i < kIpEntries; ++i) {
        sockaddr_in address;
        memcpy(&address, &ifs[i].ifr_addr, sizeof(address));
        char text[INET_ADDRSTRLEN] = "";
        inet_ntop(AF_INET, &address.sin_addr, text, sizeof(text));
        ipToNumber(text, i);
        if (i < kNumberEntries) {
            char hex[20] = "";
            print_hw_addr(g_sock, ifs[i].ifr_name, hex);
            macToNumber(hex, i);
        }
    }
    return 1;
}
