// The appliance's register seam: registers are reached through the
// mappings of /dev/mem that memmap keeps.
#include <stdint.h>
#include <stdio.h>

#include <atomic>

#include "register_access.h"
#include "register_seam.h"

namespace {

// All registers come from one device, so whatever made one mapping fail
// (no /dev/mem, no privilege, a range the kernel refuses) holds for the
// others too. The first failure is reported and every later access is
// skipped: retrying on every bus bit would flood the log and the daemon
// keeps running without its hardware.
std::atomic<bool> g_unmapped(false);

volatile uint32_t* register_at(unsigned int phys_addr)
{
    if (g_unmapped.load(std::memory_order_relaxed)) {
        return nullptr;
    }
    void* reg = memmap(phys_addr, 128);
    if (reg == nullptr && !g_unmapped.exchange(true)) {
        printf("register 0x%08X cannot be mapped: register access is skipped from now on\n", phys_addr);
    }
    return static_cast<volatile uint32_t*>(reg);
}

}  // namespace

unsigned int register_load(unsigned int phys_addr)
{
    volatile uint32_t* reg = register_at(phys_addr);
    return reg != nullptr ? *reg : 0;
}

void register_store(unsigned int phys_addr, unsigned int value)
{
    volatile uint32_t* reg = register_at(phys_addr);
    if (reg != nullptr) {
        *reg = value;
    }
}
