// The small panel's two buses. The two-wire acknowledge is clocked blind:
// the data line never turns into an input, so an absent panel goes
// unnoticed, as on the appliance.
#include "oled_master.h"
#include "panel_lines.h"
#include "runtime_settings.h"
#include "small_panel_kinds.h"

void OLEDMaster::IICStart()
{
    drive_sda(true);
    drive_scl(true);
    Delay();
    drive_sda(false);
    Delay();
    drive_scl(false);
}

void OLEDMaster::IICStop()
{
    drive_sda(false);
    drive_scl(false);
    Delay();
    drive_scl(true);
    Delay();
    drive_sda(true);
}

void OLEDMaster::IICWriteByte(unsigned char b)
{
    for (int bit = 7; bit >= 0; --bit) {
        drive_sda(((b >> bit) & 1) != 0);
        drive_scl(true);
        drive_scl(false);
    }
}

unsigned char OLEDMaster::DelayACK()
{
    drive_scl(true);
    for (int i = 0; i < 15; ++i) {
        Delay();
    }
    drive_sda(true);
    Delay();
    drive_scl(false);
    return 1;
}

void OLEDMaster::WriteByteOLED(unsigned char byte, unsigned char ctrl)
{
    WriteRunOLED(ctrl != 0, &byte, 1);
}

// Two-wire: the control byte (0x40 data, 0x00 commands, continuation bit
// clear) covers every byte up to the stop. Four-wire: chip select stays low
// for the run.
void OLEDMaster::WriteRunOLED(bool data, const unsigned char* bytes, int count)
{
    const SmallPanelKind* kind = small_panel_kind(oled_type);
    if (kind == nullptr) {
        return;
    }
    if (kind->bus == SmallPanelKind::kTwoWire) {
        IICStart();
        IICWriteByte(0x78);
        DelayACK();
        IICWriteByte(data ? 0x40 : 0x00);
        DelayACK();
        for (int i = 0; i < count; ++i) {
            IICWriteByte(bytes[i]);
            DelayACK();
        }
        IICStop();
        return;
    }
    drive_dc(data);
    drive_cs(false);
    for (int i = 0; i < count; ++i) {
        shift_out_four_wire(bytes[i]);
    }
    drive_cs(true);
    drive_dc(true);
}
