// Arbitrary datagrams through the control handler on a scratch box root:
// whatever arrives, the settings file keeps its 38 key lines in order, the
// custom line stays terminated inside its buffer, and replies carry the
// header and go only to addresses of at most 15 characters, never to the
// box's own loopback.
#include <arpa/inet.h>
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include "control_datagram.h"
#include "fuzz_box.h"
#include "runtime_settings.h"
#include "settings_saver.h"
#include "singleton.h"
#include "software_config.h"

namespace {

class CheckReplies : public ReplySender {
public:
    void send(const char* ip, unsigned int, const std::string& payload, bool) override
    {
        // One reply a datagram, never to the box itself.
        if (strlen(ip) > kReplyAddressMax || payload.compare(0, 7, "[oled]\n") != 0 || strncmp(ip, "127.", 4) == 0 ||
            strcmp(ip, "192.168.1.20") == 0 || ++sent > 1) {
            abort();
        }
    }
    int sent = 0;
};

void check_file()
{
    const std::string text = read_box_file("/data/oled.ini");
    std::string::size_type pos = 0;
    for (int id = 0; id < SoftwareConfig::kConfigCount; ++id) {
        const std::string key = std::string(SoftwareConfig::KeyName(id)) + "=";
        const std::string::size_type end = text.find('\n', pos);
        if (end == std::string::npos || text.compare(pos, key.size(), key) != 0) {
            abort();
        }
        pos = end + 1;
    }
    if (pos != text.size()) {
        abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz_box_root();
    silence_stdout();  // the handler prints the settings after every datagram
    Singleton<SoftwareConfig>::instance()->SaveConfig();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static SettingsSaver saver;
    static int64_t now_ms = 0;
    now_ms += SettingsSaver::kQuietMs / 2;  // some saves at once, some pending
    CheckReplies replies;
    const ControlPeer sender = {"192.168.1.1", 40000};
    static const PinsAtStart pins = pins_at_start();
    ControlContext context = {"192.168.1.20", pins, &replies, &saver, nullptr, {inet_addr("192.168.1.20")}};
    handle_control_datagram(reinterpret_cast<const char*>(data), static_cast<long>(size), sender, "192.168.1.20",
                            context, now_ms);
    saver.save_pending();
    if (memchr(oled_data, '\0', 22) == nullptr) {
        abort();
    }
    check_file();
    return 0;
}
