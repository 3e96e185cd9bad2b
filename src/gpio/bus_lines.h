#ifndef OLED_GPIO_BUS_LINES_H
#define OLED_GPIO_BUS_LINES_H

// Panel bus lines: the register address of each line's single-bit data
// alias and the values that drive it high and low. Filled by the pin set-up
// before the display threads start; shared by both panel drivers.
extern unsigned int SDA, SDA_H, SDA_L;
extern unsigned int SCL, SCL_H, SCL_L;
extern unsigned int CS, CS_H, CS_L;
extern unsigned int DC, DC_H, DC_L;
extern unsigned int RES, RES_H, RES_L;

#endif
