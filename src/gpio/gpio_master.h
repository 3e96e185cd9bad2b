#ifndef OLED_GPIO_GPIO_MASTER_H
#define OLED_GPIO_GPIO_MASTER_H

// Register map of the SoC's GPIO controllers and pin-multiplexing block.
const unsigned int kMuxBase = 0x120F0000;
const unsigned int kGpioBase = 0x12150000;
const unsigned int kGpioGroupStride = 0x10000;
const unsigned int kGpioDirection = 0x400;
const int kGpioGroups = 25;
const int kGpioBits = 8;

extern const unsigned int g_gpio_base_reg[kGpioGroups];
extern const unsigned int g_gpio_base_reg_chile[kGpioBits];
extern const unsigned int g_gpio_base_reg_H[kGpioBits];
extern const unsigned int g_gpio_base_reg_L[kGpioBits];
// (offset from kMuxBase, value selecting the GPIO function), by group * 8 + bit.
extern const unsigned int g_muxctrl_reg[kGpioGroups * kGpioBits][2];

// Pins named by (group, bit). Every method returns 0, or -1 without any
// register access when bit > 7 or group > 24 (or either is negative).
class GPIOMaster {
public:
    int pin_mux_gpio(int group, int bit);
    int set_gpio_direction(int group, int bit, int dir);
    int set_gpio_value(int group, int bit, int value);
    int get_gpio_addr(int group, int bit, unsigned int* addr, unsigned int* high, unsigned int* low);
    int get_gpio_value(int group, int bit, unsigned int* value);
};

#endif
