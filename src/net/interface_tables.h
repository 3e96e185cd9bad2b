#ifndef OLED_NET_INTERFACE_TABLES_H
#define OLED_NET_INTERFACE_TABLES_H

#include <net/if.h>
#include <stdint.h>

#include <string>

#include "interface_list.h"

// The box's interfaces as the screens show them, refreshed by getIp. Entry
// i is the interface's place in the kernel's list (loopback usually 0).
// Interfaces past the tables' sizes are left out.
const int kIpEntries = 4;
const int kNumberEntries = 3;
const int kMacDigits = 20;

extern ifreq ifs[kInterfaceListEntries];
extern int g_ethnum;
extern char g_ip[kIpEntries][20];
extern uint32_t g_hexip[kNumberEntries];
extern uint32_t g_mac[kNumberEntries][kMacDigits];

// Refreshes the tables through g_sock; always 1.
int getIp();

// Fills ifs; the number of entries, or -1 (failed, or the list filled the
// buffer and may be cut).
int peek_interfaces(int sock);

// Twelve lower-case hexadecimal digits of the interface's hardware address
// into dst (at least 13 bytes); nothing for the loopback interface.
void print_hw_addr(int sock, const char* ifname, char* dst);

// The dotted address as text in g_ip and as a number (first octet most
// significant) in g_hexip.
void ipToNumber(std::string ip, int index);

// One value (0 to 15) per hexadecimal digit of hex into g_mac.
void macToNumber(char* hex, int index);

#endif
