#include "gpio_master.h"

#include "register_access.h"

const unsigned int g_gpio_base_reg[kGpioGroups] = {
    0x12150000, 0x12160000, 0x12170000, 0x12180000, 0x12190000, 0x121A0000, 0x121B0000, 0x121C0000, 0x121D0000,
    0x121E0000, 0x121F0000, 0x12200000, 0x12210000, 0x12220000, 0x12230000, 0x12240000, 0x12250000, 0x12260000,
    0x12270000, 0x12280000, 0x12290000, 0x122A0000, 0x122B0000, 0x122C0000, 0x122D0000,
};
const unsigned int g_gpio_base_reg_chile[kGpioBits] = {0x4, 0x8, 0x10, 0x20, 0x40, 0x80, 0x100, 0x200};
const unsigned int g_gpio_base_reg_H[kGpioBits] = {0x1, 0x2, 0x4, 0x8, 0x10, 0x20, 0x40, 0x80};
const unsigned int g_gpio_base_reg_L[kGpioBits] = {0, 0, 0, 0, 0, 0, 0, 0};

// The SoC's pad table as it stands, irregular rows included: 11_6/13_0 and
// 11_7/13_1 share registers, 20_0..20_4 hold a placeholder (offset 0, which
// is pin 21_0's pad) and 24_6/24_7 have no pad register (0xFFFF).
const unsigned int g_muxctrl_reg[kGpioGroups * kGpioBits][2] = {
    {0x1D4, 0}, {0x1D8, 0}, {0x1DC, 0}, {0x1E0, 0}, {0x1E4, 0}, {0x1E8, 0}, {0x1EC, 0},  {0x1F0, 0},   // 0
    {0x004, 1}, {0x008, 1}, {0x00C, 1}, {0x010, 1}, {0x014, 1}, {0x018, 1}, {0x01C, 1},  {0x020, 1},   // 1
    {0x028, 1}, {0x02C, 1}, {0x030, 1}, {0x034, 1}, {0x038, 1}, {0x03C, 1}, {0x040, 1},  {0x044, 1},   // 2
    {0x050, 1}, {0x054, 1}, {0x058, 1}, {0x05C, 1}, {0x060, 1}, {0x064, 1}, {0x068, 1},  {0x06C, 1},   // 3
    {0x074, 1}, {0x078, 1}, {0x07C, 1}, {0x080, 1}, {0x084, 1}, {0x088, 1}, {0x08C, 1},  {0x090, 1},   // 4
    {0x09C, 1}, {0x0A0, 1}, {0x0A4, 1}, {0x0A8, 1}, {0x0AC, 1}, {0x0B0, 1}, {0x0B4, 1},  {0x0B8, 1},   // 5
    {0x0C0, 1}, {0x0C4, 1}, {0x0C8, 1}, {0x0CC, 1}, {0x0D0, 1}, {0x0D4, 1}, {0x0D8, 1},  {0x0DC, 1},   // 6
    {0x0E8, 1}, {0x0EC, 1}, {0x0F0, 1}, {0x0F4, 1}, {0x0F8, 1}, {0x0FC, 1}, {0x100, 1},  {0x104, 1},   // 7
    {0x10C, 1}, {0x110, 1}, {0x114, 1}, {0x118, 1}, {0x11C, 1}, {0x120, 1}, {0x124, 1},  {0x128, 1},   // 8
    {0x158, 0}, {0x15C, 0}, {0x160, 0}, {0x164, 0}, {0x168, 0}, {0x16C, 0}, {0x170, 0},  {0x174, 0},   // 9
    {0x178, 0}, {0x17C, 0}, {0x180, 0}, {0x184, 0}, {0x188, 0}, {0x18C, 0}, {0x190, 0},  {0x194, 0},   // 10
    {0x130, 0}, {0x134, 0}, {0x138, 0}, {0x13C, 0}, {0x140, 0}, {0x144, 0}, {0x148, 0},  {0x14C, 3},   // 11
    {0x1B4, 0}, {0x0E0, 0}, {0x0E4, 1}, {0x1B8, 0}, {0x1BC, 0}, {0x198, 0}, {0x19C, 0},  {0x1A0, 0},   // 12
    {0x148, 0}, {0x14C, 3}, {0x150, 0}, {0x2C0, 0}, {0x2C4, 0}, {0x2C8, 0}, {0x2CC, 0},  {0x1F4, 0},   // 13
    {0x2D4, 0}, {0x2D8, 0}, {0x2DC, 0}, {0x2E0, 0}, {0x2E4, 0}, {0x2E8, 0}, {0x2EC, 0},  {0x2F0, 0},   // 14
    {0x2F4, 0}, {0x2F8, 0}, {0x2FC, 0}, {0x300, 0}, {0x1C0, 1}, {0x1C4, 1}, {0x1C8, 1},  {0x108, 1},   // 15
    {0x220, 0}, {0x224, 0}, {0x228, 0}, {0x22C, 0}, {0x230, 0}, {0x234, 0}, {0x238, 0},  {0x23C, 0},   // 16
    {0x240, 0}, {0x244, 0}, {0x248, 0}, {0x24C, 0}, {0x250, 0}, {0x254, 0}, {0x258, 0},  {0x25C, 0},   // 17
    {0x1F8, 2}, {0x1FC, 2}, {0x200, 0}, {0x204, 0}, {0x208, 0}, {0x20C, 0}, {0x210, 0},  {0x214, 0},   // 18
    {0x274, 1}, {0x278, 1}, {0x280, 1}, {0x284, 1}, {0x288, 1}, {0x28C, 1}, {0x1CC, 0},  {0x1D0, 0},   // 19
    {0x000, 0}, {0x000, 0}, {0x000, 0}, {0x000, 0}, {0x000, 0}, {0x270, 0}, {0x12C, 0},  {0x154, 0},   // 20
    {0x000, 1}, {0x024, 1}, {0x048, 0}, {0x04C, 1}, {0x070, 1}, {0x094, 0}, {0x098, 1},  {0x0BC, 1},   // 21
    {0x290, 0}, {0x294, 0}, {0x298, 0}, {0x29C, 0}, {0x2A0, 0}, {0x2A4, 0}, {0x2A8, 0},  {0x2AC, 0},   // 22
    {0x2D0, 0}, {0x2B0, 0}, {0x2B4, 0}, {0x2B8, 0}, {0x2BC, 0}, {0x26C, 0}, {0x218, 0},  {0x21C, 0},   // 23
    {0x1A4, 0}, {0x1A8, 0}, {0x260, 0}, {0x264, 0}, {0x268, 0}, {0x27C, 1}, {0xFFFF, 0}, {0xFFFF, 0},  // 24
};

