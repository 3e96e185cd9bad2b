// Arbitrary pin sequences into the panel emulators, wired to the simulated
// SoC the way oledd-sim wires them from a box's settings. The first byte
// picks the panel kind; every further byte gives the new level of each bus
// line (bit 0 data, bit 1 clock, then chip select, data/command and reset
// on the four-wire bus), applied line by line as register stores, so every
// edge order the driver could make is reachable. Whatever comes, every
// store lands inside the display RAM (the fuzz build checks every
// container index) and the controller's state stays in range.
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>

#include <memory>
#include <vector>

#include "box_settings.h"
#include "panel_attach.h"
#include "soc.h"

namespace {

const int kTypes[] = {0, 1, 3, 4, 5, 6};
const uint32_t kGpioBase = 0x12150000;
const uint32_t kGroupStride = 0x10000;
const uint32_t kDirection = 0x400;

struct BusLine {
    int group;
    int bit;
};

void drive(SimSoc& soc, const BusLine& line, int level)
{
    const uint32_t mask = 1u << line.bit;
    soc.store(kGpioBase + static_cast<uint32_t>(line.group) * kGroupStride + (mask << 2), level != 0 ? mask : 0u);
}

BusLine line_of(const BoxSettings& box, SoftwareConfig::SoftWareConfigID id)
{
    BusLine line = {0, 0};
    if (!parse_pin(box.get(id), &line.group, &line.bit)) {
        abort();
    }
    return line;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0) {
        return 0;
    }
    const int type = kTypes[data[0] % (sizeof kTypes / sizeof kTypes[0])];
    BoxSettings box;
    box.values = SoftwareConfig::DefaultValues("");
    box.values[SoftwareConfig::OLed_a_kind_start] = std::to_string(type);
    const PanelWiring* wiring = panel_wiring_for(type);

    std::vector<BusLine> lines;
    if (wiring->four_wire) {
        for (SoftwareConfig::SoftWareConfigID id :
             {SoftwareConfig::OLed_ba_SDINMUX, SoftwareConfig::OLed_ba_SCLKMUX, SoftwareConfig::OLed_ba_CS_MUX,
              SoftwareConfig::OLed_ba_DC_MUX, SoftwareConfig::OLed_ba_RES_MUX}) {
            lines.push_back(line_of(box, id));
        }
    } else {
        lines.push_back(line_of(box, SoftwareConfig::OLed_sml_SDINMUX));
        lines.push_back(line_of(box, SoftwareConfig::OLed_sml_SCLKMUX));
    }

    SimSoc& soc = SimSoc::instance();
    soc.reset();
    for (const BusLine& line : lines) {
        const uint32_t direction = kGpioBase + static_cast<uint32_t>(line.group) * kGroupStride + kDirection;
        soc.store(direction, soc.load(direction) | (1u << line.bit));
    }
    // The two-wire bus idles high; the four-wire lines start low.
    if (!wiring->four_wire) {
        drive(soc, lines[0], 1);
        drive(soc, lines[1], 1);
    }
    const std::shared_ptr<PanelController> panel = attach_panel(box, nullptr);
    if (!panel) {
        abort();
    }
    // Levels as driven; nothing else drives these pins.
    uint8_t levels = wiring->four_wire ? 0 : 3;
    for (size_t i = 1; i < size; ++i) {
        const uint8_t changed = static_cast<uint8_t>((data[i] ^ levels) & ((1u << lines.size()) - 1));
        for (size_t l = 0; changed >> l != 0; ++l) {
            if ((changed >> l) & 1) {
                drive(soc, lines[l], (data[i] >> l) & 1);
            }
        }
        levels = data[i];
    }

    if (panel->visible_rows() < 1 || panel->visible_rows() > 64) {
        abort();
    }
    soc.reset();
    return 0;
}
