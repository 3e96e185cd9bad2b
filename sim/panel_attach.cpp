#include "panel_attach.h"

#include "file_helpers.h"
#include "four_wire_decoder.h"
#include "soc.h"
#include "two_wire_decoder.h"

namespace {

const PanelColour kWhite = {235, 240, 255};
const PanelColour kBlue = {90, 170, 255};
const PanelColour kAmber = {255, 190, 40};

const PanelWiring kWirings[] = {
    {0, "256x64 greyscale", PanelController::kGrey256x64, true, kAmber},
    {1, "old small oled", PanelController::kMonochrome128x64, false, kBlue},
    {3, "0.96 small oled", PanelController::kMonochrome128x64, true, kWhite},
    {4, "0.96 small oled", PanelController::kMonochrome128x64, false, kWhite},
    {5, "1.29 small oled", PanelController::kMonochrome128x64, false, kWhite},
    {6, "1.29 small oled", PanelController::kMonochrome128x64, true, kWhite},
};

struct BusLine {
    const char* name;
    SoftwareConfig::SoftWareConfigID key;
};

// In the order the decoders take them: data, clock, then the four-wire
// bus's chip select, data/command and reset.
const BusLine kFourWireLines[] = {
    {"SDIN", SoftwareConfig::OLed_ba_SDINMUX}, {"SCLK", SoftwareConfig::OLed_ba_SCLKMUX},
    {"CS", SoftwareConfig::OLed_ba_CS_MUX},    {"DC", SoftwareConfig::OLed_ba_DC_MUX},
    {"RES", SoftwareConfig::OLed_ba_RES_MUX},
};
const BusLine kTwoWireLines[] = {
    {"SDA", SoftwareConfig::OLed_sml_SDINMUX},
    {"SCL", SoftwareConfig::OLed_sml_SCLKMUX},
};

}  // namespace

const PanelWiring* panel_wiring_for(int oled_type)
{
    for (size_t i = 0; i < sizeof(kWirings) / sizeof(kWirings[0]); ++i) {
        if (kWirings[i].oled_type == oled_type) {
            return &kWirings[i];
        }
    }
    return nullptr;
}

bool panel_bus_pins(const BoxSettings& box, const PanelWiring& wiring, std::vector<NamedPin>* pins)
{
    const BusLine* lines = wiring.four_wire ? kFourWireLines : kTwoWireLines;
    const size_t count = wiring.four_wire ? sizeof(kFourWireLines) / sizeof(kFourWireLines[0])
                                          : sizeof(kTwoWireLines) / sizeof(kTwoWireLines[0]);
    pins->clear();
    for (size_t i = 0; i < count; ++i) {
        NamedPin line;
        line.name = lines[i].name;
        if (!parse_pin(box.get(lines[i].key), &line.pin.group, &line.pin.bit)) {
            return false;
        }
        pins->push_back(line);
    }
    return true;
}

std::shared_ptr<PanelController> attach_panel(const BoxSettings& box, PanelByteSink tap)
{
    const PanelWiring* wiring = panel_wiring_for(str2int(box.get(SoftwareConfig::OLed_a_kind_start)));
    if (wiring == nullptr) {
        return nullptr;
    }
    std::shared_ptr<PanelController> panel = std::make_shared<PanelController>(wiring->model);
    PanelByteSink sink = [panel, tap](bool data, uint8_t byte) {
        panel->write(data, byte);
        if (tap) {
            tap(data, byte);
        }
    };
    std::vector<NamedPin> pins;
    if (!panel_bus_pins(box, *wiring, &pins)) {
        return nullptr;
    }
    if (wiring->four_wire) {
        std::make_shared<FourWireDecoder>(sink)->attach(pins[0].pin, pins[1].pin, pins[2].pin, pins[3].pin);
        // Reset is active low; a line low since power-up counts as the
        // pulse's first half.
        const SimPin reset = pins[4].pin;
        SimSoc& soc = SimSoc::instance();
        panel->await_reset_pulse();
        panel->hold_in_reset(soc.level(reset.group, reset.bit) == 0);
        soc.watch(reset.group, reset.bit, [panel](int, int, int level) { panel->hold_in_reset(level == 0); });
    } else {
        std::make_shared<TwoWireDecoder>(sink)->attach(pins[0].pin, pins[1].pin);
    }
    return panel;
}