namespace {

// Negative numbers are refused as well: a pin text such as "a_b" parses
// to -1, and the tables must never be indexed with it.
bool out_of_range(int group, int bit)
{
    return bit < 0 || group < 0 || bit > kGpioBits - 1 || group > kGpioGroups - 1;
}

// Placeholder entries name no pad of their own; writing them would switch
// another pin's pad (21_0) or an unmapped offset, so they are left alone.
bool has_own_pad(int group, int bit)
{
    const unsigned int offset = g_muxctrl_reg[group * kGpioBits + bit][0];
    return offset != 0xFFFF && !(group == 20 && bit <= 4);
}

}  // namespace

int GPIOMaster::pin_mux_gpio(int group, int bit)
{
    if (out_of_range(group, bit)) {
        return -1;
    }
    if (!has_own_pad(group, bit)) {
        return 0;
    }
    const unsigned int* entry = g_muxctrl_reg[group * kGpioBits + bit];
    const unsigned int reg = kMuxBase + entry[0];
    (void)get_reg(reg);
    set_reg(reg, entry[1]);
    return 0;
}

int GPIOMaster::set_gpio_direction(int group, int bit, int dir)
{
    if (out_of_range(group, bit)) {
        return -1;
    }
    const unsigned int reg = g_gpio_base_reg[group] + kGpioDirection;
    const unsigned int value = get_reg(reg);
    if (dir == 0) {
        set_reg(reg, value & ~(1u << bit));
    } else if (dir == 1) {
        set_reg(reg, value | (1u << bit));
    }
    return 0;
}

int GPIOMaster::set_gpio_value(int group, int bit, int value)
{
    if (out_of_range(group, bit)) {
        return -1;
    }
    const unsigned int reg = g_gpio_base_reg[group] + g_gpio_base_reg_chile[bit];
    set_reg(reg, value != 0 ? g_gpio_base_reg_H[bit] : g_gpio_base_reg_L[bit]);
    return 0;
}

int GPIOMaster::get_gpio_addr(int group, int bit, unsigned int* addr, unsigned int* high, unsigned int* low)
{
    if (out_of_range(group, bit)) {
        return -1;
    }
    *addr = g_gpio_base_reg[group] + g_gpio_base_reg_chile[bit];
    *high = g_gpio_base_reg_H[bit];
    *low = g_gpio_base_reg_L[bit];
    return 0;
}

int GPIOMaster::get_gpio_value(int group, int bit, unsigned int* value)
{
    if (out_of_range(group, bit)) {
        return -1;
    }
    *value = get_reg(g_gpio_base_reg[group] + g_gpio_base_reg_chile[bit]);
    return 0;
}
