#include "software_config.h"

#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/lexical_cast.hpp>

#include "board_defaults.h"
#include "durable_file.h"
#include "path_on_box.h"
#include "runtime_settings.h"
#include "trace.h"

char filepath_[36];

namespace {

struct KeyDefault {
    const char* name;
    const char* value;  // nullptr: the board tables give it
};

const KeyDefault kKeys[SoftwareConfig::kConfigCount] = {
    {"OLed_Port_udp", "16124"},
    {"OLed_Port", "16124"},
    {"OLed_a_kind_start", "1"},
    {"OLed_a_small_n_start", "0"},
    {"OLed_a_small_n_buf", "WELCOME"},
    {"OLed_a_cpu", "1"},
    {"OLed_a_vi", "1"},
    {"OLed_a_ai", "1"},
    {"OLed_a_net", "1"},
    {"OLed_a_venc", "1"},
    {"OLed_a_temp", "1"},
    {"OLed_a_start", "1"},
    {"OLed_a_sleep_tim", "3"},
    {"OLed_a_logo", "0"},
    {"OLed_a_gpio_j", "0"},
    {"OLed_a_io", "0"},
    {"OLed_ba_SDINMUX", "4_2"},
    {"OLed_ba_SCLKMUX", "4_3"},
    {"OLed_ba_CS_MUX", "3_5"},
    {"OLed_ba_DC_MUX", "4_0"},
    {"OLed_ba_RES_MUX", "4_1"},
    {"OLed_sml_SDINMUX", nullptr},
    {"OLed_sml_SCLKMUX", nullptr},
    {"OLed_sml_VCCMUX", nullptr},
    {"OLed_sml_GNDMUX", nullptr},
    {"OLed_china_str", "AA"},
    {"OLed_a_led_start", "0"},
    {"kLed_outside_value", "0"},
    {"kLed_eth_gpio", "0"},
    {"kLed_cpu_gpio", "0"},
    {"kLed_hdmi_gpio", "0"},
    {"kLed_pwr_gpio", "0"},
    {"kLed_onboard", "0"},
    {"kLed_onboard_value", "0"},
    {"kLed_eth_onboard", "0"},
    {"kLed_cpu_onboard", "0"},
    {"kLed_hdmi_onboard", "0"},
    {"kSwitch_gpio", nullptr},
};

// The settings file is a few hundred bytes; anything past this is not a
// settings file and is not read.
const long kMaxFileSize = 1 << 20;

// Lines of a settings text: split at LF; a CR right before an LF goes with
// it, and so does a CR at the very end of the text. Other CRs stay.
std::vector<std::string> split_lines(const std::string& content)
{
    std::vector<std::string> lines;
    std::string::size_type pos = 0;
    while (pos < content.size()) {
        std::string::size_type lf = content.find('\n', pos);
        std::string line;
        if (lf == std::string::npos) {
            line = content.substr(pos);
            pos = content.size();
        } else {
            line = content.substr(pos, lf - pos);
            pos = lf + 1;
        }
        if (!line.empty() && line[line.size() - 1] == '\r') {
            line.erase(line.size() - 1);
        }
        lines.push_back(line);
    }
    return lines;
}

std::string read_file(const char* path)
{
    std::string content;
    FILE* f = fopen(path_on_box(path).c_str(), "rbe");
    if (f == nullptr) {
        return content;
    }
    if (fseek(f, 0, SEEK_END) == 0) {
        long size = ftell(f);
        if (size > 0) {
            rewind(f);
            content.resize(static_cast<size_t>(size < kMaxFileSize ? size : kMaxFileSize));
            content.resize(fread(&content[0], 1, content.size(), f));
        }
    }
    fclose(f);
    return content;
}

}  // namespace

