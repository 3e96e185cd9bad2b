#include "panel_outputs.h"

#include <stdio.h>

#include <memory>
#include <vector>

#include "file_helpers.h"
#include "output_files.h"
#include "panel_attach.h"

#ifdef OLEDD_SIM_PNG
namespace {

// Scaled so either panel is about 770 pixels wide.
int png_scale(const PanelController& panel)
{
    return panel.width() == 128 ? 6 : 3;
}

}  // namespace
#endif

std::function<void(uint32_t)> wire_panel_outputs(const BoxSettings& box)
{
    const PanelWiring* wiring = panel_wiring_for(str2int(box.get(SoftwareConfig::OLed_a_kind_start)));
    OutputFiles& files = OutputFiles::instance();
    // The files are registered once the panel is wired; until then the
    // tap marks nothing. Nothing taps before the daemon starts.
    std::shared_ptr<std::vector<int>> ids = std::make_shared<std::vector<int>>();
    std::shared_ptr<PanelController> panel = attach_panel(box, [ids](bool, uint8_t) {
        for (int id : *ids) {
            OutputFiles::instance().mark_dirty(id);
        }
    });
    if (wiring == nullptr) {
        return nullptr;  // a box without a screen
    }
    if (panel == nullptr) {
        fprintf(stderr, "oledd-sim: no %s wired: a pin of the panel is not set\n", wiring->name);
        return nullptr;
    }
    ids->push_back(files.add("panel.pgm", [panel]() { return panel_pgm(*panel); }));
#ifdef OLEDD_SIM_PNG
    const PanelColour colour = wiring->colour;
    ids->push_back(files.add("panel.png", [panel, colour]() { return panel_png(*panel, colour, png_scale(*panel)); }));
#endif
    const auto mark_all = [ids] {
        for (int id : *ids) {
            OutputFiles::instance().mark_dirty(id);
        }
    };
    mark_all();
    return [panel, mark_all](uint32_t seed) {
        panel->scramble(seed);
        mark_all();
    };
}
