#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "board_defaults.h"
#include "file_helpers.h"
#include "gpio_master.h"
#include "led_loop.h"
#include "path_on_box.h"
#include "pin_text.h"
#include "probe_text.h"
#include "probes.h"
#include "runtime_settings.h"
#include "singleton.h"
#include "software_config.h"

namespace {

typedef SoftwareConfig C;

const useconds_t kPassPause = 300000;

// A pin as the loop drives it. A text without "_" names no pin: it becomes
// group 0, bit 9, which the GPIO controller refuses without an access.
struct LedPin {
    int group = 0;
    int bit = 9;
};

LedPin set_up_pin(GPIOMaster& gpio, const char* text)
{
    LedPin pin;
    if (!read_pin_text(text, pin.group, pin.bit)) {
        return pin;
    }
    gpio.pin_mux_gpio(pin.group, pin.bit);
    gpio.set_gpio_direction(pin.group, pin.bit, 1);
    return pin;
}

// One set of LEDs (outside or onboard) with its "on" level.
struct LedSet {
    LedPin eth, cpu, video, power;
    int on_level = 0;
};

class Leds {
public:
    explicit Leds(const std::shared_ptr<GPIOMaster>& gpio) : gpio_(gpio) {}

    void write(const LedPin& pin, int level) { gpio_->set_gpio_value(pin.group, pin.bit, level); }
    void on(const LedSet& set, const LedPin& pin) { write(pin, set.on_level); }
    void off(const LedSet& set, const LedPin& pin) { write(pin, set.on_level == 0 ? 1 : 0); }
    void switch_to(const LedSet& set, const LedPin& pin, bool lit) { lit ? on(set, pin) : off(set, pin); }

    GPIOMaster& gpio() { return *gpio_; }

private:
    std::shared_ptr<GPIOMaster> gpio_;
};

// The number after the label of a probe text ("CPU:3.52%" -> 3).
int value_after_colon(const std::string& text)
{
    std::vector<std::string> parts;
    SplitString(text, parts, ":");
    return str2int(parts.size() > 1 ? parts[1] : "");
}

bool input_has_signal(const std::string& text, const char* no_signal)
{
    return text != no_signal && text.size() > 9;
}

bool video_signal()
{
    if (input_mode == 0) {
        return probe_text(CheckHDMIFile) == "YES";
    }
    bool signal = input_has_signal(probe_text(CheckViFile), "VI0:0@0");
    if (board_has_second_input()) {
        signal = input_has_signal(probe_text(CheckVi1File), "VI1:0@0") || signal;
    }
    return signal;
}

// Reads the carrier file; -1 when it cannot be read, else 1 for link up.
int carrier()
{
    FILE* f = fopen(path_on_box("/sys/class/net/eth0/carrier").c_str(), "re");
    if (f == nullptr) {
        puts("Open carrier error");
        return -1;
    }
    char line[24] = {0};
    int state = -1;
    if (fgets(line, sizeof(line), f) != nullptr) {
        state = line[0] == '1' ? 1 : 0;
    }
    fclose(f);
    return state;
}

class LedLoop {
public:
    LedLoop(const LedSettings& settings, const std::shared_ptr<GPIOMaster>& gpio);
    void pass();
    void exit_steps();

private:
    void for_sets(void (LedLoop::*action)(const LedSet&));
    void switch_both(LedPin LedSet::*led, bool lit);
    void test_on(const LedSet& set);
    void all_off(const LedSet& set);

