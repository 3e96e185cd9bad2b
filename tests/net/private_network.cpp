// Linked into the test programs that open sockets: when the process may
// make a network namespace (root, as in CI), every test runs in one of its
// own with only the loopback interface up, so no datagram can reach the
// host's network and no port is shared with other test runs. Without the
// privilege the tests still only use the loopback address.
#include <net/if.h>
#include <sched.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "private_network.h"

namespace {

// Entered before main, while the process has a single thread.
bool enter_private_network()
{
    if (unshare(CLONE_NEWNET) != 0) {
        return false;
    }
    const int sock = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq req;
    memset(&req, 0, sizeof(req));
    strncpy(req.ifr_name, "lo", IFNAMSIZ - 1);
    if (ioctl(sock, SIOCGIFFLAGS, &req) == 0) {
        req.ifr_flags = static_cast<short>(req.ifr_flags | IFF_UP);
        ioctl(sock, SIOCSIFFLAGS, &req);
    }
    close(sock);
    return true;
}

const bool g_private = enter_private_network();

}  // namespace

bool in_private_network()
{
    return g_private;
}
