#include "control_server.h"

#include <arpa/inet.h>
#include <errno.h>
#include <ifaddrs.h>
#include <stdio.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <memory>
#include <vector>

#include "control_datagram.h"
#include "control_stats.h"
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
    SocketReply(UDPSocket& socket, ControlStats& stats) : socket_(socket), stats_(stats) {}

    void send(const char* ip, unsigned int port, const std::string& payload, bool signed_query) override
    {
        const long bytes = static_cast<long>(payload.size());
        const ReplyLimiter::Verdict verdict =
            kLimitReplies ? limiter_.allow(inet_addr(ip), bytes, monotonic_ms(), signed_query) : ReplyLimiter::kSend;
        if (verdict == ReplyLimiter::kDropAndTell) {
            printf("replyoled: replies are being limited, one to %s dropped\n", ip);
        }
        if (verdict != ReplyLimiter::kSend) {
            const bool own = limiter_.held_by() == ReplyLimiter::kPerDestination;
            ++(own ? stats_.held_per_destination : stats_.held_whole_box);
            (own ? stats_.bytes_held_per_destination : stats_.bytes_held_whole_box) +=
                static_cast<unsigned long>(bytes);
            return;
        }
        // A lost reply is not retried: the tool asks again. A send the
        // system refuses (a firewall, full buffers) is said when the reason
        // is new, else at most once a while, as the limiter's drops are.
        const int64_t now = monotonic_ms();
        if (socket_.SendTo(ip, port, payload.data(), bytes) >= 0) {
            failed_errno_ = 0;
            ++stats_.replies_sent;
            stats_.reply_bytes_sent += static_cast<unsigned long>(bytes);
        } else if (errno != failed_errno_ || now - failed_ms_ >= kTellMs) {
            failed_errno_ = errno;
            failed_ms_ = now;
            printf("replyoled: cannot send to %s (%s)\n", ip, strerror(failed_errno_));
        }
    }

private:
    static const int64_t kTellMs = ReplyLimiter::kTellEveryMs;
    UDPSocket& socket_;
    ControlStats& stats_;
    ReplyLimiter limiter_;
    int failed_errno_ = 0;
    int64_t failed_ms_ = 0;
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

// Addresses come and go (a DHCP lease that comes late, a cable plugged in
// after boot, a second address): eth0 is looked at once a second, not once
// per datagram of a flood.
const int64_t kLookMs = 1000;

// The control plane follows eth0: its address is the one aimed datagrams
// are matched against, and the group is joined on it as soon as it has
// one, and again when it changes.
void follow_interface(UDPSocket& socket, ControlContext& context, bool& joined)
{
    char address[NetworkInfo::kItemSize] = "";
    if (!socket.GetNetworkInfo(kControlInterface, NetworkInfo::IF_ADDR, address)) {
        address[0] = '\0';
    }
    context.own_addresses = own_addresses();
    if (joined && context.local_address == address) {
        return;
    }
    if (context.local_address != address) {
        printf("%s: address %s\n", kControlInterface, address[0] != '\0' ? address : "none");
    }
    if (joined) {
        socket.DropMemberShip();
    }
    // Still a member on eth0 (EADDRINUSE) when the address it lost could
    // not be used to leave: as good as joined.
    joined =
        address[0] != '\0' && (socket.AddMemberShip(kControlGroup, kControlInterface, true, 0) || errno == EADDRINUSE);
    context.local_address = address;
}

// The next receive waits no longer than until a pending save falls due or
// eth0 is to be looked at again. waiting_ms is the time-out the socket has.
void wait_no_later_than(UDPSocket& socket, int64_t due_ms, int64_t& waiting_ms)
{
    const int64_t left = due_ms < 0 ? kLookMs : due_ms - monotonic_ms();
    const int64_t wait = left < 1 ? 1 : (left > kLookMs ? kLookMs : left);
    if (wait != waiting_ms) {
        socket.SetTimeOut(static_cast<int>(wait / 1000), static_cast<int>(wait % 1000 * 1000));
        waiting_ms = wait;
    }
}

}  // namespace

bool oled_ump(unsigned int port)
{
    std::shared_ptr<SoftwareConfig> config = Singleton<SoftwareConfig>::instance();
    std::unique_ptr<UDPSocket> socket(new UDPSocket);
    // A box whose panel shows an address that nothing can reach is worse
    // than one that ends and is restarted by its supervisor; a signature
    // is checked against the address a datagram was sent to.
    if (socket->CreateUDPServer(port, false, true) < 0 || !socket->SetPacketInfo(true)) {
        printf("control server: cannot serve UDP port %u (%s)\n", port, strerror(errno));
        return false;
    }

    ControlStats stats;
    SocketReply reply(*socket, stats);
    SettingsSaver& saver = process_settings_saver();
    DatagramAuth auth;
    auth.load();
    // Without an address on eth0 a box obeys no aimed datagram, and serves
    // unicast alone until the group can be joined.
    ControlContext context = {
        "", pins_at_start(), &reply, &saver, &auth, {}, &stats, static_cast<long long>(time(nullptr))};
    bool joined = false;
    follow_interface(*socket, context, joined);
    int64_t looked_ms = monotonic_ms();
    // One byte more than the longest command, so the text always ends.
    char buf[kControlDatagramMax + 1];
    int64_t waiting_ms = 0;
    while (thread_oled_ump) {
        memset(buf, 0, sizeof(buf));
        const int64_t due = saver.due_ms();
        wait_no_later_than(*socket, due, waiting_ms);
        in_addr to;
        const int received = socket->RecvFrom(buf, kControlDatagramMax, to);
        const int64_t now = monotonic_ms();
        saver.save_if_due(now);
        if (now - looked_ms >= kLookMs) {
            follow_interface(*socket, context, joined);
            looked_ms = now;
        }
        if (received < 0) {
            // A time-out is the pace of the looks; anything else must not
            // spin the core.
            if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) {
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
        handle_control_datagram(buf, received, sender, to_text, context, now);
    }
    socket.reset();
    config.reset();
    return true;
}
