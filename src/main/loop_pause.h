#ifndef OLED_MAIN_LOOP_PAUSE_H
#define OLED_MAIN_LOOP_PAUSE_H

// A pass that would go round again at once (nothing to show, or a panel
// kind without a layout) waits this long instead of spinning.
const unsigned int kIdlePassMicroseconds = 200000;

#endif
