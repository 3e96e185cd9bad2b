#include "bus_lines.h"

unsigned int SDA = 0, SDA_H = 0, SDA_L = 0;
unsigned int SCL = 0, SCL_H = 0, SCL_L = 0;
unsigned int CS = 0, CS_H = 0, CS_L = 0;
unsigned int DC = 0, DC_H = 0, DC_L = 0;
unsigned int RES = 0, RES_H = 0, RES_L = 0;
