#ifndef OLED_SIM_LED_BOARD_H
#define OLED_SIM_LED_BOARD_H

#include <string>
#include <vector>

#include "box_settings.h"
#include "panel_bus.h"

// The box's seven status LEDs (outside and onboard sets), wired to the pins
// that its settings name, as on the appliance. An LED shows what its pin
// does on the simulated SoC, never what the daemon meant to do.
class LedBoard {
public:
    explicit LedBoard(const BoxSettings& box);

    // The content of leds.json: an object keyed by the LED settings, each
    // {"pin": text as configured, "level": 0 or 1, "on": whether the LED is
    // lit by its set's on-level; level and on are null while the pin is not
    // a GPIO output or the text names no pin}.
    std::string json() const;

private:
    struct Led {
        std::string key;
        std::string pin_text;
        bool wired;
        bool lit_when_high;
        int group;
        int bit;
    };
    std::vector<Led> leds_;
};

// The LEDs whose settings name a pin, each named by its setting.
std::vector<NamedPin> led_pins(const BoxSettings& box);

// Holds the mode switch input (kSwitch_gpio) at level; a box without a
// switch pin is left alone.
void set_mode_switch(const BoxSettings& box, int level);

// oledd-sim's wiring: the mode switch at switch_level and, when the output
// folder is set, leds.json rewritten whenever a register store changes it.
// Once per process, before OutputFiles::start().
void wire_led_board(const BoxSettings& box, int switch_level);

#endif
