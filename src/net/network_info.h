#ifndef OLED_NET_NETWORK_INFO_H
#define OLED_NET_NETWORK_INFO_H

// Looks up one item of a named network interface through the kernel's
// interface ioctls. Holds no data; the UDP socket derives from it.
class NetworkInfo {
public:
    // The values are the request codes of the items they name.
    enum IF_CONFIG { IF_ADDR = 0x8915, IF_BRDADDR = 0x8919, IF_NETMASK = 0x891B, IF_ALL = 0x891C, IF_HWADDR = 0x8927 };

    // Bytes that out must hold for IF_ALL: a 17-character hardware address,
    // three 15-character addresses, their labels and the terminator. The
    // other items need 32.
    static const int kAllItemsSize = 84;
    static const int kItemSize = 32;

    // Writes the item's text to out and returns true; returns false and
    // leaves out untouched when the interface or the item is missing.
    // IF_ALL always succeeds once the list is read, with empty fields for
    // what is missing.
    bool GetNetworkInfo(const char* ifname, IF_CONFIG item, char* out);
};

#endif
