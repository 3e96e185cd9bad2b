#ifndef OLED_SIM_PANEL_OUTPUTS_H
#define OLED_SIM_PANEL_OUTPUTS_H

#include <stdint.h>

#include <functional>

#include "box_settings.h"
#include "panel_controller.h"

// Wires the box's panel onto the simulated SoC and keeps panel.pgm and
// panel.png (in builds with libpng) in the output folder up to date. Says
// on stderr when the panel's pins are not all named. Call before
// OutputFiles starts. Returns what fills the panel's memory with noise
// (from a seed) and has the files show it, or nothing when no panel is
// wired.
std::function<void(uint32_t)> wire_panel_outputs(const BoxSettings& box);

#endif
