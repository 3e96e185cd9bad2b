#ifndef OLED_SIM_PANEL_ATTACH_H
#define OLED_SIM_PANEL_ATTACH_H

#include <memory>

#include "box_settings.h"
#include "panel_bus.h"
#include "panel_controller.h"
#include "panel_image.h"

// How each panel kind (by oled_type) is built into a box: controller,
// bus, which pin keys it hangs on, and the colour of its pixels.
struct PanelWiring {
    int oled_type;
    const char* name;
    PanelController::Model model;
    bool four_wire;  // else two-wire
    PanelColour colour;
};

// nullptr when the type has no panel (2: no screen).
const PanelWiring* panel_wiring_for(int oled_type);

// Connects the panel that the box's settings name (OLed_a_kind_start and
// the pin keys) to the simulated SoC: bus decoder, reset line and
// controller. tap, if set, hears every byte after the controller took it.
// Returns nullptr, wiring nothing, when the box has no panel or a pin the
// panel needs is not named.
std::shared_ptr<PanelController> attach_panel(const BoxSettings& box, PanelByteSink tap);

#endif
