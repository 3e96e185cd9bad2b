#ifndef OLED_SOFTWARE_CONFIG_SOFTWARE_CONFIG_H
#define OLED_SOFTWARE_CONFIG_SOFTWARE_CONFIG_H

#include <string>
#include <vector>

// Path of the settings file chosen by the constructor: "/data/oled.ini",
// or "./oled.ini" when /data cannot be made.
extern char filepath_[36];

// The daemon's 38 persistent settings, kept as text and stored as
// "key=value" lines. Reached through Singleton<SoftwareConfig>; the first
// access must follow get_hw_version, because some defaults follow the board.
class SoftwareConfig {
public:
    enum SoftWareConfigID {
        OLed_Port_udp = 0,
        OLed_Port,
        OLed_a_kind_start,
        OLed_a_small_n_start,
        OLed_a_small_n_buf,
        OLed_a_cpu,
        OLed_a_vi,
        OLed_a_ai,
        OLed_a_net,
        OLed_a_venc,
        OLed_a_temp,
        OLed_a_start,
        OLed_a_sleep_tim,
        OLed_a_logo,
        OLed_a_gpio_j,
        OLed_a_io,
        OLed_ba_SDINMUX,
        OLed_ba_SCLKMUX,
        OLed_ba_CS_MUX,
        OLed_ba_DC_MUX,
        OLed_ba_RES_MUX,
        OLed_sml_SDINMUX,
        OLed_sml_SCLKMUX,
        OLed_sml_VCCMUX,
        OLed_sml_GNDMUX,
        OLed_china_str,
        OLed_a_led_start,
        kLed_outside_value,
        kLed_eth_gpio,
        kLed_cpu_gpio,
        kLed_hdmi_gpio,
        kLed_pwr_gpio,
        kLed_onboard,
        kLed_onboard_value,
        kLed_eth_onboard,
        kLed_cpu_onboard,
        kLed_hdmi_onboard,
        kSwitch_gpio,
        kConfigCount
    };

    SoftwareConfig();
    ~SoftwareConfig();

    std::string GetConfig(SoftWareConfigID id);
    bool SetConfig(SoftWareConfigID id, std::string value);
    bool SetConfig(SoftWareConfigID id, int value);
    bool ReadConfig();
    bool SaveConfig();
    void PrintConfig();

    // The 38 "key=value" lines exactly as saved.
    std::string Serialize() const;
    // Takes back settings as Serialize gave them: a change whose save
    // failed stays in the store until a save can be made.
    void Restore(const std::string& serialized) { ApplySettingsText(serialized, values); }

    // Key name without "=" (nullptr above 37).
    static const char* KeyName(int id);

    // Side-effect-free pieces of the store, for tools that must know a
    // box's settings without being its daemon (the simulator):
    // the 38 defaults for a board, and the reader's line rules applied to
    // the text of a settings file.
    static std::vector<std::string> DefaultValues(const char* board);
    static void ApplySettingsText(const std::string& text, std::vector<std::string>& values);

private:
    std::vector<std::string> values;
    char keys[kConfigCount][56];
};

#endif
