#ifndef OLED_GPIO_REGISTER_SEAM_H
#define OLED_GPIO_REGISTER_SEAM_H

// The register seam: the one load and the one store of a 32-bit register at
// a physical address. Defined once per program at link time, no virtual
// call: register_seam_devmem.cpp maps /dev/mem on the appliance; the
// simulator defines them on its simulated SoC for oledd-sim and the tests.
unsigned int register_load(unsigned int phys_addr);
void register_store(unsigned int phys_addr, unsigned int value);

#endif
