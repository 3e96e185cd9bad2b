// Arbitrary datagrams through the control handler on a scratch box root:
// whatever arrives, the settings file keeps its 38 key lines in order, the
// custom line stays terminated inside its buffer, and replies carry the
// header and go only to addresses of at most 15 characters.
#include <fcntl.h>
#include <ftw.h>
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <string>

#include "box_root.h"
#include "control_datagram.h"
#include "runtime_settings.h"
#include "singleton.h"
#include "software_config.h"

namespace {

std::string g_root;
std::string g_file;

int remove_entry(const char* path, const struct stat*, int, struct FTW*)
{
    return remove(path);
}

void remove_root()
{
    nftw(g_root.c_str(), remove_entry, 8, FTW_DEPTH | FTW_PHYS);
}

class CheckReplies : public ReplySender {
public:
    void send(const char* ip, unsigned int, const std::string& payload) override
    {
        if (strlen(ip) > kReplyAddressMax || payload.compare(0, 7, "[oled]\n") != 0) {
            abort();
        }
    }
};

void check_file()
{
    std::ifstream in(g_file.c_str(), std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
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
    // tmpfs when there is one: every accepted datagram saves durably.
    std::string root = access("/dev/shm", W_OK) == 0 ? "/dev/shm/oled-fuzz-XXXXXX" : "/tmp/oled-fuzz-XXXXXX";
    if (mkdtemp(&root[0]) == nullptr) {
        abort();
    }
    set_box_root(root);
    g_root = root;
    atexit(remove_root);
    mkdir((root + "/data").c_str(), 0777);
    g_file = root + "/data/oled.ini";
    // The handler prints the settings after every datagram.
    const int null_fd = open("/dev/null", O_WRONLY);
    dup2(null_fd, STDOUT_FILENO);
    close(null_fd);
    Singleton<SoftwareConfig>::instance()->SaveConfig();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    CheckReplies replies;
    const ControlPeer sender = {"192.168.1.1", 40000};
    handle_control_datagram(reinterpret_cast<const char*>(data), static_cast<long>(size), sender, "192.168.1.20",
                            replies);
    if (memchr(oled_data, '\0', 22) == nullptr) {
        abort();
    }
    check_file();
    return 0;
}
