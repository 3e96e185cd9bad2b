#ifndef OLED_OLED_PANEL_LINES_H
#define OLED_OLED_PANEL_LINES_H

#include "bus_lines.h"
#include "register_access.h"

// A build with OLEDD_LITERAL_PANEL (a benchmark's baseline) sends every
// byte as it is drawn, each its own transaction, three writes a bit.
#ifdef OLEDD_LITERAL_PANEL
const bool kLiteralPanel = true;
#else
const bool kLiteralPanel = false;
#endif

// The bus primitives both panel drivers share. Every level change is one
// paced register write to the line's single-bit alias; the pacing inside
// set_reg is the bus clock.
inline void drive_line(unsigned int addr, unsigned int high, unsigned int low, bool level)
{
    set_reg(addr, level ? high : low);
}

inline void drive_sda(bool level)
{
    drive_line(SDA, SDA_H, SDA_L, level);
}
inline void drive_scl(bool level)
{
    drive_line(SCL, SCL_H, SCL_L, level);
}
inline void drive_cs(bool level)
{
    drive_line(CS, CS_H, CS_L, level);
}
inline void drive_dc(bool level)
{
    drive_line(DC, DC_H, DC_L, level);
}
inline void drive_res(bool level)
{
    drive_line(RES, RES_H, RES_L, level);
}

// Four-wire serial byte, most significant bit first: clock low, data,
// clock high (the panel samples on the rising edge). Chip select and
// data/command are the caller's.
void shift_out_four_wire(unsigned char byte);

#endif
