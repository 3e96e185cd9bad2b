#include "small_panel_kinds.h"

namespace {

// 0.96-inch panel, 64 rows.
const PanelStep kInit096[] = {
    cmd(0xAE),
    cmd(0x00),
    cmd(0x10),
    cmd(0x40),
    cmd(0x81, 0xCF),  // contrast
    cmd(0xA1),
    cmd(0xC8),
    cmd(0xA6),
    cmd(0xA8, 0x3F),  // 64 rows
    cmd(0xD3, 0x00),
    cmd(0xD5, 0x80),
    cmd(0xD9, 0xF1),
    cmd(0xDA, 0x12),
    cmd(0xDB, 0x40),
    cmd(0x20, 0x02),  // page
                      // addressing
    cmd(0x8D, 0x14),  // charge pump on
    cmd(0xA4),
    cmd(0xA6),
    clear_screen(),
    cmd(0xAF),
    pause_ms(10),
    cmd(0xA6),
    cmd(0xC8),
    cmd(0xA1),
};

// 1.29-inch panel, 64 rows; ends mirrored against the 0.96-inch one.
const PanelStep kInit129[] = {
    cmd(0xAE),       cmd(0x00),       cmd(0x10),       cmd(0xB0),       cmd(0x40),       cmd(0x81, 0x88),  // contrast
    cmd(0x82, 0x00), cmd(0xA1),       cmd(0xA2),       cmd(0xA4),       cmd(0xA6),       cmd(0xA8, 0x3F),  // 64 rows
    cmd(0xC8),       cmd(0xD3, 0x00), cmd(0xD5, 0xA0), cmd(0xD9, 0x22), cmd(0xDB, 0x40), cmd(0x31),
    cmd(0xAD, 0x8B),  // DC-DC on
    clear_screen(),  cmd(0xAF),       pause_ms(10),    cmd(0xA6),       cmd(0xC0),       cmd(0xA0),
};

// The old panel: 32 rows, no reset line; A1 is sent twice on purpose.
const PanelStep kInitOld[] = {
    cmd(0xAE),       cmd(0xD5, 0x80), cmd(0xA8, 0x1F),  // 32 rows
    cmd(0xD3, 0x00), cmd(0xA1),       cmd(0xA6),       cmd(0x40), cmd(0xB0),       cmd(0xD5, 0xF0),
    cmd(0x8D, 0x14), cmd(0x20, 0x02), cmd(0xC8),       cmd(0xA1), cmd(0xDA, 0x02), cmd(0x81, 0x00),
    cmd(0xD9, 0xF1), cmd(0xDB, 0x49), clear_screen(),  cmd(0xAF),
};

#define STEPS(table) table, sizeof(table) / sizeof(table[0])

const SmallPanelKind kKinds[] = {
    {1, "old small oled", SmallPanelKind::kTwoWire, false, STEPS(kInitOld)},
    {3, "0.96 small oled", SmallPanelKind::kFourWire, true, STEPS(kInit096)},
    {4, "0.96 small oled", SmallPanelKind::kTwoWire, true, STEPS(kInit096)},
    {5, "1.29 small oled", SmallPanelKind::kTwoWire, true, STEPS(kInit129)},
    {6, "1.29 small oled", SmallPanelKind::kFourWire, true, STEPS(kInit129)},
};

#undef STEPS

}  // namespace

const SmallPanelKind* small_panel_kind(int oled_type)
{
    for (size_t i = 0; i < sizeof(kKinds) / sizeof(kKinds[0]); ++i) {
        if (kKinds[i].oled_type == oled_type) {
            return &kKinds[i];
        }
    }
    return nullptr;
}
