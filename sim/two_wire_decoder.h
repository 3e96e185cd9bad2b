#ifndef OLED_SIM_TWO_WIRE_DECODER_H
#define OLED_SIM_TWO_WIRE_DECODER_H

#include <memory>

#include "panel_bus.h"

// The panel's side of the two-wire bus, built from pin edges alone: start
// (data falls while the clock is high) and stop (data rises while the
// clock is high) conditions, a bit on every rising clock, and a ninth
// clock per byte that is the panel's acknowledge slot. The panel holds the
// data line during that slot, so edges the master makes on it then are
// not conditions. A transaction addressed to 0x78 carries a control byte
// (bit 6: data, else commands; bit 7: one byte, then another control
// byte) and then its bytes; other addresses are ignored.
class TwoWireDecoder : public std::enable_shared_from_this<TwoWireDecoder> {
public:
    explicit TwoWireDecoder(PanelByteSink sink);

    // Listens to the pins on the simulated SoC from now on.
    void attach(SimPin sda, SimPin scl);

    void data_changed(int level);
    void clock_changed(int level);

private:
    void byte_done(uint8_t byte);

    PanelByteSink sink_;
    int sda_;
    int scl_;
    bool in_transaction_;
    bool in_ack_slot_;
    int bits_;
    uint8_t shift_;
    int byte_index_;
    bool addressed_;
    bool expect_control_;
    bool single_byte_;
    bool data_mode_;
};

#endif