SoftwareConfig::SoftwareConfig()
{
    const char* folder = "/data";
    if (access(path_on_box(folder).c_str(), F_OK) != 0) {
        if (mkdir(path_on_box(folder).c_str(), 0777) == 0) {
            printf("make \"%s\" successfully\n", folder);
            snprintf(filepath_, sizeof(filepath_), "%s/%s", folder, "oled.ini");
        } else {
            printf("make \"%s\" errorly\n", folder);
            snprintf(filepath_, sizeof(filepath_), "./%s", "oled.ini");
        }
    } else {
        snprintf(filepath_, sizeof(filepath_), "%s/%s", folder, "oled.ini");
    }

    values = DefaultValues(hw_info);
    for (int id = 0; id < kConfigCount; ++id) {
        snprintf(keys[id], sizeof(keys[id]), "%s=", kKeys[id].name);
    }
}

SoftwareConfig::~SoftwareConfig()
{
    trace_prefix("~SoftwareConfig", 216);
    puts("SoftwareConfig Normal Exit!");
}

std::vector<std::string> SoftwareConfig::DefaultValues(const char* board)
{
    std::vector<std::string> defaults(kConfigCount);
    for (int id = 0; id < kConfigCount; ++id) {
        if (kKeys[id].value != nullptr) {
            defaults[id] = kKeys[id].value;
        }
    }
    const SmallPanelPins& pins = small_panel_pins_for_board(board);
    defaults[OLed_sml_SDINMUX] = pins.sdin;
    defaults[OLed_sml_SCLKMUX] = pins.sclk;
    defaults[OLed_sml_VCCMUX] = pins.vcc;
    defaults[OLed_sml_GNDMUX] = pins.gnd;
    defaults[kSwitch_gpio] = switch_pin_for_board(board);
    return defaults;
}

void SoftwareConfig::ApplySettingsText(const std::string& text, std::vector<std::string>& values)
{
    const std::vector<std::string> lines = split_lines(text);
    for (int id = 0; id < kConfigCount && static_cast<size_t>(id) < values.size(); ++id) {
        const std::string key = std::string(kKeys[id].name) + "=";
        for (size_t i = 0; i < lines.size(); ++i) {
            const std::string& line = lines[i];
            if (!line.empty() && (line[0] == ';' || line[0] == '!' || line[0] == '#')) {
                continue;
            }
            std::string::size_type at = line.find(key);
            if (at == std::string::npos) {
                continue;
            }
            // The first line with the key decides; an empty value keeps
            // what was there.
            std::string value = line.substr(at + key.size());
            if (!value.empty()) {
                values[id] = value;
            }
            break;
        }
    }
}

const char* SoftwareConfig::KeyName(int id)
{
    return id >= 0 && id < kConfigCount ? kKeys[id].name : nullptr;
}

std::string SoftwareConfig::GetConfig(SoftWareConfigID id)
{
    if (static_cast<unsigned>(id) >= kConfigCount) {
        return "error";
    }
    return values[id];
}

bool SoftwareConfig::SetConfig(SoftWareConfigID id, std::string value)
{
    if (static_cast<unsigned>(id) >= kConfigCount) {
        return false;
    }
    values[id] = value;
    return true;
}

bool SoftwareConfig::SetConfig(SoftWareConfigID id, int value)
{
    return SetConfig(id, boost::lexical_cast<std::string>(value));
}

bool SoftwareConfig::ReadConfig()
{
    trace_prefix("ReadConfig", 221);
    printf("read_config: %s\n", filepath_);
    ApplySettingsText(read_file(filepath_), values);
    return true;
}

std::string SoftwareConfig::Serialize() const
{
    std::string text;
    for (int id = 0; id < kConfigCount; ++id) {
        text += keys[id];
        text += values[id];
        text += '\n';
    }
    return text;
}

bool SoftwareConfig::SaveConfig()
{
    const std::string text = Serialize();
    // Unchanged settings are not rewritten: queries must not wear the flash.
    if (!file_holds(filepath_, text) && !write_file_durably(filepath_, text)) {
        trace_prefix("SaveConfig", 250);
        puts("save config failed");
        return false;
    }
    trace_prefix("SaveConfig", 246);
    puts("save config succeed");
    return true;
}

void SoftwareConfig::PrintConfig()
{
    for (int id = 0; id < kConfigCount; ++id) {
        printf("%s%s\n", keys[id], values[id].c_str());
    }
}
