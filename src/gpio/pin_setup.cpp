#include "pin_setup.h"

#include <string>
#include <vector>

#include "bus_lines.h"
#include "file_helpers.h"
#include "gpio_master.h"
#include "pin_text.h"
#include "runtime_settings.h"
#include "singleton.h"
#include "software_config.h"

namespace {

typedef SoftwareConfig Config;

struct Pin {
    int group;
    int bit;
};

// A bus line: the setting that names its pin and the globals it fills.
struct BusLine {
    Config::SoftWareConfigID setting;
    unsigned int* addr;
    unsigned int* high;
    unsigned int* low;
};

// Big panel, or a small one on the four-wire bus.
const BusLine kFourWireLines[] = {
    {Config::OLed_ba_SDINMUX, &SDA, &SDA_H, &SDA_L}, {Config::OLed_ba_SCLKMUX, &SCL, &SCL_H, &SCL_L},
    {Config::OLed_ba_CS_MUX, &CS, &CS_H, &CS_L},     {Config::OLed_ba_DC_MUX, &DC, &DC_H, &DC_L},
    {Config::OLed_ba_RES_MUX, &RES, &RES_H, &RES_L},
};

const BusLine kTwoWireLines[] = {
    {Config::OLed_sml_SDINMUX, &SDA, &SDA_H, &SDA_L},
    {Config::OLed_sml_SCLKMUX, &SCL, &SCL_H, &SCL_L},
};

// "G_B"; a text without '_' names no pin. Numbers are not checked here:
// the controller refuses pins out of its range.
bool pin_of(const std::string& text, Pin* pin)
{
    return read_pin_text(text, pin->group, pin->bit);
}

bool route_output(GPIOMaster& gpio, Config::SoftWareConfigID setting, Pin* pin)
{
    if (!pin_of(Singleton<SoftwareConfig>::instance()->GetConfig(setting), pin)) {
        return false;
    }
    gpio.pin_mux_gpio(pin->group, pin->bit);
    gpio.set_gpio_direction(pin->group, pin->bit, 1);
    return true;
}

template <size_t N>
void set_up_lines(GPIOMaster& gpio, const BusLine (&lines)[N])
{
    for (size_t i = 0; i < N; ++i) {
        Pin pin;
        if (route_output(gpio, lines[i].setting, &pin)) {
            gpio.get_gpio_addr(pin.group, pin.bit, lines[i].addr, lines[i].high, lines[i].low);
        }
    }
}

// The two-wire panel draws its power from two GPIO pins.
void drive_supply(GPIOMaster& gpio, Config::SoftWareConfigID setting, int level)
{
    Pin pin;
    if (route_output(gpio, setting, &pin)) {
        gpio.set_gpio_value(pin.group, pin.bit, level);
    }
}

}  // namespace

void oled_gpio_init()
{
    std::shared_ptr<GPIOMaster> gpio = Singleton<GPIOMaster>::instance();
    if (oled_type == 0 || oled_type == 3 || oled_type == 6) {
        set_up_lines(*gpio, kFourWireLines);
    } else if (oled_type == 1 || oled_type == 4 || oled_type == 5) {
        set_up_lines(*gpio, kTwoWireLines);
        drive_supply(*gpio, Config::OLed_sml_VCCMUX, 1);
        drive_supply(*gpio, Config::OLed_sml_GNDMUX, 0);
    }

    // The switch pin stays an input, as it is after reset; a low level (or
    // no switch at all) selects the video input ports.
    unsigned int value = 0;
    Pin pin;
    if (pin_of(Singleton<SoftwareConfig>::instance()->GetConfig(Config::kSwitch_gpio), &pin)) {
        gpio->pin_mux_gpio(pin.group, pin.bit);
        gpio->get_gpio_value(pin.group, pin.bit, &value);
    }
    input_mode = (value & 0xFF) == 0 ? 1 : 0;
}
