// The appliance's register seam: registers are reached through the
// mappings of /dev/mem that memmap keeps.
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>

#include <atomic>

#include "register_access.h"
#include "register_seam.h"

namespace {

// Pages that could not be mapped (a range the kernel refuses, no /dev/mem,
// no privilege). Each is reported once and its accesses are skipped from
// then on: retrying on every bus bit would flood the log, and the other
// pages go on working. The daemon touches the multiplexing page and at
// most 25 GPIO pages; stray pages beyond the table are retried.
const int kMaxFailedPages = 32;
std::atomic<uint32_t> g_failed[kMaxFailedPages];
std::atomic<int> g_failed_count(0);
pthread_mutex_t g_failure_lock = PTHREAD_MUTEX_INITIALIZER;

const uint32_t kPageMask = 0xFFFu;

bool page_failed(uint32_t page)
{
    const int count = g_failed_count.load(std::memory_order_acquire);
    for (int i = 0; i < count; ++i) {
        if (g_failed[i].load(std::memory_order_relaxed) == page) {
            return true;
        }
    }
    return false;
}

void report_failed(uint32_t page, unsigned int phys_addr)
{
    pthread_mutex_lock(&g_failure_lock);
    const int count = g_failed_count.load(std::memory_order_relaxed);
    if (!page_failed(page) && count < kMaxFailedPages) {
        g_failed[count].store(page, std::memory_order_relaxed);
        g_failed_count.store(count + 1, std::memory_order_release);
        printf("register 0x%08X cannot be mapped: accesses to page 0x%08X are skipped from now on\n", phys_addr, page);
    }
    pthread_mutex_unlock(&g_failure_lock);
}

volatile uint32_t* register_at(unsigned int phys_addr)
{
    const uint32_t page = phys_addr & ~kPageMask;
    if (page_failed(page)) {
        return nullptr;
    }
    void* reg = memmap(phys_addr, 128);
    if (reg == nullptr) {
        report_failed(page, phys_addr);
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
