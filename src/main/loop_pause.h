#ifndef OLED_MAIN_LOOP_PAUSE_H
#define OLED_MAIN_LOOP_PAUSE_H

#include <unistd.h>

// A pass that would go round again at once (nothing to show, or a panel
// kind without a layout) waits this long instead of spinning.
const unsigned int kIdlePassMicroseconds = 200000;

// The longest sleep between two sends of a held screen: each send goes
// out whole once the frame buffer's time for it has come, so a long hold
// still repairs a panel within a minute.
const int kHoldSliceSeconds = 10;

// Sends the screen drawn so far (show) and keeps it up for seconds.
template <typename Show>
void hold_screen(int seconds, Show show)
{
    show();
    for (int left = seconds; left > 0; left -= kHoldSliceSeconds) {
        sleep(static_cast<unsigned int>(left < kHoldSliceSeconds ? left : kHoldSliceSeconds));
        if (left > kHoldSliceSeconds) {
            show();
        }
    }
}

#endif
