#ifndef OLED_GPIO_REGISTER_ACCESS_H
#define OLED_GPIO_REGISTER_ACCESS_H

#include <stdint.h>
#include <sys/time.h>

// One record per /dev/mem mapping; records are appended and never removed.
// Addresses are kept at pointer size so the list is right on 64-bit hosts.
struct TMMAPNode {
    uint32_t phys_base;
    uintptr_t virt_base;
    uint32_t length;
    uint32_t refcount;
    TMMAPNode* next;
};

extern TMMAPNode* pTMMAPNode;

// Maps [phys_addr, phys_addr + size) of the register device; returns the
// address of phys_addr in the process, or nullptr.
void* memmap(unsigned int phys_addr, unsigned int size);

// Device that memmap maps ("/dev/mem" on the appliance). Tests point it at a
// sparse file standing in for the register space.
void set_memmap_device(const char* path);

// 32-bit register read; no pacing. Address 0 (a line without a pin) reads 0
// and is never touched.
unsigned int get_reg(unsigned int addr);
// 32-bit register write after a spin of at least one microsecond: the spin
// is what paces the bit-banged panel buses. Returns value. Address 0 is
// skipped, without the spin.
unsigned int set_reg(unsigned int addr, unsigned int value);

int StrToNumber(char* text, unsigned int* out);
void* himm(char* addr_text, char* value_text);
int tim_subtract(timeval* result, timeval* start, timeval* end);
int Delayms(int ms);
void Delay();

#endif
