#ifndef OLED_SIM_PANEL_OUTPUTS_H
#define OLED_SIM_PANEL_OUTPUTS_H

#include <memory>

#include "box_settings.h"
#include "panel_controller.h"

// Wires the box's panel onto the simulated SoC and keeps panel.pgm and
// panel.png (in builds with libpng) in the output folder up to date. Says
// on stderr when the panel's pins are not all named. Call before
// OutputFiles starts. Returns the panel, or nullptr when none is wired.
std::shared_ptr<PanelController> wire_panel_outputs(const BoxSettings& box);

#endif
