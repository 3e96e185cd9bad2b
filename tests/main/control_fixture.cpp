#include "control_fixture.h"

#include <string.h>

#include "capture_stdout.h"
#include "runtime_settings.h"
#include "singleton.h"
#include "software_config.h"

void ControlDatagram::SetUp()
{
    root.make_folder("/data");
    CaptureStdout quiet;
    std::shared_ptr<SoftwareConfig> config = Singleton<SoftwareConfig>::instance();
    const std::vector<std::string> defaults = SoftwareConfig::DefaultValues("");
    for (size_t id = 0; id < defaults.size(); ++id) {
        config->SetConfig(static_cast<SoftwareConfig::SoftWareConfigID>(id), defaults[id]);
    }
    config->SaveConfig();
    oled_type = 1;
    oled_string_enable = false;
    memset(oled_data, 0, sizeof(oled_data));
    strcpy(oled_data, "WELCOME\n");
    oled_display_cpu = oled_display_vi = oled_display_ai = oled_display_ethspeed = true;
    oled_display_venc = oled_display_temp = oled_display_time = true;
    oled_display_logo = oled_display_io = false;
    oled_sleep_time = 3;
    led_outside = led_onboard = oled_led_on = false;
    led_test = 0;
}

bool ControlDatagram::handle(const std::string& text, const std::string& local)
{
    return handle_bytes(text.data(), static_cast<long>(text.size()), local);
}

bool ControlDatagram::handle_bytes(const char* data, long length, const std::string& local)
{
    CaptureStdout out;
    const ControlPeer sender = {"192.168.1.1", 40000};
    const bool obeyed = handle_control_datagram(data, length, sender, local, replies);
    printed = out.text();
    return obeyed;
}

std::string ControlDatagram::defaults_with(const std::vector<std::string>& lines) const
{
    const std::vector<std::string> defaults = SoftwareConfig::DefaultValues("");
    std::string text;
    for (size_t id = 0; id < defaults.size(); ++id) {
        const std::string key = std::string(SoftwareConfig::KeyName(static_cast<int>(id))) + "=";
        std::string line = key + defaults[id];
        for (size_t i = 0; i < lines.size(); ++i) {
            if (lines[i].compare(0, key.size(), key) == 0) {
                line = lines[i];
            }
        }
        text += line + "\n";
    }
    return text;
}

int ControlDatagram::count(const std::string& text, const std::string& what)
{
    int n = 0;
    for (std::string::size_type at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) {
        ++n;
    }
    return n;
}
