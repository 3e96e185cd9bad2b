#include "control_server.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <stdio.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <memory>
#include <vector>

#include "control_datagram.h"
#include "datagram_auth.h"
#include "reply_limiter.h"
#include "runtime_settings.h"
#include "settings_saver.h"
#include "singleton.h"
#include "software_config.h"
#include "udp_socket.h"

namespace {

const char kControlGroup[] = "224.168.1.1";
const char kControlInterface[] = "eth0";

// A receive that fails at once (no socket) must not spin the core.
const useconds_t kFailedReceivePause = 100 * 1000;

#ifdef OLEDD_LITERAL_REPLIES
const bool kLimitReplies = false;  // every datagram answered: a benchmark's baseline
#else
const bool kLimitReplies = true;
#endif

int64_t monotonic_ms()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

// Replies leave through the server's own socket, within the limiter's
// budget.
class SocketReply : public ReplySender {
public:
    explicit SocketReply(UDPSocket& socket) : socket_(socket) {}

    void send(const char* ip, unsigned int port, const std::string& payload, bool signed_query) override
    {
        const long bytes = static_cast<long>(payload.size());
        const ReplyLimiter::Verdict verdict =
            kLimitReplies ? limiter_.allow(inet_addr(ip), bytes, monotonic_ms(), signed_query) : ReplyLimiter::kSend;
        if (verdict == ReplyLimiter::kDropAndTell) {
            printf("replyoled: replies are being limited, one to %s dropped\n", ip);
        }
        if (verdict != ReplyLimiter::kSend) {
            return;
        }
        // A lost reply is not retried: the tool asks again.
        socket_.SendTo(ip, port, payload.data(), bytes);
    }

private:
    UDPSocket& socket_;
    ReplyLimiter limiter_;
};

// Every IPv4 address of the box's interfaces, network order.
std::vector<uint32_t> own_addresses()
{
    std::vector<uint32_t> addresses;
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0) {
        return addresses;
    }
    for (const ifaddrs* i = list; i != nullptr; i = i->ifa_next) {
        if (i->ifa_addr != nullptr && i->ifa_addr->sa_family == AF_INET) {
            addresses.push_back(reinterpret_cast<const sockaddr_in*>(i->ifa_addr)->sin_addr.s_addr);
        }
    }
    freeifaddrs(list);
    return addresses;
}

// Addresses come and go (a DHCP lease, a second address): looked at again
// once a second at most, not once per datagram of a flood.
const int64_t kOwnAddressesMs = 1000;

// The next receive waits no longer than until a pending save falls due
// (without one, for ever: 0). waiting_ms is the time-out the socket has.
void wait_no_later_than(UDPSocket& socket, int64_t due_ms, int64_t& waiting_ms)
{
    const int64_t left = due_ms < 0 ? 0 : due_ms - monotonic_ms();
    const int64_t wait = due_ms < 0 ? 0 : (left < 1 ? 1 : left);
    if (wait != waiting_ms) {
        socket.SetTimeOut(static_cast<int>(wait / 1000), static_cast<int>(wait % 1000 * 1000));
        waiting_ms = wait;
    }
}

}  // namespace

void oled_ump(unsigned int port)
{
    std::shared_ptr<SoftwareConfig> config = Singleton<SoftwareConfig>::instance();
    std::unique_ptr<UDPSocket> socket(new UDPSocket);
    // Without the group the box still serves unicast; without the socket
    // it serves nothing, and neither stops the daemon.
    socket->CreateUDPServer(port, false, true);
    socket->AddMemberShip(kControlGroup, kControlInterface, true, 0);
    // A signature is checked against the address the datagram was sent to.
    socket->SetPacketInfo(true);

    // Read once: empty when eth0 has no address, and such a box obeys no
    // aimed datagram.
    char local_address[NetworkInfo::kItemSize] = "";
    socket->GetNetworkInfo(kControlInterface, NetworkInfo::IF_ADDR, local_address);

    SocketReply reply(*socket);
    SettingsSaver& saver = process_settings_saver();
    DatagramAuth auth;
    auth.load();
    ControlContext context = {local_address, pins_at_start(), &reply, &saver, &auth, own_addresses()};
    int64_t addresses_ms = monotonic_ms();
    // One byte more than the longest command, so the text always ends.
    char buf[kControlDatagramMax + 1];
    int64_t waiting_ms = 0;
    while (thread_oled_ump) {
        memset(buf, 0, sizeof(buf));
        const int64_t due = saver.due_ms();
        wait_no_later_than(*socket, due, waiting_ms);
        in_addr to;
        const int received = socket->RecvFrom(buf, kControlDatagramMax, to);
        saver.save_if_due(monotonic_ms());
        if (received < 0) {
            if (due < 0) {
                usleep(kFailedReceivePause);
            }
            continue;
        }
        const sockaddr_in from = socket->GetClientSockaddr();
        char from_text[20] = "";
        inet_ntop(AF_INET, &from.sin_addr, from_text, sizeof(from_text));
        const ControlPeer sender = {from_text, ntohs(from.sin_port)};
        char to_text[20] = "";
        inet_ntop(AF_INET, &to, to_text, sizeof(to_text));
        const int64_t now = monotonic_ms();
        if (now - addresses_ms >= kOwnAddressesMs) {
            context.own_addresses = own_addresses();
            addresses_ms = now;
        }
        handle_control_datagram(buf, received, sender, to_text, context, now);
    }
    socket.reset();
    config.reset();
}
