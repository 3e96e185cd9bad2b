#include "panel_outputs.h"

#include <stdio.h>

#include "file_helpers.h"
#include "output_files.h"
#include "panel_attach.h"

namespace {

// Scaled so either panel is about 770 pixels wide.
int png_scale(const PanelController& panel)
{
    return panel.width() == 128 ? 6 : 3;
}

}  // namespace

void wire_panel_outputs(const BoxSettings& box)
{
    const PanelWiring* wiring = panel_wiring_for(str2int(box.get(SoftwareConfig::OLed_a_kind_start)));
    OutputFiles& files = OutputFiles::instance();
    // The files are registered once the panel is wired; until then the
    // tap marks nothing (id -1).
    std::shared_ptr<int> first_id = std::make_shared<int>(-1);
    std::shared_ptr<PanelController> panel = attach_panel(box, [first_id](bool, uint8_t) {
        if (*first_id >= 0) {
            OutputFiles::instance().mark_dirty(*first_id);
            OutputFiles::instance().mark_dirty(*first_id + 1);
        }
    });
    if (wiring == nullptr) {
        return;  // a box without a screen
    }
    if (panel == nullptr) {
        fprintf(stderr, "oledd-sim: no %s wired: a pin of the panel is not set\n", wiring->name);
        return;
    }
    const PanelColour colour = wiring->colour;
    const int pgm_id = files.add("panel.pgm", [panel]() { return panel_pgm(*panel); });
    files.add("panel.png", [panel, colour]() { return panel_png(*panel, colour, png_scale(*panel)); });
    *first_id = pgm_id;
    files.mark_dirty(pgm_id);
    files.mark_dirty(pgm_id + 1);
}
