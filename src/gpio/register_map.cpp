#include <ctype.h>
#include <fcntl.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string>

#include "register_access.h"

TMMAPNode* pTMMAPNode = nullptr;

namespace {

const uint32_t kPageMask = 0xFFFu;
const uint32_t kPageSize = 0x1000u;

// Never destroyed: a loop may map a page while the process exits.
std::string& g_device = *new std::string("/dev/mem");
// Opened on first need and kept; a failed open stays negative so that the
// next request tries again.
int g_device_fd = -1;

// Misses (open, mmap, append) are serialised: the LED thread may map a new
// group's page while a display thread walks the list. Hits only walk, with
// acquire loads of each link, so an append is never seen half made.
pthread_mutex_t g_append_lock = PTHREAD_MUTEX_INITIALIZER;

TMMAPNode* next_of(TMMAPNode* const* link)
{
    return __atomic_load_n(link, __ATOMIC_ACQUIRE);
}

void* find_mapping(uint32_t phys_addr, uint32_t size)
{
    for (TMMAPNode* node = next_of(&pTMMAPNode); node != nullptr; node = next_of(&node->next)) {
        if (node->phys_base <= phys_addr && node->phys_base + node->length >= phys_addr + size) {
            __atomic_fetch_add(&node->refcount, 1u, __ATOMIC_RELAXED);
            return reinterpret_cast<void*>(node->virt_base + (phys_addr - node->phys_base));
        }
    }
    return nullptr;
}

void append(TMMAPNode* node)
{
    TMMAPNode** link = &pTMMAPNode;
    while (*link != nullptr) {
        link = &(*link)->next;
    }
    __atomic_store_n(link, node, __ATOMIC_RELEASE);
}

void* map_new(uint32_t phys_addr, uint32_t size)
{
    if (g_device_fd < 0) {
        g_device_fd = open(g_device.c_str(), O_RDWR | O_SYNC | O_CLOEXEC);
        if (g_device_fd < 0) {
            printf("memmap():open %s error!\n", g_device.c_str());
            return nullptr;
        }
    }
    const uint32_t page_base = phys_addr & ~kPageMask;
    const uint32_t offset = phys_addr & kPageMask;
    const uint32_t length = ((size + offset - 1) & ~kPageMask) + kPageSize;
    void* start = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, g_device_fd, static_cast<off_t>(page_base));
    if (start == MAP_FAILED) {
        printf("memmap():mmap @ 0x%x error!\n", page_base);
        return nullptr;
    }
    TMMAPNode* node = static_cast<TMMAPNode*>(malloc(sizeof(TMMAPNode)));
    if (node == nullptr) {
        puts("memmap():malloc new node failed!");
        return nullptr;
    }
    node->phys_base = page_base;
    node->virt_base = reinterpret_cast<uintptr_t>(start);
    node->length = length;
    node->refcount = 1;
    node->next = nullptr;
    append(node);
    return reinterpret_cast<void*>(node->virt_base + offset);
}

}  // namespace

void set_memmap_device(const char* path)
{
    pthread_mutex_lock(&g_append_lock);
    if (g_device_fd >= 0) {
        close(g_device_fd);
    }
    g_device_fd = -1;
    g_device = path;
    pthread_mutex_unlock(&g_append_lock);
}

void* memmap(unsigned int phys_addr, unsigned int size)
{
    if (size == 0) {
        puts("memmap():size can't be zero!");
        return nullptr;
    }
    void* hit = find_mapping(phys_addr, size);
    if (hit != nullptr) {
        return hit;
    }
    pthread_mutex_lock(&g_append_lock);
    // Another thread may have mapped it while this one waited.
    void* mapped = find_mapping(phys_addr, size);
    if (mapped == nullptr) {
        mapped = map_new(phys_addr, size);
    }
    pthread_mutex_unlock(&g_append_lock);
    return mapped;
}

namespace {

int hex_digit(char c)
{
    const int upper = toupper(static_cast<unsigned char>(c));
    if (upper >= '0' && upper <= '9') {
        return upper - '0';
    }
    if (upper >= 'A' && upper <= 'F') {
        return upper - 'A' + 10;
    }
    return -1;
}

int hex_number(const char* digits, unsigned int* out)
{
    if (*digits == '\0') {
        return 1;
    }
    unsigned int value = 0;
    for (; *digits != '\0'; ++digits) {
        const int digit = hex_digit(*digits);
        if (digit < 0 || value > 0x0FFFFFFFu) {
            *out = value;
            return 1;
        }
        value = value * 16 + static_cast<unsigned int>(digit);
    }
    *out = value;
    return 0;
}

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

int decimal_number(const char* text, unsigned int* out)
{
    if (!is_digit(*text)) {
        *out = 0;
        return 1;
    }
    unsigned int value = 0;
    for (;; ++text) {
        value = value * 10 + static_cast<unsigned int>(*text - '0');
        const char next = text[1];
        if (next == '\0') {
            *out = value;
            return 0;
        }
        // 429496729 is the last value that may take one more digit, and
        // only up to 5: 4294967295 is the largest 32-bit number.
        const bool room = value <= 429496728u || (value == 429496729u && next <= '5');
        if (!is_digit(next) || !room) {
            *out = value;
            return 1;
        }
    }
}

}  // namespace

int StrToNumber(char* text, unsigned int* out)
{
    if (text[0] == '\0') {
        *out = 0;
        return 0;
    }
    if (text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        return hex_number(text + 2, out);
    }
    return decimal_number(text, out);
}

void* himm(char* addr_text, char* value_text)
{
    unsigned int addr = 0;
    if (value_text == nullptr) {
        if (StrToNumber(addr_text, &addr) != 0) {
            puts("ERROR:Please input addr like 0x12345678");
            return nullptr;
        }
        return memmap(addr, 128);
    }
    unsigned int value = 0;
    if (StrToNumber(addr_text, &addr) != 0 || StrToNumber(value_text, &value) != 0) {
        puts("ERROR:xxx");
        return nullptr;
    }
    void* reg = memmap(addr, 128);
    if (reg != nullptr) {
        // A diagnostic poke: written at once, without the bus pacing.
        *static_cast<volatile uint32_t*>(reg) = value;
    }
    return reg;
}
