#ifndef OLED_SOFTWARE_CONFIG_RUNTIME_SETTINGS_H
#define OLED_SOFTWARE_CONFIG_RUNTIME_SETTINGS_H

// Run-time switches that the loops and drivers read while they run. Plain
// bytes and aligned words: written by the main thread (start-up, control
// server) and the signal handler, read by the workers without locks.
extern int oled_type;
extern bool oled_string_enable;
extern char oled_data[30];
extern bool oled_display_cpu;
extern bool oled_display_vi;
extern bool oled_display_ai;
extern bool oled_display_ethspeed;
extern bool oled_display_venc;
extern bool oled_display_temp;
extern bool oled_display_time;
extern bool oled_display_logo;
extern bool oled_display_io;
extern int oled_sleep_time;
extern bool led_outside;
extern bool led_onboard;
extern bool oled_led_on;
extern int led_test;
extern int input_mode;
extern char hw_info[128];
extern int g_sock;
extern char loip[10];

extern bool thread_big_loop;
extern bool thread_small_loop;
extern bool thread_led_loop;
extern bool thread_oled_ump;

// Derives the globals above from the settings store; opens g_sock.
void init_argumnt();

#endif
