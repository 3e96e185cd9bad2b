#ifndef OLED_SIM_PANEL_BUS_H
#define OLED_SIM_PANEL_BUS_H

#include <stdint.h>

#include <functional>
#include <string>

// A pin of the simulated SoC.
struct SimPin {
    int group;
    int bit;
};

// A line by its role, on its pin.
struct NamedPin {
    std::string name;
    SimPin pin;
};

// Where a bus decoder delivers each byte it recognised: display data
// (true) or a command (false).
typedef std::function<void(bool data, uint8_t byte)> PanelByteSink;

#endif
