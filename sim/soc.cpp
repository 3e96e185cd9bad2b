#include "soc.h"

#include <string.h>

#include "gpio_master.h"
#include "register_seam.h"

namespace {

// The register map is the GPIO controller's own; the mux block is one page.
const uint32_t kMuxSize = 0x1000;

// Which group a GPIO address belongs to, or -1.
int group_of(uint32_t addr, uint32_t* offset)
{
    if (addr < kGpioBase || addr >= kGpioBase + kGpioGroups * kGpioGroupStride) {
        return -1;
    }
    *offset = (addr - kGpioBase) % kGpioGroupStride;
    return static_cast<int>((addr - kGpioBase) / kGpioGroupStride);
}

}  // namespace

const int SimSoc::kMaxChangeCallbacks;

SimSoc& SimSoc::instance()
{
    // Never destroyed: daemon threads still store while the process exits.
    static SimSoc* soc = new SimSoc;
    return *soc;
}

SimSoc::SimSoc() : change_callback_count_(0), trace_(nullptr), stores_(0)
{
    reset();
}

void SimSoc::reset()
{
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    memset(data_, 0, sizeof(data_));
    memset(direction_, 0, sizeof(direction_));
    memset(input_, 0, sizeof(input_));
    memset(pulled_low_, 0, sizeof(pulled_low_));
    mux_.clear();
    listeners_.clear();
    memset(watched_, 0, sizeof(watched_));
    change_callback_count_.store(0);
    for (int i = 0; i < kMaxChangeCallbacks; ++i) {
        change_callbacks_[i] = nullptr;
    }
    trace_ = nullptr;
    on_store_ = nullptr;
    stores_ = 0;
}

int SimSoc::level_locked(int group, int bit) const
{
    return (levels_locked(group) >> bit) & 1;
}

uint32_t SimSoc::levels_locked(int group) const
{
    return ((data_[group] & direction_[group]) | (input_[group] & ~direction_[group])) & ~pulled_low_[group] & 0xFF;
}

uint32_t SimSoc::load(uint32_t addr)
{
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    uint32_t offset = 0;
    int group = group_of(addr, &offset);
    if (group >= 0) {
        if (offset == kGpioDirection) {
            return direction_[group];
        }
        if (offset < kGpioDirection && offset % 4 == 0) {
            return levels_locked(group) & (offset >> 2);
        }
        return 0;
    }
    if (addr >= kMuxBase && addr < kMuxBase + kMuxSize) {
        std::map<uint32_t, uint32_t>::const_iterator it = mux_.find(addr - kMuxBase);
        return it == mux_.end() ? 0 : it->second;
    }
    return 0;
}

void SimSoc::store(uint32_t addr, uint32_t value)
{
    {
        std::lock_guard<std::recursive_mutex> lock(mutex_);
        ++stores_;
        if (on_store_) {
            on_store_();
        }
        if (trace_ != nullptr) {
            fprintf(trace_, "%08X %08X\n", addr, value);
        }
        uint32_t offset = 0;
        int group = group_of(addr, &offset);
        if (group >= 0) {
            store_gpio(group, offset, value);
        } else if (addr >= kMuxBase && addr < kMuxBase + kMuxSize) {
            mux_[addr - kMuxBase] = value;
        }
    }
    const int callbacks = change_callback_count_.load(std::memory_order_acquire);
    for (int i = 0; i < callbacks; ++i) {
        change_callbacks_[i]();
    }
}

void SimSoc::store_gpio(int group, uint32_t offset, uint32_t value)
{
    const uint32_t before = levels_locked(group);
    if (offset == kGpioDirection) {
        direction_[group] = value & 0xFF;
    } else if (offset < kGpioDirection && offset % 4 == 0) {
        const uint32_t mask = (offset >> 2) & 0xFF;
        data_[group] = (data_[group] & ~mask) | (value & mask);
    } else {
        return;
    }
    notify_changes(group, before);
}

void SimSoc::notify_changes(int group, uint32_t before)
{
    const uint32_t now = levels_locked(group);
    const uint32_t heard = (now ^ before) & watched_[group];
    for (int bit = 0; heard >> bit != 0; ++bit) {
        if ((heard & (1u << bit)) == 0) {
            continue;
        }
        std::vector<PinListener>& listeners = listeners_[group * 8 + bit];
        for (size_t i = 0; i < listeners.size(); ++i) {
            listeners[i](group, bit, static_cast<int>((now >> bit) & 1));
        }
    }
}

void SimSoc::set_bit(uint32_t* bits, int group, int bit, bool on)
{
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    const uint32_t before = levels_locked(group);
    if (on) {
        bits[group] |= 1u << bit;
    } else {
        bits[group] &= ~(1u << bit);
    }
    notify_changes(group, before);
}

void SimSoc::set_input_level(int group, int bit, int level)
{
    set_bit(input_, group, bit, level != 0);
}

void SimSoc::pull_low(int group, int bit, bool pulled)
{
    set_bit(pulled_low_, group, bit, pulled);
}

bool SimSoc::is_output(int group, int bit)
{
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    return (direction_[group] & (1u << bit)) != 0;
}

int SimSoc::level(int group, int bit)
{
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    return level_locked(group, bit);
}

uint32_t SimSoc::mux_value(uint32_t offset)
{
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    std::map<uint32_t, uint32_t>::const_iterator it = mux_.find(offset);
    return it == mux_.end() ? 0 : it->second;
}

void SimSoc::watch(int group, int bit, PinListener listener)
{
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    listeners_[group * 8 + bit].push_back(listener);
    watched_[group] |= 1u << bit;
}

void SimSoc::trace_to(FILE* file)
{
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    trace_ = file;
}

void SimSoc::on_store(std::function<void()> callback)
{
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    on_store_ = callback;
}

bool SimSoc::on_change(std::function<void()> callback)
{
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    const int count = change_callback_count_.load();
    if (count == kMaxChangeCallbacks) {
        return false;
    }
    change_callbacks_[count] = callback;
    change_callback_count_.store(count + 1, std::memory_order_release);
    return true;
}

uint64_t SimSoc::stores()
{
    std::lock_guard<std::recursive_mutex> lock(mutex_);
    return stores_;
}

unsigned int register_load(unsigned int phys_addr)
{
    return SimSoc::instance().load(phys_addr);
}

void register_store(unsigned int phys_addr, unsigned int value)
{
    SimSoc::instance().store(phys_addr, value);
}
