#include "panel_controller.h"
#include "panel_image.h"

std::string panel_pgm(const PanelController& panel)
{
    std::string out = "P5\n" + std::to_string(panel.width()) + " " + std::to_string(panel.height()) + "\n" +
                      std::to_string(panel.maxval()) + "\n";
    const std::vector<uint8_t> pixels = panel.pixels();
    out.append(pixels.begin(), pixels.end());
    return out;
}
