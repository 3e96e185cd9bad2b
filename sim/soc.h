#ifndef OLED_SIM_SOC_H
#define OLED_SIM_SOC_H

#include <stdint.h>
#include <stdio.h>

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <vector>

// The simulated SoC: the pin-multiplexing block and 25 GPIO groups of 8
// pins, each with a direction register (+0x400) and an address-masked data
// register (a write to base + (mask << 2) changes only the bits in mask; a
// read there returns data & mask). Devices wired to pins hear every level
// change of those pins, never the driver's calls.
class SimSoc {
public:
    // (group, bit, new level) of a pin whose level changed.
    typedef std::function<void(int group, int bit, int level)> PinListener;

    static SimSoc& instance();

    uint32_t load(uint32_t addr);
    void store(uint32_t addr, uint32_t value);

    // Level an input pin reads (a switch, a button).
    void set_input_level(int group, int bit, int level);
    // A device's open-drain pull on a line: while pulled the line is low
    // whatever the pin drives (a two-wire panel's acknowledge).
    void pull_low(int group, int bit, bool pulled);
    bool is_output(int group, int bit);
    // Level of a pin: its data bit while an output, its input level else.
    int level(int group, int bit);
    // Value last written to a pad register of the multiplexing block.
    uint32_t mux_value(uint32_t offset);

    // Calls listener on every level change of pin (group, bit). Listeners
    // run with the SoC locked, in the order of the writes.
    void watch(int group, int bit, PinListener listener);
    // Every register write, for --trace: "ADDR VALUE" in hexadecimal.
    void trace_to(FILE* file);
    // Called with the SoC locked at the start of every store, before any
    // listener hears its changes (a clock that counts writes).
    void on_store(std::function<void()> callback);
    // Called after every store (with the SoC unlocked), e.g. to schedule
    // output files. At most kMaxChangeCallbacks; more are refused (false).
    bool on_change(std::function<void()> callback);
    static const int kMaxChangeCallbacks = 8;
    // Register and store counts since the last reset (benchmarks, tests).
    uint64_t stores();

    // Back to power-on: registers zero, inputs low, no devices.
    void reset();

private:
    SimSoc();
    int level_locked(int group, int bit) const;
    uint32_t levels_locked(int group) const;
    void store_gpio(int group, uint32_t offset, uint32_t value);
    void notify_changes(int group, uint32_t before);
    // Sets or clears a pin's bit in one of the per-group words, telling
    // listeners what that changed.
    void set_bit(uint32_t* bits, int group, int bit, bool on);

    std::recursive_mutex mutex_;
    uint32_t data_[25];
    uint32_t direction_[25];
    uint32_t input_[25];
    uint32_t pulled_low_[25];
    std::map<uint32_t, uint32_t> mux_;
    std::map<int, std::vector<PinListener>> listeners_;  // key group * 8 + bit
    uint32_t watched_[25];                               // bits with listeners
    // Filled once each and published by the count, so a store calls them
    // without copying or locking; every bus bit is a store.
    std::function<void()> change_callbacks_[kMaxChangeCallbacks];
    std::atomic<int> change_callback_count_;
    FILE* trace_;
    std::function<void()> on_store_;
    uint64_t stores_;
};

#endif
