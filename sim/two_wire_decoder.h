#ifndef OLED_SIM_TWO_WIRE_DECODER_H
#define OLED_SIM_TWO_WIRE_DECODER_H

#include <memory>

#include "panel_bus.h"

// The panel's side of the two-wire bus, built from pin edges alone: start
// (data falls while the clock is high) and stop (data rises while the
// clock is high) conditions, a bit on every rising clock, and a ninth
// clock per byte that is the panel's acknowledge slot. A panel that was
// addressed acknowledges as a real one does: it pulls the data line low
// from the eighth bit's falling clock to the ninth's (open drain), so the
// master's own edges then are no conditions on the line. Edges the master
// makes in the slot of a byte not acknowledged are not conditions either. A transaction addressed to 0x78 carries a
// control byte (bit 6: data, else commands; bit 7: one byte, then another control byte) and then its bytes; other
// addresses are ignored.
class TwoWireDecoder : public std::enable_shared_from_this<TwoWireDecoder> {
public:
    explicit TwoWireDecoder(PanelByteSink sink);

    // Listens to the pins on the simulated SoC from now on.
    void attach(SimPin sda, SimPin scl);

    void data_changed(int level);
    void clock_changed(int level);

private:
    void byte_done(uint8_t byte);
    void acknowledge(bool pull);

    PanelByteSink sink_;
    SimPin sda_pin_;
    bool pulling_;
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