    Leds leds_;
    LedSet outside_;
    LedSet onboard_;
    int blink_phase_ = 0;
};

LedLoop::LedLoop(const LedSettings& settings, const std::shared_ptr<GPIOMaster>& gpio) : leds_(gpio)
{
    GPIOMaster& g = leds_.gpio();
    LedPin* const pins[] = {&outside_.eth, &outside_.cpu, &outside_.video, &outside_.power,
                            &onboard_.eth, &onboard_.cpu, &onboard_.video};
    for (size_t i = 0; i < sizeof(pins) / sizeof(pins[0]); ++i) {
        *pins[i] = set_up_pin(g, settings.pins[i]);
    }
    onboard_.on_level = settings.onboard_level;
    outside_.on_level = settings.outside_level;
}

void LedLoop::for_sets(void (LedLoop::*action)(const LedSet&))
{
    if (led_outside) {
        (this->*action)(outside_);
    }
    if (led_onboard) {
        (this->*action)(onboard_);
    }
}

void LedLoop::test_on(const LedSet& set)
{
    leds_.on(set, set.cpu);
    leds_.on(set, set.video);
    leds_.on(set, set.eth);
}

void LedLoop::all_off(const LedSet& set)
{
    leds_.off(set, set.cpu);
    leds_.off(set, set.video);
    leds_.off(set, set.eth);
}

void LedLoop::pass()
{
    if (led_test != 0) {
        for_sets(&LedLoop::test_on);  // the power LED is left out of the test
        return;
    }
    if (!oled_led_on) {
        return;
    }

    const int link = carrier();
    if (link == 1) {
        // Blinks with a period of two passes; the phase is written as it is,
        // whatever the set's level.
        blink_phase_ = blink_phase_ == 0 ? 1 : 0;
        if (led_outside) {
            leds_.write(outside_.eth, blink_phase_);
        }
        if (led_onboard) {
            leds_.write(onboard_.eth, blink_phase_);
        }
    } else if (link == 0) {
        puts("No network cable inserted");
        switch_both(&LedSet::eth, false);
    }

    // Overload or overheating; the temperature is read only when the load
    // is not already too high.
    bool hot = value_after_colon(probe_text(CheckCpuFile)) > 80;
    if (!hot) {
        hot = value_after_colon(probe_text(CheckTemperature)) > 90;
    }
    switch_both(&LedSet::cpu, hot);
    switch_both(&LedSet::video, video_signal());
    if (led_outside) {
        leds_.on(outside_, outside_.power);
    }
}

void LedLoop::switch_both(LedPin LedSet::*led, bool lit)
{
    if (led_outside) {
        leds_.switch_to(outside_, outside_.*led, lit);
    }
    if (led_onboard) {
        leds_.switch_to(onboard_, onboard_.*led, lit);
    }
}

void LedLoop::exit_steps()
{
    puts("led_exit");
    for_sets(&LedLoop::all_off);  // the power LED stays as it is
}

}  // namespace

void copy_led_settings(SoftwareConfig& config, LedSettings& settings)
{
    const C::SoftWareConfigID pins[] = {C::kLed_eth_gpio,    C::kLed_cpu_gpio,    C::kLed_hdmi_gpio,   C::kLed_pwr_gpio,
                                        C::kLed_eth_onboard, C::kLed_cpu_onboard, C::kLed_hdmi_onboard};
    static_assert(sizeof(pins) / sizeof(pins[0]) == sizeof(settings.pins) / sizeof(settings.pins[0]), "one per pin");
    for (size_t i = 0; i < sizeof(pins) / sizeof(pins[0]); ++i) {
        snprintf(settings.pins[i], sizeof(settings.pins[i]), "%s", config.GetConfig(pins[i]).c_str());
    }
    settings.onboard_level = str2int(config.GetConfig(C::kLed_onboard_value));
    settings.outside_level = str2int(config.GetConfig(C::kLed_outside_value));
}

void* oled_led_loop(void* settings)
{
    puts("oled loop");
    std::shared_ptr<GPIOMaster> gpio = Singleton<GPIOMaster>::instance();
    LedLoop loop(*static_cast<const LedSettings*>(settings), gpio);
    for (bool first = true;; first = false) {
        if (!first) {
            usleep(kPassPause);
        }
        if (!thread_led_loop) {
            break;
        }
        loop.pass();
    }
    loop.exit_steps();
    return nullptr;
}
