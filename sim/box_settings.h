#ifndef OLED_SIM_BOX_SETTINGS_H
#define OLED_SIM_BOX_SETTINGS_H

#include <string>
#include <vector>

#include "software_config.h"

// What the daemon will read at start on the box under the current root:
// its board and its 38 settings (defaults for the board, then the settings
// file by the daemon's own rules). Read quietly, with no side effect, so
// the simulator can wire its devices before the daemon runs.
struct BoxSettings {
    std::string board;
    std::vector<std::string> values;

    const std::string& get(SoftwareConfig::SoftWareConfigID id) const { return values[id]; }
};

BoxSettings read_box_settings();

// (group, bit) of a pin text "G_B", or false when the text names no pin.
bool parse_pin(const std::string& text, int* group, int* bit);

#endif
