#include "network_info.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <stdio.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "interface_list.h"

namespace {

// The four items of one interface, as text.
struct InterfaceItems {
    char hwaddr[NetworkInfo::kItemSize];
    char addr[NetworkInfo::kItemSize];
    char brdaddr[NetworkInfo::kItemSize];
    char netmask[NetworkInfo::kItemSize];
};

void dotted(const sockaddr& address, char* out)
{
    // inet_ntop instead of inet_ntoa: the lookup may run on any thread.
    sockaddr_in in;
    memcpy(&in, &address, sizeof(in));
    inet_ntop(AF_INET, &in.sin_addr, out, NetworkInfo::kItemSize);
}

// Runs one address request on a copy of the entry; false after reporting.
bool ask(int sock, const ifreq& entry, unsigned long request, const char* failure, char* field)
{
    ifreq req = entry;
    if (ioctl(sock, request, &req) != 0) {
        perror(failure);
        return false;
    }
    if (request == SIOCGIFHWADDR) {
        const unsigned char* hw = reinterpret_cast<const unsigned char*>(req.ifr_hwaddr.sa_data);
        snprintf(field, NetworkInfo::kItemSize, "%02x:%02x:%02x:%02x:%02x:%02x", hw[0], hw[1], hw[2], hw[3], hw[4],
                 hw[5]);
    } else {
        dotted(req.ifr_addr, field);
    }
    return true;
}

// Fills items from every entry named ifname, walking the list backwards so
// that the earliest entry of a name is the one that stays. False when a
// request fails.
bool collect(int sock, const InterfaceList& list, const char* ifname, InterfaceItems& items)
{
    for (int i = list.count - 1; i >= 0; --i) {
        const ifreq& entry = list.entries[i];
        if (ifname == nullptr || strncmp(entry.ifr_name, ifname, IFNAMSIZ) != 0) {
            continue;
        }
        ifreq flags = entry;
        if (ioctl(sock, SIOCGIFFLAGS, &flags) != 0) {
            perror("ioctl warning: SIOCGIFFLAGS");
            continue;
        }
        if (!ask(sock, entry, SIOCGIFHWADDR, "ioctl error: SIOCGIFHWADDR", items.hwaddr) ||
            !ask(sock, entry, SIOCGIFADDR, "ioctl error: SIOCGIFADDR", items.addr) ||
            !ask(sock, entry, SIOCGIFBRDADDR, "ioctl error: SIOCGIFBRDADDR", items.brdaddr) ||
            !ask(sock, entry, SIOCGIFNETMASK, "ioctl error: SIOCGIFNETMASK", items.netmask)) {
            return false;
        }
    }
    return true;
}

bool select_item(const InterfaceItems& items, NetworkInfo::IF_CONFIG item, char* out)
{
    const char* field = nullptr;
    switch (item) {
        case NetworkInfo::IF_ADDR:
            field = items.addr;
            break;
        case NetworkInfo::IF_BRDADDR:
            field = items.brdaddr;
            break;
        case NetworkInfo::IF_NETMASK:
            field = items.netmask;
            break;
        case NetworkInfo::IF_HWADDR:
            field = items.hwaddr;
            break;
        case NetworkInfo::IF_ALL:
            snprintf(out, NetworkInfo::kAllItemsSize, "mac:%.17s@ip:%.15s@mask:%.15s@braod:%.15s", items.hwaddr,
                     items.addr, items.netmask, items.brdaddr);
            return true;
    }
    if (field == nullptr || field[0] == '\0') {
        return false;
    }
    snprintf(out, NetworkInfo::kItemSize, "%s", field);
    return true;
}

}  // namespace

bool NetworkInfo::GetNetworkInfo(const char* ifname, IF_CONFIG item, char* out)
{
    InterfaceItems items;
    memset(&items, 0, sizeof(items));
    if (out == nullptr) {
        return false;
    }
    int sock = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (sock < 0) {
        perror("socket create error");
        return false;
    }
    InterfaceList list;
    bool ok = false;
    if (list.read(sock) < 0) {
        perror("ioctl error: SIOCGIFCONF");
    } else if (collect(sock, list, ifname, items)) {
        ok = select_item(items, item, out);
    }
    close(sock);
    return ok;
}
