#ifndef OLED_CONTROL_SETTINGS_SAVER_H
#define OLED_CONTROL_SETTINGS_SAVER_H

#include <pthread.h>
#include <stdint.h>

#include <string>

#include "relaxed_atomic.h"

// Saves the settings store after control datagrams so that a flood of
// changes cannot wear out the flash: the first change after a quiet second
// is saved at once, later ones within that second are saved together at
// its end. A save is SaveConfig, ReadConfig and PrintConfig, as ever.
// Time comes from the caller (milliseconds of a monotonic clock), so tests
// drive it. Every member takes the saver's lock: the signal path may save
// from another thread while the control server runs.
class SettingsSaver {
public:
    static const int64_t kQuietMs = 1000;

    SettingsSaver();
    ~SettingsSaver();
    SettingsSaver(const SettingsSaver&) = delete;
    SettingsSaver& operator=(const SettingsSaver&) = delete;

    // Runs change(unsaved), which alters the store, then saves or leaves
    // the save pending. unsaved is the store's text that waits to be
    // written, or nullptr when the file holds the store.
    template <typename Change>
    void change(int64_t now_ms, Change change)
    {
        if (!lock()) {
            return;
        }
        change(pending_ ? &unsaved_ : static_cast<const std::string*>(nullptr));
        after_change(now_ms);
        unlock();
    }

    // Settings files written since the daemon started; read without the
    // lock, which a datagram's items hold while they are carried out.
    unsigned long saves() const { return saves_; }

    // When the pending save falls due; -1 when none is pending.
    int64_t due_ms();
    void save_if_due(int64_t now_ms);
    // Saves what is pending at once, whatever the time.
    void save_pending();

private:
    bool lock();
    void unlock();
    void after_change(int64_t now_ms);
    void save(int64_t now_ms);

    pthread_mutex_t mutex_;
    bool pending_;
    bool failed_;
    RelaxedAtomic<unsigned long> saves_{0};  // the last save could not be made: the next change or a signal tries again
    bool written_;                           // a write within the process's life
    int64_t written_ms_;                     // of the last write
    std::string saved_;                      // the store's text as last saved
    std::string unsaved_;                    // the text waiting to be written while pending_
};

// The daemon's one saver, for its control server and its signal path.
SettingsSaver& process_settings_saver();

// Saves what the control server left pending; the signal path calls it
// before the process ends.
void save_pending_settings();

#endif
