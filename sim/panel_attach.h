#ifndef OLED_SIM_PANEL_ATTACH_H
#define OLED_SIM_PANEL_ATTACH_H

#include <memory>
#include <vector>

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

// The bus lines of the box's panel, named as on the panel's connector (SDA,
// SCL; or SDIN, SCLK, CS, DC, RES), on the pins the settings give them.
// False when a line's pin is not named.
bool panel_bus_pins(const BoxSettings& box, const PanelWiring& wiring, std::vector<NamedPin>* pins);

// Connects the panel that the box's settings name (OLed_a_kind_start and
// the pin keys) to the simulated SoC: bus decoder, reset line and
// controller. tap, if set, hears every byte after the controller took it.
// Returns nullptr, wiring nothing, when the box has no panel or a pin the
// panel needs is not named.
std::shared_ptr<PanelController> attach_panel(const BoxSettings& box, PanelByteSink tap);

#endif
