#ifndef OLED_OLED_SMALL_PANEL_KINDS_H
#define OLED_OLED_SMALL_PANEL_KINDS_H

#include <stddef.h>

#include "panel_steps.h"

// How the small panels differ, as data keyed by oled_type: the name the
// start-up prints, the bus, whether the panel has a reset line to pulse,
// and its start-up table.
struct SmallPanelKind {
    enum Bus { kTwoWire, kFourWire };
    int oled_type;
    const char* name;
    Bus bus;
    bool reset_pulse;
    const PanelStep* steps;
    size_t step_count;
};

// The kind for an oled_type, or nullptr when the type has no small panel
// (0 is the big panel, 2 no screen).
const SmallPanelKind* small_panel_kind(int oled_type);

#endif
