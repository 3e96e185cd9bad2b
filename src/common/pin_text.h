#ifndef OLED_COMMON_PIN_TEXT_H
#define OLED_COMMON_PIN_TEXT_H

#include <string>

// The SoC's GPIO groups and the bits of each.
const int kPinGroups = 25;
const int kPinBits = 8;

// A pin as the settings name it, "GROUP_BIT", read as the daemon has
// always read it: a text without '_' names no pin (false); each part is
// read as str2int reads a number, -1 for a part that is none. The one
// reader of pin texts for the daemon, the simulator and the tool.
bool read_pin_text(const std::string& text, int& group, int& bit);

// Whether group and bit name a pin of the SoC.
inline bool pin_exists(int group, int bit)
{
    return group >= 0 && group < kPinGroups && bit >= 0 && bit < kPinBits;
}

#endif
