#ifndef OLED_SIM_BOX_WAVEFORM_H
#define OLED_SIM_BOX_WAVEFORM_H

#include <stdio.h>

#include <string>

#include "box_settings.h"

// oledd-sim's --vcd: the panel's bus lines and the LEDs' pins, as the
// box's settings wire them, recorded to file (named path in messages) from
// the next register write until the process ends. Once per process.
void record_box_waveform(const BoxSettings& box, FILE* file, const std::string& path);

#endif
