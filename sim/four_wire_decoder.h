#ifndef OLED_SIM_FOUR_WIRE_DECODER_H
#define OLED_SIM_FOUR_WIRE_DECODER_H

#include <memory>

#include "panel_bus.h"

// The panel's side of the four-wire serial bus, built from pin edges
// alone: chip select low frames the bits (either edge of it restarts the
// byte), a bit on every rising clock, most significant first, and the
// data/command line, sampled with the eighth bit, says what the byte is.
class FourWireDecoder : public std::enable_shared_from_this<FourWireDecoder> {
public:
    explicit FourWireDecoder(PanelByteSink sink);

    void attach(SimPin data, SimPin clock, SimPin chip_select, SimPin data_command);

    void data_changed(int level) { sda_ = level; }
    void clock_changed(int level);
    void chip_select_changed(int level);
    void data_command_changed(int level) { dc_ = level; }

private:
    PanelByteSink sink_;
    int sda_;
    int cs_;
    int dc_;
    int bits_;
    uint8_t shift_;
};

#endif
