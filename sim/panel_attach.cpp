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

bool pin_of(const BoxSettings& box, SoftwareConfig::SoftWareConfigID id, SimPin* pin)
{
    return parse_pin(box.get(id), &pin->group, &pin->bit);
}

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
    SimSoc& soc = SimSoc::instance();
    if (wiring->four_wire) {
        SimPin data, clock, chip_select, data_command, reset;
        if (!pin_of(box, SoftwareConfig::OLed_ba_SDINMUX, &data) ||
            !pin_of(box, SoftwareConfig::OLed_ba_SCLKMUX, &clock) ||
            !pin_of(box, SoftwareConfig::OLed_ba_CS_MUX, &chip_select) ||
            !pin_of(box, SoftwareConfig::OLed_ba_DC_MUX, &data_command) ||
            !pin_of(box, SoftwareConfig::OLed_ba_RES_MUX, &reset)) {
            return nullptr;
        }
        std::make_shared<FourWireDecoder>(sink)->attach(data, clock, chip_select, data_command);
        // Reset is active low; the panel sits in reset until the driver
        // first raises the line.
        panel->hold_in_reset(soc.level(reset.group, reset.bit) == 0);
        soc.watch(reset.group, reset.bit, [panel](int, int, int level) { panel->hold_in_reset(level == 0); });
        return panel;
    }
    SimPin data, clock;
    if (!pin_of(box, SoftwareConfig::OLed_sml_SDINMUX, &data) || !pin_of(box, SoftwareConfig::OLed_sml_SCLKMUX, &clock)) {
        return nullptr;
    }
    std::make_shared<TwoWireDecoder>(sink)->attach(data, clock);
    return panel;
}
