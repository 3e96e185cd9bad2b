#include "panel_controller.h"

namespace {

struct Arity {
    uint8_t command;
    int count;
};

// Argument bytes of the monochrome controllers' commands (0.96-inch,
// 1.29-inch and the old 32-row panel): scrolling, addressing, charge
// pump, DC-DC and timing commands.
const Arity kMonochromeArity[] = {
    {0x20, 1}, {0x21, 2}, {0x22, 2}, {0x26, 6}, {0x27, 6}, {0x29, 5}, {0x2A, 5}, {0x81, 1}, {0x82, 1}, {0x8D, 1},
    {0x91, 4}, {0xA3, 2}, {0xA8, 1}, {0xAD, 1}, {0xD3, 1}, {0xD5, 1}, {0xD8, 1}, {0xD9, 1}, {0xDA, 1}, {0xDB, 1},
};

// The greyscale controller's double-byte commands.
const Arity kGreyArity[] = {
    {0x81, 1}, {0xA8, 1}, {0xAD, 1}, {0xB0, 1}, {0xD3, 1}, {0xD5, 1}, {0xD9, 1}, {0xDB, 1}, {0xDC, 1},
};

const int kLines[] = {8, 64};

}  // namespace

PanelController::PanelController(Model model)
    : model_(model), ram_(static_cast<size_t>(kLines[model] * kLineBytes), 0), reset_(kRunning)
{
    reset_registers();
}

void PanelController::reset_registers()
{
    line_ = 0;
    column_ = 0;
    mux_rows_ = 64;
    on_ = false;
    pending_total_ = 0;
    pending_got_ = 0;
}

int PanelController::width() const
{
    return model_ == kMonochrome128x64 ? 128 : 256;
}

int PanelController::argument_count(uint8_t command) const
{
    const Arity* table = model_ == kMonochrome128x64 ? kMonochromeArity : kGreyArity;
    const size_t size =
        model_ == kMonochrome128x64 ? sizeof(kMonochromeArity) / sizeof(Arity) : sizeof(kGreyArity) / sizeof(Arity);
    for (size_t i = 0; i < size; ++i) {
        if (table[i].command == command) {
            return table[i].count;
        }
    }
    return 0;
}

void PanelController::write(bool data, uint8_t byte)
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (reset_ != kRunning) {
        return;
    }
    if (data) {
        pending_total_ = 0;
        ram_[static_cast<size_t>(line_ * kLineBytes + column_)] = byte;
        column_ = (column_ + 1) % kLineBytes;
        return;
    }
    if (pending_total_ != 0) {
        pending_args_[pending_got_++] = byte;
        if (pending_got_ == pending_total_) {
            pending_total_ = 0;
            apply(pending_command_, pending_args_);
        }
        return;
    }
    const int count = argument_count(byte);
    if (count == 0) {
        apply(byte, nullptr);
        return;
    }
    pending_command_ = byte;
    pending_total_ = count;
    pending_got_ = 0;
}

void PanelController::apply(uint8_t command, const uint8_t* args)
{
    if (command <= 0x0F) {
        column_ = (column_ & 0x70) | command;
    } else if (command <= 0x1F) {
        column_ = ((command & 0x07) << 4) | (column_ & 0x0F);
    } else if (command == 0xAE || command == 0xAF) {
        on_ = command == 0xAF;
    } else if (command == 0xA8) {
        mux_rows_ = (args[0] & 0x3F) + 1;
    } else if (command == 0xB0 && model_ == kGrey256x64) {
        line_ = args[0] & 0x3F;
    } else if (command >= 0xB0 && command <= 0xB7 && model_ == kMonochrome128x64) {
        line_ = command & 0x07;
    }
    // Everything else (contrast, timing, orientation, ...) does not change
    // what the RAM holds.
}

void PanelController::hold_in_reset(bool held)
{
    std::lock_guard<std::mutex> lock(mutex_);
    if (held) {
        reset_ = kHeld;
    } else if (reset_ == kHeld) {
        reset_registers();
        reset_ = kRunning;
    }
}

void PanelController::await_reset_pulse()
{
    std::lock_guard<std::mutex> lock(mutex_);
    reset_ = kAwaitingPulse;
}

void PanelController::scramble(uint32_t seed)
{
    std::lock_guard<std::mutex> lock(mutex_);
    uint32_t state = seed | 1;
    for (uint8_t& byte : ram_) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<uint8_t>(state >> 24);
    }
}

std::vector<uint8_t> PanelController::pixels() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    const int w = width();
    std::vector<uint8_t> out(static_cast<size_t>(w * 64));
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < w; ++x) {
            uint8_t value = 0;
            if (model_ == kMonochrome128x64) {
                value = (ram_[static_cast<size_t>((y / 8) * kLineBytes + x)] >> (y % 8)) & 1;
            } else {
                const uint8_t pair = ram_[static_cast<size_t>(y * kLineBytes + x / 2)];
                value = (x % 2 == 0) ? pair >> 4 : pair & 0x0F;
            }
            out[static_cast<size_t>(y * w + x)] = value;
        }
    }
    return out;
}

int PanelController::visible_rows() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return mux_rows_;
}

bool PanelController::display_on() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return on_;
}
