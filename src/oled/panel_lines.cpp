#include "panel_lines.h"

void shift_out_four_wire(unsigned char byte)
{
    for (int bit = 7; bit >= 0; --bit) {
        drive_scl(false);
        drive_sda(((byte >> bit) & 1) != 0);
        drive_scl(true);
    }
}
