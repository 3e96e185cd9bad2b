#ifndef OLED_MAIN_LED_LOOP_H
#define OLED_MAIN_LED_LOOP_H

class SoftwareConfig;

// What the LED loop takes from the settings store, copied by start-up on
// the main thread before the loop starts: the control server rewrites the
// store while the loop runs. Texts as long as the loop ever reads them.
struct LedSettings {
    char pins[7][24];  // outside Ethernet, CPU, video, power; onboard Ethernet, CPU, video
    int outside_level;
    int onboard_level;
};

void copy_led_settings(SoftwareConfig& config, LedSettings& settings);

// Runs until its thread flag is cleared; settings must outlive it.
void* oled_led_loop(void* settings);

#endif
