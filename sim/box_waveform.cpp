#include "box_waveform.h"

#include <stdlib.h>

#include <vector>

#include "file_helpers.h"
#include "led_board.h"
#include "panel_attach.h"
#include "vcd_writer.h"

namespace {

VcdWriter* g_writer = nullptr;

void finish_at_exit()
{
    g_writer->finish();
}

}  // namespace

void record_box_waveform(const BoxSettings& box, FILE* file, const std::string& path)
{
    std::vector<NamedPin> lines;
    const PanelWiring* wiring = panel_wiring_for(str2int(box.get(SoftwareConfig::OLed_a_kind_start)));
    if (wiring != nullptr && !panel_bus_pins(box, *wiring, &lines)) {
        lines.clear();  // no panel wired; wire_panel_outputs says so
    }
    const std::vector<NamedPin> leds = led_pins(box);
    lines.insert(lines.end(), leds.begin(), leds.end());
    // Never destroyed: daemon threads still write registers while the
    // process exits; at exit the writer stops and the file is flushed.
    g_writer = new VcdWriter(file, path, lines, VcdWriter::kDefaultMaxBytes);
    g_writer->attach();
    atexit(finish_at_exit);
}
