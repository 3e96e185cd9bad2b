#ifndef OLED_MAIN_SCREEN_LOOPS_H
#define OLED_MAIN_SCREEN_LOOPS_H

// The panel's worker threads started by the daemon's start-up; each runs
// until its thread flag is cleared.
void* oled_small_loop(void* arg);
void* oled_big_loop(void* arg);

#endif
