#ifndef OLED_SIM_PANEL_CONTROLLER_H
#define OLED_SIM_PANEL_CONTROLLER_H

#include <stdint.h>

#include <mutex>
#include <vector>

// The display controller behind a panel bus: its display RAM and the
// commands that move the write pointer. Two models:
//  - monochrome 128x64 in page addressing mode: 0xB0 + page picks one of
//    eight 8-row pages, a data byte is one column of a page, bit 0 on top;
//  - greyscale 256x64: 0xB0 then a row byte picks a row, a data byte is
//    two pixels (4 bits each, high nibble left).
// Both take the column as nibble commands 0x0X (low) and 0x1X (high), in
// bytes, and advance it after every data byte, wrapping within the line.
// Argument bytes of every multi-byte command are consumed, so they never
// move the pointer. RAM is kept as written: no remap, no offset.
class PanelController {
public:
    enum Model { kMonochrome128x64, kGrey256x64 };

    explicit PanelController(Model model);

    // A byte from the bus. Thread-safe.
    void write(bool data, uint8_t byte);
    // The reset line: while held the controller ignores its bus; releasing
    // it returns the registers (not the RAM) to their power-on values.
    void hold_in_reset(bool held);
    // Powered up with a reset line, as the datasheets have it: the bus is
    // ignored until the line has been low and then high again.
    void await_reset_pulse();
    // Fills the RAM with noise, as a brown-out or a static discharge
    // leaves it; the registers stay.
    void scramble(uint32_t seed);

    Model model() const { return model_; }
    int width() const;
    int height() const { return 64; }
    int maxval() const { return model_ == kMonochrome128x64 ? 1 : 15; }
    // Every pixel, row-major from the top-left, 0..maxval().
    std::vector<uint8_t> pixels() const;
    // Rows the panel shows (the multiplex ratio).
    int visible_rows() const;
    bool display_on() const;

private:
    void reset_registers();
    int argument_count(uint8_t command) const;
    void apply(uint8_t command, const uint8_t* args);

    static const int kLineBytes = 128;

    const Model model_;
    mutable std::mutex mutex_;
    std::vector<uint8_t> ram_;  // lines (pages or rows) of 128 bytes
    int line_;
    int column_;
    int mux_rows_;
    bool on_;
    enum Reset { kRunning, kHeld, kAwaitingPulse };
    Reset reset_;
    uint8_t pending_command_;
    int pending_total_;
    int pending_got_;
    uint8_t pending_args_[8];
};

#endif
