#ifndef OLED_SOFTWARE_CONFIG_RUNTIME_SETTINGS_H
#define OLED_SOFTWARE_CONFIG_RUNTIME_SETTINGS_H

#include <string>

#include "relaxed_atomic.h"

// Run-time settings that the loops and drivers read while they run. Those
// the control server or the ending of the process change while the workers
// run are atomics; the others are written before the workers start.
extern int oled_type;
extern RelaxedAtomic<bool> oled_string_enable;
// The custom line: written and read through the two functions below,
// directly only while no worker runs.
extern char oled_data[30];
extern RelaxedAtomic<bool> oled_display_cpu;
extern RelaxedAtomic<bool> oled_display_vi;
extern RelaxedAtomic<bool> oled_display_ai;
extern RelaxedAtomic<bool> oled_display_ethspeed;
extern RelaxedAtomic<bool> oled_display_venc;
extern RelaxedAtomic<bool> oled_display_temp;
extern RelaxedAtomic<bool> oled_display_time;
extern RelaxedAtomic<bool> oled_display_logo;
extern RelaxedAtomic<bool> oled_display_io;
extern RelaxedAtomic<int> oled_sleep_time;
extern RelaxedAtomic<bool> led_outside;
extern bool led_onboard;
extern RelaxedAtomic<bool> oled_led_on;
extern RelaxedAtomic<int> led_test;
extern int input_mode;
extern char hw_info[128];
extern int g_sock;
extern char loip[10];

extern RelaxedAtomic<bool> thread_big_loop;
extern RelaxedAtomic<bool> thread_small_loop;
extern RelaxedAtomic<bool> thread_led_loop;
extern RelaxedAtomic<bool> thread_oled_ump;

// The custom line takes at most this many bytes of a text.
const size_t kCustomTextBytes = 21;

// Replaces the custom line as the control server does: at most
// kCustomTextBytes bytes of text, zero-padded. A screen loop that reads it
// at the same moment gets the old line or the new one, never a mix.
void publish_custom_text(const std::string& text);

// A copy of the custom line, up to its terminator.
std::string custom_text();

// Derives the globals above from the settings store; opens g_sock.
void init_argumnt();

#endif
