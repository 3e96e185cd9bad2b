#include "panel_lines.h"

namespace {

// Address bits 2..9 of a GPIO group's data register select the pins that a
// write to it changes.
const unsigned int kPinSelectBits = 0x3FC;

}  // namespace

// With data and clock in one GPIO group, clock low and the next data bit
// go out in one write: the panel samples on the rising edge only, so the
// data may change with the falling one. A third of the writes per byte.
void shift_out_four_wire(unsigned char byte)
{
    const bool one_group = !kLiteralPanel && (SDA & ~kPinSelectBits) == (SCL & ~kPinSelectBits);
    for (int bit = 7; bit >= 0; --bit) {
        const bool level = ((byte >> bit) & 1) != 0;
        if (one_group) {
            set_reg(SDA | SCL, SCL_L | (level ? SDA_H : SDA_L));
        } else {
            drive_scl(false);
            drive_sda(level);
        }
        drive_scl(true);
    }
}
