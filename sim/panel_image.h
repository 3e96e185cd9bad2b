#ifndef OLED_SIM_PANEL_IMAGE_H
#define OLED_SIM_PANEL_IMAGE_H

#include <stdint.h>

#include <string>

class PanelController;

// Binary PGM (P5) of the controller's whole display RAM, row 0 on top:
// 128x64 with maxval 1 for the monochrome panels, 256x64 with maxval 15
// for the greyscale one.
std::string panel_pgm(const PanelController& panel);

struct PanelColour {
    uint8_t red;
    uint8_t green;
    uint8_t blue;
};

// PNG of what a person sees: the rows the panel shows, each pixel a
// scale x scale square, lit pixels in the panel's colour by their level.
std::string panel_png(const PanelController& panel, PanelColour colour, int scale);

#endif
