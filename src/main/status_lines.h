#ifndef OLED_MAIN_STATUS_LINES_H
#define OLED_MAIN_STATUS_LINES_H

#include <stddef.h>

#include <string>

#include "relaxed_atomic.h"

// One status line of a screen layout, in the order the layout shows them:
// drawn when its switch is on and its probe's text is longer than
// more_than characters (a shorter one is a probe that found nothing).
struct StatusLine {
    const RelaxedAtomic<bool>* shown;
    std::string (*probe)();
    size_t more_than;
    bool second_input;  // only on boards with a second video input
    bool icons;         // drawn as the status icons, not as text
};

#endif
