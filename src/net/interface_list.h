#ifndef OLED_NET_INTERFACE_LIST_H
#define OLED_NET_INTERFACE_LIST_H

#include <net/if.h>
#include <string.h>
#include <sys/ioctl.h>

// Room for 16 interface request records: 512 bytes on the appliance, whose
// records are 32 bytes. Counted in records, not bytes, so the list holds
// as many interfaces on a 64-bit host, where a record is larger.
const int kInterfaceListEntries = 16;

// Fills entries (kInterfaceListEntries records) with the kernel's list of
// configured IPv4 interfaces; returns the number of records, or -1.
inline int read_interface_list(int sock, ifreq* entries)
{
    memset(entries, 0, sizeof(ifreq) * kInterfaceListEntries);
    ifconf conf;
    conf.ifc_len = static_cast<int>(sizeof(ifreq) * kInterfaceListEntries);
    conf.ifc_req = entries;
    if (ioctl(sock, SIOCGIFCONF, &conf) != 0) {
        return -1;
    }
    return conf.ifc_len / static_cast<int>(sizeof(ifreq));
}

// One call's copy of the list.
struct InterfaceList {
    ifreq entries[kInterfaceListEntries];
    int count;

    int read(int sock)
    {
        count = read_interface_list(sock, entries);
        if (count < 0) {
            count = 0;
            return -1;
        }
        return count;
    }
};

#endif
